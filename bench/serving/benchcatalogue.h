#pragma once

#include <cstddef>
#include <string>

// The market that benches serve: one platform, one market, and so many collections.
namespace benchcatalogue {

constexpr const char *platform = "lc";
constexpr const char *prefix = "/lc/bench/";
constexpr int firstCollection = 1001;

// As an operator writes it down.
std::string text(std::size_t collections);

// What a piece was worth the day before, in fen.
constexpr int previousClose(std::size_t collection)
{
    return 1'000 + static_cast<int>(collection * 37 % 20'000);
}

} // namespace benchcatalogue
