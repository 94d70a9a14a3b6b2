#pragma once

#include "exchange/core/types.h"
#include "exchange/store/store.h"

#include <SQLiteCpp/SQLiteCpp.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

namespace zvx {

/**
 * An open SQLite file as all files of the exchange are kept: write-ahead log, every commit synced
 * before it returns, brought to the newest version, and nothing goes on after a failure.
 *
 * One thread at a time.
 */
class SqliteConnection
{
public:
    /// Opens the file or makes it. `vfs` names a SQLite VFS that was registered before; "" is the
    /// machine's own. The write-ahead log is moved into the file by the first commit that leaves
    /// `logFrames` pages in it. Throws StoreError or SQLite::Exception.
    SqliteConnection(const std::filesystem::path &file, const std::string &vfs, int applicationId,
                     const std::vector<std::string> &migrations, int logFrames);
    ~SqliteConnection();

    SqliteConnection(const SqliteConnection &) = delete;
    SqliteConnection &operator=(const SqliteConnection &) = delete;

    /// Runs work() and turns what SQLite throws into a StoreError with the file's name.
    template <typename Work>
    auto guarded(const Work &work) -> decltype(work())
    {
        try {
            return work();
        } catch (const SQLite::Exception &error) {
            throw StoreError(m_database.getFilename() + ": " + error.what());
        }
    }

    /// As guarded(), for changes: one transaction, and nothing goes on after a failure.
    template <typename Work>
    void change(const Work &work)
    {
        if (m_failed)
            throw StoreError(m_database.getFilename() + ": a commit failed before");
        guarded([&] {
            m_failed = true;
            SQLite::Transaction transaction(m_database, SQLite::TransactionBehavior::IMMEDIATE);
            work();
            transaction.commit();
            if (m_logFrames >= m_moveAt)
                moveLog();
            m_failed = false;
        });
    }

    /// As change(), and durable with the next change that is; what a power cut takes back must do
    /// no harm.
    template <typename Work>
    void changeSyncedLater(const Work &work)
    {
        guarded([&] { m_database.exec("PRAGMA synchronous = NORMAL"); });
        change(work);
        guarded([&] { m_database.exec("PRAGMA synchronous = FULL"); });
    }

    /// `drain` waits for the reads of other connections that are under way, and is called around
    /// the moving of the log: readers that follow each other without a pause would keep the log for
    /// ever, each a little of it.
    void drainReadersWith(std::function<void()> drain) { m_drainReaders = std::move(drain); }

    SQLite::Database &database() { return m_database; }
    SQLite::Statement statement(const std::string &sql) { return {m_database, sql}; }

private:
    void moveLog();

    SQLite::Database m_database;
    int m_mostFrames;
    int m_logFrames = 0;
    int m_moveAt; ///< frames at which the log is moved into the file next
    bool m_failed = false;
    std::function<void()> m_drainReaders = [] {};
};

/// The sixteen bytes by which a key stands in a table, and the way back: the null key for bytes
/// that are none.
std::string keyBytes(ActionKey key);
ActionKey keyOf(const std::string &bytes);

} // namespace zvx
