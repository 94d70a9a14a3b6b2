#include "durable.h"

#include "rowmaker.h"
#include "steadywall.h"
#include "trader.h"

#include "exchange/store/marketwriter.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "support/report.h"
#include "support/scratchfolder.h"
#include "support/stopwatch.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

using namespace zvx;

namespace {

constexpr std::size_t kClients = 256;
constexpr std::size_t kBooks = 50;
constexpr std::size_t kGroup = 100;

std::vector<Command> openingOf(const Floor &floor)
{
    std::vector<Command> commands = floor.listing();
    const std::vector<Command> accounts = floor.opening();
    commands.insert(commands.end(), accounts.begin(), accounts.end());
    return commands;
}

// Clients in closed loops at the door of the market: each hands in its next order when the last
// one is answered.
class WriterLoad
{
public:
    WriterLoad(const Floor &floor, const std::filesystem::path &file, std::uint64_t seed)
        : m_writer(std::make_unique<SqliteStore>(file), floor.catalogue(),
                   std::make_shared<SystemClock>(), {})
    {
        for (std::size_t i = 0; i < kClients; ++i)
            m_traders.emplace_back(floor, AccountId(static_cast<std::int64_t>(i + 1)), seed);
        m_writer.start();
        m_writer.execute(floor.opening());
    }

    // Acknowledged orders a second.
    double run(double milliseconds)
    {
        std::vector<std::size_t> ready;
        for (std::size_t i = 0; i < kClients; ++i)
            ready.push_back(i);
        std::size_t answered = 0;
        const Stopwatch watch;
        while (watch.wall() < milliseconds) {
            for (const std::size_t client : ready)
                submit(client);
            ready = take();
            answered += ready.size();
        }
        const double rate = static_cast<double>(answered) / watch.wall() * 1000;
        for (std::size_t open = kClients - ready.size(); open > 0;)
            open -= take().size();
        return rate;
    }

    void stop() { m_writer.stop(); }
    std::int64_t accepted() const { return m_accepted; }
    double ordersOfCommit() const
    {
        const WriterCounters &counters = m_writer.counters();
        return static_cast<double>(counters.committedCommands)
            / static_cast<double>(counters.commits);
    }

private:
    void submit(std::size_t client)
    {
        m_writer.submit(m_traders[client].next(), [this, client](const Result &result) {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_accepted += result.status == Status::Accepted;
            m_answered.push_back(client);
            m_changed.notify_one();
        });
    }

    std::vector<std::size_t> take()
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        m_changed.wait(lock, [this] { return !m_answered.empty(); });
        return std::move(m_answered);
    }

    MarketWriter m_writer;
    std::vector<Trader> m_traders;
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::size_t> m_answered;
    std::int64_t m_accepted = 0;
};

// What the plain way stores: one row, one commit, synced.
class PlainTable
{
public:
    explicit PlainTable(const std::filesystem::path &file)
        : m_database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE)
    {
        m_database.exec("PRAGMA journal_mode = WAL");
        m_database.exec("PRAGMA synchronous = FULL");
        m_database.exec("CREATE TABLE orders (number INTEGER PRIMARY KEY, account INTEGER, "
                        "collection INTEGER, side INTEGER, price INTEGER, quantity INTEGER, "
                        "key BLOB, placed INTEGER)");
        m_insert = std::make_unique<SQLite::Statement>(
            m_database, "INSERT INTO orders VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
    }

    void put(const PlaceOrder &order)
    {
        m_insert->reset();
        m_insert->bind(1, ++m_last);
        m_insert->bind(2, order.account.value());
        m_insert->bind(3, order.collection.value());
        m_insert->bind(4, static_cast<int>(order.side));
        m_insert->bind(5, order.price.value());
        m_insert->bind(6, order.quantity.value());
        m_insert->bind(7, &order.key, sizeof order.key);
        m_insert->bind(8, SteadyWall::morning.value());
        m_insert->exec();
    }

    // Commits a second.
    double run(Trader &trader, double milliseconds)
    {
        const std::int64_t before = m_last;
        const Stopwatch watch;
        while (watch.wall() < milliseconds)
            put(trader.next());
        return static_cast<double>(m_last - before) / watch.wall() * 1000;
    }

private:
    SQLite::Database m_database;
    std::unique_ptr<SQLite::Statement> m_insert;
    std::int64_t m_last = 0;
};

// The rows of a hundred orders in one commit, made before: what the store can do at most.
class Ceiling
{
public:
    Ceiling(const Floor &floor, const std::filesystem::path &file, std::uint64_t seed)
        : m_store(file)
    {
        m_store.commit(m_rows.make(openingOf(floor), SteadyWall::morning));
        for (std::size_t i = 0; i < kClients; ++i)
            m_traders.emplace_back(floor, AccountId(static_cast<std::int64_t>(i + 1)), seed);
    }

    // Orders a second.
    double run(double milliseconds)
    {
        double spent = 0;
        std::size_t orders = 0;
        while (spent < milliseconds) {
            std::vector<Command> group;
            for (; group.size() < kGroup; m_next = (m_next + 1) % m_traders.size())
                group.push_back(m_traders[m_next].next());
            const Batch batch = m_rows.make(group, SteadyWall::morning);
            const Stopwatch watch;
            m_store.commit(batch);
            spent += watch.wall();
            orders += kGroup;
        }
        return static_cast<double>(orders) / spent * 1000;
    }

private:
    SqliteStore m_store;
    RowMaker m_rows;
    std::vector<Trader> m_traders;
    std::size_t m_next = 0;
};

// Every answered order is there, and what is there adds up.
void checkStored(const std::filesystem::path &file, std::int64_t accepted, Failures &failures)
{
    SqliteStore store(file);
    const Recovered found = recoverMarket(store);
    if (found.market.lastOrder().value() != accepted)
        failures.push_back(std::to_string(accepted) + " orders were acknowledged, "
                           + std::to_string(found.market.lastOrder().value()) + " are stored");
    if (const auto violation = replayMarket(store).audit())
        failures.push_back("what was stored does not add up: " + *violation);
}

} // namespace

void measureDurableOrders(const Options &options, Report &report, Failures &failures)
{
    const double span = options.quick ? 200 : 1500;
    const ScratchFolder folder(options.folder);
    const Floor floor(kBooks, kClients, options.seed);
    const auto file = folder.path() / "load.market";
    WriterLoad load(floor, file, options.seed);
    PlainTable plain(folder.path() / "plain.sqlite");
    Trader alone(floor, AccountId(1), options.seed);
    Ceiling ceiling(floor, folder.path() / "ceiling.market", options.seed);

    Pairs besidePlain;
    Pairs besideCeiling;
    for (int round = 0; round < options.rounds; ++round) {
        const double single = plain.run(alone, span / 2);
        const double ours = load.run(span);
        besidePlain.add(ours, single);
        besideCeiling.add(ours, ceiling.run(span / 2));
    }
    load.stop();
    checkStored(file, load.accepted(), failures);
    report.line("durable orders of 256 clients at the market's door, beside one row a commit",
                besidePlain, "/s", Goal::least(4, "4"));
    report.line("… beside groups of 100 with the same rows", besideCeiling, "/s",
                Goal::least(0.35, "0.35"));
    report.note("| … " + fixedText(load.ordersOfCommit(), 0)
                + " commands in a commit of ours | | | | | |");
}

void measureIdleOrder(const Options &options, Report &report, Failures &failures)
{
    constexpr double allowed = 0.4; // milliseconds beyond the commit
    constexpr auto pause = std::chrono::milliseconds(3);
    const int orders = options.quick ? 20 : 60 * options.rounds;
    const ScratchFolder folder(options.folder);
    const Floor floor(kBooks, kClients, options.seed);
    Trader trader(floor, AccountId(1), options.seed);
    Trader other(floor, AccountId(2), options.seed);

    const auto file = folder.path() / "idle.market";
    MarketWriter writer(std::make_unique<SqliteStore>(file), floor.catalogue(),
                        std::make_shared<SteadyWall>(), {});
    writer.start();
    RowMaker rows;
    SqliteStore bare(folder.path() / "bare.market");
    bare.commit(rows.make(floor.listing(), SteadyWall::morning));
    for (const Command &command : floor.opening()) {
        writer.execute({command});
        bare.commit(rows.make({command}, SteadyWall::morning));
    }

    std::mutex mutex;
    std::condition_variable answered;
    std::vector<double> ours;
    std::vector<double> commits;
    std::vector<double> beyond;
    for (int i = 0; i < orders; ++i) {
        const PlaceOrder order = i % 2 == 0 ? trader.next() : other.next();
        std::this_thread::sleep_for(pause);
        bool isAnswered = false;
        const Stopwatch watch;
        writer.submit(order, [&](const Result &) {
            const std::lock_guard<std::mutex> lock(mutex);
            isAnswered = true;
            answered.notify_one();
        });
        {
            std::unique_lock<std::mutex> lock(mutex);
            answered.wait(lock, [&] { return isAnswered; });
        }
        ours.push_back(watch.wall());

        const Batch batch = rows.make({order}, SteadyWall::morning);
        std::this_thread::sleep_for(pause);
        const Stopwatch bareWatch;
        bare.commit(batch);
        commits.push_back(bareWatch.wall());
        beyond.push_back(ours.back() - commits.back());
    }
    writer.stop();
    if (SqliteStore(file).describeTables() != bare.describeTables())
        failures.push_back("the bare commits did not store the same rows");
    report.words("one order on an idle market, at its door, beside the bare commit of its rows",
                 fixedText(median(ours), 3) + " ms", fixedText(median(commits), 3) + " ms",
                 "+" + fixedText(median(beyond), 3) + " ms", "+0.4 ms", median(beyond) <= allowed);
}
