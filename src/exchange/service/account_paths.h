#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/path_call.h"

namespace zvx {

struct ActionForm;
class QueryPool;
class SessionGate;
class WireAnswers;

/**
 * Signing in, registering, passwords and favourites of one platform.
 *
 * Called on the server's thread, and never keeps it waiting: the desk answers from its own thread
 * when what it did is durable, or at once where a request is malformed or the queue is full. Fees
 * are the markets' own, and come from their stores.
 */
class AccountPaths
{
public:
    /// All have to outlive this and every request that it was handed.
    AccountPaths(AccountDesk &desk, const SessionGate &gate, QueryPool &queries,
                 const WireAnswers &answers);

    /// Answers a path of PathRoom::Accounts whose method fits.
    void handle(PathCall call);

private:
    void act(PathCall call, AccountId account);
    void signIn(PathCall &call, const ActionForm &form);
    void sendCode(PathCall &call, const ActionForm &form, CodePurpose purpose);
    void changeFavourite(PathCall &call, const ActionForm &form, AccountId account);
    /// Tells how an action ended. Takes the call's responder along.
    AccountDesk::Answered answering(PathCall &call) const;
    /// Tells of the account in a market, and of the token of a sign-in.
    void tellAccount(MarketServer &market, HttpResponder responder, const AccountProfile &profile,
                     Secret token = {}) const;
    void showAccount(PathCall call, AccountId account);
    void showFavourites(PathCall call, AccountId account);

    AccountDesk &m_desk;
    const SessionGate &m_gate;
    QueryPool &m_queries;
    const WireAnswers &m_answers;
};

} // namespace zvx
