#include "exchange/accounts/account_rules.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>

namespace zvx {
namespace {

constexpr std::size_t kPhoneDigits = 11;
constexpr std::size_t kPasswordLeast = 6;
constexpr std::size_t kPasswordMost = 20;
constexpr std::size_t kAddressMost = 64;
constexpr std::int64_t kEastOfUtc = 8 * 60 * AccountLimits::kMinute;

/// The characters beyond ASCII that count as blanks, as their bytes.
constexpr std::array<std::string_view, 19> kWideBlanks = {
    "\u0085", "\u00a0", "\u1680", "\u2000", "\u2001", "\u2002", "\u2003",
    "\u2004", "\u2005", "\u2006", "\u2007", "\u2008", "\u2009", "\u200a",
    "\u2028", "\u2029", "\u202f", "\u205f", "\u3000",
};

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

bool areDigits(std::string_view text)
{
    return std::all_of(text.begin(), text.end(), isDigit);
}

} // namespace

bool isPhone(std::string_view text)
{
    return text.size() == kPhoneDigits && text[0] == '1'
        && std::string_view("3|4578").find(text[1]) != std::string_view::npos
        && areDigits(text.substr(2));
}

bool isPassword(std::string_view text)
{
    const auto begins = [](char c) { return (static_cast<unsigned char>(c) & 0xc0) != 0x80; };
    const auto characters
        = static_cast<std::size_t>(std::count_if(text.begin(), text.end(), begins));
    if (characters < kPasswordLeast || characters > kPasswordMost)
        return false;
    const auto within = [&](std::string_view blank) { return text.find(blank) != text.npos; };
    return std::none_of(text.begin(), text.end(),
                        [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); })
        && std::none_of(kWideBlanks.begin(), kWideBlanks.end(), within);
}

std::size_t codeDigits(CodePurpose purpose)
{
    return purpose == CodePurpose::Money || purpose == CodePurpose::Link ? 6 : 4;
}

bool isCode(CodePurpose purpose, std::string_view text)
{
    return text.size() == codeDigits(purpose) && areDigits(text);
}

bool isMarketPrefix(std::string_view text)
{
    return text.size() >= 5 && text.size() <= 64 && text.front() == '/' && text.back() == '/'
        && std::count(text.begin(), text.end(), '/') == 3
        && text.find("//") == std::string_view::npos;
}

std::string peerGroup(std::string_view peer)
{
    if (peer.empty() || peer.size() > kAddressMost)
        return {};
    const std::string text(peer.substr(0, peer.find('%')));
    in6_addr address{};
    if (::inet_pton(AF_INET6, text.c_str(), &address) != 1)
        return std::string(peer);
    char group[INET6_ADDRSTRLEN];
    if (IN6_IS_ADDR_V4MAPPED(&address))
        return ::inet_ntop(AF_INET, &address.s6_addr[12], group, sizeof group);
    std::memset(&address.s6_addr[8], 0, 8);
    return std::string(::inet_ntop(AF_INET6, &address, group, sizeof group)) + "/64";
}

std::string maskedPhone(std::string_view phone)
{
    return std::string(phone.substr(0, 3)) + "****" + std::string(phone.substr(phone.size() - 4));
}

std::string accountNumber(std::string_view platform, AccountId id)
{
    std::string number;
    for (const char c : platform)
        number.push_back(static_cast<char>(std::toupper(static_cast<unsigned char>(c))));
    char digits[24];
    std::snprintf(digits, sizeof digits, "%08lld", static_cast<long long>(id.value()));
    return number + digits;
}

std::string yuanText(Fen amount)
{
    std::string text = std::to_string(amount.value() / 100);
    for (std::size_t left = text.size(); left > 3;) {
        left -= 3;
        text.insert(left, 1, ',');
    }
    const std::int64_t rest = amount.value() % 100;
    return text + '.' + static_cast<char>('0' + rest / 10) + static_cast<char>('0' + rest % 10);
}

std::int64_t exchangeDay(TimeMs time)
{
    return (time.value() + kEastOfUtc) / AccountLimits::kDay;
}

} // namespace zvx
