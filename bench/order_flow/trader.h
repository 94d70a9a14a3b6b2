#pragma once

#include "orderstream.h"

// A client that places one order after the other: near the touch, on either side, so that about
// half of them trade and the books stay as they are.
class Trader
{
public:
    struct Piece {
        zvx::CollectionId collection;
        zvx::Fen close;
    };

    Trader(std::vector<Piece> pieces, zvx::AccountId account, std::uint64_t seed);

    zvx::PlaceOrder next();

private:
    zvx::AccountId m_account;
    std::vector<Piece> m_pieces;
    Chance m_chance;
    std::uint64_t m_keys = 0;
};
