#pragma once

#include "longpast.h"

#include <cstdint>
#include <filesystem>
#include <memory>
#include <vector>

namespace SQLite {
class Database;
class Statement;
} // namespace SQLite

// The plainest way to page: one table with an index of the account, whose rows are counted off from
// the newest on.
class PlainPages
{
public:
    PlainPages(const std::filesystem::path &file, const std::vector<LongPast::Entry> &entries);
    ~PlainPages();

    // The numbers of the orders on a page of ten.
    std::vector<std::int64_t> page(std::int64_t number);

private:
    std::unique_ptr<SQLite::Database> m_database;
    std::unique_ptr<SQLite::Statement> m_page;
};
