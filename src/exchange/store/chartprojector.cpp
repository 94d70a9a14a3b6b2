#include "exchange/store/chartprojector.h"

#include "exchange/core/market.h"
#include "exchange/store/minutes.h"

#include <algorithm>
#include <string>

namespace zvx {

ChartProjector::ChartProjector(const Market &market)
    : m_session(market.session()), m_open(market.isOpen())
{
    for (const CollectionId id : market.collections())
        m_counts[id.value()] = market.collection(id)->day.deals;
}

void ChartProjector::take(const Event &event)
{
    if (const auto *listed = std::get_if<CollectionListed>(&event)) {
        m_issues.push_back(
            {listed->collection, listed->previousClose, listed->issued, listed->limit});
        m_touched.insert(listed->collection.value());
    } else if (const auto *settled = std::get_if<CollectionSettled>(&event)) {
        m_touched.insert(settled->collection.value());
    } else if (const auto *day = std::get_if<DaySettled>(&event)) {
        m_session = day->session;
        m_counts.clear();
        if (m_open)
            m_phases.push_back({m_session, day->at, true});
    } else if (const auto *phase = std::get_if<PhaseSet>(&event)) {
        m_open = phase->open;
        m_phases.push_back({m_session, phase->at, phase->open});
    }
}

DealRow ChartProjector::add(const Deal &deal)
{
    const std::int64_t id = deal.collection.value();
    const TimeMs begin = minuteOf(deal.at);
    MinuteRow &minute = m_minutes[{id, m_session.value(), begin.value()}];
    minute.collection = deal.collection;
    minute.session = m_session;
    minute.begin = begin;
    minute.last = deal.price;
    const Fen amount = deal.price * deal.quantity;
    minute.volume = Quantity(std::min(minute.volume.value() + deal.quantity.value(), kAmountBound));
    minute.amount = Fen(std::min(minute.amount.value() + amount.value(), kAmountBound));
    m_touched.insert(id);
    return {deal, m_session, Sequence(++m_counts[id]), {}, {}};
}

void ChartProjector::finish(const Market &market, TableUpdate &update)
{
    update.issues.swap(m_issues);
    update.phases.swap(m_phases);
    for (const auto &[place, minute] : m_minutes)
        update.minutes.push_back(minute);
    for (const std::int64_t id : m_touched) {
        const std::optional<CollectionView> view = market.collection(CollectionId(id));
        if (!view)
            throw Damaged("collection " + std::to_string(id)
                          + " has events and is not in the market");
        const DayFigures &day = view->day;
        update.running.push_back({view->collection, market.session(), market.day(),
                                  day.previousClose, day.open, day.high, day.low, day.last,
                                  day.volume, day.amount, day.deals});
    }
    m_minutes.clear();
    m_touched.clear();
}

} // namespace zvx
