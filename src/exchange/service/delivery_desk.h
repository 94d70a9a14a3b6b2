#pragma once

#include "exchange/accounts/parcel.h"
#include "exchange/core/types.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace zvx {

class CarrierGateway;
class Clock;
class MarketServer;
class ParcelBook;
class RandomSource;

struct DeliveryLimits {
    std::size_t queueBound = 256; ///< requests that may wait for the desk's thread
    std::int64_t askAgainEvery = 60'000; ///< ms after which a silent carrier is asked again
};

/// Counters since the start. Each is right by itself, they are not read as one.
struct DeliveryCounters {
    std::atomic<std::uint64_t> requested{0};
    std::atomic<std::uint64_t> cancelled{0};
    std::atomic<std::uint64_t> sent{0};
    std::atomic<std::uint64_t> refused{0}; ///< by a rule, nothing was begun
    std::atomic<std::uint64_t> refusedByCarrier{0};
    std::atomic<std::uint64_t> askedAgain{0};
    std::atomic<std::uint64_t> turnedAway{0}; ///< told Busy
};

struct DeliveryDeskOptions {
    std::vector<MarketServer *> markets; ///< all whose deliveries may be under way
    std::shared_ptr<CarrierGateway> carrier;
    std::shared_ptr<ParcelBook> parcels;
    std::shared_ptr<Clock> clock; ///< the machine's without it
    std::shared_ptr<RandomSource> random; ///< libsodium's without it
    DeliveryLimits limits;
    /// A line for the operator's log, without anything that a client sent.
    std::function<void(const std::string &line)> notice;
    /// A market or the parcels cannot be read or written any more: everything is answered Failed
    /// until the service is back. From the desk's thread.
    std::function<void(const std::string &reason)> fatal;
};

/**
 * The goods of all markets of a service on their way to their owners.
 *
 * Who receives them is durable before the market freezes the pieces, and the pieces are frozen
 * before the carrier hears of them. A carrier that stays silent is asked again, after a while and
 * after a restart; what it says is taken in once.
 *
 * Operations may be called from any thread. Each calls its `done` exactly once: on the desk's
 * thread, or before it returns where the queue is full (Busy) or the desk has ended (Failed). A
 * callback is short, does not throw and does not wait for the desk. It may be empty.
 *
 * A key that was seen answers the first answer again and does nothing; other content under it is
 * refused.
 */
class DeliveryDesk
{
public:
    enum class Status : std::uint8_t {
        Accepted,
        Refused, ///< nothing has changed
        Busy, ///< nothing was begun; ask again after a pause
        Failed, ///< unknown until the service is back
    };
    struct Outcome {
        Status status = Status::Accepted;
        std::string_view reason = {}; ///< the protocol's word, of a Refused one
        std::string_view message = {}; ///< a Chinese sentence, "" for Accepted
        ParcelId parcel = {}; ///< of a request that was Accepted
    };
    using Done = std::function<void(const Outcome &)>;

    /// Asks the carrier for what earlier runs left open, and takes requests from now on.
    /// Throws StoreError where a market or the parcels cannot be read.
    explicit DeliveryDesk(DeliveryDeskOptions options);
    /// Stops cleanly if that was not done.
    ~DeliveryDesk();

    DeliveryDesk(const DeliveryDesk &) = delete;
    DeliveryDesk &operator=(const DeliveryDesk &) = delete;

    void request(AccountId account, MarketServer &market, CollectionId collection,
                 Quantity quantity, Recipient recipient, ActionKey key, Done done);
    /// Takes back what nobody has begun to pack. A parcel of another account is not there.
    void cancel(AccountId account, MarketServer &market, ParcelId parcel, ActionKey key, Done done);
    /// What became of a key; one that was not used is burnt, and refused from then on.
    void resolve(AccountId account, MarketServer &market, ActionKey key, Done done);

    /// Takes no more requests and ends what waits in the queue. The markets, the parcels and the
    /// carrier must stand until then. Idempotent.
    void stop();

    const DeliveryCounters &counters() const;
    /// Deliveries that are not sent, refused or cancelled.
    std::size_t underWay() const;

private:
    class Room;
    std::unique_ptr<Room> m_room;
};

} // namespace zvx
