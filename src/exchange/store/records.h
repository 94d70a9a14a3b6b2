#pragma once

#include "exchange/core/types.h"
#include "exchange/store/recordpage.h"

#include <algorithm>
#include <cstdint>

namespace zvx {

/*
 * How an account's orders and deals are found without an index of each: every order and every deal
 * names the ones of the account before it, the account's row names its newest, and every sixteenth
 * of a list has a milestone. So a new record touches the end of its table and one row of the
 * account, while any page is at most fifteen steps away from a milestone, an end of a day, or the
 * newest.
 */

/// The numbers of an account's last buy and last sell before an order or a deal; 0 for none.
struct RecordLinks {
    std::int64_t buy = 0;
    std::int64_t sell = 0;

    std::int64_t of(RecordPage::Kind kind) const
    {
        return kind == RecordPage::All     ? std::max(buy, sell)
            : kind == RecordPage::Incoming ? buy
                                           : sell;
    }
};

/// Where an account's list of orders, or of deals, ends.
struct RecordTail {
    std::int64_t buys = 0; ///< how many there are
    std::int64_t sells = 0;
    RecordLinks last;

    std::int64_t count(RecordPage::Kind kind) const
    {
        return kind == RecordPage::All ? buys + sells : kind == RecordPage::Incoming ? buys : sells;
    }
};

/// The records of one account, up to its newest or to the last one of a trading day.
struct RecordRow {
    AccountId account;
    TradingDay day; ///< of the newest record
    Sequence session; ///< likewise
    RecordTail orders;
    RecordTail deals;
    std::int64_t earlierBuys = 0; ///< orders of the sessions before
    std::int64_t earlierSells = 0;
};

/// The lists that have milestones. The numbers are stored.
enum class RecordList : std::uint8_t {
    Orders = 0, ///< sells; buys and all of them are the next two
    Deals = 3, ///< likewise
};

/// Every so many records of a list have a milestone.
constexpr std::int64_t kMilestoneStep = 16;

/// The record at one place of an account's list.
struct MilestoneRow {
    AccountId account;
    RecordList list = RecordList::Orders;
    RecordPage::Kind kind = RecordPage::All;
    std::int64_t place = 0; ///< a multiple of kMilestoneStep
    std::int64_t number = 0; ///< of the order or of the deal
};

/// What an account dealt in one collection in one session. Sums stop at kAmountBound.
struct GatherRow {
    AccountId account;
    CollectionId collection;
    Sequence session;
    Quantity buyQuantity;
    Fen buyAmount;
    Fen buyFee;
    Quantity sellQuantity;
    Fen sellAmount;
    Fen sellFee;
    Fen sellProfit; ///< sellAmount less sellFee and what had been paid for the pieces sold
};

} // namespace zvx
