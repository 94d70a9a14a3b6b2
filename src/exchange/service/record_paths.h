#pragma once

#include "exchange/core/types.h"
#include "exchange/service/path_call.h"

namespace zvx {

class QueryPool;
class WireAnswers;

/**
 * An account's orders, deals and holdings in one market, page by page.
 *
 * Called on the server's thread, which never waits for it: the pool reads the market's store. The
 * store is asked by account, so nothing of others can be told.
 */
class RecordPaths
{
public:
    /// Both have to outlive this and every request that it was handed.
    RecordPaths(const WireAnswers &answers, QueryPool &queries);

    /// Answers a path of PathRoom::Records whose method fits, for the account that is signed in.
    void handle(PathCall call, AccountId account);

private:
    const WireAnswers &m_answers;
    QueryPool &m_queries;
};

} // namespace zvx
