#include "exchange/core/flatmap.h"

#include <gtest/gtest.h>

#include <map>

using zvx::core::FlatMap;
using zvx::core::kNone;

TEST(FlatMap, FindsWhatWasSetAndNothingElse)
{
    FlatMap map;
    EXPECT_EQ(map.find(0), kNone);
    std::map<std::uint64_t, std::uint32_t> expected;
    std::uint64_t key = 1;
    for (std::uint32_t i = 0; i < 5000; ++i) {
        key = key * 6364136223846793005u + 1442695040888963407u;
        map.set(key % 4000, i);
        expected[key % 4000] = i;
    }
    EXPECT_EQ(map.size(), expected.size());
    for (std::uint64_t k = 0; k < 4000; ++k) {
        const auto found = expected.find(k);
        EXPECT_EQ(map.find(k), found == expected.end() ? kNone : found->second);
    }
    std::size_t visited = 0;
    map.forEach([&](std::uint64_t k, std::uint32_t value) {
        EXPECT_EQ(expected.at(k), value);
        ++visited;
    });
    EXPECT_EQ(visited, expected.size());
}
