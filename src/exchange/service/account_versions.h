#pragma once

#include "exchange/core/types.h"

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace zvx {

/// How often money, holdings or orders of each account of one market changed since the boot: the
/// versions of the topic "cap". On the server's thread only.
class AccountVersions
{
public:
    std::uint64_t of(AccountId account) const;
    void raise(AccountId account);

private:
    std::unordered_map<std::int64_t, std::uint64_t> m_changes; ///< those that changed at all
};

/// Takes the accounts that commits changed from a writer's thread to the server's, many commits in
/// one turn where the server is behind.
class ChangedAccounts
{
public:
    /// Notes the accounts of one commit but those of robots, who ask for nothing. Returns whether the server has to be asked to look: false
    /// while it was asked before and has not come yet.
    bool add(const std::vector<AccountId> &accounts);
    /// All that were noted since the last call, one entry for each commit that changed an account.
    std::vector<AccountId> take();

private:
    std::mutex m_mutex;
    std::vector<AccountId> m_accounts;
};

} // namespace zvx
