#include "faultyproxy/truth.h"

#include "exchange/store/marketreader.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "faultyproxy/names.h"

#include <map>

namespace faultyproxy {

using namespace zvx;

namespace {

std::string describe(const Intent &intent)
{
    const std::string what = intent.isOrder()
        ? (intent.isBuy() ? "the buy at " : "the sale at ") + std::to_string(intent.fen) + " fen"
        : "the withdrawal of order " + std::to_string(intent.order);
    return what
        + (intent.end == Intent::Succeeded ? " (told done)"
                                           : " (told \"" + intent.message.toStdString() + "\")");
}

campaign::Failure judgeEnds(const KitTrader &trader, campaign::Counts &counts)
{
    for (const Intent &intent : trader.intents()) {
        if (intent.end == Intent::Succeeded)
            ++counts[kDone];
        else if (intent.message.contains(QStringLiteral("未知")))
            return describe(intent) + " has no known end";
        else
            ++counts[intent.message.contains(QStringLiteral("未送达")) ? kNotArrived : kRefused];
    }
    return std::nullopt;
}

} // namespace

campaign::Failure compareWithStore(const std::filesystem::path &file, const KitTrader &trader,
                                   campaign::Counts &counts)
{
    SqliteStore store(file);
    const Recovered recovered = recoverMarket(store); // which audits it
    std::vector<OrderNumber> numbers;
    for (std::int64_t number = 1; number <= recovered.market.lastOrder().value(); ++number)
        numbers.emplace_back(number);
    std::multimap<std::int64_t, OrderRow> byPrice;
    std::map<std::int64_t, int> withdrawn;
    std::size_t left = 0;
    for (const OrderRow &row : MarketReader(file).orders(numbers)) {
        byPrice.emplace(row.price.value(), row);
        if (row.state == OrderState::Revoked)
            withdrawn[row.order.value()] = 1;
        ++left;
    }
    for (const Intent &intent : trader.intents()) {
        const bool isDone = intent.end == Intent::Succeeded;
        if (!intent.isOrder()) {
            if (isDone && --withdrawn[intent.order] < 0)
                return describe(intent) + " has not happened";
            continue;
        }
        const std::size_t effects = byPrice.count(intent.fen);
        if (effects != (isDone ? 1 : 0))
            return describe(intent) + " stands in the book " + std::to_string(effects) + " times";
        left -= effects;
    }
    if (left > 0)
        return std::to_string(left) + " orders were never asked for";
    for (const auto &[order, times] : withdrawn)
        if (times > 0)
            return "order " + std::to_string(order) + " is withdrawn, and nobody was told so";
    return judgeEnds(trader, counts);
}

} // namespace faultyproxy
