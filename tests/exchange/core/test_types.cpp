#include "exchange/core/types.h"

#include <gtest/gtest.h>

using namespace zvx;

TEST(Amounts, AreRefusedBeyondTheBound)
{
    const Fen most(kAmountBound);
    EXPECT_EQ((most - Fen(1) + Fen(1)), most);
    EXPECT_THROW(most + Fen(1), OutOfBounds);
    EXPECT_THROW(-most - Fen(1), OutOfBounds);
    EXPECT_THROW(Fen(INT64_MAX) + Fen(1), OutOfBounds);
    EXPECT_THROW(Fen(kPriceBound) * Quantity(kAmountBound), OutOfBounds);
    EXPECT_EQ(Fen(13'107'199) * Quantity(100'000'000), Fen(1'310'719'900'000'000));
}

TEST(Share, RoundsToTheNearestFenHalvesUp)
{
    const struct {
        std::int64_t amount, rate, expected;
    } table[] = {
        {10'000, 3000, 30}, // 100.00 yuan: 0.30
        {166, 3000, 0}, // 0.498 fen
        {167, 3000, 1}, // 0.501 fen
        {500, 1000, 1}, // exactly half a fen
        {499, 1000, 0},
        {0, 3000, 0},
        {12'345, 0, 0},
        {kAmountBound, 100'000, kAmountBound / 10}, // does not fit 64 bits on the way
        {kAmountBound - 1, 1'000'000, kAmountBound - 1},
        {3'074'457'345'618'258, 3000, 9'223'372'036'855}, // at the edge of the quick way
    };
    for (const auto &row : table)
        EXPECT_EQ(share(Fen(row.amount), PartsPerMillion(row.rate)).value(), row.expected)
            << row.amount << " at " << row.rate;
}

TEST(PriceLimits, FollowTheCloseAndStayPrices)
{
    const struct {
        std::int64_t close, limit, lower, upper;
    } table[] = {
        {1000, 100'000, 900, 1100},
        {1005, 100'000, 904, 1106}, // 100.5 fen up and down: rounded to 101
        {1, 100'000, 1, 1},
        {4, 100'000, 4, 4},
        {5, 100'000, 4, 6}, // half a fen is rounded up
        {1, 999'999, 1, 2},
        {13'107'199, 100'000, 11'796'479, 13'107'199}, // the float bound cuts the upper limit
    };
    for (const auto &row : table) {
        const PriceLimits limits = priceLimits(Fen(row.close), PartsPerMillion(row.limit));
        EXPECT_EQ(limits.lower.value(), row.lower) << row.close;
        EXPECT_EQ(limits.upper.value(), row.upper) << row.close;
    }
}
