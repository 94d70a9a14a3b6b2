#include "exchange/service/request_head.h"

#include <array>
#include <optional>

namespace zvx {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}
bool isAlpha(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}
bool isHex(char c)
{
    return isDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// Letters, digits and some others, found by one look. Every request is asked some hundred times.
class CharacterSet
{
public:
    explicit CharacterSet(std::string_view others)
    {
        for (int c = 0; c < 256; ++c) {
            const char character = static_cast<char>(c);
            m_has[static_cast<std::size_t>(c)] = isAlpha(character) || isDigit(character)
                || others.find(character) != std::string_view::npos;
        }
    }

    /// Whether there is text, and all of it is of this set.
    bool holds(std::string_view text) const
    {
        for (const char c : text) {
            if (!m_has[static_cast<unsigned char>(c)])
                return false;
        }
        return !text.empty();
    }

private:
    std::array<bool, 256> m_has;
};

bool isToken(std::string_view text)
{
    static const CharacterSet characters("!#$%&'*+-.^_`|~");
    return characters.holds(text);
}

/// Whether `text` is `lower`, which has no capitals, in letters of any case.
bool is(std::string_view text, std::string_view lower)
{
    if (text.size() != lower.size())
        return false;
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if ((c >= 'A' && c <= 'Z' ? c - 'A' + 'a' : c) != lower[i])
            return false;
    }
    return true;
}

std::string_view trimmed(std::string_view text)
{
    const auto blank = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.empty() && blank(text.front()))
        text.remove_prefix(1);
    while (!text.empty() && blank(text.back()))
        text.remove_suffix(1);
    return text;
}

HttpFault malformed(std::string reason)
{
    return {400, std::move(reason)};
}
HttpFault tooLarge(std::string reason)
{
    return {413, std::move(reason)};
}

std::optional<HttpFault> checkTarget(std::string_view target, const HttpLimits &limits)
{
    if (target.size() > limits.address)
        return tooLarge("address over its bound");
    if (target.empty() || target.front() != '/')
        return malformed("address is not a path");
    for (std::size_t i = 0; i < target.size(); ++i) {
        const auto c = static_cast<unsigned char>(target[i]);
        if (c <= 0x20 || c >= 0x7F || c == '#')
            return malformed("character in address");
        if (c != '%')
            continue;
        if (i + 2 >= target.size() || !isHex(target[i + 1]) || !isHex(target[i + 2]))
            return malformed("percent escape in address");
        if (target[i + 1] == '0' && target[i + 2] == '0')
            return malformed("NUL in address");
    }
    return std::nullopt;
}

bool isHost(std::string_view host)
{
    static const CharacterSet characters(".-_:[]");
    return characters.holds(host);
}

bool isText(std::string_view value)
{
    for (const char c : value) {
        const auto byte = static_cast<unsigned char>(c);
        if ((byte < 0x20 && c != '\t') || byte == 0x7F)
            return false;
    }
    return true;
}

/// Collects the header lines of one request and says what is wrong with them.
class HeaderLines
{
public:
    HeaderLines(RequestHead &head, const HttpLimits &limits) : m_head(head), m_limits(limits) { }

    std::optional<HttpFault> take(std::string_view line)
    {
        if (++m_count > m_limits.headerLines)
            return tooLarge("number of header lines");
        if (line.front() == ' ' || line.front() == '\t')
            return malformed("folded header line");
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos || !isToken(line.substr(0, colon)))
            return malformed("header name");
        const std::string_view value = trimmed(line.substr(colon + 1));
        if (!isText(value))
            return malformed("control character in header");
        return keep(line.substr(0, colon), value);
    }

    std::optional<HttpFault> finish(bool version10)
    {
        if (!m_host)
            return malformed("Host is missing");
        if (m_head.chunked && version10)
            return malformed("Transfer-Encoding under HTTP/1.0");
        if (m_head.chunked && m_length)
            return malformed("Transfer-Encoding together with Content-Length");
        if (m_head.contentLength > m_limits.body)
            return tooLarge("body over its bound");
        m_head.keepAlive = !m_close && (!version10 || m_keepAlive);
        if (version10)
            m_head.expectsContinue = false;
        return std::nullopt;
    }

private:
    std::optional<HttpFault> keep(std::string_view name, std::string_view value)
    {
        if (is(name, "host"))
            return keepHost(value);
        if (is(name, "content-length"))
            return keepLength(value);
        if (is(name, "transfer-encoding")) {
            if (m_head.chunked || !is(value, "chunked"))
                return malformed("Transfer-Encoding");
            m_head.chunked = true;
        } else if (is(name, "content-encoding")) {
            if (!is(value, "identity"))
                return malformed("Content-Encoding");
        } else if (is(name, "expect")) {
            if (!is(value, "100-continue"))
                return malformed("Expect");
            m_head.expectsContinue = true;
        } else if (is(name, "connection")) {
            return keepConnection(value);
        } else if (is(name, "authorization")) {
            return keepOnce(m_head.authorization, value, "Authorization");
        } else if (is(name, "content-type")) {
            return keepOnce(m_head.contentType, value, "Content-Type");
        }
        return std::nullopt;
    }

    static std::optional<HttpFault> keepOnce(std::string &place, std::string_view value,
                                             const char *name)
    {
        if (!place.empty())
            return malformed(std::string(name) + " twice");
        place = value;
        return std::nullopt;
    }

    std::optional<HttpFault> keepHost(std::string_view value)
    {
        if (m_host)
            return malformed("Host twice");
        if (!isHost(value))
            return malformed("Host");
        m_host = true;
        m_head.host = value;
        return std::nullopt;
    }

    std::optional<HttpFault> keepLength(std::string_view value)
    {
        if (m_length)
            return malformed("Content-Length twice");
        m_length = true;
        if (value.empty())
            return malformed("Content-Length");
        for (const char c : value) {
            if (!isDigit(c))
                return malformed("Content-Length");
            // Stops growing far above every bound, so that no number of digits wraps round.
            if (m_head.contentLength < (std::uint64_t{1} << 50))
                m_head.contentLength
                    = m_head.contentLength * 10 + static_cast<std::uint64_t>(c - '0');
        }
        return std::nullopt;
    }

    std::optional<HttpFault> keepConnection(std::string_view rest)
    {
        while (!rest.empty()) {
            const std::size_t comma = rest.find(',');
            const std::string_view option = trimmed(rest.substr(0, comma));
            rest = comma == std::string_view::npos ? std::string_view() : rest.substr(comma + 1);
            if (!option.empty() && !isToken(option))
                return malformed("Connection");
            m_close = m_close || is(option, "close");
            m_keepAlive = m_keepAlive || is(option, "keep-alive");
        }
        return std::nullopt;
    }

    RequestHead &m_head;
    const HttpLimits &m_limits;
    std::size_t m_count = 0;
    bool m_host = false;
    bool m_length = false;
    bool m_close = false;
    bool m_keepAlive = false;
};

/// Cuts the next line off `block`; nothing when the line does not end in CR LF, or holds a bare
/// one.
std::optional<std::string_view> takeLine(std::string_view &block)
{
    std::size_t end = 0;
    while (end < block.size() && block[end] != '\r' && block[end] != '\n' && block[end] != '\0')
        ++end;
    if (block.substr(end, 2) != "\r\n")
        return std::nullopt;
    const std::string_view line = block.substr(0, end);
    block.remove_prefix(end + 2);
    return line;
}

} // namespace

std::string_view RequestHead::path() const
{
    return std::string_view(target).substr(0, target.find('?'));
}

std::string_view RequestHead::query() const
{
    const std::size_t mark = target.find('?');
    return mark == std::string::npos ? std::string_view()
                                     : std::string_view(target).substr(mark + 1);
}

std::variant<RequestHead, HttpFault> readRequestHead(std::string_view block,
                                                     const HttpLimits &limits)
{
    if (block.size() > limits.header)
        return tooLarge("header over its bound");
    RequestHead head;
    const auto requestLine = takeLine(block);
    if (!requestLine)
        return malformed("request line");
    const std::size_t first = requestLine->find(' ');
    const std::size_t last = requestLine->rfind(' ');
    if (first == std::string_view::npos || first == last)
        return malformed("request line");
    const std::string_view method = requestLine->substr(0, first);
    const std::string_view target = requestLine->substr(first + 1, last - first - 1);
    const std::string_view version = requestLine->substr(last + 1);
    if (!isToken(method) || method.size() > 20)
        return malformed("method");
    if (version != "HTTP/1.1" && version != "HTTP/1.0")
        return malformed("version");
    if (auto fault = checkTarget(target, limits))
        return *fault;
    head.method = method;
    head.target = target;

    HeaderLines lines(head, limits);
    while (true) {
        const auto line = takeLine(block);
        if (!line)
            return malformed("line end in header");
        if (line->empty())
            break;
        if (auto fault = lines.take(*line))
            return *fault;
    }
    if (!block.empty())
        return malformed("header block");
    if (auto fault = lines.finish(version == "HTTP/1.0"))
        return *fault;
    if (head.method != "POST" && (head.chunked || head.contentLength > 0))
        return malformed("body on a query");
    return head;
}

} // namespace zvx
