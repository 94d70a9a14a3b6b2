#include "exchange/store/flowtable.h"

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

FlowTable::FlowTable(SQLite::Database &database) : m_statements(database) { }

template <typename... Values>
std::vector<FlowRow> FlowTable::rows(const char *sql, const Values &...values)
{
    std::vector<FlowRow> found;
    m_statements.each(
        sql,
        [&found](SQLite::Statement &statement) {
            found.push_back(readFlow(statement));
            return true;
        },
        values...);
    return found;
}

template <typename... Values>
std::optional<FlowRow> FlowTable::row(const char *sql, const Values &...values)
{
    const std::vector<FlowRow> found = rows(sql, values...);
    return found.empty() ? std::nullopt : std::make_optional(found.front());
}

void FlowTable::put(const FlowRow &row)
{
    m_statements.run(kPut, row.number, row.account, std::int64_t(row.incoming), row.place,
                     row.placeOfWay, row.day, row.begunAt, row.endedAt, row.amount,
                     static_cast<std::int64_t>(row.state), row.balance, row.transfer, row.bank,
                     static_cast<std::int64_t>(row.card), row.key);
}

std::int64_t FlowTable::last()
{
    return m_statements.number(kLast);
}

FlowPlaces FlowTable::places(AccountId account)
{
    FlowPlaces places;
    places.all = m_statements.number(kLastPlace, account);
    places.in = m_statements.number(kLastPlaceOfWay, account, std::int64_t(1));
    places.out = m_statements.number(kLastPlaceOfWay, account, std::int64_t(0));
    return places;
}

std::optional<FlowRow> FlowTable::ofTransfer(TransferNumber transfer)
{
    return row(kOfTransfer, transfer);
}

std::optional<FlowRow> FlowTable::ofKey(AccountId account, ActionKey key)
{
    return key.isNull() ? std::nullopt : row(kOfKey, account, key);
}

std::vector<FlowRow> FlowTable::waiting()
{
    return rows(kWaiting);
}

std::vector<FlowRow> FlowTable::page(AccountId account, const RecordPage &page)
{
    PlaceSpan all{placeBeside(account, page, true), placeBeside(account, page, false)};
    if (all.bottom == 0) // nothing as late as that
        all = {};
    const PlaceSpan shown = all.cut(page);
    if (shown.isEmpty())
        return {};
    if (page.kind == RecordPage::All)
        return rows(kPage, account, shown.bottom, shown.top);
    return rows(kPageOfWay, account, std::int64_t(page.kind == RecordPage::Incoming), shown.bottom,
                shown.top);
}

std::int64_t FlowTable::placeBeside(AccountId account, const RecordPage &page, bool first)
{
    const TradingDay day = first ? page.first : page.last;
    if (page.kind == RecordPage::All)
        return m_statements.number(first ? kFirst : kLastOf, account, day);
    return m_statements.number(first ? kFirstOfWay : kLastOfWay, account,
                               std::int64_t(page.kind == RecordPage::Incoming), day);
}

FlowSum FlowTable::sum(AccountId account, bool incoming, TimeMs since, std::size_t most)
{
    FlowSum sum;
    m_statements.each(
        kNewest,
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
