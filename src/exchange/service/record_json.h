#pragma once

#include "exchange/store/tables.h"

#include <string>
#include <vector>

namespace zvx {

struct MarketSnapshot;

// What the paths of an account's records tell, in the words of the protocol. Names are those of the
// market's list; a collection that is not on it has none.

/// `{"orders": […]}`
std::string ordersJson(const std::vector<OrderRow> &orders, const MarketSnapshot &market);
/// `{"deals": […]}`
std::string accountDealsJson(const std::vector<AccountDeal> &deals, const MarketSnapshot &market);
/// `{"items": […]}`
std::string gathersJson(const std::vector<GatherRow> &gathers, const MarketSnapshot &market);

} // namespace zvx
