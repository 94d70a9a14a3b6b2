#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>

namespace zvx {

/** Money, quantities and sums never leave this bound, so that two of them always add up in 64 bits.
 */
constexpr std::int64_t kAmountBound = 9'000'000'000'000'000;

/** The first price, in fen, that is too high: 131,072.00 yuan. Clients carry prices as float, and a
 *  float holds every fen below this. */
constexpr std::int64_t kPriceBound = 13'107'200;

/** Thrown where checked arithmetic leaves its bounds. Admission makes this impossible; seeing it
 *  means a fault of ours, and the caller must not go on with the market that threw it. */
class OutOfBounds : public std::overflow_error
{
public:
    OutOfBounds() : std::overflow_error("an amount left its bounds") { }
};

/** A whole number of one kind. The tag names the kind and the range that is valid on the wire and
 *  in the store; kinds do not mix. */
template <class Tag>
class Number
{
public:
    static constexpr std::int64_t least = Tag::least;
    static constexpr std::int64_t most = Tag::most;

    constexpr Number() = default;
    constexpr explicit Number(std::int64_t value) : m_value(value) { }

    constexpr std::int64_t value() const { return m_value; }
    constexpr bool inRange() const { return m_value >= least && m_value <= most; }

    friend constexpr bool operator==(Number a, Number b) { return a.m_value == b.m_value; }
    friend constexpr bool operator!=(Number a, Number b) { return a.m_value != b.m_value; }
    friend constexpr bool operator<(Number a, Number b) { return a.m_value < b.m_value; }
    friend constexpr bool operator>(Number a, Number b) { return a.m_value > b.m_value; }
    friend constexpr bool operator<=(Number a, Number b) { return a.m_value <= b.m_value; }
    friend constexpr bool operator>=(Number a, Number b) { return a.m_value >= b.m_value; }

private:
    std::int64_t m_value = 0;
};

namespace tags {
struct Fen {
    static constexpr std::int64_t least = -kAmountBound;
    static constexpr std::int64_t most = kAmountBound;
};
struct Quantity {
    static constexpr std::int64_t least = -kAmountBound;
    static constexpr std::int64_t most = kAmountBound;
};
struct PartsPerMillion {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = 1'000'000;
};
struct OrderNumber {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = 0x7fffffff;
};
struct AccountId {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = kAmountBound;
};
struct CollectionId {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = 0x7fffffff;
};
struct TimeMs {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = 253'402'300'799'999;
};
struct TradingDay {
    static constexpr std::int64_t least = 19'700'101;
    static constexpr std::int64_t most = 99'991'231;
};
struct Sequence {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = kAmountBound;
};
struct TransferNumber {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = kAmountBound;
};
struct DeliveryNumber {
    static constexpr std::int64_t least = 0;
    static constexpr std::int64_t most = kAmountBound;
};
} // namespace tags

/** Money in hundredths of a yuan. Prices are Fen in 1 .. kPriceBound - 1. */
using Fen = Number<tags::Fen>;
/** Pieces of a collection. */
using Quantity = Number<tags::Quantity>;
/** A rate: 3000 is 0.3 %. */
using PartsPerMillion = Number<tags::PartsPerMillion>;
/** 1 .. 2^31 - 1, given in order of arrival and never again; 0 is no order. */
using OrderNumber = Number<tags::OrderNumber>;
/** 1 .. 9e15, chosen by the caller; 0 is no account. */
using AccountId = Number<tags::AccountId>;
/** 1 .. 2^31 - 1, unique over all markets, chosen by the caller; 0 is no collection. */
using CollectionId = Number<tags::CollectionId>;
/** Milliseconds since 1970 in UTC. A label of what happened, never a reason: priority goes by
 *  order number, so a clock that jumps changes nothing but the labels. */
using TimeMs = Number<tags::TimeMs>;
/** A business date as a number, 20200101. */
using TradingDay = Number<tags::TradingDay>;
/** Counts deals or sessions from 1; 0 is none. */
using Sequence = Number<tags::Sequence>;
/** Counts the transfers between accounts and their bank cards from 1; 0 is none. */
using TransferNumber = Number<tags::TransferNumber>;
/** Counts the requests for the goods themselves from 1; 0 is none. */
using DeliveryNumber = Number<tags::DeliveryNumber>;

/** The fee of an account that was given no rate of its own. */
constexpr PartsPerMillion kDefaultFee{3000};
/** How far a price may leave the previous close in one session, where a listing says nothing. */
constexpr PartsPerMillion kDefaultLimit{100'000};
/** No fee may be higher, so that a fee never eats what was paid. */
constexpr PartsPerMillion kHighestFee{100'000};

/** Wide enough for every product of two bounded numbers. */
__extension__ typedef __int128 Wide;

constexpr std::int64_t bounded(Wide value)
{
    if (value > kAmountBound || value < -kAmountBound)
        throw OutOfBounds();
    return static_cast<std::int64_t>(value);
}

constexpr std::int64_t boundedSum(std::int64_t a, std::int64_t b)
{
    std::int64_t sum = 0;
    if (__builtin_add_overflow(a, b, &sum) || sum > kAmountBound || sum < -kAmountBound)
        throw OutOfBounds();
    return sum;
}

constexpr Fen operator+(Fen a, Fen b)
{
    return Fen(boundedSum(a.value(), b.value()));
}
constexpr Fen operator-(Fen a, Fen b)
{
    return Fen(boundedSum(a.value(), -b.value()));
}
constexpr Fen &operator+=(Fen &a, Fen b)
{
    return a = a + b;
}
constexpr Fen &operator-=(Fen &a, Fen b)
{
    return a = a - b;
}
constexpr Fen operator-(Fen a)
{
    return Fen(-a.value());
}

constexpr Quantity operator+(Quantity a, Quantity b)
{
    return Quantity(boundedSum(a.value(), b.value()));
}
constexpr Quantity operator-(Quantity a, Quantity b)
{
    return Quantity(boundedSum(a.value(), -b.value()));
}
constexpr Quantity &operator+=(Quantity &a, Quantity b)
{
    return a = a + b;
}
constexpr Quantity &operator-=(Quantity &a, Quantity b)
{
    return a = a - b;
}
constexpr Quantity operator-(Quantity a)
{
    return Quantity(-a.value());
}

/** What `quantity` pieces at `price` are worth. */
constexpr Fen operator*(Fen price, Quantity quantity)
{
    return Fen(bounded(Wide(price.value()) * quantity.value()));
}

/** `amount` times `rate`, rounded to the nearest fen, halves up; `amount` is not negative. */
constexpr Fen share(Fen amount, PartsPerMillion rate)
{
    std::int64_t product = 0;
    // Nearly always the product fits 64 bits, whose division is much quicker.
    if (!__builtin_mul_overflow(amount.value(), rate.value(), &product)
        && product < INT64_MAX - 500'000)
        return Fen((product + 500'000) / 1'000'000);
    return Fen(bounded((Wide(amount.value()) * rate.value() + 500'000) / 1'000'000));
}

/** The daily price limits that follow from a previous close: rounded to the nearest fen, at least
 *  1 fen, below kPriceBound. */
struct PriceLimits {
    Fen lower;
    Fen upper;
};

constexpr PriceLimits priceLimits(Fen previousClose, PartsPerMillion limit)
{
    const Fen width = share(previousClose, limit);
    const Fen lower = previousClose - width;
    const Fen upper = previousClose + width;
    return {lower < Fen(1) ? Fen(1) : lower,
            upper >= Fen(kPriceBound) ? Fen(kPriceBound - 1) : upper};
}

enum class Side : std::uint8_t { Buy, Sell };

constexpr Side opposite(Side side)
{
    return side == Side::Buy ? Side::Sell : Side::Buy;
}

/** The client's own name of one action, 128 random bits; all zero is "no key". */
struct ActionKey {
    std::uint64_t high = 0;
    std::uint64_t low = 0;

    constexpr bool isNull() const { return high == 0 && low == 0; }
    friend constexpr bool operator==(ActionKey a, ActionKey b)
    {
        return a.high == b.high && a.low == b.low;
    }
    friend constexpr bool operator!=(ActionKey a, ActionKey b) { return !(a == b); }

    /** Reads exactly 32 hexadecimal digits, either case; nothing else, and not the null key. */
    static std::optional<ActionKey> fromText(std::string_view text);
};

/** By what the bank knows a transfer: 128 random bits of the exchange's own, never of a client. */
using TransferId = ActionKey;
/** By what a carrier knows a delivery, and where the recipient is kept: 128 random bits of the
 *  exchange's own, never of a client. */
using ParcelId = ActionKey;

} // namespace zvx
