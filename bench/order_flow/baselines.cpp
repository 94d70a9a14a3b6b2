#include "baselines.h"

#include "support/stopwatch.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <regex>

using namespace zvx;

namespace {

constexpr std::size_t kGroup = 100;
constexpr TimeMs kMorning{1'577'840'400'000};

} // namespace

PlainTable::PlainTable(const std::filesystem::path &file)
    : m_database(std::make_unique<SQLite::Database>(file.string(),
                                                    SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE))
{
    m_database->exec("PRAGMA journal_mode = WAL");
    m_database->exec("PRAGMA synchronous = FULL");
    m_database->exec("CREATE TABLE orders (number INTEGER PRIMARY KEY, account INTEGER, "
                     "collection INTEGER, side INTEGER, price INTEGER, quantity INTEGER, "
                     "key BLOB, placed INTEGER)");
    m_insert = std::make_unique<SQLite::Statement>(
        *m_database, "INSERT INTO orders VALUES (?, ?, ?, ?, ?, ?, ?, ?)");
}

PlainTable::~PlainTable() = default;

double PlainTable::run(Trader &trader, double milliseconds)
{
    const std::int64_t before = m_last;
    const Stopwatch watch;
    while (watch.wall() < milliseconds)
        put(trader.next());
    return static_cast<double>(m_last - before) / watch.wall() * 1000;
}

void PlainTable::put(const PlaceOrder &order)
{
    m_insert->reset();
    m_insert->bind(1, ++m_last);
    m_insert->bind(2, order.account.value());
    m_insert->bind(3, order.collection.value());
    m_insert->bind(4, static_cast<int>(order.side));
    m_insert->bind(5, order.price.value());
    m_insert->bind(6, order.quantity.value());
    m_insert->bind(7, &order.key, sizeof order.key);
    m_insert->bind(8, kMorning.value());
    m_insert->exec();
}

Ceiling::Ceiling(const std::filesystem::path &file, std::vector<Trader> traders)
    : m_store(file), m_rows(m_store), m_traders(std::move(traders))
{
}

double Ceiling::run(double milliseconds)
{
    double spent = 0;
    std::size_t orders = 0;
    while (spent < milliseconds) {
        std::vector<Command> group;
        for (; group.size() < kGroup; m_next = (m_next + 1) % m_traders.size())
            group.push_back(m_traders[m_next].next());
        const Batch batch = m_rows.make(group, kMorning);
        const Stopwatch watch;
        m_store.commit(batch);
        spent += watch.wall();
        orders += kGroup;
    }
    return static_cast<double>(orders) / spent * 1000;
}

BareCommits::BareCommits(const std::filesystem::path &file) : m_store(file), m_rows(m_store) { }

double BareCommits::commit(const Command &command)
{
    const Batch batch = m_rows.make({command}, kMorning);
    const Stopwatch watch;
    m_store.commit(batch);
    return watch.wall();
}

std::string BareCommits::rows()
{
    return timelessRows(m_store);
}

std::string timelessRows(Store &store)
{
    // Minutes are times throughout.
    static const std::regex times("\\nminutes [^\\n]*| (placed|changed|time)=[0-9]+");
    return std::regex_replace(store.describeTables(), times, "");
}
