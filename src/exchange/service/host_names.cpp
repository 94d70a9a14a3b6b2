#include "exchange/service/host_names.h"

#include <algorithm>

#include <arpa/inet.h>

namespace zvx {

namespace {

constexpr std::size_t longestName = 253;
constexpr std::size_t longestPart = 63;

std::string lowered(std::string_view text)
{
    std::string out(text);
    for (char &c : out)
        c = c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    return out;
}

bool isNumeric(int family, const std::string &text)
{
    unsigned char address[sizeof(in6_addr)];
    return ::inet_pton(family, text.c_str(), address) == 1;
}

bool isPort(std::string_view text)
{
    // Leading zeros are allowed in a port, unlike in a parameter.
    return !text.empty() && text.size() <= 5
        && std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

} // namespace

HostNames::HostNames(std::vector<std::string> more) : m_names(std::move(more))
{
    for (std::string &name : m_names)
        name = lowered(name);
    m_names.emplace_back("localhost");
}

bool HostNames::accept(std::string_view host) const
{
    const bool isBracketed = !host.empty() && host.front() == '[';
    const std::size_t end = isBracketed ? host.find(']') : host.find(':');
    if (isBracketed && end == std::string_view::npos)
        return false;
    const std::string_view port = end == std::string_view::npos
        ? std::string_view()
        : host.substr(end + (isBracketed ? 1 : 0));
    if (!port.empty() && (port.front() != ':' || !isPort(port.substr(1))))
        return false;
    if (isBracketed)
        return isNumeric(AF_INET6, std::string(host.substr(1, end - 1)));
    const std::string name = lowered(host.substr(0, end));
    return isNumeric(AF_INET, name)
        || std::find(m_names.begin(), m_names.end(), name) != m_names.end();
}

bool HostNames::isName(std::string_view text)
{
    if (text.empty() || text.size() > longestName)
        return false;
    std::size_t part = 0;
    for (const char c : text) {
        const bool isHyphen = c == '-' || c == '_';
        const bool isLetter = (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
        if (c == '.' && part > 0)
            part = 0;
        else if ((isLetter || isHyphen || (c >= '0' && c <= '9')) && ++part <= longestPart)
            continue;
        else
            return false;
    }
    return part > 0;
}

bool isLoopback(const std::string &address)
{
    in_addr four{};
    if (::inet_pton(AF_INET, address.c_str(), &four) == 1)
        return ntohl(four.s_addr) >> 24 == IN_LOOPBACKNET;
    in6_addr six{};
    if (::inet_pton(AF_INET6, address.c_str(), &six) != 1)
        return false;
    return IN6_IS_ADDR_LOOPBACK(&six)
        || (IN6_IS_ADDR_V4MAPPED(&six) && six.s6_addr[12] == IN_LOOPBACKNET);
}

} // namespace zvx
