#pragma once

#include "exchange/core/command.h"

#include <functional>

namespace zvx {

class MarketServer;

/// Why a command was not carried out, as far as is known.
enum class NotDone {
    QueueFull, ///< nothing was done
    MarketEnded, ///< what was done is known after a restart only
};

/**
 * Hands in a command of an account that is known to the platform, and may never have been in this
 * market: it is opened there by its first command. Exactly one of the endings is called, once; the
 * first one after what was done is durable, on the writer's thread, the other from any thread.
 *
 * Status AccountUnknown means that the market has no room for another account.
 */
void carryOutFor(MarketServer &market, AccountId account, const Command &command,
                 std::function<void(const Result &)> answered,
                 std::function<void(NotDone)> notDone);

} // namespace zvx
