#include "exchange/core/book.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <vector>

using zvx::core::kNone;
using zvx::core::OrderPool;

TEST(OrderPool, FindsOpenOrdersByNumberAcrossChunks)
{
    OrderPool pool;
    std::map<std::uint32_t, std::uint32_t> open;
    for (std::uint32_t number = 1; number <= 10'000; ++number) {
        open[number] = pool.add(number);
        // A few stay for long, the others end soon.
        if (number > 50 && (number - 50) % 700 != 0) {
            const auto old = open.find(number - 50);
            pool.remove(old->second);
            open.erase(old);
        }
    }
    EXPECT_EQ(pool.size(), open.size());
    for (std::uint32_t number = 0; number <= 10'100; ++number) {
        const auto found = open.find(number);
        EXPECT_EQ(pool.find(number), found == open.end() ? kNone : found->second) << number;
    }
    std::vector<std::uint32_t> seen;
    pool.forEach([&](std::uint32_t index) {
        seen.push_back(pool[index].number);
        pool.remove(index);
    });
    EXPECT_TRUE(std::is_sorted(seen.begin(), seen.end()));
    EXPECT_EQ(seen.size(), open.size());
    EXPECT_EQ(pool.size(), 0u);
}

TEST(OrderPool, UsesPlacesAgain)
{
    OrderPool pool;
    std::uint32_t highest = 0;
    for (std::uint32_t number = 1; number <= 50'000; ++number) {
        const std::uint32_t index = pool.add(number);
        highest = std::max(highest, index);
        pool.remove(index);
    }
    EXPECT_EQ(highest, 0u);
}

TEST(OrderPool, TakesNumbersWithWideGaps)
{
    OrderPool pool;
    const std::uint32_t low = pool.add(5);
    const std::uint32_t high = pool.add(0x7fffffff);
    EXPECT_EQ(pool.find(5), low);
    EXPECT_EQ(pool.find(0x7fffffff), high);
    EXPECT_EQ(pool.find(1'000'000), kNone);
    pool.remove(low);
    EXPECT_EQ(pool.find(5), kNone);
}
