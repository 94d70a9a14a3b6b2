#include "rowmaker.h"

#include "exchange/core/eventcodec.h"
#include "exchange/store/recovery.h"

using namespace zvx;

RowMaker::RowMaker() : m_projector(m_market, std::nullopt, nullptr) { }

RowMaker::RowMaker(Store &store)
    : m_market(recoverMarket(store).market),
      m_projector(m_market, store.composite(m_market.session()), &store),
      m_last(store.lastCommand())
{
}

Batch RowMaker::make(const std::vector<Command> &commands, TimeMs now)
{
    Batch batch;
    for (const Command &command : commands) {
        m_happened.clear();
        m_market.apply(command, now, m_happened);
        if (m_happened.empty())
            continue;
        StoredCommand stored;
        stored.number = ++m_last;
        stored.time = now;
        for (const Event &event : m_happened) {
            encode(event, stored.events);
            m_projector.take(event);
            if (const auto *answered = std::get_if<ActionAnswered>(&event))
                stored.key = answered->key;
        }
        batch.commands.push_back(std::move(stored));
    }
    batch.tables = m_projector.finish(m_market);
    return batch;
}
