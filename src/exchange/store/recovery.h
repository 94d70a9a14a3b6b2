#pragma once

#include "exchange/core/market.h"

#include <cstdint>
#include <string>
#include <vector>

namespace zvx {

class Store;

/// A market as its store has it.
struct Recovered {
    Market market;
    std::int64_t lastCommand = 0;
    std::int64_t checkpoint = 0; ///< number of the checkpoint it started from, 0 without one
    std::vector<std::string> notices; ///< checkpoints that could not be used
};

/**
 * Brings a market back: the newest usable checkpoint, then the later events. Checks the
 * checkpoint's hash, the audit, and that the tables end where the events end; tables that hold
 * nothing at all are made anew before. A checkpoint only
 * saves time: one that is damaged, or that this program cannot read, is passed over. One that
 * stands behind the last command shows that commands were lost, and nothing is recovered.
 * Throws StoreError, or Damaged where the events cannot be the history of a market.
 */
Recovered recoverMarket(Store &store, const Limits &limits = {});

/// The market as all events from the first one on make it.
Market replayMarket(Store &store, const Limits &limits = {});

/// Makes the tables anew from all events, in one transaction. Throws as recoverMarket().
void rebuildTables(Store &store, const Limits &limits = {});

} // namespace zvx
