#pragma once

#include "exchange/store/recordpage.h"
#include "exchange/store/sqlitestatements.h"
#include "exchange/store/tables.h"

#include <optional>
#include <vector>

namespace zvx {

/**
 * Orders, deals and sums by account on one open connection, for those who write what leads to them
 * and those who read them. Pages show the newest first, and the last one costs about what the first
 * one costs. Throws SQLite::Exception, and StoreError where rows do not lead to each other.
 */
class RecordTable
{
public:
    explicit RecordTable(SQLite::Database &database);

    /// Inserts rows or replaces those in their places.
    void put(const RecordRow &row);
    void putDay(const RecordRow &row);
    void put(const MilestoneRow &row);
    void put(const GatherRow &row);

    std::optional<OrderRow> order(OrderNumber number);
    std::optional<RecordRow> records(AccountId account);
    std::optional<GatherRow> gather(AccountId account, CollectionId collection);
    HoldingView holding(AccountId account, CollectionId collection);

    /// Of the days that the page asks for.
    std::vector<OrderRow> orders(AccountId account, const RecordPage &page);
    /// Of the running session; days do not matter.
    std::vector<OrderRow> ordersOfSession(AccountId account, const RecordPage &page);
    /// Those that are open; days and kind do not matter.
    std::vector<OrderRow> openOrders(AccountId account, const RecordPage &page);
    std::vector<AccountDeal> deals(AccountId account, const RecordPage &page);
    /// Of the running session, by rising collection.
    std::vector<GatherRow> gathers(AccountId account);

private:
    /// Where one list ends, and where those of its places begin that are asked for.
    struct Stretch {
        RecordTail tail;
        std::int64_t bottom = 1;
    };

    void putInto(const char *sql, const RecordRow &row);
    /// What stands in one of an account's lists for the days that the page asks for.
    Stretch stretchOf(AccountId account, const RecordPage &page, RecordTail RecordRow::*list);
    std::optional<RecordRow> endOfDay(AccountId account, TradingDay atMost);
    std::vector<OrderRow> walkOrders(AccountId account, const RecordPage &page,
                                     const Stretch &stretch);
    template <typename Record, typename Find>
    std::vector<Record> walk(AccountId account, RecordList list, const RecordPage &page,
                             const Stretch &stretch, const Find &find);

    Statements m_statements;
};

} // namespace zvx
