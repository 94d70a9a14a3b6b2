#pragma once

#include "exchange/core/command.h"
#include "exchange/service/path_call.h"

#include <memory>

namespace zvx {

class QueryPool;
class WireAnswers;
struct ActionForm;

/**
 * What an account does and has in one market: orders, and its money and holdings.
 *
 * Called on the server's thread, and never keeps it waiting: actions are answered from the market's
 * writer after their commit, queries from the pool that reads its store.
 */
class TradingPaths
{
public:
    /// All have to outlive this and the markets' writers.
    TradingPaths(const WireAnswers &answers, QueryPool &queries);

    /// Answers a path of PathRoom::Trading for an account that is signed in, whose method fits.
    void handle(PathCall call, AccountId account);

private:
    struct Action;

    void act(PathCall call, AccountId account);
    void tell(Action &action, const Result &result);
    void tellRefusal(Action &action, Status status);
    void tellRevoked(Action &action, const Result &result);
    void tellEachOrder(Action &action);
    void cap(PathCall call, AccountId account);

    const WireAnswers &m_answers;
    QueryPool &m_queries;
};

} // namespace zvx
