#include "exchange/service/cap_figures.h"

#include "exchange/service/json_text.h"
#include "exchange/store/marketreader.h"
#include "exchange/store/snapshot.h"

#include <algorithm>

namespace zvx {

namespace {

Fen capped(Wide sum)
{
    return Fen(static_cast<std::int64_t>(std::clamp<Wide>(sum, -kAmountBound, kAmountBound)));
}

} // namespace

CapFigures capFigures(const AccountState &account, const MarketSnapshot &market)
{
    CapFigures figures;
    Wide value = 0;
    Wide paid = 0;
    for (const HoldingView &held : account.holdings) {
        CapHolding holding;
        holding.collection = held.collection;
        holding.quantity = held.quantity;
        holding.sellable = held.quantity - held.frozen;
        holding.cost = held.cost;
        if (const std::optional<Row> row = market.rowOf(held.collection)) {
            const CollectionSnapshot &collection = *market.collections[*row];
            const TradeLevels &trade = *collection.trade.data;
            holding.code = collection.info->code;
            holding.name = collection.info->name;
            holding.latest = trade.latest.value_or(trade.previousClose);
        }
        value += holding.latest ? Wide(holding.latest->value()) * held.quantity.value()
                                : Wide(held.cost.value());
        paid += held.cost.value();
        figures.holdings.push_back(std::move(holding));
    }
    figures.heldMarketValue = capped(value);
    figures.profit = capped(value - paid);
    figures.available = account.cash.available;
    figures.frozen = account.cash.frozenCash;
    figures.total
        = capped(value + account.cash.available.value() + account.cash.frozenCash.value());
    return figures;
}

void writeHoldings(JsonText &json, const std::vector<CapHolding> &holdings)
{
    json.open('[');
    for (const CapHolding &holding : holdings) {
        json.open('{').key("collection").text(std::to_string(holding.collection.value()));
        json.key("code").text(holding.code).key("name").text(holding.name);
        json.key("quantity").number(holding.quantity.value());
        json.key("sellable").number(holding.sellable.value());
        json.key("cost").number(holding.cost.value());
        json.key("latest");
        if (holding.latest)
            json.number(holding.latest->value());
        else
            json.null();
        json.close('}');
    }
    json.close(']');
}

void writeCap(JsonText &json, const CapFigures &figures)
{
    json.open('{').key("heldMarketValue").number(figures.heldMarketValue.value());
    json.key("profit").number(figures.profit.value());
    json.key("available").number(figures.available.value());
    json.key("frozen").number(figures.frozen.value());
    json.key("total").number(figures.total.value());
    json.key("items");
    writeHoldings(json, figures.holdings);
    json.close('}');
}

} // namespace zvx
