#pragma once

#include "exchange/accounts/account_file.h"

#include <cstdint>
#include <shared_mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace zvx {

/// What the file knows of one-time links, in memory, for all threads.
class LinkBook
{
public:
    /// `life` in milliseconds from a link's beginning, however often it is given back.
    explicit LinkBook(std::int64_t life) : m_life(life) { }

    /// Takes a link, or what became of one.
    void put(const StoredLink &link);
    /// `token` is its hash.
    void forget(const std::string &token);

    LinkState find(std::string_view token, TimeMs now) const;

    /// What is stored of a token.
    static std::string hashOf(std::string_view token);
    /// Used goes before Expired: what it did is what its holder has to know.
    static LinkState::Kind kindOf(const StoredLink &link, std::int64_t life, TimeMs now);
    /// Under which the money of a link moves.
    static ActionKey keyOf(const StoredLink &link);

private:
    std::int64_t m_life;
    mutable std::shared_mutex m_mutex;
    std::unordered_map<std::string, StoredLink> m_links; ///< by the token's hash
};

} // namespace zvx
