#pragma once

#include "exchange/core/types.h"
#include "exchange/service/path_call.h"

namespace zvx {

class AccountDesk;
class ApplicationFile;
class SessionGate;
class WireAnswers;

/**
 * What can be applied for in a market, and what an account applied for, as the operator's file has
 * it.
 *
 * Called on the server's thread. The first is answered at once, the second by the accounts' desk,
 * which knows the account's phone.
 */
class ApplicationPaths
{
public:
    /// All have to outlive this and every request that it was handed.
    ApplicationPaths(AccountDesk &desk, const SessionGate &gate, const ApplicationFile &file,
                     const WireAnswers &answers);

    /// Answers PathKind::Applications, the method fits.
    void handle(PathCall call);

private:
    void showOpen(PathCall call);
    void showMine(PathCall call, AccountId account);

    AccountDesk &m_desk;
    const SessionGate &m_gate;
    const ApplicationFile &m_file;
    const WireAnswers &m_answers;
};

} // namespace zvx
