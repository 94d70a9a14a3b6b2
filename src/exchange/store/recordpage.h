#pragma once

#include "exchange/core/types.h"

#include <algorithm>
#include <cstdint>

namespace zvx {

/// Some of an account's records, the newest first: orders, deals, or flows of money.
struct RecordPage {
    enum Kind : std::uint8_t {
        Outgoing = 0, ///< sells, or money out
        Incoming = 1, ///< buys, or money in
        All = 2,
    };
    Kind kind = All;
    TradingDay first{TradingDay::least}; ///< both included
    TradingDay last{TradingDay::most};
    std::int64_t page = 1; ///< from 1
    std::int64_t size = 10; ///< positive
};

/// Places of a list whose oldest record stands at 1.
struct PlaceSpan {
    std::int64_t bottom = 1;
    std::int64_t top = 0;

    bool isEmpty() const { return top < bottom; }

    /// The part of it that a page shows.
    PlaceSpan cut(const RecordPage &page) const
    {
        // Compared before they are multiplied, which might not fit.
        if (isEmpty() || page.page - 1 > (top - bottom) / page.size)
            return {};
        const std::int64_t newest = top - (page.page - 1) * page.size;
        return {std::max(bottom, newest - page.size + 1), newest};
    }
};

} // namespace zvx
