#include "exchange/service/account_versions.h"

#include "exchange/service/robot_crowd.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace zvx {

std::uint64_t AccountVersions::of(AccountId account) const
{
    const auto found = m_changes.find(account.value());
    return found == m_changes.end() ? 1 : 1 + found->second;
}

void AccountVersions::raise(AccountId account)
{
    ++m_changes[account.value()];
}

bool ChangedAccounts::add(const std::vector<AccountId> &accounts)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    const bool first = m_accounts.empty();
    std::copy_if(accounts.begin(), accounts.end(), std::back_inserter(m_accounts),
                 [](AccountId account) { return account < AccountId(RobotCrowd::firstAccount); });
    return first && !m_accounts.empty();
}

std::vector<AccountId> ChangedAccounts::take()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    return std::exchange(m_accounts, {});
}

} // namespace zvx
