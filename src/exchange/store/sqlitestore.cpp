#include "exchange/store/sqlitestore.h"

#include "exchange/store/deliverytable.h"
#include "exchange/store/flowtable.h"
#include "exchange/store/recordtable.h"
#include "exchange/store/sqliteconnection.h"
#include "exchange/store/sqliterows.h"
#include "exchange/store/sqliteschema.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace zvx {
namespace {

/// Checkpoints that are kept; older ones go with the commit of a new one.
constexpr int kCheckpoints = 3;

constexpr std::array<const char *, 17> kTables
    = {"orders",     "deals",       "cash",       "rates",   "holdings",  "days",
       "composites", "issues",      "running",    "minutes", "phases",    "flows",
       "records",    "record_days", "milestones", "gathers", "deliveries"};

} // namespace

/// The open file and its statements.
class SqliteStore::Connection : public SqliteConnection
{
public:
    Connection(const std::filesystem::path &file, const std::string &vfs, int logFrames)
        : SqliteConnection(file, vfs, kMarketApplicationId, marketMigrations(), logFrames)
    {
        prepare();
    }

    void put(const StoredCommand &command)
    {
        SQLite::Statement &s = *m_putCommand;
        Binder(s) << command.number << command.time << command.key;
        s.bindNoCopy(4, command.events.data(), static_cast<int>(command.events.size()));
        s.exec();
    }

    void put(const StoredCheckpoint &checkpoint)
    {
        SQLite::Statement s(database(), "INSERT OR REPLACE INTO checkpoints VALUES (?, ?, ?)");
        s.bind(1, checkpoint.number);
        s.bind(2, static_cast<std::int64_t>(checkpoint.hash));
        s.bindNoCopy(3, checkpoint.state.data(), static_cast<int>(checkpoint.state.size()));
        s.exec();
        SQLite::Statement drop(database(),
                               "DELETE FROM checkpoints WHERE number NOT IN "
                               "(SELECT number FROM checkpoints ORDER BY number DESC LIMIT ?)");
        drop.bind(1, kCheckpoints);
        drop.exec();
    }

    FlowTable &flows() { return m_flows; }
    RecordTable &records() { return m_records; }
    DeliveryTable &deliveries() { return m_deliveries; }

    void put(const TableUpdate &tables)
    {
        for (const FlowRow &row : tables.flows)
            m_flows.put(row);
        for (const DeliveryRow &row : tables.deliveries)
            m_deliveries.put(row);
        for (const OrderRow &row : tables.orders) {
            Binder(*m_putOrder) << row.order << row.account << row.collection
                                << static_cast<std::int64_t>(row.side) << row.price << row.quantity
                                << row.filled << row.amount << row.fees << row.fee
                                << static_cast<std::int64_t>(row.state) << row.session
                                << row.placedAt << row.changedAt << row.key << row.revokeKey
                                << row.frozen << row.links.buy << row.links.sell;
            m_putOrder->exec();
        }
        for (const DealRow &row : tables.deals) {
            const Deal &deal = row.deal;
            Binder(*m_putDeal) << deal.sequence << deal.at << row.session << deal.collection
                               << deal.maker << deal.taker
                               << static_cast<std::int64_t>(deal.takerSide) << deal.buyer
                               << deal.seller << deal.price << deal.quantity << deal.buyerFee
                               << deal.sellerFee << deal.released << row.ordinal << row.ofBuyer.buy
                               << row.ofBuyer.sell << row.ofSeller.buy << row.ofSeller.sell;
            m_putDeal->exec();
        }
        putRecords(tables);
        putCharts(tables);
        for (const CashRow &row : tables.cash) {
            Binder(*m_putCash) << row.account << row.fee << static_cast<std::int64_t>(row.frozen)
                               << row.available << row.frozenCash;
            m_putCash->exec();
        }
        for (const RateRow &row : tables.rates) {
            Binder(*m_putRate) << row.account << row.collection << row.fee;
            m_putRate->exec();
        }
        for (const HoldingRow &row : tables.holdings) {
            if (row.holding.quantity.value() == 0) {
                Binder(*m_dropHolding) << row.account << row.holding.collection;
                m_dropHolding->exec();
                continue;
            }
            Binder(*m_putHolding) << row.account << row.holding.collection << row.holding.quantity
                                  << row.holding.frozen << row.holding.cost;
            m_putHolding->exec();
        }
        for (const DayRow &row : tables.days) {
            Binder(*m_putDay) << row.collection << row.session << row.day << row.at << row.open
                              << row.high << row.low << row.last << row.volume << row.amount
                              << row.previousClose << row.lower << row.upper;
            m_putDay->exec();
        }
        for (const CompositeRow &row : tables.composites) {
            Binder(*m_putComposite) << row.session << row.day << row.previousClose << row.open
                                    << row.high << row.low << row.last;
            m_putComposite->exec();
        }
    }

private:
    FlowTable m_flows{database()};
    RecordTable m_records{database()};
    DeliveryTable m_deliveries{database()};

    void putRecords(const TableUpdate &tables)
    {
        for (const RecordRow &row : tables.records)
            m_records.put(row);
        for (const RecordRow &row : tables.recordDays)
            m_records.putDay(row);
        for (const MilestoneRow &row : tables.milestones)
            m_records.put(row);
        for (const GatherRow &row : tables.gathers)
            m_records.put(row);
    }

    void putCharts(const TableUpdate &tables)
    {
        for (const IssueRow &row : tables.issues) {
            Binder(*m_putIssue) << row.collection << row.previousClose << row.issued << row.limit;
            m_putIssue->exec();
        }
        for (const RunningRow &row : tables.running) {
            Binder(*m_putRunning) << row.collection << row.session << row.day << row.previousClose
                                  << row.open << row.high << row.low << row.last << row.volume
                                  << row.amount << row.deals;
            m_putRunning->exec();
        }
        for (const MinuteRow &row : tables.minutes) {
            Binder(*m_addMinute) << row.collection << row.session << row.begin << row.last
                                 << row.volume << row.amount << kAmountBound;
            m_addMinute->exec();
        }
        for (const PhaseRow &row : tables.phases) {
            Binder(*m_putPhase) << row.session << row.at << static_cast<std::int64_t>(row.open);
            m_putPhase->exec();
        }
    }

    void prepare()
    {
        const auto make = [this](const std::string &sql) {
            return std::make_unique<SQLite::Statement>(database(), sql);
        };
        m_putCommand = make("INSERT INTO commands VALUES (?, ?, ?, ?)");
        // What an order is changed in later, so that indexes of the rest are left alone.
        m_putOrder = make("INSERT INTO orders VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                          "?, ?, ?, ?) ON CONFLICT DO UPDATE SET filled = excluded.filled, "
                          "amount = excluded.amount, fees = excluded.fees, state = excluded.state, "
                          "changed = excluded.changed, key = excluded.key, "
                          "revoke_key = excluded.revoke_key, frozen = excluded.frozen");
        m_putDeal
            = make("INSERT INTO deals VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, "
                   "?, ?, ?)");
        m_putCash = make("INSERT OR REPLACE INTO cash VALUES (?, ?, ?, ?, ?)");
        m_putRate = make("INSERT OR REPLACE INTO rates VALUES (?, ?, ?)");
        m_putHolding = make("INSERT OR REPLACE INTO holdings VALUES (?, ?, ?, ?, ?)");
        m_dropHolding = make("DELETE FROM holdings WHERE account = ? AND collection = ?");
        m_putDay = make("INSERT INTO days VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        m_putComposite = make("INSERT OR REPLACE INTO composites VALUES (?, ?, ?, ?, ?, ?, ?)");
        m_putIssue = make("INSERT INTO issues VALUES (?, ?, ?, ?)");
        m_putRunning
            = make("INSERT OR REPLACE INTO running VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");
        m_addMinute = make("INSERT INTO minutes VALUES (?1, ?2, ?3, ?4, ?5, ?6) "
                           "ON CONFLICT DO UPDATE SET last = excluded.last, "
                           "volume = min(volume + excluded.volume, ?7), "
                           "amount = min(amount + excluded.amount, ?7)");
        m_putPhase = make("INSERT INTO phases (session, time, open) VALUES (?, ?, ?)");
    }

    std::unique_ptr<SQLite::Statement> m_putCommand;
    std::unique_ptr<SQLite::Statement> m_putOrder;
    std::unique_ptr<SQLite::Statement> m_putDeal;
    std::unique_ptr<SQLite::Statement> m_putCash;
    std::unique_ptr<SQLite::Statement> m_putRate;
    std::unique_ptr<SQLite::Statement> m_putHolding;
    std::unique_ptr<SQLite::Statement> m_dropHolding;
    std::unique_ptr<SQLite::Statement> m_putDay;
    std::unique_ptr<SQLite::Statement> m_putComposite;
    std::unique_ptr<SQLite::Statement> m_putIssue;
    std::unique_ptr<SQLite::Statement> m_putRunning;
    std::unique_ptr<SQLite::Statement> m_addMinute;
    std::unique_ptr<SQLite::Statement> m_putPhase;
};

SqliteStore::SqliteStore(const std::filesystem::path &file, const std::string &vfs, int logFrames)
{
    try {
        m_connection = std::make_unique<Connection>(file, vfs, logFrames);
    } catch (const SQLite::Exception &error) {
        throw StoreError(file.string() + ": " + error.what());
    }
}

SqliteStore::~SqliteStore() = default;

void SqliteStore::drainReadersWith(std::function<void()> drain)
{
    m_connection->drainReadersWith(std::move(drain));
}

std::int64_t SqliteStore::lastCommand()
{
    return m_connection->guarded([&] {
        return m_connection->database()
            .execAndGet("SELECT ifnull(max(number), 0) FROM commands")
            .getInt64();
    });
}

std::vector<std::int64_t> SqliteStore::checkpoints()
{
    return m_connection->guarded([&] {
        std::vector<std::int64_t> numbers;
        auto s = m_connection->statement("SELECT number FROM checkpoints ORDER BY number DESC");
        while (s.executeStep())
            numbers.push_back(s.getColumn(0).getInt64());
        return numbers;
    });
}

StoredCheckpoint SqliteStore::checkpoint(std::int64_t number)
{
    return m_connection->guarded([&] {
        auto s = m_connection->statement("SELECT hash, state FROM checkpoints WHERE number = ?");
        s.bind(1, number);
        if (!s.executeStep())
            throw StoreError(m_connection->database().getFilename() + ": no checkpoint "
                             + std::to_string(number));
        StoredCheckpoint found;
        found.number = number;
        found.hash = static_cast<std::uint64_t>(s.getColumn(0).getInt64());
        found.state = s.getColumn(1).getString();
        return found;
    });
}

void SqliteStore::readCommands(std::int64_t first, std::int64_t last, const CommandVisitor &visit)
{
    m_connection->guarded([&] {
        auto s = m_connection->statement("SELECT number, time, key, events FROM commands "
                                         "WHERE number BETWEEN ? AND ? ORDER BY number");
        s.bind(1, first);
        s.bind(2, last);
        std::int64_t expected = first;
        while (s.executeStep()) {
            StoredCommand command;
            command.number = s.getColumn(0).getInt64();
            if (command.number != expected)
                break;
            ++expected;
            command.time = TimeMs(s.getColumn(1).getInt64());
            command.key = keyOf(s.getColumn(2).getString());
            command.events = s.getColumn(3).getString();
            visit(command);
        }
        if (expected <= last)
            throw StoreError(m_connection->database().getFilename() + ": command "
                             + std::to_string(expected) + " is missing");
    });
}

void SqliteStore::commit(const Batch &batch)
{
    m_connection->change([&] {
        for (const StoredCommand &command : batch.commands)
            m_connection->put(command);
        m_connection->put(batch.tables);
        if (batch.checkpoint)
            m_connection->put(*batch.checkpoint);
    });
}

void SqliteStore::rebuildTables(const std::function<void(const TablePutter &put)> &rebuild)
{
    m_connection->change([&] {
        for (const char *table : kTables)
            m_connection->database().exec(std::string("DELETE FROM ") + table);
        rebuild([&](const TableUpdate &tables) { m_connection->put(tables); });
    });
}

bool SqliteStore::tablesAreEmpty()
{
    return m_connection->guarded([&] {
        return std::all_of(kTables.begin(), kTables.end(), [&](const char *table) {
            return m_connection->database()
                       .execAndGet(std::string("SELECT EXISTS (SELECT 1 FROM ") + table + ")")
                       .getInt()
                == 0;
        });
    });
}

std::string SqliteStore::describeTables()
{
    return m_connection->guarded([&] {
        std::string text;
        for (const char *table : kTables) {
            auto s = m_connection->statement(std::string("SELECT * FROM ") + table
                                             + " ORDER BY 1, 2, 3");
            while (s.executeStep()) {
                text += table;
                for (int i = 0; i < s.getColumnCount(); ++i)
                    text
                        += " " + std::string(s.getColumnName(i)) + "=" + s.getColumn(i).getString();
                text += "\n";
            }
        }
        return text;
    });
}

std::vector<DealRow> SqliteStore::latestDeals(CollectionId collection, Sequence session,
                                              std::size_t limit)
{
    return m_connection->guarded([&] {
        std::vector<DealRow> rows;
        auto s = m_connection->statement(std::string("SELECT ") + kDealColumns
                                         + " FROM deals WHERE collection = ? AND session = ? "
                                           "ORDER BY ordinal DESC LIMIT ?");
        Binder(s) << collection << session << static_cast<std::int64_t>(limit);
        while (s.executeStep())
            rows.push_back(readDeal(s));
        std::reverse(rows.begin(), rows.end());
        return rows;
    });
}

std::optional<OrderRow> SqliteStore::order(OrderNumber number)
{
    return m_connection->guarded([&] { return m_connection->records().order(number); });
}

Sequence SqliteStore::lastDeal()
{
    return m_connection->guarded([&] {
        return Sequence(m_connection->database()
                            .execAndGet("SELECT ifnull(max(sequence), 0) FROM deals")
                            .getInt64());
    });
}

OrderNumber SqliteStore::lastOrder()
{
    return m_connection->guarded([&] {
        return OrderNumber(m_connection->database()
                               .execAndGet("SELECT ifnull(max(number), 0) FROM orders")
                               .getInt64());
    });
}

std::optional<CompositeRow> SqliteStore::composite(Sequence session)
{
    return m_connection->guarded([&]() -> std::optional<CompositeRow> {
        auto s
            = m_connection->statement("SELECT session, day, previous_close, open, high, low, last "
                                      "FROM composites WHERE session = ?");
        s.bind(1, session.value());
        if (!s.executeStep())
            return std::nullopt;
        CompositeRow row;
        RowReader(s) >> row.session >> row.day >> row.previousClose >> row.open >> row.high
            >> row.low >> row.last;
        return row;
    });
}

std::int64_t SqliteStore::lastFlow()
{
    return m_connection->guarded([&] { return m_connection->flows().last(); });
}

FlowPlaces SqliteStore::flowPlaces(AccountId account)
{
    return m_connection->guarded([&] { return m_connection->flows().places(account); });
}

std::optional<FlowRow> SqliteStore::flowOf(TransferNumber transfer)
{
    return m_connection->guarded([&] { return m_connection->flows().ofTransfer(transfer); });
}

std::int64_t SqliteStore::lastDeliveryPlace(AccountId account)
{
    return m_connection->guarded([&] { return m_connection->deliveries().lastPlace(account); });
}

std::optional<DeliveryRow> SqliteStore::delivery(DeliveryNumber number)
{
    return m_connection->guarded([&] { return m_connection->deliveries().of(number); });
}

std::optional<RecordRow> SqliteStore::records(AccountId account)
{
    return m_connection->guarded([&] { return m_connection->records().records(account); });
}

std::optional<GatherRow> SqliteStore::gather(AccountId account, CollectionId collection)
{
    return m_connection->guarded(
        [&] { return m_connection->records().gather(account, collection); });
}

HoldingView SqliteStore::holding(AccountId account, CollectionId collection)
{
    return m_connection->guarded(
        [&] { return m_connection->records().holding(account, collection); });
}

std::vector<ListingRow> SqliteStore::listings()
{
    return m_connection->guarded([&] {
        std::vector<ListingRow> rows;
        auto s = m_connection->statement(
            "SELECT collection, code, name, type, introduction FROM listings ORDER BY collection");
        while (s.executeStep()) {
            ListingRow row;
            row.collection = CollectionId(s.getColumn(0).getInt64());
            row.code = s.getColumn(1).getString();
            row.name = s.getColumn(2).getString();
            row.type = s.getColumn(3).getInt();
            row.introduction = s.getColumn(4).getString();
            rows.push_back(std::move(row));
        }
        return rows;
    });
}

void SqliteStore::putListings(const std::vector<ListingRow> &rows)
{
    m_connection->change([&] {
        auto s = m_connection->statement("INSERT OR REPLACE INTO listings VALUES (?, ?, ?, ?, ?)");
        for (const ListingRow &row : rows) {
            s.reset();
            s.bind(1, row.collection.value());
            s.bind(2, row.code);
            s.bind(3, row.name);
            s.bind(4, row.type);
            s.bind(5, row.introduction);
            s.exec();
        }
    });
}

} // namespace zvx
