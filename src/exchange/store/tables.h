#pragma once

#include "exchange/core/event.h"
#include "exchange/core/market.h"

#include <optional>
#include <string>
#include <vector>

namespace zvx {

/*
 * The rows of the tables that stand beside the stored events. All of them follow from the events
 * and can be made anew from them; they exist so that questions about the past need no replay.
 */

enum class OrderState : std::uint8_t {
    Open = 0,
    Filled = 1,
    Revoked = 2,
    Ended = 3, ///< with the day
    SelfTrade = 4, ///< gave way to a newer order of its own account
};

struct OrderRow {
    OrderNumber order;
    AccountId account;
    CollectionId collection;
    Side side = Side::Buy;
    Fen price;
    Quantity quantity;
    Quantity filled;
    Fen amount; ///< of its deals
    Fen fees; ///< of its deals
    PartsPerMillion fee;
    OrderState state = OrderState::Open;
    Sequence session;
    TimeMs placedAt;
    TimeMs changedAt; ///< of the last deal, or of its end
    ActionKey key; ///< of the action that placed it; null where there was none
    ActionKey revokeKey; ///< of the action that revoked it
};

struct DealRow {
    Deal deal;
    Sequence session;
};

/// Money of one account.
struct CashRow {
    AccountId account;
    PartsPerMillion fee;
    bool frozen = false;
    Fen available;
    Fen frozenCash;
};

/// The fee of one account's orders of one collection, where it is not the account's own.
struct RateRow {
    AccountId account;
    CollectionId collection;
    PartsPerMillion fee;
};

struct HoldingRow {
    AccountId account;
    HoldingView holding; ///< quantity 0: the row goes
};

/// One collection's session that was settled.
using DayRow = CollectionSettled;

/// The market's index over one session, in hundredths of a point; the figures are 0 without a deal.
struct CompositeRow {
    Sequence session;
    TradingDay day;
    Fen previousClose;
    Fen open;
    Fen high;
    Fen low;
    Fen last;
};

/// What one batch of commands does to the tables: each row once, in its last state.
struct TableUpdate {
    std::vector<OrderRow> orders;
    std::vector<DealRow> deals;
    std::vector<CashRow> cash;
    std::vector<RateRow> rates;
    std::vector<HoldingRow> holdings;
    std::vector<DayRow> days;
    std::vector<CompositeRow> composites;
};

} // namespace zvx
