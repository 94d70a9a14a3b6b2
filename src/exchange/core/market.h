#pragma once

#include "exchange/core/command.h"
#include "exchange/core/event.h"
#include "exchange/core/types.h"

#include <cstddef>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

/** Stored bytes or events that no market can have written. */
class Damaged : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/** How much a market takes in. Limits decide about new commands only; they are no part of the
 * state, and replay and restore do not ask them. */
struct Limits {
    std::size_t accounts = 1'000'000;
    std::size_t collections = 100'000;
    std::size_t openOrders = 10'000'000;
    std::size_t openOrdersOfAccount = 10'000;
    /** Keys of one account in the sessions that are kept. */
    std::size_t keysOfAccount = 65'536;
    /** Transfers of one account that wait for the bank. */
    std::size_t transfersOfAccount = 20;
    /** Deliveries of one account that are under way. */
    std::size_t deliveriesOfAccount = 200;
    /** Pieces of one order. */
    Quantity orderQuantity{100'000'000};
    /** Random bits of the process, so that nobody can choose action keys that fall together. */
    std::uint64_t keySalt = 0;
};

/** Sessions whose action keys are kept: the running one and the one before. */
constexpr int kKeySessions = 2;

/** One price of a book. */
struct Level {
    Fen price;
    Quantity quantity;
    std::int64_t orders = 0;
};

/** A session's figures of one collection. Sums stop at kAmountBound. */
struct DayFigures {
    Fen previousClose;
    Fen lower; ///< price limits, both still allowed
    Fen upper;
    Fen open; ///< 0 where nothing traded, like high, low and last
    Fen high;
    Fen low;
    Fen last;
    Quantity volume;
    Fen amount;
    Quantity outer; ///< pieces of deals that a buyer came in for
    Quantity inner; ///< pieces of deals that a seller came in for
    std::int64_t deals = 0;
};

struct CollectionView {
    CollectionId collection;
    Quantity issued;
    Quantity circulating; ///< granted, and not sent to anybody
    Quantity sent; ///< as goods; those are never granted again
    PartsPerMillion limit;
    Fen tick;
    Quantity lot;
    bool suspended = false;
    DayFigures day;
};

struct AccountView {
    AccountId account;
    bool frozen = false; ///< by the operator; not money
    PartsPerMillion fee;
    Fen available;
    Fen frozenCash; ///< reserved by open buys and by transfers to the bank
    std::int64_t openOrders = 0;
};

struct HoldingView {
    CollectionId collection;
    Quantity quantity; ///< all pieces
    Quantity frozen; ///< of those, reserved by open sells and by deliveries
    Fen cost; ///< what was paid for the pieces held, with fees
};

struct OrderView {
    OrderNumber order;
    AccountId account;
    CollectionId collection;
    Side side = Side::Buy;
    Fen price;
    Quantity quantity;
    Quantity remaining;
    Fen amount; ///< traded so far
    Fen charged; ///< fees so far
    Fen frozenCash; ///< still reserved
    PartsPerMillion fee;
    TimeMs at;
};

/** A transfer that waits for the bank's word. */
struct TransferView {
    TransferNumber transfer;
    AccountId account;
    bool incoming = true;
    Fen amount;
    TransferId bank;
    std::uint64_t card = 0;
    ActionKey key;
    TimeMs at;
};

/** A delivery that is under way. */
struct DeliveryView {
    DeliveryNumber delivery;
    AccountId account;
    CollectionId collection;
    Quantity quantity;
    DeliveryStage stage = DeliveryStage::Requested; ///< or Preparing
    ParcelId parcel;
    ActionKey key;
    TimeMs at;
};

/**
 * One market: accounts, books and the ledger as a deterministic state machine. A command and a time
 * go in, an answer and events come out; the same commands and times give the same events
 * everywhere. No clock, no randomness, no input or output, no threads: one writer at a time.
 *
 * Steady trading allocates nothing once the pools have grown.
 *
 * Rules worth knowing:
 * - Price, then order number. A partly filled order keeps its place.
 * - An order that would trade with an order of its own account ends that resting order first
 *   (DoneReason::SelfTrade) and goes on: the newer wish counts.
 * - Fees are charged over the sum of an order's fills, rounded once: after each fill the order has
 *   paid round(rate * amount so far), so that many fills cost what one would have cost.
 * - Clients count their highest quantity in float. Where that leaves a buy short by no more than
 * one part in 2^22 of its cost, the order is taken with a fee cap of what is there.
 */
class Market
{
public:
    /** An empty market, closed until SetPhase opens it, in session 1. */
    explicit Market(TradingDay day = TradingDay(20'200'101), const Limits &limits = {});
    Market(Market &&) noexcept;
    Market &operator=(Market &&) noexcept;
    ~Market();

    /** Carries out one command and appends what happened to `out`. A refused command changes
     * nothing, except that its key, if it has one, stands for the refusal from now on. */
    Result apply(const Command &command, TimeMs now, std::vector<Event> &out);

    /** Takes one stored event in. Throws Damaged for an event that cannot follow what happened so
     *  far; the market is then of no use any more. */
    void replay(const Event &event);

    /** A hash over everything that decides later answers, whatever way the state was reached. */
    std::uint64_t stateHash() const;

    /** The whole state as bytes, the same for the same state. */
    std::string checkpoint() const;
    /** The market that wrote the bytes. Throws Damaged for bytes that no market wrote. */
    static Market restore(std::string_view bytes, const Limits &limits = {});

    /** Checks every invariant, slowly: conservation of money and pieces, nothing negative, no
     * crossed book, frozen amounts equal to what open orders, transfers and deliveries need.
     * Returns the first violation in words. */
    std::optional<std::string> audit() const;

    TradingDay day() const;
    Sequence session() const;
    bool isOpen() const;
    /** The number of the last order and of the last deal; 0 before the first. */
    OrderNumber lastOrder() const;
    Sequence lastDeal() const;
    /** The number of the last transfer that began; 0 before the first. */
    TransferNumber lastTransfer() const;
    /** The number of the last delivery that was asked for; 0 before the first. */
    DeliveryNumber lastDelivery() const;
    /** Fees earned since the market began. */
    Fen feesEarned() const;
    std::size_t openOrders() const;

    /** In order of listing. */
    std::vector<CollectionId> collections() const;
    /** In order of opening. */
    std::vector<AccountId> accounts() const;

    std::optional<CollectionView> collection(CollectionId id) const;
    std::optional<AccountView> account(AccountId id) const;
    std::optional<OrderView> order(OrderNumber number) const; ///< open orders only

    /** Replaces `out` by at most `depth` levels, the best first; none for an unknown collection. */
    void levels(CollectionId id, Side side, std::size_t depth, std::vector<Level> &out) const;
    /** Replaces `out` by the account's open orders, the oldest first. */
    void ordersOf(AccountId id, std::vector<OrderView> &out) const;
    /** Replaces `out` by what the account holds, by rising collection id, without empty ones. */
    void holdingsOf(AccountId id, std::vector<HoldingView> &out) const;
    HoldingView holding(AccountId account, CollectionId collection) const;
    /** Replaces `out` by the transfers that wait for the bank, the oldest first. */
    void transfers(std::vector<TransferView> &out) const;
    /** Replaces `out` by the deliveries that are under way, the oldest first. */
    void deliveries(std::vector<DeliveryView> &out) const;
    /** The fee that the account's next order of the collection would be charged. */
    PartsPerMillion feeRate(AccountId account, CollectionId collection) const;

    /** The answer that stands for a key; none where the key was never used or is forgotten. The
     *  result has status Exists, or KeyBurnt where the key was burnt. */
    std::optional<Result> answerOf(AccountId account, ActionKey key) const;

    /** Replaces `out` by the collections whose quote, book or figures changed since the last call.
     */
    void takeDirty(std::vector<CollectionId> &out);
    /** The same for accounts whose money, holdings or orders changed. */
    void takeDirtyAccounts(std::vector<AccountId> &out);

private:
    struct State;
    static Market load(std::string_view bytes, const Limits &limits);

    std::unique_ptr<State> m_state;
};

} // namespace zvx
