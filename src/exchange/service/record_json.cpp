#include "exchange/service/record_json.h"

#include "exchange/service/json_text.h"
#include "exchange/service/key_text.h"
#include "exchange/store/snapshot.h"

#include <cstdint>

namespace zvx {

namespace {

/// How clients number the sides.
std::int64_t sideNumber(Side side)
{
    return side == Side::Buy ? 1 : 2;
}

/// How clients number what became of an order: 1 open, 2 partly filled, 3 filled, 4 withdrawn,
/// 5 partly withdrawn. Why the rest was withdrawn makes no difference.
std::int64_t stateNumber(const OrderRow &order)
{
    const bool hasDeals = order.filled > Quantity(0);
    switch (order.state) {
    case OrderState::Open:
        return hasDeals ? 2 : 1;
    case OrderState::Filled:
        return 3;
    default:
        return hasDeals ? 5 : 4;
    }
}

/// What a piece cost on average, to the nearest fen, halves up.
std::int64_t averagePrice(Fen amount, Quantity pieces)
{
    return static_cast<std::int64_t>((Wide(amount.value()) * 2 + pieces.value())
                                     / (Wide(pieces.value()) * 2));
}

void writeOrder(JsonText &json, const OrderRow &order, const MarketSnapshot &market)
{
    json.open('{').key("order").number(order.order.value());
    json.key("time").number(order.placedAt.value());
    writeCollection(json, order.collection, market);
    json.key("side").number(sideNumber(order.side)).key("price").number(order.price.value());
    json.key("quantity").number(order.quantity.value());
    json.key("filled").number(order.filled.value()).key("averagePrice");
    if (order.filled > Quantity(0))
        json.number(averagePrice(order.amount, order.filled));
    else
        json.null();
    json.key("amount").number(order.amount.value());
    json.key("fee").number(order.fees.value()).key("frozen").number(order.frozen.value());
    json.key("state").number(stateNumber(order)).key("key");
    if (order.key.isNull())
        json.null();
    else
        json.text(keyText(order.key));
    json.close('}');
}

} // namespace

void writeCollection(JsonText &json, CollectionId collection, const MarketSnapshot &market)
{
    const std::optional<Row> row = market.rowOf(collection);
    const CollectionInfo *info = row ? market.collections[*row]->info.get() : nullptr;
    json.key("collection").text(std::to_string(collection.value()));
    json.key("code").text(info ? info->code : std::string());
    json.key("name").text(info ? info->name : std::string());
}

std::string ordersJson(const std::vector<OrderRow> &orders, const MarketSnapshot &market)
{
    JsonText json;
    json.open('{').key("orders").open('[');
    for (const OrderRow &order : orders)
        writeOrder(json, order, market);
    return json.close(']').close('}').take();
}

std::string accountDealsJson(const std::vector<AccountDeal> &deals, const MarketSnapshot &market)
{
    JsonText json;
    json.open('{').key("deals").open('[');
    for (const AccountDeal &each : deals) {
        const Deal &deal = each.row.deal;
        json.open('{').key("sequence").number(deal.sequence.value());
        json.key("time").number(deal.at.value()).key("side").number(sideNumber(each.side));
        writeCollection(json, deal.collection, market);
        json.key("price").number(deal.price.value()).key("quantity").number(deal.quantity.value());
        json.key("amount").number((deal.price * deal.quantity).value());
        json.key("fee").number(each.fee().value()).close('}');
    }
    return json.close(']').close('}').take();
}

std::string gathersJson(const std::vector<GatherRow> &gathers, const MarketSnapshot &market)
{
    JsonText json;
    json.open('{').key("items").open('[');
    for (const GatherRow &row : gathers) {
        json.open('{');
        writeCollection(json, row.collection, market);
        json.key("buyQuantity").number(row.buyQuantity.value());
        json.key("buyAmount").number(row.buyAmount.value());
        json.key("buyFee").number(row.buyFee.value());
        json.key("sellQuantity").number(row.sellQuantity.value());
        json.key("sellAmount").number(row.sellAmount.value());
        json.key("sellFee").number(row.sellFee.value());
        json.key("sellProfit").number(row.sellProfit.value()).close('}');
    }
    return json.close(']').close('}').take();
}

} // namespace zvx
