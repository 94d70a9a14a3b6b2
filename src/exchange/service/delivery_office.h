#pragma once

#include "exchange/accounts/parcel_book.h"
#include "exchange/core/command.h"
#include "exchange/service/carrier_gateway.h"
#include "exchange/service/delivery_desk.h"
#include "exchange/store/clock.h"
#include "exchange/store/deliveries.h"

#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace zvx {

class RandomSource;

/// One market as deliveries need it. Everything throws StoreError where the market ended.
class DeliveryMarket
{
public:
    virtual ~DeliveryMarket() = default;

    /// Durable when it returns. An account that was never in the market has nothing to take out
    /// and is not opened for that; for a key that is burnt it is.
    virtual Result carryOut(const RequestDelivery &command) = 0;
    virtual Result carryOut(const CancelDelivery &command) = 0;
    virtual Result carryOut(const AdvanceDelivery &command) = 0;
    virtual Result carryOut(const BurnKey &command) = 0;

    // What is durable now.
    virtual std::vector<DeliveryRow> underWay() = 0;
    virtual std::optional<DeliveryRow> deliveryOf(AccountId account, ActionKey key) = 0;
    virtual std::optional<DeliveryRow> deliveryOf(ParcelId parcel) = 0;
    /// Those of the parcels for which no delivery stands.
    virtual std::vector<ParcelId> withoutDelivery(const std::vector<ParcelId> &parcels) = 0;
    /// Whether the key is that of a transfer of money.
    virtual bool isOfTransfer(AccountId account, ActionKey key) = 0;

    /// Names the market's parcels.
    virtual const std::string &prefix() const = 0;
    /// What a collection is called.
    virtual std::string nameOf(CollectionId collection) = 0;
};

struct DeliveryRequest {
    DeliveryMarket *market = nullptr;
    AccountId account;
    CollectionId collection;
    Quantity quantity;
    Recipient recipient;
    ActionKey key;
};

/**
 * What the delivery desk's thread does: the order of steps of a delivery, and what is under way.
 *
 * Single-threaded, without a clock of its own; the carrier's words come in by hear().
 */
class DeliveryOffice
{
public:
    using Done = DeliveryDesk::Done;
    using Outcome = DeliveryDesk::Outcome;

    struct Tools {
        CarrierGateway &carrier;
        ParcelBook &parcels;
        Clock &clock;
        RandomSource &random;
        /// Takes the carrier's word along until it can be heard. Any thread, also when the office
        /// is gone.
        std::function<void(ParcelId, const CarrierWord &)> comeBack;
        std::function<void(const std::string &line)> notice;
        /// A market or the parcels cannot be read or written any more.
        std::function<void(const std::string &reason)> fatal;
    };

    DeliveryOffice(Tools tools, const DeliveryLimits &limits, DeliveryCounters &counters);

    /// Forgets recipients whose request never came to a market, and asks the carrier for
    /// everything that is under way. Throws StoreError.
    void open(DeliveryMarket &market);

    // Each tells `done` exactly once.
    void request(const DeliveryRequest &request, Done done);
    void cancel(DeliveryMarket &market, AccountId account, ParcelId parcel, ActionKey key,
                Done done);
    void resolve(DeliveryMarket &market, AccountId account, ActionKey key, Done done);

    void hear(ParcelId id, const CarrierWord &word);

    /// Asks a silent carrier again.
    void tick();
    /// When there is something to do by tick().
    std::optional<SteadyMs> due() const;

    std::size_t underWay() const { return m_underWay.size(); }

private:
    struct UnderWay {
        DeliveryMarket *market = nullptr;
        DeliveryNumber delivery;
        DeliveryStage stage;
        CarrierOrder order;
    };
    using Id = std::pair<std::uint64_t, std::uint64_t>;

    static Id idOf(ParcelId id) { return {id.high, id.low}; }

    /// What ended leaves what was wanted of it open until the service is back.
    template <typename Work>
    Outcome guarded(const Work &work);

    Outcome tryRequest(const DeliveryRequest &request);
    Outcome tryCancel(DeliveryMarket &market, AccountId account, ParcelId parcel, ActionKey key);
    Outcome tryResolve(DeliveryMarket &market, AccountId account, ActionKey key);
    /// The answer that a delivery's key stands for.
    Outcome answerOf(const DeliveryRow &row) const;
    Outcome refused(Status status);
    /// Whether a parcel has another recipient. Of one that was taken out nobody can say.
    bool goesElsewhere(ParcelId id, const Recipient &recipient);
    ParcelId newId();
    void follow(DeliveryMarket &market, const DeliveryRow &row, const Recipient &recipient);
    void ask(const CarrierOrder &order);
    void note(const std::string &line);
    void fail(const std::string &reason);

    Tools m_tools;
    const DeliveryLimits m_limits;
    DeliveryCounters &m_counters;
    std::map<Id, UnderWay> m_underWay; ///< by the parcel
    std::set<std::pair<SteadyMs, Id>> m_askAgain;
};

} // namespace zvx
