#pragma once

#include "exchange/core/command.h"
#include "exchange/core/types.h"

#include <variant>

namespace zvx {

/*
 * Events are what happened: outcomes, not wishes. The same events, replayed in their order, give
 * the same market without a single rule being asked again. A refused command leaves no event but
 * the answer under its key. Every event is trivially copyable and carries the caller's time.
 */

struct CollectionListed {
    TimeMs at;
    CollectionId collection;
    Fen previousClose;
    Quantity issued;
    PartsPerMillion limit;
    Fen tick;
    Quantity lot;
    Fen lower; ///< limits of the first session
    Fen upper;
};

struct CollectionSuspended {
    TimeMs at;
    CollectionId collection;
    bool suspended;
};

struct AccountOpened {
    TimeMs at;
    AccountId account;
    PartsPerMillion fee;
};

struct AccountFrozen {
    TimeMs at;
    AccountId account;
    bool frozen;
};

struct FeeRateSet {
    TimeMs at;
    AccountId account;
    CollectionId collection; ///< 0: the account's own rate
    PartsPerMillion fee;
};

/** Money came from outside (positive) or went there (negative). */
struct CashMoved {
    TimeMs at;
    AccountId account;
    Fen amount;
    Fen available; ///< of the account, afterwards
};

/** Pieces came into circulation. */
struct HoldingMoved {
    TimeMs at;
    AccountId account;
    CollectionId collection;
    Quantity quantity;
    Fen cost; ///< of all of them
    Quantity held; ///< of the account, afterwards, frozen ones included
};

struct OrderAccepted {
    TimeMs at;
    OrderNumber order;
    AccountId account;
    CollectionId collection;
    Side side;
    Fen price;
    Quantity quantity;
    PartsPerMillion fee;
    Fen frozenCash; ///< price * quantity and feeCap for a buy, 0 for a sell
    Fen feeCap; ///< the highest sum of fees that the order may be charged; 0 for a sell
};

/** Two orders traded at the maker's price. */
struct Deal {
    TimeMs at;
    Sequence sequence; ///< counts the deals of the market from 1
    CollectionId collection;
    OrderNumber maker; ///< rested
    OrderNumber taker; ///< came in
    Side takerSide; ///< Buy: outer volume, Sell: inner volume
    AccountId buyer;
    AccountId seller;
    Fen price;
    Quantity quantity;
    Fen buyerFee;
    Fen sellerFee;
    Fen released; ///< went from the buyer's frozen money back to the available: a better price
};

enum class DoneReason : std::uint8_t {
    Filled,
    Revoked,
    Ended, ///< with the day
    SelfTrade, ///< an order of the same account came in and would have traded with it
};

struct OrderDone {
    TimeMs at;
    OrderNumber order;
    AccountId account;
    CollectionId collection;
    DoneReason reason;
    Quantity unfilled;
    Fen releasedCash;
    Quantity releasedPieces;
};

/** The answer that a key stands for from now on: of the command that used it, or KeyBurnt. */
struct ActionAnswered {
    TimeMs at;
    AccountId account;
    ActionKey key;
    std::uint64_t fingerprint; ///< of the command's content; 0 of a burnt key
    Status status;
    OrderNumber order; ///< 0 where no order was placed
    std::int64_t revoked;
};

/** One collection's session in figures, and what the next one starts from. */
struct CollectionSettled {
    TimeMs at;
    CollectionId collection;
    TradingDay day; ///< that ended
    Sequence session; ///< that ended
    Fen open; ///< 0 where nothing traded, like the next three
    Fen high;
    Fen low;
    Fen last;
    Quantity volume;
    Fen amount;
    Fen previousClose; ///< of the next session
    Fen lower;
    Fen upper;
};

/** Comes after the orders ended and every collection was settled. */
struct DaySettled {
    TimeMs at;
    TradingDay day; ///< that begins
    Sequence session; ///< that begins
};

struct PhaseSet {
    TimeMs at;
    bool open;
};

struct TransferBegun {
    TimeMs at;
    TransferNumber transfer;
    AccountId account;
    bool incoming; ///< from the card to the account
    Fen amount; ///< frozen from now on where it goes out
    Fen available; ///< of the account, afterwards
    TransferId bank;
    std::uint64_t card;
    ActionKey key; ///< null where there was none
};

struct TransferEnded {
    TimeMs at;
    TransferNumber transfer;
    AccountId account;
    bool incoming;
    Fen amount;
    bool done; ///< else refused by the bank
    Fen available; ///< of the account, afterwards
};

struct DeliveryRequested {
    TimeMs at;
    DeliveryNumber delivery;
    AccountId account;
    CollectionId collection;
    Quantity quantity; ///< frozen from now on
    ParcelId parcel;
    ActionKey key; ///< null where there was none
};

struct DeliveryMoved {
    TimeMs at;
    DeliveryNumber delivery;
    AccountId account;
    CollectionId collection;
    Quantity quantity;
    DeliveryStage stage; ///< never Requested
    Fen cost; ///< that left with pieces sent, by their average; else 0
};

/** The position in this list is the type in stored bytes: new kinds go to its end. */
using Event = std::variant<CollectionListed, CollectionSuspended, AccountOpened, AccountFrozen,
                           FeeRateSet, CashMoved, HoldingMoved, OrderAccepted, Deal, OrderDone,
                           ActionAnswered, CollectionSettled, DaySettled, PhaseSet, TransferBegun,
                           TransferEnded, DeliveryRequested, DeliveryMoved>;

} // namespace zvx
