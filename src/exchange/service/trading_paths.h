#pragma once

#include "exchange/core/types.h"
#include "exchange/service/path_call.h"

namespace zvx {

class WireAnswers;

/**
 * What an account does and has in one market: orders, and its money and holdings.
 *
 * Called on the server's thread, and never keeps it waiting: actions are answered from the market's
 * writer after their commit, queries from the pool that reads its store.
 */
class TradingPaths
{
public:
    /// `answers` has to outlive this.
    explicit TradingPaths(const WireAnswers &answers);
    ~TradingPaths();

    /// Answers a path of PathRoom::Trading for an account that is signed in, whose method fits.
    void handle(PathCall call, AccountId account);

private:
    const WireAnswers &m_answers;
};

} // namespace zvx
