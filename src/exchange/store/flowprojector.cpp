#include "exchange/store/flowprojector.h"

#include "exchange/core/market.h"

#include <string>

namespace zvx {

FlowProjector::FlowProjector(TradingDay day, StoredFlows *stored)
    : m_stored(stored), m_day(day), m_last(stored ? stored->lastFlow() : 0)
{
}

void FlowProjector::take(const Event &event)
{
    if (const auto *moved = std::get_if<CashMoved>(&event)) {
        const bool incoming = moved->amount > Fen(0);
        const FlowRow row
            = begin(moved->account, incoming, incoming ? moved->amount : -moved->amount, moved->at,
                    moved->available);
        m_touched[row.number] = row;
    } else if (const auto *begun = std::get_if<TransferBegun>(&event)) {
        FlowRow row
            = begin(begun->account, begun->incoming, begun->amount, begun->at, begun->available);
        row.state = FlowState::Pending;
        row.transfer = begun->transfer;
        row.bank = begun->bank;
        row.card = begun->card;
        row.key = begun->key;
        m_touched[row.number] = row;
        m_waiting[row.transfer.value()] = row;
    } else if (const auto *ended = std::get_if<TransferEnded>(&event)) {
        end(*ended);
    } else if (const auto *day = std::get_if<DaySettled>(&event)) {
        m_day = day->day;
    }
}

std::vector<FlowRow> FlowProjector::finish()
{
    std::vector<FlowRow> rows;
    for (const auto &[number, row] : m_touched)
        rows.push_back(row);
    m_touched.clear();
    return rows;
}

FlowRow FlowProjector::begin(AccountId account, bool incoming, Fen amount, TimeMs at, Fen balance)
{
    auto places = m_places.find(account.value());
    if (places == m_places.end())
        places
            = m_places
                  .emplace(account.value(), m_stored ? m_stored->flowPlaces(account) : FlowPlaces())
                  .first;
    FlowRow row;
    row.number = ++m_last;
    row.account = account;
    row.incoming = incoming;
    row.place = ++places->second.all;
    row.placeOfWay = ++(incoming ? places->second.in : places->second.out);
    row.day = m_day;
    row.begunAt = row.endedAt = at;
    row.amount = amount;
    row.balance = balance;
    return row;
}

void FlowProjector::end(const TransferEnded &event)
{
    FlowRow row;
    const auto waiting = m_waiting.find(event.transfer.value());
    if (waiting != m_waiting.end()) {
        row = waiting->second;
        m_waiting.erase(waiting);
    } else {
        const std::optional<FlowRow> stored
            = m_stored ? m_stored->flowOf(event.transfer) : std::nullopt;
        if (!stored)
            throw Damaged("transfer " + std::to_string(event.transfer.value())
                          + " has events and no row");
        row = *stored;
    }
    row.state = event.done ? FlowState::Done : FlowState::Refused;
    row.endedAt = event.at;
    row.balance = event.available;
    m_touched[row.number] = row;
}

} // namespace zvx
