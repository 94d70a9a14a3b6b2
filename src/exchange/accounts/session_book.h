#pragma once

#include "exchange/accounts/account_file.h"

#include <cstddef>
#include <cstdint>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zvx {

/// What the file knows of sessions, in memory, for all threads.
class SessionBook
{
public:
    /// `life` in milliseconds from a session's beginning.
    explicit SessionBook(std::int64_t life) : m_life(life) { }

    void put(const StoredSession &session);
    void end(std::int64_t number, SessionState::Kind kind);
    void forget(std::int64_t number);

    SessionState find(std::string_view token, TimeMs now) const;

    /// Sessions that were not ended; one that grew too old counts until it is forgotten.
    std::size_t live() const;

    /// What is stored of a token.
    static std::string hashOf(std::string_view token);

private:
    struct Entry {
        SessionState state;
        TimeMs created;
    };

    std::int64_t m_life;
    mutable std::shared_mutex m_mutex;
    std::size_t m_live = 0;
    std::unordered_map<std::string, Entry> m_entries; ///< by the token's hash
    std::unordered_map<std::int64_t, std::string> m_hashes; ///< by number
};

} // namespace zvx
