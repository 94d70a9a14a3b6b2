#include "exchange/store/deliveryprojector.h"

#include "exchange/core/market.h"

#include <string>

namespace zvx {

DeliveryProjector::DeliveryProjector(TradingDay day, StoredDeliveries *stored)
    : m_stored(stored), m_day(day)
{
}

void DeliveryProjector::take(const Event &event)
{
    if (const auto *asked = std::get_if<DeliveryRequested>(&event)) {
        DeliveryRow row;
        row.number = asked->delivery;
        row.account = asked->account;
        row.collection = asked->collection;
        row.quantity = asked->quantity;
        row.place = ++lastPlace(asked->account);
        row.day = m_day;
        row.askedAt = row.movedAt = asked->at;
        row.parcel = asked->parcel;
        row.key = asked->key;
        m_rows[row.number.value()] = row;
        m_touched.insert(row.number.value());
    } else if (const auto *moved = std::get_if<DeliveryMoved>(&event)) {
        DeliveryRow &row = delivery(moved->delivery);
        row.stage = moved->stage;
        row.movedAt = moved->at;
    } else if (const auto *day = std::get_if<DaySettled>(&event)) {
        m_day = day->day;
    }
}

std::vector<DeliveryRow> DeliveryProjector::finish()
{
    std::vector<DeliveryRow> rows;
    for (const std::int64_t number : m_touched) {
        const auto found = m_rows.find(number);
        rows.push_back(found->second);
        if (found->second.stage > DeliveryStage::Preparing)
            m_rows.erase(found);
    }
    m_touched.clear();
    return rows;
}

std::int64_t &DeliveryProjector::lastPlace(AccountId account)
{
    const auto found = m_places.find(account.value());
    if (found != m_places.end())
        return found->second;
    const std::int64_t last = m_stored ? m_stored->lastDeliveryPlace(account) : 0;
    return m_places.emplace(account.value(), last).first->second;
}

DeliveryRow &DeliveryProjector::delivery(DeliveryNumber number)
{
    m_touched.insert(number.value());
    const auto found = m_rows.find(number.value());
    if (found != m_rows.end())
        return found->second;
    const std::optional<DeliveryRow> stored = m_stored ? m_stored->delivery(number) : std::nullopt;
    if (!stored)
        throw Damaged("delivery " + std::to_string(number.value()) + " has events and no row");
    return m_rows.emplace(number.value(), *stored).first->second;
}

} // namespace zvx
