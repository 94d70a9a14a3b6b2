#include "exchange/store/marketreader.h"

#include "exchange/store/deliverytable.h"
#include "exchange/store/flowtable.h"
#include "exchange/store/recordtable.h"
#include "exchange/store/sqliterows.h"
#include "exchange/store/store.h"

#include <algorithm>

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
        m_running
            = make(std::string("SELECT ") + kRunningColumns + " FROM running WHERE collection = ?");
        m_issue = make("SELECT collection, previous_close, issued, price_limit FROM issues "
                       "WHERE collection = ?");
        m_days = make("SELECT day, open, high, low, last, volume, amount FROM days "
                      "WHERE collection = ? AND last > 0 ORDER BY session");
        m_phases = make("SELECT session, time, open FROM phases WHERE session = ? ORDER BY number");
        m_firstMinute = make("SELECT time FROM minutes WHERE collection = ? AND session = ? "
                             "ORDER BY time LIMIT 1");
        m_minutes = make("SELECT collection, session, time, last, volume, amount FROM minutes "
                         "WHERE collection = ? AND session = ? AND time >= ? "
                         "ORDER BY time DESC LIMIT ?");
        m_deals = make(std::string("SELECT ") + kDealColumns
                       + " FROM deals WHERE collection = ? AND session = ? AND ordinal > ? "
                         "AND ordinal <= ? ORDER BY ordinal");
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

    /// Calls `take` for each row that `statement` finds for `keys`. A statement that is not taken
    /// to its end would hold its transaction, and with it the write-ahead log.
    template <typename Take, typename... Keys>
    static void each(SQLite::Statement &statement, const Take &take, Keys... keys)
    {
        Binder binder(statement);
        (binder << ... << keys);
        while (statement.executeStep())
            take(statement);
        statement.reset();
    }

    std::optional<CashRow> cash(AccountId id)
    {
        std::optional<CashRow> found;
        const auto take = [&](SQLite::Statement &s) {
            found.emplace();
            RowReader(s) >> found->account >> found->fee >> found->frozen >> found->available
                >> found->frozenCash;
        };
        each(*m_cash, take, id);
        return found;
    }

    std::optional<RunningRow> running(CollectionId id)
    {
        std::optional<RunningRow> found;
        each(
            *m_running, [&](SQLite::Statement &s) { found = readRunning(s); }, id);
        return found;
    }

    std::optional<IssueRow> issue(CollectionId id)
    {
        std::optional<IssueRow> found;
        const auto take = [&](SQLite::Statement &s) {
            found.emplace();
            RowReader(s) >> found->collection >> found->previousClose >> found->issued
                >> found->limit;
        };
        each(*m_issue, take, id);
        return found;
    }

    FlowTable &flows() { return m_flows; }
    RecordTable &records() { return m_records; }
    DeliveryTable &deliveries() { return m_deliveries; }
    SQLite::Statement &holdings() { return *m_holdings; }
    SQLite::Statement &rates() { return *m_rates; }
    SQLite::Statement &days() { return *m_days; }
    SQLite::Statement &phases() { return *m_phases; }
    SQLite::Statement &firstMinute() { return *m_firstMinute; }
    SQLite::Statement &minutes() { return *m_minutes; }
    SQLite::Statement &deals() { return *m_deals; }

private:
    std::unique_ptr<SQLite::Statement> make(const std::string &sql)
    {
        return std::make_unique<SQLite::Statement>(m_database, sql);
    }

    SQLite::Database m_database;
    FlowTable m_flows{m_database};
    RecordTable m_records{m_database};
    DeliveryTable m_deliveries{m_database};
    std::unique_ptr<SQLite::Statement> m_cash;
    std::unique_ptr<SQLite::Statement> m_holdings;
    std::unique_ptr<SQLite::Statement> m_rates;
    std::unique_ptr<SQLite::Statement> m_running;
    std::unique_ptr<SQLite::Statement> m_issue;
    std::unique_ptr<SQLite::Statement> m_days;
    std::unique_ptr<SQLite::Statement> m_phases;
    std::unique_ptr<SQLite::Statement> m_firstMinute;
    std::unique_ptr<SQLite::Statement> m_minutes;
    std::unique_ptr<SQLite::Statement> m_deals;
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
        const auto take = [&](SQLite::Statement &s) {
            HoldingView &holding = state.holdings.emplace_back();
            RowReader(s) >> holding.collection >> holding.quantity >> holding.frozen
                >> holding.cost;
        };
        m_connection->each(m_connection->holdings(), take, id);
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
        const auto take = [&](SQLite::Statement &s) {
            auto &[collection, fee] = fees.special.emplace_back();
            RowReader(s) >> collection >> fee;
        };
        m_connection->each(m_connection->rates(), take, id);
        return fees;
    });
}

std::vector<OrderRow> MarketReader::orders(const std::vector<OrderNumber> &numbers)
{
    return m_connection->consistently([&] {
        std::vector<OrderRow> rows;
        for (const OrderNumber number : numbers) {
            if (std::optional<OrderRow> row = m_connection->records().order(number))
                rows.push_back(std::move(*row));
        }
        return rows;
    });
}

std::optional<SessionMinutes> MarketReader::minutes(CollectionId id, TimeMs from, std::size_t most)
{
    return m_connection->consistently([&]() -> std::optional<SessionMinutes> {
        const std::optional<RunningRow> running = m_connection->running(id);
        if (!running)
            return std::nullopt;
        SessionMinutes found{*running, {}, {}, {}};
        const auto takePhase = [&](SQLite::Statement &s) {
            PhaseRow &row = found.phases.emplace_back();
            RowReader(s) >> row.session >> row.at >> row.open;
        };
        m_connection->each(m_connection->phases(), takePhase, running->session);
        const auto takeFirst = [&](SQLite::Statement &s) { RowReader(s) >> found.first.emplace(); };
        m_connection->each(m_connection->firstMinute(), takeFirst, id, running->session);
        const auto takeMinute = [&](SQLite::Statement &s) {
            MinuteRow &row = found.minutes.emplace_back();
            RowReader(s) >> row.collection >> row.session >> row.begin >> row.last >> row.volume
                >> row.amount;
        };
        m_connection->each(m_connection->minutes(), takeMinute, id, running->session, from,
                           static_cast<std::int64_t>(most));
        std::reverse(found.minutes.begin(), found.minutes.end());
        return found;
    });
}

std::optional<TradedSessions> MarketReader::sessions(CollectionId id)
{
    return m_connection->consistently([&]() -> std::optional<TradedSessions> {
        const std::optional<RunningRow> running = m_connection->running(id);
        const std::optional<IssueRow> issue = m_connection->issue(id);
        if (!running || !issue)
            return std::nullopt;
        TradedSessions found{*issue, running->session, {}};
        const auto take = [&](SQLite::Statement &s) {
            Bar &bar = found.bars.emplace_back();
            RowReader(s) >> bar.day >> bar.open >> bar.high >> bar.low >> bar.close >> bar.volume
                >> bar.amount;
        };
        m_connection->each(m_connection->days(), take, id);
        if (running->deals > 0)
            found.bars.push_back({running->day, running->open, running->high, running->low,
                                  running->last, running->volume, running->amount});
        return found;
    });
}

std::optional<std::vector<DealRow>> MarketReader::deals(CollectionId id, std::int64_t page,
                                                        std::int64_t size)
{
    return m_connection->consistently([&]() -> std::optional<std::vector<DealRow>> {
        const std::optional<RunningRow> running = m_connection->running(id);
        if (!running)
            return std::nullopt;
        std::vector<DealRow> found;
        // Far pages end before the first deal, whatever their number comes to.
        const Wide newest = Wide(running->deals) - (Wide(page) - 1) * size;
        if (newest <= 0)
            return found;
        const auto take = [&](SQLite::Statement &s) { found.push_back(readDeal(s)); };
        const auto last = static_cast<std::int64_t>(newest);
        m_connection->each(m_connection->deals(), take, id, running->session, last - size, last);
        return found;
    });
}

std::vector<OrderRow> MarketReader::ordersOf(AccountId account, const RecordPage &page)
{
    return m_connection->consistently(
        [&] { return m_connection->records().orders(account, page); });
}

std::vector<AccountDeal> MarketReader::dealsOf(AccountId account, const RecordPage &page)
{
    return m_connection->consistently([&] { return m_connection->records().deals(account, page); });
}

std::vector<OrderRow> MarketReader::ordersOfSession(AccountId account, const RecordPage &page)
{
    return m_connection->consistently(
        [&] { return m_connection->records().ordersOfSession(account, page); });
}

std::vector<OrderRow> MarketReader::openOrders(AccountId account, const RecordPage &page)
{
    return m_connection->consistently(
        [&] { return m_connection->records().openOrders(account, page); });
}

std::vector<GatherRow> MarketReader::gathers(AccountId account)
{
    return m_connection->consistently([&] { return m_connection->records().gathers(account); });
}

std::vector<FlowRow> MarketReader::flows(AccountId account, const RecordPage &page)
{
    return m_connection->consistently([&] { return m_connection->flows().page(account, page); });
}

std::vector<FlowRow> MarketReader::waitingFlows()
{
    return m_connection->consistently([&] { return m_connection->flows().waiting(); });
}

std::optional<FlowRow> MarketReader::flowOf(AccountId account, ActionKey key)
{
    return m_connection->consistently([&] { return m_connection->flows().ofKey(account, key); });
}

std::optional<FlowRow> MarketReader::flowOf(TransferNumber transfer)
{
    return m_connection->consistently([&] { return m_connection->flows().ofTransfer(transfer); });
}

FlowSum MarketReader::flowSum(AccountId account, bool incoming, TimeMs since, std::size_t most)
{
    return m_connection->consistently(
        [&] { return m_connection->flows().sum(account, incoming, since, most); });
}

std::vector<DeliveryRow> MarketReader::deliveries(AccountId account, const RecordPage &page)
{
    return m_connection->consistently(
        [&] { return m_connection->deliveries().page(account, page); });
}

std::vector<DeliveryRow> MarketReader::deliveriesUnderWay()
{
    return m_connection->consistently([&] { return m_connection->deliveries().underWay(); });
}

std::optional<DeliveryRow> MarketReader::deliveryOf(AccountId account, ActionKey key)
{
    return m_connection->consistently(
        [&] { return m_connection->deliveries().ofKey(account, key); });
}

std::optional<DeliveryRow> MarketReader::deliveryOf(ParcelId parcel)
{
    return m_connection->consistently([&] { return m_connection->deliveries().ofParcel(parcel); });
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
