#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace zvx {

/// Writes JSON straight into a string, for answers whose shape is known while they are written.
/// Commas are set by the writer; that keys and brackets match is the caller's care.
class JsonText
{
public:
    JsonText &open(char bracket);
    JsonText &close(char bracket);
    /// The name of the next value. Names are plain ASCII without anything to escape.
    JsonText &key(std::string_view name);
    JsonText &number(std::int64_t value);
    /// `text` must be UTF-8; quotes, backslashes and control characters are escaped.
    JsonText &text(std::string_view text);
    JsonText &boolean(bool value);
    JsonText &null();
    /// Text that is JSON already.
    JsonText &raw(std::string_view json);

    const std::string &view() const { return m_out; }
    std::string take() { return std::move(m_out); }

private:
    void separate();

    std::string m_out;
    bool m_comma = false;
};

} // namespace zvx
