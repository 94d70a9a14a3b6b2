#pragma once

#include "exchange/core/event.h"
#include "exchange/core/market.h"
#include "exchange/store/deliveries.h"
#include "exchange/store/flows.h"
#include "exchange/store/records.h"

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
    Fen frozen; ///< money that it still reserves
    RecordLinks links; ///< orders of the same account before it

    const RecordLinks &before() const { return links; }
};

struct DealRow {
    Deal deal;
    Sequence session;
    Sequence ordinal; ///< among the deals of its collection in its session, from 1
    RecordLinks ofBuyer; ///< deals of the same buyer before it
    RecordLinks ofSeller;
};

/// A deal as one of its two accounts sees it.
struct AccountDeal {
    DealRow row;
    Side side = Side::Buy; ///< that the account took

    Fen fee() const { return side == Side::Buy ? row.deal.buyerFee : row.deal.sellerFee; }
    const RecordLinks &before() const { return side == Side::Buy ? row.ofBuyer : row.ofSeller; }
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

/// A collection as it was listed.
struct IssueRow {
    CollectionId collection;
    Fen previousClose; ///< of its first session
    Quantity issued;
    PartsPerMillion limit;
};

/// The figures of one collection in the running session; the prices are 0 without a deal.
struct RunningRow {
    CollectionId collection;
    Sequence session;
    TradingDay day;
    Fen previousClose;
    Fen open;
    Fen high;
    Fen low;
    Fen last;
    Quantity volume;
    Fen amount;
    std::int64_t deals = 0;
};

/// What was dealt in one collection within one minute of a session. The clock labels deals and may
/// be set back, so a minute that is over may still grow.
struct MinuteRow {
    CollectionId collection;
    Sequence session;
    TimeMs begin;
    Fen last;
    Quantity volume; ///< sums stop at kAmountBound
    Fen amount;
};

/// The market was opened or closed. A session that begins in an open market begins with a row.
struct PhaseRow {
    Sequence session;
    TimeMs at;
    bool open = false;
};

/// What one batch of commands does to the tables: each row once, in its last state; of minutes,
/// what is added to them.
struct TableUpdate {
    std::vector<OrderRow> orders;
    std::vector<DealRow> deals;
    std::vector<CashRow> cash;
    std::vector<RateRow> rates;
    std::vector<HoldingRow> holdings;
    std::vector<DayRow> days;
    std::vector<CompositeRow> composites;
    std::vector<FlowRow> flows;
    std::vector<DeliveryRow> deliveries;
    std::vector<IssueRow> issues;
    std::vector<RunningRow> running;
    std::vector<MinuteRow> minutes;
    std::vector<PhaseRow> phases;
    std::vector<RecordRow> records;
    std::vector<RecordRow> recordDays; ///< each as its day ended
    std::vector<MilestoneRow> milestones;
    std::vector<GatherRow> gathers;
};

} // namespace zvx
