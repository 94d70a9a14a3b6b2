#pragma once

#include "campaign/campaign.h"
#include "faultyproxy/kittrader.h"

#include <filesystem>

namespace faultyproxy {

// Holds the store of a service that has ended against what the kit said: each call that succeeded
// has its one effect, each that failed has none, nothing else is there, and no end is unknown.
campaign::Failure compareWithStore(const std::filesystem::path &store, const KitTrader &trader,
                                   campaign::Counts &counts);

} // namespace faultyproxy
