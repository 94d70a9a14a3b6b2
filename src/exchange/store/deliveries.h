#pragma once

#include "exchange/core/command.h"

#include <cstdint>

namespace zvx {

/// Goods that somebody asked for, as they stand.
struct DeliveryRow {
    DeliveryNumber number;
    AccountId account;
    CollectionId collection;
    Quantity quantity;
    DeliveryStage stage = DeliveryStage::Requested;
    std::int64_t place = 0; ///< among the account's deliveries, from 1
    TradingDay day; ///< on which it was asked for
    TimeMs askedAt;
    TimeMs movedAt; ///< of its last step
    ParcelId parcel;
    ActionKey key; ///< of the action that asked for it; null where there was none
};

} // namespace zvx
