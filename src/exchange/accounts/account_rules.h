#pragma once

#include "exchange/accounts/account_desk.h"

#include <cstddef>
#include <string>
#include <string_view>

namespace zvx {

// What a request has to look like. Texts are well-formed UTF-8.

/// ^1[3|4|5|7|8][0-9]\d{8}$ with ASCII digits; the bar in the class is a bar.
bool isPhone(std::string_view text);
/// ^\S{6,20}$, counted in characters, not in bytes.
bool isPassword(std::string_view text);
/// As many decimal digits as a code of this purpose has.
bool isCode(CodePurpose purpose, std::string_view text);
std::size_t codeDigits(CodePurpose purpose);
/// A server's prefix of two folders, such as "/lc/youbika/".
bool isMarketPrefix(std::string_view text);

/// What limits count a peer by: an IPv6 address by its first 64 bits, since every customer has that
/// many addresses; one that holds an IPv4 address by that; any other text by itself. "" for a text
/// that cannot be an address.
std::string peerGroup(std::string_view peer);

/// "138****0000"
std::string maskedPhone(std::string_view phone);
/// "LC00000001"
std::string accountNumber(std::string_view platform, AccountId id);

/// "1,234.50"; of an amount that is not negative.
std::string yuanText(Fen amount);

/// The day that a time belongs to where the exchange stands, UTC+8, counted from 1970.
std::int64_t exchangeDay(TimeMs time);

} // namespace zvx
