#include "exchange/accounts/card_book.h"

#include <mutex>

namespace zvx {

void CardBook::put(AccountId account, const BankCard &card)
{
    std::lock_guard<std::shared_mutex> guard(m_mutex);
    m_cards[account.value()] = card;
}

std::optional<BankCard> CardBook::find(AccountId account) const
{
    std::shared_lock<std::shared_mutex> guard(m_mutex);
    const auto found = m_cards.find(account.value());
    return found == m_cards.end() ? std::nullopt : std::optional(found->second);
}

} // namespace zvx
