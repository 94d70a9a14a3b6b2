#include "exchange/service/market_json.h"

#include <algorithm>
#include <optional>

namespace zvx {

namespace {

void writeFen(JsonText &json, std::string_view name, const std::optional<Fen> &fen)
{
    json.key(name);
    if (fen)
        json.number(fen->value());
    else
        json.null();
}

std::string idText(const CollectionInfo &info)
{
    return std::to_string(info.id.value());
}

/// The figures that list, changes and composite share, each by its bit.
void writeQuote(JsonText &json, const Quote &quote, QuoteFields fields)
{
    if (fields.has(QuoteField::Latest))
        writeFen(json, "latest", quote.latest);
    if (fields.has(QuoteField::PreviousClose))
        json.key("previousClose").number(quote.previousClose.value());
    if (fields.has(QuoteField::Open))
        writeFen(json, "open", quote.open);
    if (fields.has(QuoteField::High))
        writeFen(json, "high", quote.high);
    if (fields.has(QuoteField::Low))
        writeFen(json, "low", quote.low);
    if (fields.has(QuoteField::Bid))
        writeFen(json, "bid", quote.bid);
    if (fields.has(QuoteField::Ask))
        writeFen(json, "ask", quote.ask);
    if (fields.has(QuoteField::BidQuantity))
        json.key("bidQuantity").number(quote.bidQuantity.value());
    if (fields.has(QuoteField::AskQuantity))
        json.key("askQuantity").number(quote.askQuantity.value());
    if (fields.has(QuoteField::Volume))
        json.key("volume").number(quote.volume.value());
    if (fields.has(QuoteField::Amount))
        json.key("amount").number(quote.amount.value());
}

QuoteFields allFields()
{
    QuoteFields fields;
    for (const QuoteField field :
         {QuoteField::Latest, QuoteField::PreviousClose, QuoteField::Open, QuoteField::High,
          QuoteField::Low, QuoteField::Bid, QuoteField::Ask, QuoteField::BidQuantity,
          QuoteField::AskQuantity, QuoteField::Volume, QuoteField::Amount})
        fields.add(field);
    return fields;
}

void writeLevels(JsonText &json, std::string_view name, const std::vector<PriceLevel> &levels)
{
    json.key(name).open('[');
    for (const PriceLevel &level : levels)
        json.open('[').number(level.price.value()).number(level.quantity.value()).close(']');
    json.close(']');
}

} // namespace

void writeCheck(JsonText &json, const CheckSnapshot &check)
{
    json.open('{').key("open").boolean(check.open);
    json.key("tradingDay").text(dayText(check.day));
    json.key("session").number(check.session.value()).close('}');
}

void writeComposite(JsonText &json, const CompositeSnapshot &composite)
{
    json.open('{').key("id").text(compositeId).key("code").text(compositeCode);
    json.key("name").text(compositeName).key("type").number(0);
    json.key("listed").number(composite.listed.value()).key("introduction").text("");
    writeQuote(json, composite.quote, allFields());
    json.close('}');
}

void writeBrief(JsonText &json, const MarketSnapshot::Infos &infos)
{
    json.open('{').key("collections").open('[');
    for (const auto &info : infos) {
        json.open('{').key("id").text(idText(*info)).key("code").text(info->code);
        json.key("name").text(info->name).key("initials").open('[');
        for (const std::string &initials : info->initials)
            json.text(initials);
        json.close(']').close('}');
    }
    json.close(']').close('}');
}

void writeTypes(JsonText &json, const std::vector<TypeSnapshot> &types)
{
    json.open('{').key("types").open('[');
    for (const TypeSnapshot &type : types)
        json.open('{').key("id").number(type.id).key("name").text(type.name).close('}');
    json.close(']').close('}');
}

void writeList(JsonText &json, const MarketSnapshot &market)
{
    const QuoteFields fields = allFields();
    json.open('{').key("rows").open('[');
    for (std::size_t row = 0; row < market.list->rows.size(); ++row) {
        const CollectionInfo &info = *(*market.infos.data)[row];
        json.open('{').key("id").text(idText(info)).key("code").text(info.code);
        json.key("name").text(info.name).key("type").number(info.type);
        json.key("listed").number(info.listed.value());
        json.key("introduction").text(info.introduction);
        writeQuote(json, *market.list->rows[row], fields);
        json.close('}');
    }
    json.close(']').close('}');
}

void writeListChanges(JsonText &json, const ListSnapshot &list,
                      const std::vector<ListDelta::Change> &changes)
{
    json.open('[');
    for (const ListDelta::Change &change : changes) {
        json.open('[').number(change.row).open('{');
        writeQuote(json, *list.rows[change.row], change.fields);
        json.close('}').close(']');
    }
    json.close(']');
}

void writeItem(JsonText &json, const CollectionInfo &info, const ItemFigures &item)
{
    const Quote &quote = item.quote;
    json.open('{').key("id").text(idText(info));
    writeFen(json, "latest", quote.latest);
    json.key("previousClose").number(quote.previousClose.value());
    writeFen(json, "open", quote.open);
    writeFen(json, "high", quote.high);
    writeFen(json, "low", quote.low);
    json.key("volume").number(quote.volume.value()).key("amount").number(quote.amount.value());
    json.key("listed").number(info.listed.value());
    json.key("outer").number(item.outer.value()).key("inner").number(item.inner.value());
    json.key("buyQuantity").number(item.buyQuantity.value());
    json.key("sellQuantity").number(item.sellQuantity.value()).close('}');
}

void writeTrade(JsonText &json, const CollectionInfo &info, const TradeLevels &trade)
{
    json.open('{').key("id").text(idText(info)).key("code").text(info.code);
    json.key("name").text(info.name);
    writeFen(json, "latest", trade.latest);
    json.key("previousClose").number(trade.previousClose.value());
    json.key("lowerLimit").number(trade.lowerLimit.value());
    json.key("upperLimit").number(trade.upperLimit.value());
    writeLevels(json, "sells", trade.sells);
    writeLevels(json, "buys", trade.buys);
    json.close('}');
}

void writeDeal(JsonText &json, const DealSnapshot &deal)
{
    json.open('{').key("sequence").number(deal.sequence.value());
    json.key("time").number(deal.time.value()).key("price").number(deal.price.value());
    json.key("quantity").number(deal.quantity.value());
    json.key("side").number(deal.taker == Side::Buy ? 1 : 2).close('}');
}

void writeLatest(JsonText &json, const CollectionInfo &info, const LatestDeals &deals,
                 std::size_t limit)
{
    json.open('{').key("id").text(idText(info)).key("deals").open('[');
    for (std::size_t i = deals.size() - std::min(limit, deals.size()); i < deals.size(); ++i)
        writeDeal(json, deals[i]);
    json.close(']').close('}');
}

} // namespace zvx
