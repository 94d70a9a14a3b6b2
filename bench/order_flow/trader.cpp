#include "trader.h"

using namespace zvx;

Trader::Trader(std::vector<Piece> pieces, AccountId account, std::uint64_t seed)
    : m_account(account), m_pieces(std::move(pieces)),
      m_chance(seed ^ static_cast<std::uint64_t>(account.value()) << 32)
{
}

PlaceOrder Trader::next()
{
    const Piece &piece = m_pieces[static_cast<std::size_t>(
        m_chance.below(static_cast<std::int64_t>(m_pieces.size())))];
    PlaceOrder order;
    order.account = m_account;
    order.collection = piece.collection;
    order.side = m_chance.percent(50) ? Side::Buy : Side::Sell;
    order.price = Fen(piece.close.value() + m_chance.between(-3, 3));
    order.quantity = Quantity(m_chance.between(1, 5));
    order.key = {m_chance.bits(), static_cast<std::uint64_t>(m_account.value()) << 32 | ++m_keys};
    return order;
}
