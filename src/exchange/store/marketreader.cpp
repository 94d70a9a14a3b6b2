#include "exchange/store/marketreader.h"

#include "exchange/store/sqliterows.h"
#include "exchange/store/store.h"

namespace zvx {
namespace {

/// Pages that each of the many connections may keep, in KiB.
constexpr int kCacheKiB = 512;

} // namespace

/// The open file and its statements.
class MarketReader::Connection
{
public:
    Connection(const std::filesystem::path &file, const std::string &vfs)
        : m_database(file.string(), SQLite::OPEN_READONLY | SQLite::OPEN_NOMUTEX, 5'000, vfs)
    {
        m_database.exec("PRAGMA cache_size = -" + std::to_string(kCacheKiB));
        m_cash = make("SELECT account, fee, suspended, available, frozen FROM cash "
                      "WHERE account = ?");
        m_holdings = make("SELECT collection, quantity, frozen, cost FROM holdings "
                          "WHERE account = ? ORDER BY collection");
        m_rates = make("SELECT collection, fee FROM rates WHERE account = ? ORDER BY collection");
        m_order = make(std::string("SELECT ") + kOrderColumns + " FROM orders WHERE number = ?");
    }

    /// Runs work() in one transaction and turns what SQLite throws into a StoreError with the
    /// file's name.
    template <typename Work>
    auto consistently(const Work &work) -> decltype(work())
    {
        try {
            SQLite::Transaction transaction(m_database);
            auto result = work();
            transaction.commit();
            return result;
        } catch (const SQLite::Exception &error) {
            throw StoreError(m_database.getFilename() + ": " + error.what());
        }
    }

    /// Calls `take` for each row that `statement` finds for `key`. A statement that is not taken to
    /// its end would hold its transaction, and with it the write-ahead log.
    template <typename Key, typename Take>
    static void each(SQLite::Statement &statement, Key key, const Take &take)
    {
        Binder(statement) << key;
        while (statement.executeStep())
            take(statement);
        statement.reset();
    }

    std::optional<CashRow> cash(AccountId id)
    {
        std::optional<CashRow> found;
        each(*m_cash, id, [&](SQLite::Statement &s) {
            found.emplace();
            RowReader(s) >> found->account >> found->fee >> found->frozen >> found->available
                >> found->frozenCash;
        });
        return found;
    }

    SQLite::Statement &holdings() { return *m_holdings; }
    SQLite::Statement &rates() { return *m_rates; }
    SQLite::Statement &order() { return *m_order; }

private:
    std::unique_ptr<SQLite::Statement> make(const std::string &sql)
    {
        return std::make_unique<SQLite::Statement>(m_database, sql);
    }

    SQLite::Database m_database;
    std::unique_ptr<SQLite::Statement> m_cash;
    std::unique_ptr<SQLite::Statement> m_holdings;
    std::unique_ptr<SQLite::Statement> m_rates;
    std::unique_ptr<SQLite::Statement> m_order;
};

MarketReader::MarketReader(const std::filesystem::path &file, const std::string &vfs)
{
    try {
        m_connection = std::make_unique<Connection>(file, vfs);
    } catch (const SQLite::Exception &error) {
        throw StoreError(file.string() + ": " + error.what());
    }
}

MarketReader::~MarketReader() = default;

AccountState MarketReader::account(AccountId id)
{
    return m_connection->consistently([&] {
        AccountState state;
        state.cash = m_connection->cash(id).value_or(CashRow{id, {}, false, {}, {}});
        m_connection->each(m_connection->holdings(), id, [&](SQLite::Statement &s) {
            HoldingView holding;
            RowReader(s) >> holding.collection >> holding.quantity >> holding.frozen
                >> holding.cost;
            state.holdings.push_back(holding);
        });
        return state;
    });
}

std::optional<AccountFees> MarketReader::fees(AccountId id)
{
    return m_connection->consistently([&]() -> std::optional<AccountFees> {
        const std::optional<CashRow> cash = m_connection->cash(id);
        if (!cash)
            return std::nullopt;
        AccountFees fees{cash->fee, {}};
        m_connection->each(m_connection->rates(), id, [&](SQLite::Statement &s) {
            auto &[collection, fee] = fees.special.emplace_back();
            RowReader(s) >> collection >> fee;
        });
        return fees;
    });
}

std::vector<OrderRow> MarketReader::orders(const std::vector<OrderNumber> &numbers)
{
    return m_connection->consistently([&] {
        std::vector<OrderRow> rows;
        for (const OrderNumber number : numbers)
            m_connection->each(m_connection->order(), number,
                               [&](SQLite::Statement &s) { rows.push_back(readOrder(s)); });
        return rows;
    });
}

MarketReaders::MarketReaders(std::filesystem::path file, std::string vfs)
    : m_file(std::move(file)), m_vfs(std::move(vfs))
{
}

MarketReaders::~MarketReaders() = default;

void MarketReaders::close()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_idle.clear();
}

void MarketReaders::drain()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_draining = true;
    m_changed.wait_for(lock, kDrainTime, [this] { return m_reading == 0; });
    m_draining = false;
    m_changed.notify_all();
}

void MarketReaders::enter()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return !m_draining; });
    ++m_reading;
}

void MarketReaders::leave()
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    --m_reading;
    if (m_draining)
        m_changed.notify_all();
}

std::unique_ptr<MarketReader> MarketReaders::take()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!m_idle.empty()) {
            std::unique_ptr<MarketReader> reader = std::move(m_idle.back());
            m_idle.pop_back();
            return reader;
        }
    }
    return std::make_unique<MarketReader>(m_file, m_vfs);
}

void MarketReaders::give(std::unique_ptr<MarketReader> reader)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_idle.push_back(std::move(reader));
}

} // namespace zvx
