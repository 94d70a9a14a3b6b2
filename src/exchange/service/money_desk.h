#pragma once

#include "exchange/accounts/bank_card.h"
#include "exchange/core/types.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

class BankGateway;
class Clock;
class MarketServer;
class RandomSource;

struct MoneyLimits {
    Fen ofTransfer{100'000'000}; ///< the most that one transfer moves
    /// The most that an account moves one way in one market in a day of UTC+8.
    Fen ofDay{500'000'000};
    std::size_t transfersOfDay = 200; ///< of an account one way in one market, refused ones as well
    std::size_t queueBound = 1'024; ///< transfers that may wait for the desk's thread
    std::int64_t answerWait = 3'000; ///< ms until whoever waits for a silent bank is told Pending
    std::int64_t askAgainEvery = 30'000; ///< ms after which a silent bank is asked again
};

/// Counters since the start. Each is right by itself, they are not read as one.
struct MoneyCounters {
    std::atomic<std::uint64_t> moneyIn{0}; ///< posted
    std::atomic<std::uint64_t> moneyOut{0}; ///< paid
    std::atomic<std::uint64_t> refused{0}; ///< by a rule, nothing was begun
    std::atomic<std::uint64_t> refusedByBank{0};
    std::atomic<std::uint64_t> asked{0}; ///< questions to the bank, repeated ones included
    std::atomic<std::uint64_t> askedAgain{0};
    std::atomic<std::uint64_t> idleAnswers{0}; ///< of the bank, to what had ended before
    std::atomic<std::uint64_t> turnedAway{0}; ///< told Busy
};

struct MoneyDeskOptions {
    std::vector<MarketServer *> markets; ///< all whose transfers may be under way
    std::shared_ptr<BankGateway> bank;
    /// The card that an account has now. From the desk's thread.
    std::function<std::optional<BankCard>(const MarketServer &, AccountId)> cardOf;
    std::shared_ptr<Clock> clock; ///< the machine's without it
    std::shared_ptr<RandomSource> random; ///< libsodium's without it
    MoneyLimits limits;
    /// A line for the operator's log, without anything that a client sent.
    std::function<void(const std::string &line)> notice;
};

/**
 * Money in and out of all markets of a service.
 *
 * A transfer is durable in its market before the bank is asked, money that goes out is reserved by
 * then, and the bank's word ends it once. A bank that stays silent is asked again by the transfer's
 * id, after a while and after a restart.
 *
 * Operations may be called from any thread. Each calls its `done` exactly once: on the desk's
 * thread, or before it returns where the queue is full (Busy) or the desk has ended (Failed). A
 * callback is short, does not throw and does not wait for the desk. It may be empty.
 *
 * A key that was seen answers what became of its transfer and moves nothing; other content under it
 * is refused.
 */
class MoneyDesk
{
public:
    enum class Status : std::uint8_t {
        Accepted, ///< the money has moved
        Pending, ///< the bank has not answered yet; it is decided later, without anybody's doing
        Refused, ///< nothing has moved
        Busy, ///< nothing was begun; ask again after a pause
        Failed, ///< unknown until the service is back
    };
    struct Outcome {
        Status status = Status::Accepted;
        std::string_view reason = {}; ///< the protocol's word, of a Refused and a Pending one
        std::string message = {}; ///< a Chinese sentence, "" for Accepted
    };
    using Done = std::function<void(const Outcome &)>;

    /// Asks the bank for what earlier runs left open, and takes requests from now on.
    /// Throws StoreError where a market cannot be read.
    explicit MoneyDesk(MoneyDeskOptions options);
    /// Stops cleanly if that was not done.
    ~MoneyDesk();

    MoneyDesk(const MoneyDesk &) = delete;
    MoneyDesk &operator=(const MoneyDesk &) = delete;

    /// From the card to the account: asks the bank, and posts after its word. Without a card it is
    /// refused.
    void moneyIn(AccountId account, MarketServer &market, Fen amount, ActionKey key,
                 const std::optional<BankCard> &card, Done done);
    /// From the account to the card: reserves first, then asks the bank; what the bank refuses is
    /// given back.
    void moneyOut(AccountId account, MarketServer &market, Fen amount, ActionKey key,
                  const std::optional<BankCard> &card, Done done);
    /// What became of a key; one that was not used is burnt, and refused from then on.
    void resolve(AccountId account, MarketServer &market, bool incoming, ActionKey key, Done done);

    /// Takes no more requests, ends what waits in the queue, and tells those who wait for the bank
    /// Pending. The markets and the bank must stand until then. Idempotent.
    void stop();

    const MoneyCounters &counters() const;
    const MoneyLimits &limits() const;
    /// Transfers that wait for the bank's word.
    std::size_t underWay() const;

private:
    class Room;
    std::unique_ptr<Room> m_room;
};

} // namespace zvx
