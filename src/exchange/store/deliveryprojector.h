#pragma once

#include "exchange/core/event.h"
#include "exchange/store/deliveries.h"

#include <cstdint>
#include <optional>
#include <set>
#include <unordered_map>
#include <vector>

namespace zvx {

/// The deliveries that a store holds already.
class StoredDeliveries
{
public:
    virtual ~StoredDeliveries() = default;

    /// Place of an account's newest delivery, 0 where it has none.
    virtual std::int64_t lastDeliveryPlace(AccountId account) = 0;
    virtual std::optional<DeliveryRow> delivery(DeliveryNumber number) = 0;
};

/// The part of the projection that tells of goods on their way to their owners.
class DeliveryProjector
{
public:
    /// Goes on behind what `stored` holds, which may be null for nothing and has to outlive this.
    DeliveryProjector(TradingDay day, StoredDeliveries *stored);

    /// Throws Damaged for news of a delivery that nobody asked for.
    void take(const Event &event);
    /// The deliveries that the events since the last call changed, by rising number.
    std::vector<DeliveryRow> finish();

private:
    std::int64_t &lastPlace(AccountId account);
    DeliveryRow &delivery(DeliveryNumber number);

    StoredDeliveries *m_stored;
    TradingDay m_day;
    std::unordered_map<std::int64_t, std::int64_t> m_places; ///< the last, by account
    /// Those under way, and those that ended since the last finish().
    std::unordered_map<std::int64_t, DeliveryRow> m_rows;
    std::set<std::int64_t> m_touched; ///< numbers, since the last finish()
};

} // namespace zvx
