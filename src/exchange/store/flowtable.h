#pragma once

#include "exchange/store/flows.h"
#include "exchange/store/recordpage.h"
#include "exchange/store/sqlitestatements.h"

#include <optional>
#include <vector>

namespace zvx {

/**
 * The table of flows on one open connection, for those who write it and those who read it.
 * Everything throws SQLite::Exception.
 */
class FlowTable
{
public:
    explicit FlowTable(SQLite::Database &database);

    /// Inserts a row or replaces the one with its number.
    void put(const FlowRow &row);

    std::int64_t last();
    FlowPlaces places(AccountId account);
    std::optional<FlowRow> ofTransfer(TransferNumber transfer);

    /// The newest flow that began under the key.
    std::optional<FlowRow> ofKey(AccountId account, ActionKey key);
    /// Those that wait for the bank, the oldest first.
    std::vector<FlowRow> waiting();
    /// The newest first. The last page costs what the first one costs.
    std::vector<FlowRow> page(AccountId account, const RecordPage &page);
    /// The newest transfers one way that began at `since` or later, at most `most` of them.
    FlowSum sum(AccountId account, bool incoming, TimeMs since, std::size_t most);

private:
    template <typename... Values>
    std::vector<FlowRow> rows(const char *sql, const Values &...values);
    template <typename... Values>
    std::optional<FlowRow> row(const char *sql, const Values &...values);
    std::int64_t placeBeside(AccountId account, const RecordPage &page, bool first);

    Statements m_statements;
};

} // namespace zvx
