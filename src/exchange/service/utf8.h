#pragma once

#include <string_view>

namespace zvx {

/// Whether `text` is well-formed UTF-8: no overlong forms, no surrogates, nothing above U+10FFFF.
bool isUtf8(std::string_view text);

} // namespace zvx
