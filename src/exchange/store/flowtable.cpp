#include "exchange/store/flowtable.h"

#include "exchange/store/sqliterows.h"

#include <algorithm>

namespace zvx {
namespace {

// The columns in the order in which bind() and read() take them.
#define ZVX_FLOW_COLUMNS                                                                           \
    "number, account, incoming, place, way_place, day, begun, ended, amount, state, balance, "     \
    "transfer, bank, card, key"

constexpr const char *kPut = "INSERT OR REPLACE INTO flows (" ZVX_FLOW_COLUMNS
                             ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char *kLast = "SELECT ifnull(max(number), 0) FROM flows";
constexpr const char *kLastPlace
    = "SELECT place FROM flows WHERE account = ? ORDER BY place DESC LIMIT 1";
constexpr const char *kLastPlaceOfWay = "SELECT way_place FROM flows WHERE account = ? AND "
                                        "incoming = ? ORDER BY way_place DESC LIMIT 1";
constexpr const char *kOfTransfer
    = "SELECT " ZVX_FLOW_COLUMNS " FROM flows WHERE transfer = ? AND transfer > 0";
constexpr const char *kOfKey = "SELECT " ZVX_FLOW_COLUMNS " FROM flows WHERE account = ? AND "
                               "key = ? ORDER BY number DESC LIMIT 1";
constexpr const char *kWaiting
    = "SELECT " ZVX_FLOW_COLUMNS " FROM flows WHERE state = 0 ORDER BY number";
constexpr const char *kPage = "SELECT " ZVX_FLOW_COLUMNS " FROM flows WHERE account = ? AND "
                              "place BETWEEN ? AND ? ORDER BY place DESC";
constexpr const char *kPageOfWay
    = "SELECT " ZVX_FLOW_COLUMNS " FROM flows WHERE account = ? AND incoming = ? AND "
      "way_place BETWEEN ? AND ? ORDER BY way_place DESC";
// Days rise with the places, so the days' bounds are bounds of places.
constexpr const char *kFirst = "SELECT place FROM flows WHERE account = ? AND day >= ? "
                               "ORDER BY day, place LIMIT 1";
constexpr const char *kFirstOfWay = "SELECT way_place FROM flows WHERE account = ? AND "
                                    "incoming = ? AND day >= ? ORDER BY day, way_place LIMIT 1";
constexpr const char *kLastOf = "SELECT place FROM flows WHERE account = ? AND day <= ? "
                                "ORDER BY day DESC, place DESC LIMIT 1";
constexpr const char *kLastOfWay
    = "SELECT way_place FROM flows WHERE account = ? AND incoming = ? AND day <= ? "
      "ORDER BY day DESC, way_place DESC LIMIT 1";
constexpr const char *kNewest = "SELECT begun, amount, state, transfer FROM flows "
                                "WHERE account = ? AND incoming = ? ORDER BY way_place DESC";

#undef ZVX_FLOW_COLUMNS

FlowRow readFlow(SQLite::Statement &statement)
{
    FlowRow row;
    int column = 0;
    const auto next = [&] { return statement.getColumn(column++).getInt64(); };
    const auto key = [&] { return keyOf(statement.getColumn(column++).getString()); };
    row.number = next();
    row.account = AccountId(next());
    row.incoming = next() != 0;
    row.place = next();
    row.placeOfWay = next();
    row.day = TradingDay(next());
    row.begunAt = TimeMs(next());
    row.endedAt = TimeMs(next());
    row.amount = Fen(next());
    row.state = static_cast<FlowState>(next());
    row.balance = Fen(next());
    row.transfer = TransferNumber(next());
    row.bank = key();
    row.card = static_cast<std::uint64_t>(next());
    row.key = key();
    return row;
}

} // namespace

/// A statement and its text; a use of it ends with its reset.
class FlowTable::Prepared
{
public:
    Prepared(SQLite::Database &database, const char *sql) : m_sql(sql), m_statement(database, sql)
    {
    }

    const char *sql() const { return m_sql; }

    template <typename... Values>
    void run(const Values &...values)
    {
        const Use use(m_statement);
        bind(values...);
        m_statement.exec();
    }

    /// Calls `take` for each row, until it says no.
    template <typename Take, typename... Values>
    void each(const Take &take, const Values &...values)
    {
        const Use use(m_statement);
        bind(values...);
        while (m_statement.executeStep() && take(m_statement)) { }
    }

    template <typename... Values>
    std::vector<FlowRow> rows(const Values &...values)
    {
        std::vector<FlowRow> found;
        each(
            [&found](SQLite::Statement &statement) {
                found.push_back(readFlow(statement));
                return true;
            },
            values...);
        return found;
    }

    template <typename... Values>
    std::optional<FlowRow> row(const Values &...values)
    {
        std::vector<FlowRow> found = rows(values...);
        return found.empty() ? std::nullopt : std::make_optional(found.front());
    }

    /// The first column of the first row, or 0.
    template <typename... Values>
    std::int64_t number(const Values &...values)
    {
        std::int64_t found = 0;
        each(
            [&found](SQLite::Statement &statement) {
                found = statement.getColumn(0).getInt64();
                return false;
            },
            values...);
        return found;
    }

private:
    struct Use {
        explicit Use(SQLite::Statement &used) : statement(used) { }
        ~Use() { statement.tryReset(); }
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;
        SQLite::Statement &statement;
    };

    template <typename... Values>
    void bind(const Values &...values)
    {
        Binder binder(m_statement);
        (static_cast<void>(binder << values), ...);
    }

    const char *m_sql;
    SQLite::Statement m_statement;
};

FlowTable::FlowTable(SQLite::Database &database) : m_database(database) { }

FlowTable::~FlowTable() = default;

FlowTable::Prepared &FlowTable::prepared(const char *sql)
{
    const auto found = std::find_if(m_prepared.begin(), m_prepared.end(),
                                    [sql](const auto &each) { return each->sql() == sql; });
    if (found != m_prepared.end())
        return **found;
    m_prepared.push_back(std::make_unique<Prepared>(m_database, sql));
    return *m_prepared.back();
}

void FlowTable::put(const FlowRow &row)
{
    prepared(kPut).run(row.number, row.account, std::int64_t(row.incoming), row.place,
                       row.placeOfWay, row.day, row.begunAt, row.endedAt, row.amount,
                       static_cast<std::int64_t>(row.state), row.balance, row.transfer, row.bank,
                       static_cast<std::int64_t>(row.card), row.key);
}

std::int64_t FlowTable::last()
{
    return prepared(kLast).number();
}

FlowPlaces FlowTable::places(AccountId account)
{
    FlowPlaces places;
    places.all = prepared(kLastPlace).number(account);
    places.in = prepared(kLastPlaceOfWay).number(account, std::int64_t(1));
    places.out = prepared(kLastPlaceOfWay).number(account, std::int64_t(0));
    return places;
}

std::optional<FlowRow> FlowTable::ofTransfer(TransferNumber transfer)
{
    return prepared(kOfTransfer).row(transfer);
}

std::optional<FlowRow> FlowTable::ofKey(AccountId account, ActionKey key)
{
    return key.isNull() ? std::nullopt : prepared(kOfKey).row(account, key);
}

std::vector<FlowRow> FlowTable::waiting()
{
    return prepared(kWaiting).rows();
}

std::vector<FlowRow> FlowTable::page(AccountId account, const FlowPage &page)
{
    const std::int64_t first = placeBeside(account, page, true);
    const std::int64_t last = placeBeside(account, page, false);
    // Compared before they are multiplied, which might not fit.
    if (first == 0 || last < first || page.page - 1 > (last - first) / page.size)
        return {};
    const std::int64_t top = last - (page.page - 1) * page.size;
    const std::int64_t bottom = std::max(first, top - page.size + 1);
    if (page.way == FlowWay::Both)
        return prepared(kPage).rows(account, bottom, top);
    return prepared(kPageOfWay).rows(account, std::int64_t(page.way == FlowWay::In), bottom, top);
}

std::int64_t FlowTable::placeBeside(AccountId account, const FlowPage &page, bool first)
{
    const TradingDay day = first ? page.first : page.last;
    if (page.way == FlowWay::Both)
        return prepared(first ? kFirst : kLastOf).number(account, day);
    return prepared(first ? kFirstOfWay : kLastOfWay)
        .number(account, std::int64_t(page.way == FlowWay::In), day);
}

FlowSum FlowTable::sum(AccountId account, bool incoming, TimeMs since, std::size_t most)
{
    FlowSum sum;
    prepared(kNewest).each(
        [&](SQLite::Statement &statement) {
            if (statement.getColumn(0).getInt64() < since.value())
                return false;
            const auto state = static_cast<FlowState>(statement.getColumn(2).getInt64());
            if (statement.getColumn(3).getInt64() == 0)
                return true; // moved without a bank
            const std::int64_t amount = statement.getColumn(1).getInt64();
            if (state != FlowState::Refused)
                sum.amount = Fen(std::min(sum.amount.value() + amount, kAmountBound));
            return ++sum.count < most;
        },
        account, std::int64_t(incoming));
    return sum;
}

} // namespace zvx
