#pragma once

#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>

namespace zvx {

/// Text as HTML shows it: whatever has a meaning in an element or in a quoted attribute is escaped.
std::string htmlOf(std::string_view text);

/// Values for the names in a template.
using HtmlValues = std::initializer_list<std::pair<std::string_view, std::string_view>>;

/// HTML with names in braces, "<p>{name}</p>", each replaced by its value, which is text and is
/// escaped. Throws std::logic_error for a name without a value.
std::string filledHtml(std::string_view form, HtmlValues values);

/// A whole page in the frame that all pages have; `body` is HTML, the others are text.
std::string htmlPage(std::string_view title, std::string_view platform, std::string_view body);

} // namespace zvx
