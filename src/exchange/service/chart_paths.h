#pragma once

#include "exchange/core/types.h"
#include "exchange/service/path_call.h"
#include "exchange/service/query_pool.h"

namespace zvx {

class ParameterReader;
class WireAnswers;

/**
 * Minutes, bars and the page of deals of one collection: what charts are drawn from.
 *
 * Called on the server's thread, and never keeps it waiting: all of it is answered from the pool
 * that reads the market's store.
 */
class ChartPaths
{
public:
    /// Both have to outlive this.
    ChartPaths(const WireAnswers &answers, QueryPool &queries);

    /// Answers a path of PathRoom::Charts whose method fits.
    void handle(PathCall call);

private:
    QueryPool::Question minutes(CollectionId id, ParameterReader &read) const;
    QueryPool::Question bars(CollectionId id, PathKind kind, bool hasHistory,
                             ParameterReader &read) const;
    QueryPool::Question deals(CollectionId id, ParameterReader &read) const;

    const WireAnswers &m_answers;
    QueryPool &m_queries;
};

} // namespace zvx
