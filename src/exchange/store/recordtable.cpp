#include "exchange/store/recordtable.h"

#include "exchange/store/store.h"

#include <string>
#include <utility>

namespace zvx {
namespace {

// The columns in the order in which put() and readRecords() take them.
#define ZVX_RECORD_COLUMNS                                                                         \
    "account, day, session, buys, sells, last_buy, last_sell, bought, sold, last_bought, "         \
    "last_sold, earlier_buys, earlier_sells"
#define ZVX_GATHER_COLUMNS                                                                         \
    "account, collection, session, buy_quantity, buy_amount, buy_fee, sell_quantity, "             \
    "sell_amount, sell_fee, sell_profit"

constexpr const char *kPut = "INSERT OR REPLACE INTO records (" ZVX_RECORD_COLUMNS
                             ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char *kPutDay = "INSERT OR REPLACE INTO record_days (" ZVX_RECORD_COLUMNS
                                ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char *kPutMilestone
    = "INSERT OR REPLACE INTO milestones (account, list, place, number) VALUES (?, ?, ?, ?)";
constexpr const char *kPutGather = "INSERT OR REPLACE INTO gathers (" ZVX_GATHER_COLUMNS
                                   ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char *kRecords = "SELECT " ZVX_RECORD_COLUMNS " FROM records WHERE account = ?";
constexpr const char *kEndOfDay
    = "SELECT " ZVX_RECORD_COLUMNS " FROM record_days WHERE account = ? AND day <= ? "
      "ORDER BY day DESC LIMIT 1";
constexpr const char *kMilestone
    = "SELECT number FROM milestones WHERE account = ? AND list = ? AND place = ?";
constexpr const char *kGather
    = "SELECT " ZVX_GATHER_COLUMNS " FROM gathers WHERE account = ? AND collection = ?";
constexpr const char *kGathers
    = "SELECT " ZVX_GATHER_COLUMNS " FROM gathers WHERE account = ? AND session = ? "
      "ORDER BY collection";
constexpr const char *kHolding = "SELECT collection, quantity, frozen, cost FROM holdings "
                                 "WHERE account = ? AND collection = ?";
// All collections are in the same session.
constexpr const char *kRunningSession = "SELECT session FROM running LIMIT 1";

#undef ZVX_RECORD_COLUMNS
#undef ZVX_GATHER_COLUMNS

const char *orderSql()
{
    static const std::string sql
        = std::string("SELECT ") + kOrderColumns + " FROM orders WHERE number = ?";
    return sql.c_str();
}

/// What is open is bounded for each account, so that a far page may be counted off.
const char *openOrdersSql()
{
    static const std::string sql = std::string("SELECT ") + kOrderColumns
        + " FROM orders WHERE account = ? AND state = 0 ORDER BY number DESC LIMIT ? OFFSET ?";
    return sql.c_str();
}

const char *dealSql()
{
    static const std::string sql
        = std::string("SELECT ") + kDealColumns + " FROM deals WHERE sequence = ?";
    return sql.c_str();
}

RecordRow readRecords(SQLite::Statement &statement)
{
    RecordRow row;
    RowReader(statement) >> row.account >> row.day >> row.session >> row.orders.buys
        >> row.orders.sells >> row.orders.last.buy >> row.orders.last.sell >> row.deals.buys
        >> row.deals.sells >> row.deals.last.buy >> row.deals.last.sell >> row.earlierBuys
        >> row.earlierSells;
    return row;
}

GatherRow readGather(SQLite::Statement &statement)
{
    GatherRow row;
    RowReader(statement) >> row.account >> row.collection >> row.session >> row.buyQuantity
        >> row.buyAmount >> row.buyFee >> row.sellQuantity >> row.sellAmount >> row.sellFee
        >> row.sellProfit;
    return row;
}

HoldingView readHolding(SQLite::Statement &statement)
{
    HoldingView holding;
    RowReader(statement) >> holding.collection >> holding.quantity >> holding.frozen
        >> holding.cost;
    return holding;
}

/// The number by which a list is stored.
std::int64_t numberOf(RecordList list, RecordPage::Kind kind)
{
    return static_cast<std::int64_t>(list) + kind;
}

/// Reads the one row that a statement finds.
template <typename Row, typename Read, typename... Keys>
std::optional<Row> one(Statements &statements, const char *sql, const Read &read,
                       const Keys &...keys)
{
    std::optional<Row> found;
    statements.each(
        sql,
        [&](SQLite::Statement &statement) {
            found = read(statement);
            return false;
        },
        keys...);
    return found;
}

} // namespace

RecordTable::RecordTable(SQLite::Database &database) : m_statements(database) { }

void RecordTable::put(const RecordRow &row)
{
    putInto(kPut, row);
}

void RecordTable::putDay(const RecordRow &row)
{
    putInto(kPutDay, row);
}

void RecordTable::putInto(const char *sql, const RecordRow &row)
{
    const RecordTail &orders = row.orders;
    const RecordTail &deals = row.deals;
    m_statements.run(sql, row.account, row.day, row.session, orders.buys, orders.sells,
                     orders.last.buy, orders.last.sell, deals.buys, deals.sells, deals.last.buy,
                     deals.last.sell, row.earlierBuys, row.earlierSells);
}

void RecordTable::put(const MilestoneRow &row)
{
    m_statements.run(kPutMilestone, row.account, numberOf(row.list, row.kind), row.place,
                     row.number);
}

void RecordTable::put(const GatherRow &row)
{
    m_statements.run(kPutGather, row.account, row.collection, row.session, row.buyQuantity,
                     row.buyAmount, row.buyFee, row.sellQuantity, row.sellAmount, row.sellFee,
                     row.sellProfit);
}

std::optional<OrderRow> RecordTable::order(OrderNumber number)
{
    return one<OrderRow>(m_statements, orderSql(), readOrder, number);
}

std::optional<RecordRow> RecordTable::records(AccountId account)
{
    return one<RecordRow>(m_statements, kRecords, readRecords, account);
}

std::optional<GatherRow> RecordTable::gather(AccountId account, CollectionId collection)
{
    return one<GatherRow>(m_statements, kGather, readGather, account, collection);
}

HoldingView RecordTable::holding(AccountId account, CollectionId collection)
{
    const auto found = one<HoldingView>(m_statements, kHolding, readHolding, account, collection);
    return found.value_or(HoldingView{collection, {}, {}, {}});
}

std::vector<OrderRow> RecordTable::orders(AccountId account, const RecordPage &page)
{
    return walkOrders(account, page, stretchOf(account, page, &RecordRow::orders));
}

std::vector<OrderRow> RecordTable::ordersOfSession(AccountId account, const RecordPage &page)
{
    const std::optional<RecordRow> newest = records(account);
    const Sequence running(m_statements.number(kRunningSession));
    if (!newest || newest->session != running)
        return {};
    const std::int64_t earlier
        = RecordTail{newest->earlierBuys, newest->earlierSells, {}}.count(page.kind);
    return walkOrders(account, page, {newest->orders, earlier + 1});
}

std::vector<OrderRow> RecordTable::openOrders(AccountId account, const RecordPage &page)
{
    std::vector<OrderRow> rows;
    m_statements.each(
        openOrdersSql(),
        [&](SQLite::Statement &statement) {
            rows.push_back(readOrder(statement));
            return true;
        },
        account, page.size, (page.page - 1) * page.size);
    return rows;
}

std::vector<AccountDeal> RecordTable::deals(AccountId account, const RecordPage &page)
{
    return walk<AccountDeal>(
        account, RecordList::Deals, page, stretchOf(account, page, &RecordRow::deals),
        [this, account](std::int64_t number) -> std::optional<AccountDeal> {
            const auto row = one<DealRow>(m_statements, dealSql(), readDeal, number);
            if (!row || (row->deal.buyer != account && row->deal.seller != account))
                return std::nullopt;
            return AccountDeal{*row, row->deal.buyer == account ? Side::Buy : Side::Sell};
        });
}

std::vector<GatherRow> RecordTable::gathers(AccountId account)
{
    std::vector<GatherRow> rows;
    m_statements.each(
        kGathers,
        [&](SQLite::Statement &statement) {
            rows.push_back(readGather(statement));
            return true;
        },
        account, m_statements.number(kRunningSession));
    return rows;
}

RecordTable::Stretch RecordTable::stretchOf(AccountId account, const RecordPage &page,
                                            RecordTail RecordRow::*list)
{
    const std::optional<RecordRow> newest = records(account);
    if (!newest || newest->day < page.first)
        return {};
    const std::optional<RecordRow> end
        = newest->day <= page.last ? newest : endOfDay(account, page.last);
    if (!end)
        return {};
    const std::optional<RecordRow> before
        = endOfDay(account, TradingDay(page.first.value() - 1)); // no day, and before the first
    return {(*end).*list, before ? ((*before).*list).count(page.kind) + 1 : 1};
}

std::optional<RecordRow> RecordTable::endOfDay(AccountId account, TradingDay atMost)
{
    return one<RecordRow>(m_statements, kEndOfDay, readRecords, account, atMost);
}

std::vector<OrderRow> RecordTable::walkOrders(AccountId account, const RecordPage &page,
                                              const Stretch &stretch)
{
    return walk<OrderRow>(account, RecordList::Orders, page, stretch,
                          [this, account](std::int64_t number) {
                              std::optional<OrderRow> row = order(OrderNumber(number));
                              return row && row->account == account ? row : std::nullopt;
                          });
}

template <typename Record, typename Find>
std::vector<Record> RecordTable::walk(AccountId account, RecordList list, const RecordPage &page,
                                      const Stretch &stretch, const Find &find)
{
    std::vector<Record> found;
    std::int64_t place = stretch.tail.count(page.kind);
    const PlaceSpan wanted = PlaceSpan{stretch.bottom, place}.cut(page);
    if (wanted.isEmpty())
        return found;
    std::int64_t number = stretch.tail.last.of(page.kind);
    const std::int64_t milestone
        = (wanted.top + kMilestoneStep - 1) / kMilestoneStep * kMilestoneStep;
    if (milestone < place) {
        place = milestone;
        number = m_statements.number(kMilestone, account, numberOf(list, page.kind), milestone);
    }
    for (; place >= wanted.bottom; --place) {
        std::optional<Record> record = find(number);
        if (!record)
            throw StoreError("the records of account " + std::to_string(account.value())
                             + " do not lead to each other at number " + std::to_string(number));
        number = record->before().of(page.kind);
        if (place <= wanted.top)
            found.push_back(std::move(*record));
    }
    return found;
}

} // namespace zvx
