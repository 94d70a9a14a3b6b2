#pragma once

#include "exchange/core/flatmap.h"
#include "exchange/core/market.h"
#include "exchange/core/types.h"

#include <array>
#include <memory>
#include <vector>

namespace zvx::core {

/** An open order. It hangs in two lists at once: the queue of its price and its account's orders.
 */
struct Order {
    std::uint32_t number = 0;
    std::uint32_t account = kNone;
    std::uint32_t book = kNone;
    std::uint32_t holding = kNone; ///< of this account and collection
    std::uint32_t previous = kNone; ///< in the queue of its price
    std::uint32_t next = kNone; ///< there, or the next free place of the pool
    std::uint32_t previousOfAccount = kNone;
    std::uint32_t nextOfAccount = kNone;
    Side side = Side::Buy;
    PartsPerMillion fee;
    Fen price;
    Quantity quantity;
    Quantity remaining;
    Fen amount;
    Fen charged;
    Fen frozenCash;
    Fen feeCap;
    TimeMs at;

    /** What the order will have been charged once it traded for `amountThen`. */
    Fen feeAfter(Fen amountThen) const
    {
        const Fen due = share(amountThen, fee);
        return side == Side::Buy && due > feeCap ? feeCap : due;
    }

    /** What a buy must keep frozen: its rest at its own price with the highest fee still to come.
     */
    Fen needsFrozen() const
    {
        if (side == Side::Sell)
            return Fen(0);
        const Fen rest = price * remaining;
        return rest + feeAfter(amount + rest) - charged;
    }
};

/** All open orders, found by number at once. Places are used again; order numbers index chunks that
 *  are given back when their last order ends, so that the memory goes with the open orders. */
class OrderPool
{
public:
    Order &operator[](std::uint32_t index) { return m_orders[index]; }
    const Order &operator[](std::uint32_t index) const { return m_orders[index]; }

    std::size_t size() const { return m_size; }

    /** A fresh place for an order whose number is higher than all before. */
    std::uint32_t add(std::uint32_t number);
    void remove(std::uint32_t index);
    /** The place of an open order, else kNone. */
    std::uint32_t find(std::uint32_t number) const;

    /** Visits places by rising number; the visitor may remove the order that it was given. */
    template <class Visit>
    void forEach(Visit &&visit) const
    {
        for (std::size_t i = 0; i < m_directory.size(); ++i) {
            for (std::uint32_t j = 0; j < kChunk && m_directory[i] != kNone; ++j) {
                const std::uint32_t index = m_chunks[m_directory[i]]->places[j];
                if (index != kNone)
                    visit(index);
            }
        }
    }

private:
    static constexpr std::uint32_t kChunk = 1024;
    struct Chunk {
        std::array<std::uint32_t, kChunk> places;
        std::uint32_t live = 0;
    };

    void dropChunk(std::size_t position);

    std::vector<Order> m_orders;
    std::uint32_t m_free = kNone;
    std::size_t m_size = 0;
    std::vector<std::uint32_t> m_directory; ///< from number / kChunk to a chunk
    std::vector<std::unique_ptr<Chunk>> m_chunks;
    std::vector<std::uint32_t> m_freeChunks;
};

/** The queue of one price. */
struct PriceLevel {
    std::int32_t key = 0;
    std::uint32_t head = kNone;
    std::uint32_t tail = kNone;
    std::uint32_t orders = 0;
    Quantity quantity;
};

/**
 * One collection: its rules, its figures and its two sides. A side is a flat array of the prices
 * that have orders, sorted so that the best is the last: nearly all trading happens there, where a
 * flat array is quickest, and memory goes with the prices in use, not with the width of the limits.
 */
class Book
{
public:
    CollectionView facts; ///< rules and figures
    bool dirty = false;

    /** Prices as keys that rise towards the better price on both sides. */
    static std::int32_t keyOf(Side side, Fen price)
    {
        const auto plain = static_cast<std::int32_t>(price.value());
        return side == Side::Buy ? plain : -plain;
    }
    static Fen priceOf(Side side, std::int32_t key) { return Fen(side == Side::Buy ? key : -key); }

    /** Whether orders of opposite sides with these keys would trade. */
    static bool cross(std::int32_t a, std::int32_t b) { return a + b >= 0; }

    std::vector<PriceLevel> &side(Side side) { return m_sides[static_cast<std::size_t>(side)]; }
    const std::vector<PriceLevel> &side(Side side) const
    {
        return m_sides[static_cast<std::size_t>(side)];
    }

    /** Puts an order at the end of the queue of its price. */
    void rest(OrderPool &orders, std::uint32_t index);
    /** Takes it out wherever it stands. */
    void unlink(OrderPool &orders, std::uint32_t index);
    /** Takes traded pieces off the sum of the order's price. */
    void reduce(const Order &order, Quantity traded);

private:
    std::vector<PriceLevel>::iterator levelAt(Side side, std::int32_t key);

    std::array<std::vector<PriceLevel>, 2> m_sides;
};

} // namespace zvx::core
