#include "exchange/service/money_desk.h"

#include "exchange/accounts/random_source.h"
#include "exchange/service/bank_gateway.h"
#include "exchange/service/desk_queue.h"
#include "exchange/service/market_hand.h"
#include "exchange/service/money_office.h"
#include "exchange/service/money_refusal.h"

#include <map>
#include <stdexcept>
#include <thread>
#include <utility>

namespace zvx {

namespace {

using CardOf = std::function<std::optional<BankCard>(const MarketServer &, AccountId)>;

/// A market of the service as the office sees it.
class MarketDoor : public TransferMarket
{
public:
    MarketDoor(MarketServer &market, CardOf cardOf)
        : m_market(market), m_hand(market), m_cardOf(std::move(cardOf))
    {
    }

    Result carryOut(const BeginTransfer &command) override
    {
        return m_hand.executeFor(command.account, command);
    }
    Result carryOut(const EndTransfer &command) override { return m_hand.execute(command); }
    Result carryOut(const BurnKey &command) override
    {
        return m_hand.executeFor(command.account, command);
    }

    std::vector<FlowRow> waiting() override
    {
        return m_hand.read([](MarketReader &reader) { return reader.waitingFlows(); });
    }
    std::optional<FlowRow> flowOf(AccountId account, ActionKey key) override
    {
        return m_hand.read([&](MarketReader &reader) { return reader.flowOf(account, key); });
    }
    std::optional<FlowRow> flowOf(TransferNumber transfer) override
    {
        return m_hand.read([&](MarketReader &reader) { return reader.flowOf(transfer); });
    }
    FlowSum sum(AccountId account, bool incoming, TimeMs since, std::size_t most) override
    {
        return m_hand.read(
            [&](MarketReader &reader) { return reader.flowSum(account, incoming, since, most); });
    }
    std::optional<BankCard> cardOf(AccountId account) override
    {
        return m_cardOf ? m_cardOf(m_market, account) : std::nullopt;
    }

private:
    MarketServer &m_market;
    MarketHand m_hand;
    CardOf m_cardOf;
};

using MoneyQueue = DeskQueue<MoneyOffice, BankWord>;

MoneyDeskOptions completed(MoneyDeskOptions options)
{
    if (!options.bank)
        throw std::invalid_argument("a money desk needs a bank");
    if (!options.clock)
        options.clock = std::make_shared<SystemClock>();
    if (!options.random)
        options.random = std::make_shared<SystemRandom>();
    return options;
}

} // namespace

/// The desk's thread and what it works with.
class MoneyDesk::Room
{
public:
    explicit Room(MoneyDeskOptions options)
        : m_options(completed(std::move(options))),
          m_queue(std::make_shared<MoneyQueue>(m_options.limits.queueBound)),
          m_office({*m_options.bank, *m_options.clock, *m_options.random,
                    [own = m_queue](TransferId id, BankWord word) { own->bring(id, word); }},
                   m_options.limits, m_counters)
    {
        for (MarketServer *market : m_options.markets) {
            auto door = std::make_unique<MarketDoor>(*market, m_options.cardOf);
            m_office.open(*door);
            m_doors[market] = std::move(door);
        }
        m_underWay = m_office.underWay();
        if (m_underWay > 0)
            note("transfers that wait for the bank: " + std::to_string(m_underWay));
        m_thread = std::thread([this] { run(); });
    }

    ~Room() { stop(); }

    TransferMarket &doorOf(MarketServer &market)
    {
        const auto door = m_doors.find(&market);
        if (door == m_doors.end())
            throw std::invalid_argument("a money desk without this market");
        return *door->second;
    }

    /// `errand` tells `done`, unless it is not taken.
    void hand(const Done &done, MoneyQueue::Errand errand)
    {
        using Entry = MoneyQueue::Entry;
        const Entry entry = m_queue->hand(std::move(errand));
        if (entry == Entry::Full)
            ++m_counters.turnedAway;
        if (entry != Entry::Taken && done)
            done(notTried(entry == Entry::Full ? Status::Busy : Status::Failed));
    }

    void begin(const MoneyRequest &request, const Done &done)
    {
        hand(done, [request, done](MoneyOffice &office) { office.begin(request, done); });
    }

    void stop()
    {
        m_queue->close();
        if (m_thread.joinable())
            m_thread.join();
    }

    const MoneyCounters &counters() const { return m_counters; }
    const MoneyLimits &limits() const { return m_options.limits; }
    std::size_t underWay() const { return m_underWay; }

private:
    void run()
    {
        m_queue->serve(m_office, *m_options.clock, [this] { m_underWay = m_office.underWay(); });
        m_office.end();
    }

    void note(const std::string &line) const
    {
        if (m_options.notice)
            m_options.notice(line);
    }

    const MoneyDeskOptions m_options;
    MoneyCounters m_counters;
    std::shared_ptr<MoneyQueue> m_queue;
    std::map<const MarketServer *, std::unique_ptr<MarketDoor>> m_doors;
    std::atomic<std::size_t> m_underWay{0};
    MoneyOffice m_office; ///< on the desk's thread alone, once it runs
    std::thread m_thread;
};

MoneyDesk::MoneyDesk(MoneyDeskOptions options) : m_room(std::make_unique<Room>(std::move(options)))
{
}

MoneyDesk::~MoneyDesk() = default;

void MoneyDesk::moneyIn(AccountId account, MarketServer &market, Fen amount, ActionKey key,
                        const std::optional<BankCard> &card, Done done)
{
    m_room->begin({&m_room->doorOf(market), account, true, amount, key, card}, done);
}

void MoneyDesk::moneyOut(AccountId account, MarketServer &market, Fen amount, ActionKey key,
                         const std::optional<BankCard> &card, Done done)
{
    m_room->begin({&m_room->doorOf(market), account, false, amount, key, card}, done);
}

void MoneyDesk::resolve(AccountId account, MarketServer &market, bool incoming, ActionKey key,
                        Done done)
{
    const MoneyRequest request{&m_room->doorOf(market), account, incoming, {}, key, {}};
    m_room->hand(done, [request, done](MoneyOffice &office) { office.resolve(request, done); });
}

void MoneyDesk::stop()
{
    m_room->stop();
}

const MoneyCounters &MoneyDesk::counters() const
{
    return m_room->counters();
}

const MoneyLimits &MoneyDesk::limits() const
{
    return m_room->limits();
}

std::size_t MoneyDesk::underWay() const
{
    return m_room->underWay();
}

} // namespace zvx
