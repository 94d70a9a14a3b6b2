#include "exchange/service/delivery_desk.h"

#include "exchange/accounts/random_source.h"
#include "exchange/service/delivery_office.h"
#include "exchange/service/delivery_refusal.h"
#include "exchange/service/desk_queue.h"
#include "exchange/service/market_hand.h"

#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

namespace zvx {

namespace {

/// A market of the service as the office sees it.
class MarketDoor : public DeliveryMarket
{
public:
    explicit MarketDoor(MarketServer &market) : m_market(market), m_hand(market) { }

    Result carryOut(const RequestDelivery &command) override { return m_hand.execute(command); }
    Result carryOut(const CancelDelivery &command) override { return m_hand.execute(command); }
    Result carryOut(const AdvanceDelivery &command) override { return m_hand.execute(command); }
    Result carryOut(const BurnKey &command) override
    {
        return m_hand.executeFor(command.account, command);
    }

    std::vector<DeliveryRow> underWay() override
    {
        return m_hand.read([](MarketReader &reader) { return reader.deliveriesUnderWay(); });
    }
    std::optional<DeliveryRow> deliveryOf(AccountId account, ActionKey key) override
    {
        return m_hand.read([&](MarketReader &reader) { return reader.deliveryOf(account, key); });
    }
    std::optional<DeliveryRow> deliveryOf(ParcelId parcel) override
    {
        return m_hand.read([&](MarketReader &reader) { return reader.deliveryOf(parcel); });
    }
    std::vector<ParcelId> withoutDelivery(const std::vector<ParcelId> &parcels) override
    {
        return m_hand.read([&](MarketReader &reader) {
            std::vector<ParcelId> strangers;
            for (const ParcelId id : parcels) {
                if (!reader.deliveryOf(id))
                    strangers.push_back(id);
            }
            return strangers;
        });
    }
    bool isOfTransfer(AccountId account, ActionKey key) override
    {
        return m_hand.read(
            [&](MarketReader &reader) { return reader.flowOf(account, key).has_value(); });
    }

    const std::string &prefix() const override { return m_market.prefix(); }
    std::string nameOf(CollectionId collection) override
    {
        const auto snapshot = m_market.snapshot();
        const auto row = snapshot->rowOf(collection);
        return row ? (*snapshot->infos.data)[*row]->name : std::to_string(collection.value());
    }

private:
    MarketServer &m_market;
    MarketHand m_hand;
};

using DeliveryQueue = DeskQueue<DeliveryOffice, CarrierWord>;

DeliveryDeskOptions completed(DeliveryDeskOptions options)
{
    if (!options.carrier || !options.parcels)
        throw std::invalid_argument("a delivery desk needs a carrier and its parcels");
    if (!options.clock)
        options.clock = std::make_shared<SystemClock>();
    if (!options.random)
        options.random = std::make_shared<SystemRandom>();
    return options;
}

} // namespace

/// The desk's thread and what it works with.
class DeliveryDesk::Room
{
public:
    explicit Room(DeliveryDeskOptions options)
        : m_options(completed(std::move(options))),
          m_queue(std::make_shared<DeliveryQueue>(m_options.limits.queueBound)),
          m_office({*m_options.carrier, *m_options.parcels, *m_options.clock, *m_options.random,
                    [own = m_queue](ParcelId id, const CarrierWord &word) { own->bring(id, word); },
                    m_options.notice, m_options.fatal},
                   m_options.limits, m_counters)
    {
        for (MarketServer *market : m_options.markets) {
            auto door = std::make_unique<MarketDoor>(*market);
            m_office.open(*door);
            m_doors[market] = std::move(door);
        }
        m_underWay = m_office.underWay();
        m_thread = std::thread([this] { run(); });
    }

    ~Room() { stop(); }

    DeliveryMarket &doorOf(MarketServer &market)
    {
        const auto door = m_doors.find(&market);
        if (door == m_doors.end())
            throw std::invalid_argument("a delivery desk without this market");
        return *door->second;
    }

    /// `errand` tells `done`, unless it is not taken.
    void hand(const Done &done, DeliveryQueue::Errand errand)
    {
        using Entry = DeliveryQueue::Entry;
        const Entry entry = m_queue->hand(std::move(errand));
        if (entry == Entry::Full)
            ++m_counters.turnedAway;
        if (entry != Entry::Taken && done)
            done(notTried(entry == Entry::Full ? Status::Busy : Status::Failed));
    }

    void stop()
    {
        m_queue->close();
        if (m_thread.joinable())
            m_thread.join();
    }

    const DeliveryCounters &counters() const { return m_counters; }
    std::size_t underWay() const { return m_underWay; }

private:
    void run()
    {
        m_queue->serve(m_office, *m_options.clock, [this] { m_underWay = m_office.underWay(); });
    }

    const DeliveryDeskOptions m_options;
    DeliveryCounters m_counters;
    std::shared_ptr<DeliveryQueue> m_queue;
    std::map<const MarketServer *, std::unique_ptr<MarketDoor>> m_doors;
    std::atomic<std::size_t> m_underWay{0};
    DeliveryOffice m_office; ///< on the desk's thread alone, once it runs
    std::thread m_thread;
};

DeliveryDesk::DeliveryDesk(DeliveryDeskOptions options)
    : m_room(std::make_unique<Room>(std::move(options)))
{
}

DeliveryDesk::~DeliveryDesk() = default;

void DeliveryDesk::request(AccountId account, MarketServer &market, CollectionId collection,
                           Quantity quantity, Recipient recipient, ActionKey key, Done done)
{
    const DeliveryRequest request{&m_room->doorOf(market), account, collection, quantity,
                                  std::move(recipient),    key};
    m_room->hand(done, [request, done](DeliveryOffice &office) { office.request(request, done); });
}

void DeliveryDesk::cancel(AccountId account, MarketServer &market, ParcelId parcel, ActionKey key,
                          Done done)
{
    m_room->hand(
        done, [&door = m_room->doorOf(market), account, parcel, key, done](DeliveryOffice &office) {
            office.cancel(door, account, parcel, key, done);
        });
}

void DeliveryDesk::resolve(AccountId account, MarketServer &market, ActionKey key, Done done)
{
    m_room->hand(done,
                 [&door = m_room->doorOf(market), account, key, done](DeliveryOffice &office) {
                     office.resolve(door, account, key, done);
                 });
}

void DeliveryDesk::stop()
{
    m_room->stop();
}

const DeliveryCounters &DeliveryDesk::counters() const
{
    return m_room->counters();
}

std::size_t DeliveryDesk::underWay() const
{
    return m_room->underWay();
}

} // namespace zvx
