#pragma once

#include "exchange/core/types.h"

#include <cstddef>
#include <cstdint>

namespace zvx {

/// How a flow stands. The numbers are stored and sent.
enum class FlowState : std::uint8_t {
    Pending = 0, ///< the bank has not answered yet
    Done = 1,
    Refused = 2, ///< by the bank; the money is where it was
};

/// Money on its way between an account and the outside, or after it.
struct FlowRow {
    std::int64_t number = 0; ///< counts the flows of the market from 1
    AccountId account;
    bool incoming = true;
    std::int64_t place = 0; ///< among the account's flows, from 1
    std::int64_t placeOfWay = 0; ///< among those of them that go the same way, from 1
    TradingDay day; ///< on which it began
    TimeMs begunAt;
    TimeMs endedAt; ///< of a pending one, when it began
    Fen amount;
    FlowState state = FlowState::Done;
    Fen balance; ///< of the available money, when the flow began or, later, ended
    TransferNumber transfer; ///< 0 where money moved without a bank
    TransferId bank; ///< null there, too
    std::uint64_t card = 0;
    ActionKey key; ///< null where there was none
};

/// How many flows an account has had.
struct FlowPlaces {
    std::int64_t all = 0;
    std::int64_t in = 0;
    std::int64_t out = 0;
};

/// What an account's transfers of a time come to.
struct FlowSum {
    Fen amount; ///< of those that the bank did not refuse; stops at kAmountBound
    std::size_t count = 0; ///< refused ones as well
};

} // namespace zvx
