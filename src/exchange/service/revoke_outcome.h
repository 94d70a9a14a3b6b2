#pragma once

#include "exchange/core/types.h"
#include "exchange/store/tables.h"

#include <string>
#include <vector>

namespace zvx {

/// What one withdrawal of several orders came to, order by order.
struct RevokeOutcome {
    std::vector<OrderNumber> revoked;
    std::vector<OrderNumber> done; ///< the account's own, which had ended before
    std::vector<OrderNumber> unknown; ///< not there, or not the account's

    /// `rows` are those of the orders `numbers` that exist; `key` is the withdrawal's.
    static RevokeOutcome of(const std::vector<OrderNumber> &numbers,
                            const std::vector<OrderRow> &rows, AccountId account, ActionKey key);

    /// The refusal's word, of those that hold the first in the protocol's order.
    std::string reason() const;
    /// Chinese sentences that name the orders that could not be withdrawn.
    std::string message() const;
    /// `{"revoked": n, "failed": [numbers]}`
    std::string data() const;
};

} // namespace zvx
