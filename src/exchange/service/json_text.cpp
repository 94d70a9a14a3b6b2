#include "exchange/service/json_text.h"

#include <charconv>

namespace zvx {

void JsonText::separate()
{
    if (m_comma)
        m_out.push_back(',');
    m_comma = true;
}

JsonText &JsonText::open(char bracket)
{
    separate();
    m_out.push_back(bracket);
    m_comma = false;
    return *this;
}

JsonText &JsonText::close(char bracket)
{
    m_out.push_back(bracket);
    m_comma = true;
    return *this;
}

JsonText &JsonText::key(std::string_view name)
{
    separate();
    m_out.push_back('"');
    m_out.append(name);
    m_out.append("\":");
    m_comma = false;
    return *this;
}

JsonText &JsonText::number(std::int64_t value)
{
    separate();
    char digits[24];
    const auto end = std::to_chars(digits, digits + sizeof digits, value).ptr;
    m_out.append(digits, end);
    return *this;
}

JsonText &JsonText::text(std::string_view text)
{
    separate();
    constexpr char hex[] = "0123456789abcdef";
    m_out.push_back('"');
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\') {
            m_out.push_back('\\');
            m_out.push_back(c);
        } else if (byte < 0x20) {
            m_out.append("\\u00");
            m_out.push_back(hex[byte >> 4]);
            m_out.push_back(hex[byte & 15]);
        } else {
            m_out.push_back(c);
        }
    }
    m_out.push_back('"');
    return *this;
}

JsonText &JsonText::boolean(bool value)
{
    return raw(value ? "true" : "false");
}

JsonText &JsonText::null()
{
    return raw("null");
}

JsonText &JsonText::raw(std::string_view json)
{
    separate();
    m_out.append(json);
    return *this;
}

} // namespace zvx
