#pragma once

#include "exchange/core/types.h"

#include <utility>
#include <variant>
#include <vector>

namespace zvx {

/**
 * What became of a command, in order of precedence: of all reasons that hold, the first one is
 * answered. The numbers are stored and sent; they never change, new ones go to the end of the list
 * even where their precedence is earlier.
 */
enum class Status : std::uint8_t {
    Accepted = 0,
    Exists = 1, ///< the key was used before with the same content; Result::first has the answer
    AccountUnknown = 2,
    KeyDiffers = 3, ///< the key was used before with another content
    TooManyActions = 4, ///< no room for another key before the day is settled
    AccountFrozen = 5,
    MarketClosed = 6,
    CollectionUnknown = 7,
    CollectionSuspended = 8,
    PriceOutsideLimits = 9,
    BadTick = 10,
    BadQuantity = 11,
    NotEnoughMoney = 12,
    NotEnoughHoldings = 13,
    TooManyOpenOrders = 14,
    MarketFull = 15, ///< no room for another order, account or collection
    OrderUnknown = 16,
    OrderDone = 17, ///< filled, revoked or ended before
    NotYourOrder = 18,
    BadAmount = 19, ///< not positive, or more than the market can hold
    BadRate = 20,
    BadPrice = 21, ///< a listing's previous close or tick
    BadDay = 22, ///< earlier than the trading day that ends
    AlreadyThere = 23, ///< the account or collection was opened or listed before
    KeyBurnt = 24, ///< the key was burnt before anything was done under it; comes before KeyDiffers
    BadKey = 25, ///< the null key, where a key is needed
    // The next three come before BadAmount; they are the caller's to find, see
    // BeginTransfer::ruling.
    NoBankCard = 26,
    AboveTransferLimit = 27,
    AboveDayLimit = 28,
    TooManyTransfers = 29, ///< of this account wait for the bank
    TransferUnknown = 30,
    TransferDone = 31, ///< ended before
    TooManyDeliveries = 32, ///< of this account are under way
    DeliveryUnknown = 33, ///< or another account's
    DeliveryDone = 34, ///< ended, or too far on its way for what is wanted
};

constexpr Status kLastStatus = Status::DeliveryDone;

/** A short English name for logs and tables of tests: "accepted", "not enough money". */
const char *name(Status status);

/** Brings a collection to the market; it trades at once when the market is open. */
struct ListCollection {
    CollectionId collection;
    Fen previousClose; ///< 1 .. kPriceBound - 1, the reference of the first session
    Quantity issued; ///< pieces that exist; grants never exceed it
    PartsPerMillion limit = kDefaultLimit; ///< up and down, below 1,000,000
    Fen tick{1}; ///< prices are whole multiples of it
    Quantity lot{1}; ///< quantities are whole multiples of it
};

struct SuspendCollection {
    CollectionId collection;
    bool suspended = true;
};

struct OpenAccount {
    AccountId account;
    PartsPerMillion fee = kDefaultFee; ///< at most kHighestFee
    std::vector<std::pair<CollectionId, PartsPerMillion>> rates
        = {}; ///< collections with another fee
};

struct FreezeAccount {
    AccountId account;
    bool frozen = true;
};

/** Sets the fee of later orders: of one collection, or the account's own with collection 0. */
struct SetFeeRate {
    AccountId account;
    CollectionId collection;
    PartsPerMillion fee;
};

struct Deposit {
    AccountId account;
    Fen amount; ///< positive
    ActionKey key = {};
};

/** Takes money out; checked against the available money. */
struct Withdraw {
    AccountId account;
    Fen amount; ///< positive
    ActionKey key = {};
};

/** Gives pieces that were not in circulation before, at `unitCost` a piece for profit figures. */
struct GrantHolding {
    AccountId account;
    CollectionId collection;
    Quantity quantity; ///< positive
    Fen unitCost;
    ActionKey key = {};
};

/**
 * A limit order. What crosses the book trades at the prices that rest there, what is left rests.
 * A buy freezes price * quantity and the highest fee; a sell freezes the pieces.
 */
struct PlaceOrder {
    AccountId account;
    CollectionId collection;
    Side side = Side::Buy;
    Fen price;
    Quantity quantity;
    ActionKey key = {};
    /** A refusal frees the key, so that the same prepared order may be sent again under it. */
    bool refusalFreesKey = false;
};

/** Ends open orders of the account; allowed while the market is closed. Each number is judged by
 *  itself: the command is accepted when one of them ended, else it has the first number's reason.
 */
struct RevokeOrders {
    AccountId account;
    std::vector<OrderNumber> orders; ///< 1 .. 1000 numbers
    ActionKey key = {};
};

/**
 * Ends the session: open orders end and release what they froze, the last price becomes the
 * previous close, the session number rises by one and action keys of earlier sessions are dropped.
 * The phase stays as it is. The same date may be opened again.
 */
struct SettleDay {
    TradingDay nextDay;
};

struct SetPhase {
    bool open = true;
};

/**
 * Asks what became of the action that has this key, and makes sure that the answer stays true. A
 * key that was used gives its first answer. Any other is burnt and answers KeyBurnt: an action that
 * is still on its way will then be refused with KeyBurnt, as long as keys are kept. Frozen accounts
 * may ask as well. TooManyActions leaves the key as it was.
 */
struct BurnKey {
    AccountId account;
    ActionKey key;
};

/**
 * Begins a transfer between an account and its bank card, which lasts until the bank's word is
 * known. Money that goes out is frozen until then; money that comes in is not there before. No
 * settlement ends a transfer.
 */
struct BeginTransfer {
    AccountId account;
    bool incoming = true; ///< from the card to the account
    Fen amount; ///< positive
    TransferId bank; ///< not null, never used before
    std::uint64_t card = 0; ///< tells the card from others of the account
    ActionKey key = {};
    /** What rules outside of the market came to: NoBankCard or a limit stands under the key as any
     *  refusal does. */
    Status ruling = Status::Accepted;
};

/** The bank's word on a transfer: done, or refused and nothing has moved. The first word counts. */
struct EndTransfer {
    TransferNumber transfer;
    bool done = true;
};

/**
 * Asks for the goods themselves. The pieces stay the account's and are frozen until they are sent
 * or given back; neither a closed market nor a suspended collection stands in the way, and no
 * settlement ends a request.
 */
struct RequestDelivery {
    AccountId account;
    CollectionId collection;
    Quantity quantity; ///< 1 and up, whatever the lot
    ParcelId parcel; ///< not null, never used before
    ActionKey key = {};
};

/** Takes a request back that nobody has begun to prepare. Its pieces are free again. */
struct CancelDelivery {
    AccountId account;
    DeliveryNumber delivery;
    ActionKey key = {};
};

/** How far a delivery is. Stored and sent: the numbers never change. */
enum class DeliveryStage : std::uint8_t {
    Requested = 0, ///< may be cancelled
    Preparing = 1,
    Sent = 2, ///< the pieces have left the market
    Refused = 3, ///< the pieces were given back, as with the next one
    Cancelled = 4,
};

constexpr DeliveryStage kLastStage = DeliveryStage::Cancelled;

/** The carrier's word on a delivery: Preparing, Sent or Refused. It goes forward only. */
struct AdvanceDelivery {
    DeliveryNumber delivery;
    DeliveryStage stage = DeliveryStage::Preparing;
};

using Command = std::variant<ListCollection, SuspendCollection, OpenAccount, FreezeAccount,
                             SetFeeRate, Deposit, Withdraw, GrantHolding, PlaceOrder, RevokeOrders,
                             SettleDay, SetPhase, BurnKey, BeginTransfer, EndTransfer,
                             RequestDelivery, CancelDelivery, AdvanceDelivery>;

/** The answer to a command. */
struct Result {
    Status status = Status::Accepted;
    Status first = Status::Accepted; ///< the first answer where status is Exists
    OrderNumber order; ///< of an order that was placed, else 0
    std::int64_t revoked = 0; ///< orders that RevokeOrders ended
    TransferNumber transfer = {}; ///< that began or ended now; 0 in an answer given again
    DeliveryNumber delivery = {}; ///< that began or moved on now; 0 in an answer given again

    /** What the client should be told: the first answer where the action was done before. */
    constexpr Status meaning() const { return status == Status::Exists ? first : status; }
};

} // namespace zvx
