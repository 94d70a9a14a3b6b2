#pragma once

#include "exchange/core/actionlog.h"
#include "exchange/core/book.h"
#include "exchange/core/flatmap.h"
#include "exchange/core/market.h"

#include <map>
#include <vector>

namespace zvx {

namespace core {

struct Account {
    AccountId id;
    PartsPerMillion fee;
    Fen available;
    Fen frozenCash;
    std::uint32_t firstOrder = kNone;
    std::uint32_t lastOrder = kNone;
    std::uint32_t openOrders = 0;
    std::uint32_t firstHolding = kNone;
    std::uint32_t keys = 0;
    std::uint32_t transfers = 0; ///< that wait for the bank
    std::uint32_t deliveries = 0; ///< that are under way
    bool frozen = false;
    bool hasRates = false;
    bool dirty = false;
};

struct Holding {
    std::uint32_t account = kNone;
    std::uint32_t book = kNone;
    std::uint32_t nextOfAccount = kNone;
    Quantity quantity;
    Quantity frozen;
    Fen cost;

    bool isEmpty() const { return quantity == Quantity(0); }
};

/** A transfer that waits for the bank. */
struct Transfer {
    TransferNumber number;
    std::uint32_t account = kNone;
    bool incoming = true;
    Fen amount;
    TransferId bank;
    std::uint64_t card = 0;
    ActionKey key;
    TimeMs at;
};

/** A delivery that is under way. */
struct Delivery {
    DeliveryNumber number;
    std::uint32_t account = kNone;
    std::uint32_t book = kNone;
    Quantity quantity;
    DeliveryStage stage = DeliveryStage::Requested;
    ParcelId parcel;
    ActionKey key;
    TimeMs at;
};

} // namespace core

/**
 * Everything a market knows. Two kinds of members change it, and only one of them decides:
 * `decide` asks the rules and states the outcome as events; `on` takes an event in, without a rule.
 * Live commands and replay go through the same `on`, so what was stored is what happened.
 */
struct Market::State {
    State(TradingDay firstDay, const Limits &marketLimits);

    // What a command comes to. Appends events, each of them taken in at once.
    struct Context {
        TimeMs now;
        std::vector<Event> &out;
    };
    Result decide(const ListCollection &command, Context &context);
    Result decide(const SuspendCollection &command, Context &context);
    Result decide(const OpenAccount &command, Context &context);
    Result decide(const FreezeAccount &command, Context &context);
    Result decide(const SetFeeRate &command, Context &context);
    Result decide(const Deposit &command, Context &context);
    Result decide(const Withdraw &command, Context &context);
    Result decide(const GrantHolding &command, Context &context);
    Result decide(const PlaceOrder &command, Context &context);
    Result decide(const RevokeOrders &command, Context &context);
    Result decide(const SettleDay &command, Context &context);
    Result decide(const SetPhase &command, Context &context);
    Result decide(const BurnKey &command, Context &context);
    Result decide(const BeginTransfer &command, Context &context);
    Result decide(const EndTransfer &command, Context &context);
    Result decide(const RequestDelivery &command, Context &context);
    Result decide(const CancelDelivery &command, Context &context);
    Result decide(const AdvanceDelivery &command, Context &context);

    // What an event changes. Throws Damaged where the event cannot follow what is there.
    void on(const CollectionListed &event);
    void on(const CollectionSuspended &event);
    void on(const AccountOpened &event);
    void on(const AccountFrozen &event);
    void on(const FeeRateSet &event);
    void on(const CashMoved &event);
    void on(const HoldingMoved &event);
    void on(const OrderAccepted &event);
    void on(const Deal &event);
    void on(const OrderDone &event);
    void on(const ActionAnswered &event);
    void on(const CollectionSettled &event);
    void on(const DaySettled &event);
    void on(const PhaseSet &event);
    void on(const TransferBegun &event);
    void on(const TransferEnded &event);
    void on(const DeliveryRequested &event);
    void on(const DeliveryMoved &event);

    // The same where live trading has already found the places.
    void on(const OrderAccepted &event, std::uint32_t account, std::uint32_t book);
    void on(const Deal &event, std::uint32_t maker, std::uint32_t taker);
    void on(const OrderDone &event, std::uint32_t order);
    void on(const ActionAnswered &event, std::uint32_t account);

    template <class Body, class... Places>
    void happen(Context &context, const Body &event, Places... places)
    {
        on(event, places...);
        context.out.emplace_back(event);
    }

    template <class Keyed, class Judge>
    Result once(const Keyed &command, Context &context, bool refusalFreesKey, Judge &&judge);
    Result place(const PlaceOrder &command, Context &context, std::uint32_t account);
    Status judge(const PlaceOrder &command, std::uint32_t account, std::uint32_t book,
                 OrderAccepted &outcome) const;
    void match(std::uint32_t taker, Context &context);
    void finish(std::uint32_t order, DoneReason reason, Context &context);
    Status judgeRevoke(OrderNumber number, std::uint32_t account) const;
    Status judge(const BeginTransfer &command, std::uint32_t account) const;
    /** What may still come in from outside. */
    Fen roomForMoney() const { return Fen(kAmountBound) - outside - promised; }
    /** Puts a transfer whose money is accounted for on the list. */
    void hang(const core::Transfer &transfer);
    Status judge(const RequestDelivery &command, std::uint32_t account) const;
    void move(const core::Delivery &delivery, DeliveryStage stage, Context &context);
    /** Puts a delivery whose pieces are frozen on the list. */
    void hang(const core::Delivery &delivery);
    /** What pieces of a holding cost by its average; it goes with them. */
    static Fen costOf(const core::Holding &holding, Quantity quantity);

    std::uint32_t findAccount(AccountId id) const;
    std::uint32_t findBook(CollectionId id) const;
    std::uint32_t needAccount(AccountId id) const;
    std::uint32_t needBook(CollectionId id) const;
    std::uint32_t findHolding(std::uint32_t account, std::uint32_t book) const;
    std::uint32_t ensureHolding(std::uint32_t account, std::uint32_t book);
    PartsPerMillion rateOf(std::uint32_t account, CollectionId collection) const;
    void touchAccount(std::uint32_t account);
    void touchBook(std::uint32_t book);
    /** Hangs an order whose figures are set into its book and its account's list. */
    void hang(std::uint32_t order);
    OrderView viewOf(const core::Order &order) const;

    /** Walks the whole state in the order of a checkpoint: `begin(count)` before each kind of part,
     *  then `visit(kind, copy of the part)` for each of them. */
    template <class Begin, class Visit>
    void eachPart(Begin &&begin, Visit &&visit) const;
    std::optional<std::string> auditMoney() const;
    std::optional<std::string> auditPieces() const;
    std::optional<std::string> auditBook(std::uint32_t book, std::size_t &seen) const;
    std::optional<std::string> auditOrder(const core::Order &order) const;

    Limits limits;
    TradingDay day;
    Sequence session{1};
    bool open = false;
    OrderNumber lastOrder;
    Sequence lastDeal;
    Fen fees;
    Fen outside; ///< what came in from outside and did not go there again
    TransferNumber lastTransfer;
    Fen promised; ///< what waiting transfers would bring in
    DeliveryNumber lastDelivery;

    std::vector<core::Account> accounts;
    std::vector<core::Book> books;
    std::vector<core::Holding> holdings;
    core::OrderPool orders;
    core::ActionLog actions;
    std::map<std::int64_t, core::Transfer> transfers; ///< by number
    std::map<std::int64_t, core::Delivery> deliveries; ///< by number
    core::FlatMap accountIndex; ///< from id
    core::FlatMap bookIndex; ///< from id
    core::FlatMap holdingIndex; ///< from account's and book's index
    core::FlatMap rates; ///< from account's index and collection id

    std::vector<CollectionId> dirtyBooks;
    std::vector<AccountId> dirtyAccounts;
};

} // namespace zvx
