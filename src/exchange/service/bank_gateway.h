#pragma once

#include "exchange/accounts/bank_card.h"
#include "exchange/core/types.h"

#include <cstdint>
#include <functional>
#include <optional>

namespace zvx {

/// What the bank is asked for.
struct BankOrder {
    TransferId id; ///< the transfer's own, never used for another one
    bool incoming = true; ///< from the card to the exchange
    Fen amount; ///< positive
    /// Without a card the bank tells what became of the id, and refuses one that it never heard of.
    std::optional<BankCard> card;
};

enum class BankWord : std::uint8_t {
    Done, ///< the money has moved
    Refused, ///< nothing has moved, and nothing will under this id
};

/// The way to the banks.
class BankGateway
{
public:
    using Answered = std::function<void(BankWord)>;

    virtual ~BankGateway() = default;

    /// Asks for a transfer, or what became of it where its id was asked for before: one id moves
    /// money once, however often it is asked for, and always has the same word.
    ///
    /// `answered` may be called before this returns, later, more than once or never, from any
    /// thread, also when nobody is interested any more. One thread of the exchange at a time; does
    /// not throw.
    virtual void ask(const BankOrder &order, Answered answered) = 0;
};

} // namespace zvx
