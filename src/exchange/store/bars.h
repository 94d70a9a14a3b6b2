#pragma once

#include "exchange/core/types.h"

#include <cstddef>
#include <optional>
#include <vector>

namespace zvx {

/// What was dealt in a session, a trading day, a week or a month.
struct Bar {
    TradingDay day; ///< of a week or month the last of its days that has a bar
    Fen open;
    Fen high;
    Fen low;
    Fen close;
    Quantity volume; ///< sums stop at kAmountBound
    Fen amount;
};

enum class BarSpan : std::uint8_t {
    Day,
    Week, ///< from Monday on
    Month,
};

/// Joins the bars of each span. `bars` stand by rising day; several may be of one day, such as the
/// sessions of an embedded market.
std::vector<Bar> folded(const std::vector<Bar> &bars, BarSpan span);

/// Leaves the newest `count` of the bars whose day is before `before`.
void keepNewest(std::vector<Bar> &bars, const std::optional<TradingDay> &before, std::size_t count);

} // namespace zvx
