#include "exchange/service/public_address.h"

#include "exchange/service/host_names.h"
#include "exchange/service/http_message.h"
#include "exchange/service/parameters.h"

#include <arpa/inet.h>

namespace zvx {

namespace {

/// What stands behind "http://" or "https://"; empty where neither is there.
std::string_view behindScheme(std::string_view url)
{
    for (const std::string_view scheme : {"http://", "https://"}) {
        if (url.substr(0, scheme.size()) == scheme)
            return url.substr(scheme.size());
    }
    return {};
}

/// The host of "host:port" or "[::1]:port", without brackets.
std::string_view hostOf(std::string_view place)
{
    if (!place.empty() && place.front() == '[')
        return place.substr(1, place.find(']') - 1);
    return place.substr(0, place.find(':'));
}

bool isSix(std::string_view text)
{
    unsigned char address[sizeof(in6_addr)];
    return ::inet_pton(AF_INET6, std::string(text).c_str(), address) == 1;
}

} // namespace

PublicAddress::PublicAddress(std::string url) : m_url(std::move(url))
{
    if (!m_url.empty() && m_url.back() == '/')
        m_url.pop_back();
}

std::string PublicAddress::baseFor(const HttpRequest &request) const
{
    return m_url.empty() ? "http://" + request.host : m_url;
}

std::string_view PublicAddress::host() const
{
    return hostOf(behindScheme(m_url));
}

bool PublicAddress::isUrl(std::string_view text)
{
    std::string_view place = behindScheme(text);
    if (!place.empty() && place.back() == '/')
        place.remove_suffix(1);
    const bool isBracketed = !place.empty() && place.front() == '[';
    const std::size_t end = isBracketed ? place.find(']') : place.find(':');
    if (isBracketed && end == std::string_view::npos)
        return false;
    const std::string_view host = hostOf(place);
    std::string_view rest
        = end == std::string_view::npos ? "" : place.substr(end + (isBracketed ? 1 : 0));
    if (!rest.empty() && (rest.front() != ':' || !readInteger(rest.substr(1), 1, 65535)))
        return false;
    return isBracketed ? isSix(host) : HostNames::isName(host);
}

} // namespace zvx
