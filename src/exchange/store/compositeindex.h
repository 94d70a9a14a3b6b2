#pragma once

#include "exchange/store/tables.h"

#include <optional>
#include <unordered_map>

namespace zvx {

class Market;

/**
 * The index of a market: the value of all issued pieces at their last prices, against the same at
 * the previous closes, times the index at the session's start. It starts at 1000.00 points.
 *
 * It follows the events one by one, so its highest and lowest values are exact, whatever the pace
 * of publications.
 */
class CompositeIndex
{
public:
    static constexpr Fen kFirst{100'000};

    CompositeIndex() = default;
    /// Goes on from a market in the middle of a session. `row` is the session's row, or nothing
    /// where nothing was traded in the first session yet.
    CompositeIndex(const Market &market, const std::optional<CompositeRow> &row);

    /// Takes an event in. Returns whether row() changed.
    bool take(const Event &event);

    /// The running session so far.
    const CompositeRow &row() const { return m_row; }

private:
    struct Part {
        Quantity issued;
        Fen previousClose;
        Fen latest;
    };
    void add(CollectionId collection, const Part &part);
    void remove(const Part &part);

    std::unordered_map<std::int64_t, Part> m_parts;
    // Sums of price times pieces leave 64 bits: 131,072 yuan, 1e12 pieces, 100,000 collections.
    Wide m_base = 0;
    Wide m_value = 0;
    CompositeRow m_row;
};

} // namespace zvx
