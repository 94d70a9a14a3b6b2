#pragma once

#include "exchange/store/flows.h"

#include <memory>
#include <optional>
#include <vector>

namespace SQLite {
class Database;
class Statement;
} // namespace SQLite

namespace zvx {

/**
 * The table of flows on one open connection, for those who write it and those who read it.
 *
 * Statements are made when they are needed first. No call leaves a statement open, which would hold
 * the write-ahead log. Everything throws SQLite::Exception.
 */
class FlowTable
{
public:
    explicit FlowTable(SQLite::Database &database);
    ~FlowTable();

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
    std::vector<FlowRow> page(AccountId account, const FlowPage &page);
    /// The newest transfers one way that began at `since` or later, at most `most` of them.
    FlowSum sum(AccountId account, bool incoming, TimeMs since, std::size_t most);

private:
    class Prepared;
    Prepared &prepared(const char *sql);
    std::int64_t placeBeside(AccountId account, const FlowPage &page, bool first);

    SQLite::Database &m_database;
    std::vector<std::unique_ptr<Prepared>> m_prepared;
};

} // namespace zvx
