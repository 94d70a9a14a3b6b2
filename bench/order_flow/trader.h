#pragma once

#include "orderstream.h"

// A client that places one order after the other: near the touch, on either side, so that about
// half of them trade and the books stay as they are.
class Trader
{
public:
    Trader(const Floor &floor, zvx::AccountId account, std::uint64_t seed);

    zvx::PlaceOrder next();

private:
    zvx::AccountId m_account;
    std::vector<const Floor::Book *> m_books;
    Chance m_chance;
    std::uint64_t m_keys = 0;
};
