#pragma once

#include "rowmaker.h"
#include "trader.h"

#include "exchange/store/sqlitestore.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace SQLite {
class Database;
class Statement;
} // namespace SQLite

// What the plain way stores: one row, one commit, synced.
class PlainTable
{
public:
    explicit PlainTable(const std::filesystem::path &file);
    ~PlainTable();

    // Orders a second.
    double run(Trader &trader, double milliseconds);

private:
    void put(const zvx::PlaceOrder &order);

    std::unique_ptr<SQLite::Database> m_database;
    std::unique_ptr<SQLite::Statement> m_insert;
    std::int64_t m_last = 0;
};

// The rows of a hundred orders in one commit, made before: what the store can do at most.
class Ceiling
{
public:
    Ceiling(const std::filesystem::path &file, std::vector<Trader> traders);

    // Orders a second; the making of the rows does not count.
    double run(double milliseconds);

private:
    zvx::SqliteStore m_store;
    RowMaker m_rows;
    std::vector<Trader> m_traders;
    std::size_t m_next = 0;
};

// Commits the rows of one order after the other, and nothing else.
class BareCommits
{
public:
    explicit BareCommits(const std::filesystem::path &file);

    // Milliseconds of the commit alone.
    double commit(const zvx::Command &command);
    // All rows that are stored, without the times in them.
    std::string rows();

private:
    zvx::SqliteStore m_store;
    RowMaker m_rows;
};

// All rows of a store as text, without times.
std::string timelessRows(zvx::Store &store);
