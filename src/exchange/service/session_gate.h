#pragma once

#include "exchange/accounts/account_desk.h"
#include "exchange/service/http_message.h"

#include <cstdint>
#include <functional>
#include <string_view>
#include <variant>

namespace zvx {

class WireAnswers;

/// Whom a request speaks for.
struct SignedIn {
    AccountId account;
    std::int64_t session = 0; ///< its number, see SessionState
};

/**
 * Finds out who sent a request: `Authorization: Bearer <token>` names a live session of one
 * platform, or the answer says why it does not. Tokens of another platform are unknown here.
 *
 * From any thread; one hash and one look into memory.
 */
class SessionGate
{
public:
    /// What a token stands for on the gate's platform: AccountDesk::session().
    using Lookup = std::function<SessionState(std::string_view token)>;

    /// `answers` has to outlive this.
    SessionGate(Lookup lookup, const WireAnswers &answers);

    /// The live session of the request, or the answer `session` or `elsewhere`.
    std::variant<SignedIn, HttpAnswer> ask(const HttpRequest &request) const;
    /// The same for the value of an Authorization header.
    std::variant<SignedIn, HttpAnswer> ask(std::string_view authorization) const;

private:
    Lookup m_lookup;
    const WireAnswers &m_answers;
};

} // namespace zvx
