#include "plainpages.h"

#include <SQLiteCpp/SQLiteCpp.h>

PlainPages::PlainPages(const std::filesystem::path &file,
                       const std::vector<LongPast::Entry> &entries)
    : m_database(std::make_unique<SQLite::Database>(file.string(),
                                                    SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE))
{
    m_database->exec("PRAGMA journal_mode = WAL");
    m_database->exec("CREATE TABLE orders (number INTEGER PRIMARY KEY, account INTEGER, "
                     "collection INTEGER, side INTEGER, price INTEGER, quantity INTEGER, "
                     "day INTEGER, placed INTEGER)");
    SQLite::Transaction transaction(*m_database);
    SQLite::Statement insert(*m_database,
                             "INSERT INTO orders VALUES (?, 1, 1001, ?, 1000, 1, ?, "
                             "1577840400000)");
    for (const LongPast::Entry &entry : entries) {
        insert.reset();
        insert.bind(1, entry.order);
        insert.bind(2, entry.isBuy ? 0 : 1);
        insert.bind(3, entry.day);
        insert.exec();
    }
    m_database->exec("CREATE INDEX of_account ON orders (account, number)");
    transaction.commit();
    m_page = std::make_unique<SQLite::Statement>(
        *m_database,
        "SELECT number, side, price, quantity, placed FROM orders WHERE account = 1 "
        "ORDER BY number DESC LIMIT 10 OFFSET ?");
}

PlainPages::~PlainPages() = default;

std::vector<std::int64_t> PlainPages::page(std::int64_t number)
{
    std::vector<std::int64_t> numbers;
    m_page->reset();
    m_page->bind(1, (number - 1) * 10);
    while (m_page->executeStep())
        numbers.push_back(m_page->getColumn(0).getInt64());
    return numbers;
}
