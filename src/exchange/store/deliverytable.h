#pragma once

#include "exchange/store/deliveries.h"
#include "exchange/store/recordpage.h"
#include "exchange/store/sqlitestatements.h"

#include <optional>
#include <vector>

namespace zvx {

/**
 * The table of deliveries on one open connection, for those who write it and those who read it.
 * Everything throws SQLite::Exception.
 */
class DeliveryTable
{
public:
    explicit DeliveryTable(SQLite::Database &database);

    /// Inserts a row or replaces the one with its number.
    void put(const DeliveryRow &row);

    std::int64_t lastPlace(AccountId account);
    std::optional<DeliveryRow> of(DeliveryNumber number);
    std::optional<DeliveryRow> ofParcel(ParcelId parcel);
    /// The one that was asked for under the key.
    std::optional<DeliveryRow> ofKey(AccountId account, ActionKey key);
    /// Those that are neither sent nor given back, the oldest first.
    std::vector<DeliveryRow> underWay();
    /// The newest first, of all kinds. The last page costs what the first one costs.
    std::vector<DeliveryRow> page(AccountId account, const RecordPage &page);

private:
    template <typename... Values>
    std::vector<DeliveryRow> rows(const char *sql, const Values &...values);
    template <typename... Values>
    std::optional<DeliveryRow> row(const char *sql, const Values &...values);

    Statements m_statements;
};

} // namespace zvx
