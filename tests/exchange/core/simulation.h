#pragma once

#include "campaign/campaign.h"

#include <cstdint>

using campaign::Counts;

/** Every name that must have a count in the end. */
Counts emptyCounts();

/**
 * Lives one random market through: clients that send keyed actions over a network that repeats,
 * reorders, delays and loses answers; a clock that jumps; a disk that keeps whole batches or none;
 * a service that dies between any two steps and comes back from checkpoint and events. After every
 * batch the core is held against its own audit and against the slow market.
 *
 * Returns what went wrong, in words, or nothing. The same seed gives the same life.
 */
campaign::Failure liveThrough(std::uint64_t seed, Counts &counts);
