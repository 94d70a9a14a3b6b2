#pragma once

#include "campaign/campaign.h"
#include "exchange/kills/order_load.h"

#include <filesystem>
#include <vector>

namespace zvxtest {

/// Holds the store of a service that has ended against what its clients were told: an order for
/// each intent that was done and no other, withdrawals, transfers and requests for goods likewise,
/// cash and pieces as many as there were, and the ledgers of bank and carrier. Throws what the
/// store throws.
campaign::Failure compareWithStore(const std::filesystem::path &folder,
                                   const std::vector<TradingClient> &clients,
                                   campaign::Counts &counts);

} // namespace zvxtest
