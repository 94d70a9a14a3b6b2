#pragma once

#include "exchange/accounts/bank_card.h"
#include "exchange/core/types.h"

#include <optional>
#include <shared_mutex>
#include <unordered_map>

namespace zvx {

/// The bank cards of the accounts, in memory, for all threads.
class CardBook
{
public:
    void put(AccountId account, const BankCard &card);
    std::optional<BankCard> find(AccountId account) const;

private:
    mutable std::shared_mutex m_mutex;
    std::unordered_map<std::int64_t, BankCard> m_cards; ///< by account
};

} // namespace zvx
