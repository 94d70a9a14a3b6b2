#include "exchange/store/recovery.h"

#include "exchange/core/eventcodec.h"
#include "exchange/store/projector.h"
#include "exchange/store/store.h"

#include <string_view>

namespace zvx {
namespace {

/// Commands whose rows are collected before they are put.
constexpr std::int64_t kRebuildStep = 1'000;

Market emptyMarket(const Limits &limits)
{
    return Market(TradingDay(20'200'101), limits);
}

template <typename Visit>
void visitEvents(const StoredCommand &command, const Visit &visit)
{
    std::string_view bytes = command.events;
    Event event;
    while (!bytes.empty()) {
        if (!decode(bytes, event))
            throw Damaged("command " + std::to_string(command.number)
                          + " holds bytes that are no event");
        visit(event);
    }
}

void replay(Store &store, Market &market, std::int64_t first, std::int64_t last)
{
    if (first > last)
        return;
    store.readCommands(first, last, [&market](const StoredCommand &command) {
        visitEvents(command, [&market](const Event &event) { market.replay(event); });
    });
}

} // namespace

Recovered recoverMarket(Store &store, const Limits &limits)
{
    Recovered found{emptyMarket(limits), store.lastCommand(), 0, {}};
    for (const std::int64_t number : store.checkpoints()) {
        // Both are written in one commit, so commands that ended earlier were lost since.
        if (number > found.lastCommand)
            throw Damaged("checkpoint " + std::to_string(number) + " is of a later command than "
                          + std::to_string(found.lastCommand) + ", the last one that is stored");
        const StoredCheckpoint checkpoint = store.checkpoint(number);
        try {
            Market market = Market::restore(checkpoint.state, limits);
            if (market.stateHash() != checkpoint.hash)
                throw Damaged("it is not the state that it was made from");
            found.market = std::move(market);
            found.checkpoint = number;
            break;
        } catch (const Damaged &error) {
            found.notices.push_back("checkpoint " + std::to_string(number)
                                    + " is of no use: " + error.what());
        }
    }
    replay(store, found.market, found.checkpoint + 1, found.lastCommand);
    if (const std::optional<std::string> violation = found.market.audit())
        throw Damaged("the recovered market is not sound: " + *violation);
    if (found.lastCommand > 0 && store.tablesAreEmpty())
        rebuildTables(store, limits);
    if (store.lastDeal() != found.market.lastDeal()
        || store.lastOrder() != found.market.lastOrder())
        throw Damaged("the tables do not end where the events end");
    return found;
}

Market replayMarket(Store &store, const Limits &limits)
{
    Market market = emptyMarket(limits);
    replay(store, market, 1, store.lastCommand());
    return market;
}

void rebuildTables(Store &store, const Limits &limits)
{
    const std::int64_t last = store.lastCommand();
    store.rebuildTables([&](const Store::TablePutter &put) {
        Market market = emptyMarket(limits);
        Projector projector(market, std::nullopt, nullptr);
        if (last == 0)
            return;
        store.readCommands(1, last, [&](const StoredCommand &command) {
            visitEvents(command, [&](const Event &event) {
                market.replay(event);
                projector.take(event);
            });
            if (command.number % kRebuildStep == 0 || command.number == last)
                put(projector.finish(market));
        });
    });
}

} // namespace zvx
