#include "longpast.h"

#include "serving/benchcatalogue.h"

#include "exchange/store/calendar.h"
#include "exchange/store/exchange.h"

#include <algorithm>
#include <stdexcept>

using namespace zvx;

namespace {

constexpr std::int64_t kBatch = 500; // orders that wait for their answers together

} // namespace

LongPast::LongPast(const Options &options)
    : m_folder(options.folder), m_state(m_folder.path() / "state", 20, 2, 20)
{
    trade(options.records);
}

// The two accounts hand one piece to and fro, so that neither runs out of anything: each order of
// the second one meets the order of the first that rests.
void LongPast::trade(std::int64_t records)
{
    ExchangeOptions options;
    options.folder = m_state.folder();
    Exchange exchange(std::move(options));
    MarketWriter &writer = exchange.market(benchcatalogue::prefix)->writer();
    const auto sideOf = [](std::int64_t i) { return i % 3 == 0 ? Side::Sell : Side::Buy; };
    TradingDay day(20'200'101);
    std::int64_t number = 0;
    for (std::int64_t i = 0; i < records;) {
        std::vector<Command> commands;
        for (std::int64_t end = std::min(i + kBatch, records); i < end; ++i) {
            const auto collection = static_cast<std::size_t>(i % 20);
            PlaceOrder order;
            order.collection
                = CollectionId(benchcatalogue::firstCollection + static_cast<int>(collection));
            order.price = Fen(benchcatalogue::previousClose(collection));
            order.quantity = Quantity(1);
            order.account = AccountId(m_state.traders()[0].account);
            order.side = sideOf(i);
            commands.push_back(order);
            order.account = AccountId(m_state.traders()[1].account);
            order.side = opposite(order.side);
            commands.push_back(order);
            m_entries.push_back({++number, i + 1, sideOf(i) == Side::Buy, day.value()});
            ++number;
        }
        if (i % ordersOfDay == 0 && i < records) {
            day = dayOfNumber(dayNumber(day) + 1);
            commands.push_back(SettleDay{day});
        }
        for (const Result &result : writer.execute(commands)) {
            if (result.status != Status::Accepted)
                throw std::runtime_error(std::string("an order was refused: ")
                                         + zvx::name(result.status));
        }
    }
    exchange.stop();
}
