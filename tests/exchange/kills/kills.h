#pragma once

#include "campaign/campaign.h"

#include <cstdint>

namespace zvxtest {

/// Kills under load in one life of a service.
constexpr int kKillsOfALife = 4;

/// Every name that must have a count in the end.
campaign::Counts killCounts();

/**
 * Kills a real service again and again while traders send orders, withdrawals, transfers and
 * requests for goods over HTTP, and once while it opens its folder. After each start everything
 * that was acknowledged must be told again, and what was not heard of becomes known for good; in
 * the end the store is held against it.
 */
campaign::Failure killAgainAndAgain(std::uint64_t seed, campaign::Counts &counts);

} // namespace zvxtest
