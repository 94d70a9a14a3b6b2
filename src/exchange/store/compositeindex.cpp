#include "exchange/store/compositeindex.h"

#include <algorithm>

namespace zvx {

CompositeIndex::CompositeIndex(const Market &market, const std::optional<CompositeRow> &row)
{
    for (const CollectionId id : market.collections()) {
        const CollectionView view = *market.collection(id);
        const Fen latest = view.day.last.value() > 0 ? view.day.last : view.day.previousClose;
        add(id, {view.issued, view.day.previousClose, latest});
    }
    if (row) {
        m_row = *row;
        return;
    }
    m_row.session = market.session();
    m_row.day = market.day();
    m_row.previousClose = kFirst;
}

bool CompositeIndex::take(const Event &event)
{
    if (const auto *listed = std::get_if<CollectionListed>(&event)) {
        add(listed->collection, {listed->issued, listed->previousClose, listed->previousClose});
    } else if (const auto *deal = std::get_if<Deal>(&event)) {
        Part &part = m_parts.at(deal->collection.value());
        m_value += Wide(deal->price.value() - part.latest.value()) * part.issued.value();
        part.latest = deal->price;
        const Wide index = m_base > 0 ? m_row.previousClose.value() * m_value / m_base : 0;
        m_row.last = Fen(static_cast<std::int64_t>(std::clamp<Wide>(index, 1, kAmountBound)));
        if (m_row.open.value() == 0)
            m_row.open = m_row.high = m_row.low = m_row.last;
        m_row.high = std::max(m_row.high, m_row.last);
        m_row.low = std::min(m_row.low, m_row.last);
        return true;
    } else if (const auto *settled = std::get_if<CollectionSettled>(&event)) {
        Part &part = m_parts.at(settled->collection.value());
        remove(part);
        add(settled->collection, {part.issued, settled->previousClose, settled->previousClose});
    } else if (const auto *day = std::get_if<DaySettled>(&event)) {
        CompositeRow next;
        next.session = day->session;
        next.day = day->day;
        next.previousClose = m_row.last.value() > 0 ? m_row.last : m_row.previousClose;
        m_row = next;
        return true;
    }
    return false;
}

void CompositeIndex::add(CollectionId collection, const Part &part)
{
    m_parts[collection.value()] = part;
    m_base += Wide(part.previousClose.value()) * part.issued.value();
    m_value += Wide(part.latest.value()) * part.issued.value();
}

void CompositeIndex::remove(const Part &part)
{
    m_base -= Wide(part.previousClose.value()) * part.issued.value();
    m_value -= Wide(part.latest.value()) * part.issued.value();
}

} // namespace zvx
