#include "exchange/service/delivery_desk.h"

#include "exchange/accounts/random_source.h"
#include "exchange/service/delivery_office.h"
#include "exchange/service/delivery_refusal.h"
#include "exchange/store/exchange.h"

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

namespace zvx {

namespace {

/// A market of the service as the office sees it.
class MarketDoor : public DeliveryMarket
{
public:
    explicit MarketDoor(MarketServer &market) : m_market(market) { }

    Result carryOut(const RequestDelivery &command) override { return execute({command}); }
    Result carryOut(const CancelDelivery &command) override { return execute({command}); }
    Result carryOut(const AdvanceDelivery &command) override { return execute({command}); }
    Result carryOut(const BurnKey &command) override
    {
        const Result result = execute({command});
        if (result.status != Status::AccountUnknown)
            return result;
        return execute({OpenAccount{command.account, m_market.fee(), {}}, command});
    }

    std::vector<DeliveryRow> underWay() override
    {
        return m_market.readers().read(
            [](MarketReader &reader) { return reader.deliveriesUnderWay(); });
    }
    std::optional<DeliveryRow> deliveryOf(AccountId account, ActionKey key) override
    {
        return m_market.readers().read(
            [&](MarketReader &reader) { return reader.deliveryOf(account, key); });
    }
    std::optional<DeliveryRow> deliveryOf(ParcelId parcel) override
    {
        return m_market.readers().read(
            [&](MarketReader &reader) { return reader.deliveryOf(parcel); });
    }

    const std::string &prefix() const override { return m_market.prefix(); }
    std::string nameOf(CollectionId collection) override
    {
        const auto snapshot = m_market.snapshot();
        const auto row = snapshot->rowOf(collection);
        return row ? (*snapshot->infos.data)[*row]->name : std::to_string(collection.value());
    }

private:
    Result execute(std::vector<Command> commands)
    {
        return m_market.writer().execute(std::move(commands)).back();
    }

    MarketServer &m_market;
};

/// Something to be done for somebody who waits, on the desk's thread.
struct Errand {
    std::function<void(DeliveryOffice &)> run;
};

/// Where errands and the carrier's words wait. Outlives the desk while the carrier may still speak.
struct DeliveryQueue {
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Errand> errands;
    std::deque<std::pair<ParcelId, CarrierWord>> words;
    bool accepting = true;
    bool closed = false; ///< nobody listens any more

    void comeBack(ParcelId id, const CarrierWord &word)
    {
        {
            const std::lock_guard<std::mutex> lock(mutex);
            if (closed)
                return;
            words.emplace_back(id, word);
        }
        wake.notify_all();
    }
};

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
        : m_options(completed(std::move(options))), m_queue(std::make_shared<DeliveryQueue>()),
          m_office(
              {*m_options.carrier, *m_options.parcels, *m_options.clock, *m_options.random,
               [own = m_queue](ParcelId id, const CarrierWord &word) { own->comeBack(id, word); },
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

    /// `work` tells `done`, unless it is not taken.
    void hand(const Done &done, std::function<void(DeliveryOffice &)> work)
    {
        Status refusal = Status::Accepted;
        {
            const std::lock_guard<std::mutex> lock(m_queue->mutex);
            if (!m_queue->accepting)
                refusal = Status::Failed;
            else if (m_queue->errands.size() >= m_options.limits.queueBound)
                refusal = Status::Busy;
            else
                m_queue->errands.push_back({std::move(work)});
        }
        if (refusal == Status::Accepted) {
            m_queue->wake.notify_all();
            return;
        }
        if (refusal == Status::Busy)
            ++m_counters.turnedAway;
        if (done)
            done(notTried(refusal));
    }

    void stop()
    {
        {
            const std::lock_guard<std::mutex> lock(m_queue->mutex);
            m_queue->accepting = false;
        }
        m_queue->wake.notify_all();
        if (m_thread.joinable())
            m_thread.join();
    }

    const DeliveryCounters &counters() const { return m_counters; }
    std::size_t underWay() const { return m_underWay; }

private:
    void run()
    {
        std::deque<Errand> errands;
        std::deque<std::pair<ParcelId, CarrierWord>> words;
        while (await(errands, words)) {
            for (const auto &[id, word] : words)
                m_office.hear(id, word);
            for (const Errand &errand : errands)
                errand.run(m_office);
            m_office.tick();
            m_underWay = m_office.underWay();
            errands.clear();
            words.clear();
        }
    }

    /// Waits until there is something to do. False where nothing will come any more.
    bool await(std::deque<Errand> &errands, std::deque<std::pair<ParcelId, CarrierWord>> &words)
    {
        Clock &clock = *m_options.clock;
        std::unique_lock<std::mutex> lock(m_queue->mutex);
        for (;;) {
            const std::optional<SteadyMs> due = m_office.due();
            if (!m_queue->errands.empty() || !m_queue->words.empty()
                || (m_queue->accepting && due && *due <= clock.steady()))
                break;
            if (!m_queue->accepting) {
                m_queue->closed = true;
                return false;
            }
            clock.wait(m_queue->wake, lock, due);
        }
        errands.swap(m_queue->errands);
        words.swap(m_queue->words);
        return true;
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
