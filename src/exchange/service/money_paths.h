#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/money_desk.h"
#include "exchange/service/path_call.h"

#include <memory>

namespace zvx {

class QueryPool;
class SessionGate;
class WireAnswers;
struct ActionForm;

/**
 * Money in and out of one platform's accounts, and the list of what moved.
 *
 * Called on the server's thread, and never keeps it waiting: codes are answered by the desk of the
 * accounts, transfers by the money desk, lists from the pool that reads the markets' stores.
 */
class MoneyPaths
{
public:
    /// All have to outlive this and every request that it was handed.
    MoneyPaths(AccountDesk &accounts, MoneyDesk &money, const SessionGate &gate, QueryPool &queries,
               const WireAnswers &answers);

    /// Answers a path of PathRoom::Money whose method fits.
    void handle(PathCall call);

private:
    using Responder = std::shared_ptr<HttpResponder>;

    void sendCode(PathCall call, AccountId account);
    void moneyIn(PathCall call, AccountId account);
    void moneyOut(PathCall call, AccountId account);
    void list(PathCall call, AccountId account);
    void resolveIn(MarketServer &market, AccountId account, ActionKey key, Responder responder);
    MoneyDesk::Done answering(Responder responder) const;
    HttpAnswer told(const MoneyDesk::Outcome &outcome) const;

    AccountDesk &m_accounts;
    MoneyDesk &m_money;
    const SessionGate &m_gate;
    QueryPool &m_queries;
    const WireAnswers &m_answers;
};

} // namespace zvx
