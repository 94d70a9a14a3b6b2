#include "exchange/store/deliverytable.h"

namespace zvx {
namespace {

// The columns in the order in which put() and readDelivery() take them.
#define ZVX_DELIVERY_COLUMNS                                                                       \
    "number, account, collection, quantity, stage, place, day, asked, moved, parcel, key"

constexpr const char *kPut = "INSERT OR REPLACE INTO deliveries (" ZVX_DELIVERY_COLUMNS
                             ") VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)";
constexpr const char *kLastPlace
    = "SELECT place FROM deliveries WHERE account = ? ORDER BY place DESC LIMIT 1";
constexpr const char *kOf = "SELECT " ZVX_DELIVERY_COLUMNS " FROM deliveries WHERE number = ?";
constexpr const char *kOfParcel
    = "SELECT " ZVX_DELIVERY_COLUMNS " FROM deliveries WHERE parcel = ?";
constexpr const char *kOfKey
    = "SELECT " ZVX_DELIVERY_COLUMNS " FROM deliveries WHERE account = ? AND key = ? "
      "ORDER BY number DESC LIMIT 1";
constexpr const char *kUnderWay
    = "SELECT " ZVX_DELIVERY_COLUMNS " FROM deliveries WHERE stage < 2 ORDER BY number";
constexpr const char *kPage
    = "SELECT " ZVX_DELIVERY_COLUMNS " FROM deliveries WHERE account = ? AND "
      "place BETWEEN ? AND ? ORDER BY place DESC";
// Days rise with the places, so the days' bounds are bounds of places.
constexpr const char *kFirst = "SELECT place FROM deliveries WHERE account = ? AND day >= ? "
                               "ORDER BY day, place LIMIT 1";
constexpr const char *kLast = "SELECT place FROM deliveries WHERE account = ? AND day <= ? "
                              "ORDER BY day DESC, place DESC LIMIT 1";

#undef ZVX_DELIVERY_COLUMNS

DeliveryRow readDelivery(SQLite::Statement &statement)
{
    DeliveryRow row;
    int column = 0;
    const auto next = [&] { return statement.getColumn(column++).getInt64(); };
    const auto key = [&] { return keyOf(statement.getColumn(column++).getString()); };
    row.number = DeliveryNumber(next());
    row.account = AccountId(next());
    row.collection = CollectionId(next());
    row.quantity = Quantity(next());
    row.stage = static_cast<DeliveryStage>(next());
    row.place = next();
    row.day = TradingDay(next());
    row.askedAt = TimeMs(next());
    row.movedAt = TimeMs(next());
    row.parcel = key();
    row.key = key();
    return row;
}

} // namespace

DeliveryTable::DeliveryTable(SQLite::Database &database) : m_statements(database) { }

template <typename... Values>
std::vector<DeliveryRow> DeliveryTable::rows(const char *sql, const Values &...values)
{
    std::vector<DeliveryRow> found;
    m_statements.each(
        sql,
        [&found](SQLite::Statement &statement) {
            found.push_back(readDelivery(statement));
            return true;
        },
        values...);
    return found;
}

template <typename... Values>
std::optional<DeliveryRow> DeliveryTable::row(const char *sql, const Values &...values)
{
    const std::vector<DeliveryRow> found = rows(sql, values...);
    return found.empty() ? std::nullopt : std::make_optional(found.front());
}

void DeliveryTable::put(const DeliveryRow &row)
{
    m_statements.run(kPut, row.number, row.account, row.collection, row.quantity,
                     static_cast<std::int64_t>(row.stage), row.place, row.day, row.askedAt,
                     row.movedAt, row.parcel, row.key);
}

std::int64_t DeliveryTable::lastPlace(AccountId account)
{
    return m_statements.number(kLastPlace, account);
}

std::optional<DeliveryRow> DeliveryTable::of(DeliveryNumber number)
{
    return row(kOf, number);
}

std::optional<DeliveryRow> DeliveryTable::ofParcel(ParcelId parcel)
{
    return row(kOfParcel, parcel);
}

std::optional<DeliveryRow> DeliveryTable::ofKey(AccountId account, ActionKey key)
{
    return key.isNull() ? std::nullopt : row(kOfKey, account, key);
}

std::vector<DeliveryRow> DeliveryTable::underWay()
{
    return rows(kUnderWay);
}

std::vector<DeliveryRow> DeliveryTable::page(AccountId account, const RecordPage &page)
{
    PlaceSpan all{m_statements.number(kFirst, account, page.first),
                  m_statements.number(kLast, account, page.last)};
    if (all.bottom == 0) // nothing as late as that
        all = {};
    const PlaceSpan shown = all.cut(page);
    if (shown.isEmpty())
        return {};
    return rows(kPage, account, shown.bottom, shown.top);
}

} // namespace zvx
