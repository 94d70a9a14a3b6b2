#pragma once

#include "exchange/service/json_text.h"
#include "exchange/store/snapshot.h"

#include <string_view>

namespace zvx {

/// Each writes the `data` of one topic, as docs/protocol.md describes it, as one JSON value.
void writeCheck(JsonText &json, const CheckSnapshot &check);
void writeComposite(JsonText &json, const CompositeSnapshot &composite);
void writeBrief(JsonText &json, const MarketSnapshot::Infos &infos);
void writeTypes(JsonText &json, const std::vector<TypeSnapshot> &types);
void writeList(JsonText &json, const MarketSnapshot &market);
/// The value of `changes`: the rows that differ, with their new figures.
void writeListChanges(JsonText &json, const ListSnapshot &list,
                      const std::vector<ListDelta::Change> &changes);
void writeItem(JsonText &json, const CollectionInfo &info, const ItemFigures &item);
void writeTrade(JsonText &json, const CollectionInfo &info, const TradeLevels &trade);
void writeDeal(JsonText &json, const DealSnapshot &deal);
/// The last `limit` of the deals.
void writeLatest(JsonText &json, const CollectionInfo &info, const LatestDeals &deals,
                 std::size_t limit);

/// The row that stands for the whole market: an id that no collection has, and a code that sorts
/// behind the codes of collections.
constexpr std::string_view compositeId = "-1";
constexpr std::string_view compositeCode = "999999";
constexpr std::string_view compositeName = "综合指数";

} // namespace zvx
