#pragma once

#include "campaign/campaign.h"
#include "exchange/store/powercutdisk.h"

#include <cstdint>

namespace zvx::test {

/// Power cuts in one life of a market.
constexpr int kCutsOfAMarket = 20;

/// Every name that must have a count in the end.
campaign::Counts powerCutCounts();

/**
 * Trades in a fresh market on a disk whose power fails at random, twenty times: while the market is
 * made, while it trades, and now and then while it is opened again. After each cut the market must
 * open, be what its events say, and know everything that was answered before.
 *
 * Returns what was lost or damaged, in words.
 */
campaign::Failure tradeThroughCuts(PowerCutDisk &disk, std::uint64_t seed,
                                   campaign::Counts &counts);

} // namespace zvx::test
