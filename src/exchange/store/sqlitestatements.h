#pragma once

#include "exchange/store/sqliterows.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace zvx {

/**
 * The statements of one open connection, each made when it is needed first. A text is known by its
 * address, so it stands for as long as the connection does.
 *
 * No call leaves a statement open, which would hold the write-ahead log. Everything throws
 * SQLite::Exception.
 */
class Statements
{
public:
    explicit Statements(SQLite::Database &database) : m_database(database) { }

    template <typename... Values>
    void run(const char *sql, const Values &...values)
    {
        const Use use(prepared(sql));
        use.bind(values...);
        use.statement.exec();
    }

    /// Calls `take` for each row, until it says no.
    template <typename Take, typename... Values>
    void each(const char *sql, const Take &take, const Values &...values)
    {
        const Use use(prepared(sql));
        use.bind(values...);
        while (use.statement.executeStep() && take(use.statement)) { }
    }

    /// The first column of the first row, or 0.
    template <typename... Values>
    std::int64_t number(const char *sql, const Values &...values)
    {
        std::int64_t found = 0;
        each(
            sql,
            [&found](SQLite::Statement &statement) {
                found = statement.getColumn(0).getInt64();
                return false;
            },
            values...);
        return found;
    }

private:
    struct Prepared {
        const char *sql;
        SQLite::Statement statement;
    };

    /// A use of a statement ends with its reset.
    struct Use {
        explicit Use(SQLite::Statement &used) : statement(used) { }
        ~Use() { statement.tryReset(); }
        Use(const Use &) = delete;
        Use &operator=(const Use &) = delete;

        template <typename... Values>
        void bind(const Values &...values) const
        {
            Binder binder(statement);
            (static_cast<void>(binder << values), ...);
        }

        SQLite::Statement &statement;
    };

    SQLite::Statement &prepared(const char *sql)
    {
        const auto found = std::find_if(m_prepared.begin(), m_prepared.end(),
                                        [sql](const auto &each) { return each->sql == sql; });
        if (found != m_prepared.end())
            return (*found)->statement;
        m_prepared.push_back(
            std::unique_ptr<Prepared>(new Prepared{sql, SQLite::Statement(m_database, sql)}));
        return m_prepared.back()->statement;
    }

    SQLite::Database &m_database;
    std::vector<std::unique_ptr<Prepared>> m_prepared;
};

} // namespace zvx
