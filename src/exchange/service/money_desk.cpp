#include "exchange/service/money_desk.h"

#include "exchange/accounts/random_source.h"
#include "exchange/service/bank_gateway.h"
#include "exchange/service/money_office.h"
#include "exchange/service/money_refusal.h"
#include "exchange/store/clock.h"
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

using CardOf = std::function<std::optional<BankCard>(const MarketServer &, AccountId)>;

/// A market of the service as the office sees it.
class MarketDoor : public TransferMarket
{
public:
    MarketDoor(MarketServer &market, CardOf cardOf) : m_market(market), m_cardOf(std::move(cardOf))
    {
    }

    Result carryOut(const BeginTransfer &command) override
    {
        return carryOutFor(command.account, command);
    }
    Result carryOut(const EndTransfer &command) override { return execute({command}); }
    Result carryOut(const BurnKey &command) override
    {
        return carryOutFor(command.account, command);
    }

    std::vector<FlowRow> waiting() override
    {
        return m_market.readers().read([](MarketReader &reader) { return reader.waitingFlows(); });
    }
    std::optional<FlowRow> flowOf(AccountId account, ActionKey key) override
    {
        return m_market.readers().read(
            [&](MarketReader &reader) { return reader.flowOf(account, key); });
    }
    std::optional<FlowRow> flowOf(TransferNumber transfer) override
    {
        return m_market.readers().read(
            [&](MarketReader &reader) { return reader.flowOf(transfer); });
    }
    FlowSum sum(AccountId account, bool incoming, TimeMs since, std::size_t most) override
    {
        return m_market.readers().read(
            [&](MarketReader &reader) { return reader.flowSum(account, incoming, since, most); });
    }
    std::optional<BankCard> cardOf(AccountId account) override
    {
        return m_cardOf ? m_cardOf(m_market, account) : std::nullopt;
    }

private:
    Result execute(std::vector<Command> commands)
    {
        return m_market.writer().execute(std::move(commands)).back();
    }

    Result carryOutFor(AccountId account, const Command &command)
    {
        const Result result = execute({command});
        if (result.status != Status::AccountUnknown)
            return result;
        return execute({OpenAccount{account, m_market.fee(), {}}, command});
    }

    MarketServer &m_market;
    CardOf m_cardOf;
};

/// Something to be done for somebody who waits.
struct Errand {
    MoneyRequest request;
    bool resolve = false;
    MoneyDesk::Done done;
};

/// Where errands and the bank's words wait. Outlives the desk while the bank may still speak.
struct MoneyQueue {
    std::mutex mutex;
    std::condition_variable wake;
    std::deque<Errand> errands;
    std::deque<std::pair<TransferId, BankWord>> words;
    bool accepting = true;
    bool closed = false; ///< nobody listens any more

    void comeBack(TransferId id, BankWord word)
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
        : m_options(completed(std::move(options))), m_queue(std::make_shared<MoneyQueue>()),
          m_office({*m_options.bank, *m_options.clock, *m_options.random,
                    [own = m_queue](TransferId id, BankWord word) { own->comeBack(id, word); }},
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

    void hand(MarketServer &market, MoneyRequest request, bool resolve, Done done)
    {
        const auto door = m_doors.find(&market);
        if (door == m_doors.end())
            throw std::invalid_argument("a money desk without this market");
        request.market = door->second.get();
        Status refusal = Status::Accepted;
        {
            const std::lock_guard<std::mutex> lock(m_queue->mutex);
            if (!m_queue->accepting)
                refusal = Status::Failed;
            else if (m_queue->errands.size() >= m_options.limits.queueBound)
                refusal = Status::Busy;
            else
                m_queue->errands.push_back({std::move(request), resolve, std::move(done)});
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

    const MoneyCounters &counters() const { return m_counters; }
    const MoneyLimits &limits() const { return m_options.limits; }
    std::size_t underWay() const { return m_underWay; }

private:
    void run()
    {
        std::deque<Errand> errands;
        std::deque<std::pair<TransferId, BankWord>> words;
        while (await(errands, words)) {
            for (const auto &[id, word] : words)
                m_office.hear(id, word);
            for (Errand &errand : errands) {
                if (errand.resolve)
                    m_office.resolve(errand.request, std::move(errand.done));
                else
                    m_office.begin(errand.request, std::move(errand.done));
            }
            m_office.tick();
            m_underWay = m_office.underWay();
            errands.clear();
            words.clear();
        }
        m_office.end();
    }

    /// Waits until there is something to do. False where nothing will come any more.
    bool await(std::deque<Errand> &errands, std::deque<std::pair<TransferId, BankWord>> &words)
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
    m_room->hand(market, {nullptr, account, true, amount, key, card}, false, std::move(done));
}

void MoneyDesk::moneyOut(AccountId account, MarketServer &market, Fen amount, ActionKey key,
                         const std::optional<BankCard> &card, Done done)
{
    m_room->hand(market, {nullptr, account, false, amount, key, card}, false, std::move(done));
}

void MoneyDesk::resolve(AccountId account, MarketServer &market, bool incoming, ActionKey key,
                        Done done)
{
    m_room->hand(market, {nullptr, account, incoming, {}, key, {}}, true, std::move(done));
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
