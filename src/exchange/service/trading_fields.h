#pragma once

#include "exchange/core/command.h"
#include "exchange/service/http_message.h"

#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace zvx {

/// The name of the field that is missing, malformed or out of bounds.
using WrongField = std::string;

/// Reads an order from the fields of trade/buy.html or trade/sell.html, without account and key.
std::variant<PlaceOrder, WrongField> readOrderForm(const HttpParameters &fields, Side side);

/// One withdrawal names no more orders than this.
constexpr std::size_t mostRevokes = 200;

/// Reads different order numbers that are separated by commas; none for text that is anything else.
std::vector<OrderNumber> readOrderNumbers(std::string_view text);

} // namespace zvx
