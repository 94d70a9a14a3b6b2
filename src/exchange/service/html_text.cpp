#include "exchange/service/html_text.h"

#include <algorithm>
#include <stdexcept>

namespace zvx {

std::string htmlOf(std::string_view text)
{
    std::string out;
    out.reserve(text.size());
    for (const char c : text) {
        switch (c) {
        case '&':
            out += "&amp;";
            break;
        case '<':
            out += "&lt;";
            break;
        case '>':
            out += "&gt;";
            break;
        case '"':
            out += "&quot;";
            break;
        case '\'':
            out += "&#39;";
            break;
        default:
            out += c;
        }
    }
    return out;
}

std::string filledHtml(std::string_view form, HtmlValues values)
{
    std::string out;
    out.reserve(form.size() * 2);
    while (!form.empty()) {
        const std::size_t begin = form.find('{');
        out.append(form.substr(0, begin));
        if (begin == std::string_view::npos)
            break;
        const std::size_t end = form.find('}', begin);
        const std::string_view name = form.substr(begin + 1, end - begin - 1);
        const auto value = std::find_if(values.begin(), values.end(),
                                        [name](const auto &entry) { return entry.first == name; });
        if (end == std::string_view::npos || value == values.end())
            throw std::logic_error("a template has a name without a value: " + std::string(name));
        out.append(htmlOf(value->second));
        form.remove_prefix(end + 1);
    }
    return out;
}

std::string htmlPage(std::string_view title, std::string_view platform, std::string_view body)
{
    std::string page = filledHtml(R"(<!DOCTYPE html>
<html lang="zh-CN">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<title>{title} - {platform}</title>
<link rel="stylesheet" href="page.css">
</head>
<body>
)",
                                  {{"title", title}, {"platform", platform}});
    page.append(body);
    page += filledHtml("<footer>{platform}交易中心</footer>\n</body>\n</html>\n",
                       {{"platform", platform}});
    return page;
}

} // namespace zvx
