#include "exchange/service/http_message.h"

#include "exchange/accounts/secret.h"
#include "exchange/service/utf8.h"

#include <algorithm>

namespace zvx {

namespace {

constexpr std::size_t maximumPairs = 64;

int hexValue(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

/// Whether the text stands for itself: nothing escaped, nothing that needs a look at its bytes.
bool isPlain(std::string_view text)
{
    for (const char c : text) {
        if (c == '+' || c == '%' || c == '\0' || static_cast<unsigned char>(c) >= 0x80)
            return false;
    }
    return true;
}

std::optional<std::string> decode(std::string_view text)
{
    if (isPlain(text))
        return std::string(text);
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        char c = text[i];
        if (c == '+') {
            c = ' ';
        } else if (c == '%') {
            if (i + 2 >= text.size())
                return std::nullopt;
            const int high = hexValue(text[i + 1]);
            const int low = hexValue(text[i + 2]);
            if (high < 0 || low < 0)
                return std::nullopt;
            c = static_cast<char>(high * 16 + low);
            i += 2;
        }
        if (c == '\0')
            return std::nullopt;
        out.push_back(c);
    }
    if (!isUtf8(out))
        return std::nullopt;
    return out;
}

} // namespace

std::optional<HttpParameters> HttpParameters::parse(std::string_view text)
{
    HttpParameters parameters;
    const auto pairs = std::count(text.begin(), text.end(), '&') + 1;
    parameters.m_pairs.reserve(
        std::min<std::size_t>(static_cast<std::size_t>(pairs), maximumPairs));
    while (!text.empty()) {
        const std::size_t end = text.find('&');
        const std::string_view pair = text.substr(0, end);
        text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
        if (pair.empty())
            continue;
        const std::size_t equals = pair.find('=');
        auto name = decode(pair.substr(0, equals));
        auto value = decode(equals == std::string_view::npos ? std::string_view()
                                                             : pair.substr(equals + 1));
        if (!name || !value || name->empty() || parameters.find(*name)
            || parameters.m_pairs.size() == maximumPairs)
            return std::nullopt;
        parameters.m_pairs.emplace_back(std::move(*name), std::move(*value));
    }
    return parameters;
}

const std::string *HttpParameters::find(std::string_view name) const
{
    for (const auto &pair : m_pairs) {
        if (pair.first == name)
            return &pair.second;
    }
    return nullptr;
}

HttpParameters &HttpParameters::operator=(HttpParameters &&other) noexcept
{
    std::swap(m_pairs, other.m_pairs);
    return *this;
}

HttpParameters::~HttpParameters()
{
    for (auto &pair : m_pairs)
        wipe(pair.second.data(), pair.second.size());
}

HttpRequest::~HttpRequest()
{
    wipe(authorization.data(), authorization.size());
    wipe(body.data(), body.size());
}

HttpAnswer HttpAnswer::of(int status, std::string text)
{
    HttpAnswer answer;
    answer.status = status;
    answer.body.push_back(std::make_shared<const std::string>(std::move(text)));
    return answer;
}

HttpResponder::HttpResponder(std::shared_ptr<HttpResponseSink> sink) : m_sink(std::move(sink)) { }

HttpResponder::HttpResponder(HttpResponder &&other) noexcept = default;

HttpResponder &HttpResponder::operator=(HttpResponder &&other) noexcept
{
    std::swap(m_sink, other.m_sink);
    return *this;
}

HttpResponder::~HttpResponder()
{
    if (m_sink)
        m_sink->lose();
}

void HttpResponder::answer(HttpAnswer answer)
{
    if (auto sink = std::move(m_sink))
        sink->answer(std::move(answer));
}

void HttpResponder::watch(std::function<void()> gone)
{
    if (m_sink)
        m_sink->watch(std::move(gone));
}

} // namespace zvx
