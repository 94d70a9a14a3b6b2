#pragma once

#include "exchange/store/exchange.h"

#include <utility>

namespace zvx {

/// Acts in a market of the service and reads there, for somebody who can wait. Everything throws
/// StoreError where the market ended.
class MarketHand
{
public:
    explicit MarketHand(MarketServer &market) : m_market(market) { }

    /// Durable when it returns.
    Result execute(const Command &command) { return m_market.writer().execute({command}).back(); }

    /// Opens the account where it was never in the market.
    Result executeFor(AccountId account, const Command &command)
    {
        const Result result = execute(command);
        if (result.status != Status::AccountUnknown)
            return result;
        return m_market.writer()
            .execute({OpenAccount{account, m_market.fee(), {}}, command})
            .back();
    }

    /// What `work` makes of what is durable now.
    template <typename Work>
    auto read(const Work &work)
    {
        return m_market.readers().read(work);
    }

private:
    MarketServer &m_market;
};

} // namespace zvx
