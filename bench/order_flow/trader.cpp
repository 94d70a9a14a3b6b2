#include "trader.h"

#include <algorithm>

using namespace zvx;

Trader::Trader(const Floor &floor, AccountId account, std::uint64_t seed)
    : m_account(account), m_chance(seed ^ static_cast<std::uint64_t>(account.value()) << 32)
{
    for (const Floor::Book &book : floor.books()) {
        if (std::binary_search(book.members.begin(), book.members.end(), account))
            m_books.push_back(&book);
    }
}

PlaceOrder Trader::next()
{
    const Floor::Book &book = *m_books[static_cast<std::size_t>(
        m_chance.below(static_cast<std::int64_t>(m_books.size())))];
    PlaceOrder order;
    order.account = m_account;
    order.collection = book.id;
    order.side = m_chance.percent(50) ? Side::Buy : Side::Sell;
    order.price = Fen(book.previousClose.value() + m_chance.between(-3, 3));
    order.quantity = Quantity(m_chance.between(1, 5));
    order.key = {m_chance.bits(), static_cast<std::uint64_t>(m_account.value()) << 32 | ++m_keys};
    return order;
}
