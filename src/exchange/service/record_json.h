#pragma once

#include "exchange/store/tables.h"

#include <string>
#include <vector>

namespace zvx {

class JsonText;
struct MarketSnapshot;

// What the paths of an account's records tell, in the words of the protocol. Names are those of the
// market's list; a collection that is not on it has none.

/// `collection`, `code` and `name`.
void writeCollection(JsonText &json, CollectionId collection, const MarketSnapshot &market);
/// `{"orders": […]}`
std::string ordersJson(const std::vector<OrderRow> &orders, const MarketSnapshot &market);
/// `{"deals": […]}`
std::string accountDealsJson(const std::vector<AccountDeal> &deals, const MarketSnapshot &market);
/// `{"items": […]}`
std::string gathersJson(const std::vector<GatherRow> &gathers, const MarketSnapshot &market);

} // namespace zvx
