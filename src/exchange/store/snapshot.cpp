#include "exchange/store/snapshot.h"

#include <algorithm>
#include <cstdio>
#include <map>

namespace zvx {

QuoteFields changedFields(const Quote &before, const Quote &after)
{
    QuoteFields fields;
    const auto compare = [&fields](const auto &a, const auto &b, QuoteField field) {
        if (a != b)
            fields.add(field);
    };
    compare(before.latest, after.latest, QuoteField::Latest);
    compare(before.previousClose, after.previousClose, QuoteField::PreviousClose);
    compare(before.open, after.open, QuoteField::Open);
    compare(before.high, after.high, QuoteField::High);
    compare(before.low, after.low, QuoteField::Low);
    compare(before.bid, after.bid, QuoteField::Bid);
    compare(before.ask, after.ask, QuoteField::Ask);
    compare(before.bidQuantity, after.bidQuantity, QuoteField::BidQuantity);
    compare(before.askQuantity, after.askQuantity, QuoteField::AskQuantity);
    compare(before.volume, after.volume, QuoteField::Volume);
    compare(before.amount, after.amount, QuoteField::Amount);
    return fields;
}

bool Quote::operator==(const Quote &other) const
{
    return changedFields(*this, other).empty();
}

bool ItemFigures::operator==(const ItemFigures &other) const
{
    return quote == other.quote && outer == other.outer && inner == other.inner
        && buyQuantity == other.buyQuantity && sellQuantity == other.sellQuantity;
}

bool PriceLevel::operator==(const PriceLevel &other) const
{
    return price == other.price && quantity == other.quantity;
}

bool TradeLevels::operator==(const TradeLevels &other) const
{
    return latest == other.latest && previousClose == other.previousClose
        && lowerLimit == other.lowerLimit && upperLimit == other.upperLimit && sells == other.sells
        && buys == other.buys;
}

bool CheckSnapshot::operator==(const CheckSnapshot &other) const
{
    return open == other.open && day == other.day && session == other.session;
}

bool CompositeSnapshot::operator==(const CompositeSnapshot &other) const
{
    return quote == other.quote && listed == other.listed;
}

DealSnapshot dealSnapshot(const Deal &deal)
{
    return {deal.sequence, deal.at, deal.price, deal.quantity, deal.takerSide};
}

std::string dayText(TradingDay day)
{
    const int value = static_cast<int>(day.value());
    char text[16];
    std::snprintf(text, sizeof text, "%04d-%02d-%02d", value / 10'000 % 10'000, value / 100 % 100,
                  value % 100);
    return text;
}

std::optional<std::vector<ListDelta::Change>> ListSnapshot::changesSince(std::uint64_t base) const
{
    if (base >= version || history.empty() || history.front()->version > base + 1)
        return std::nullopt;
    std::map<Row, QuoteFields> merged;
    for (const auto &delta : history) {
        if (delta->version <= base)
            continue;
        for (const ListDelta::Change &change : delta->changes)
            merged[change.row].add(change.fields);
    }
    std::vector<ListDelta::Change> changes;
    changes.reserve(merged.size());
    for (const auto &[row, fields] : merged)
        changes.push_back({row, fields});
    return changes;
}

std::optional<Row> MarketSnapshot::rowOf(CollectionId id) const
{
    const auto found = std::lower_bound(index->begin(), index->end(), id,
                                        [](const std::pair<CollectionId, Row> &entry,
                                           CollectionId wanted) { return entry.first < wanted; });
    if (found == index->end() || found->first != id)
        return std::nullopt;
    return found->second;
}

} // namespace zvx
