#include "exchange/service/session_gate.h"

#include "exchange/service/wire_answers.h"

#include <algorithm>

namespace zvx {

namespace {

/// The token of `Bearer <token>`; empty where the header is anything else. The scheme's case does
/// not count, the token's does.
std::string_view tokenOf(std::string_view authorization)
{
    constexpr std::string_view scheme = "bearer ";
    if (authorization.size() < scheme.size()
        || !std::equal(
            scheme.begin(), scheme.end(), authorization.begin(), [](char wanted, char given) {
                return wanted == (given >= 'A' && given <= 'Z' ? given - 'A' + 'a' : given);
            }))
        return {};
    return authorization.substr(scheme.size());
}

} // namespace

SessionGate::SessionGate(Lookup lookup, const WireAnswers &answers)
    : m_lookup(std::move(lookup)), m_answers(answers)
{
}

std::variant<SignedIn, HttpAnswer> SessionGate::ask(const HttpRequest &request) const
{
    return ask(request.authorization);
}

std::variant<SignedIn, HttpAnswer> SessionGate::ask(std::string_view authorization) const
{
    const std::string_view token = tokenOf(authorization);
    const SessionState state = token.empty() ? SessionState() : m_lookup(token);
    if (state.kind == SessionState::Live)
        return SignedIn{state.account, state.session};
    return state.kind == SessionState::Elsewhere ? m_answers.signedInElsewhere()
                                                 : m_answers.signInNeeded();
}

} // namespace zvx
