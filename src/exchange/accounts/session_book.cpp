#include "exchange/accounts/session_book.h"

#include "exchange/accounts/digest.h"

#include <mutex>

namespace zvx {
namespace {

constexpr std::size_t kHashBytes = 32;
/// Longer texts are no tokens; hashing them would be work for nothing.
constexpr std::size_t kTokenMost = 64;

} // namespace

void SessionBook::put(const StoredSession &session)
{
    const Entry entry{{session.kind, session.account, session.client, session.number},
                      session.created};
    std::lock_guard<std::shared_mutex> guard(m_mutex);
    m_entries[session.token] = entry;
    m_hashes[session.number] = session.token;
    m_live += session.kind == SessionState::Live ? 1 : 0;
}

void SessionBook::end(std::int64_t number, SessionState::Kind kind)
{
    std::lock_guard<std::shared_mutex> guard(m_mutex);
    SessionState &state = m_entries.at(m_hashes.at(number)).state;
    m_live -= state.kind == SessionState::Live ? 1 : 0;
    state.kind = kind;
}

void SessionBook::forget(std::int64_t number)
{
    std::lock_guard<std::shared_mutex> guard(m_mutex);
    const auto hash = m_hashes.find(number);
    m_live -= m_entries.at(hash->second).state.kind == SessionState::Live ? 1 : 0;
    m_entries.erase(hash->second);
    m_hashes.erase(hash);
}

SessionState SessionBook::find(std::string_view token, TimeMs now) const
{
    if (token.empty() || token.size() > kTokenMost)
        return {};
    const std::string hash = hashOf(token);
    std::shared_lock<std::shared_mutex> guard(m_mutex);
    const auto found = m_entries.find(hash);
    if (found == m_entries.end())
        return {};
    SessionState state = found->second.state;
    if (state.kind == SessionState::Live && now.value() - found->second.created.value() >= m_life)
        state.kind = SessionState::Ended;
    return state;
}

std::size_t SessionBook::live() const
{
    std::shared_lock<std::shared_mutex> guard(m_mutex);
    return m_live;
}

std::string SessionBook::hashOf(std::string_view token)
{
    Digest digest(kHashBytes);
    digest << token;
    return digest.finish();
}

} // namespace zvx
