#include "exchange/store/sqliteconnection.h"

#include "exchange/core/faults.h"
#include "exchange/store/sqliteschema.h"

#include <sqlite3.h>

namespace zvx {

SqliteConnection::SqliteConnection(const std::filesystem::path &file, const std::string &vfs,
                                   int applicationId, const std::vector<std::string> &migrations,
                                   int logFrames)
    : m_database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE, 5'000, vfs),
      m_mostFrames(logFrames), m_moveAt(logFrames)
{
    // First of all, since even the journal's mode stays in a file.
    checkVersion(m_database, applicationId, migrations);
    const std::string mode = m_database.execAndGet("PRAGMA journal_mode = WAL").getString();
    if (mode != "wal")
        throw StoreError(file.string() + ": the file system does not allow a write-ahead log");
    m_database.exec("PRAGMA synchronous = FULL");
    if (fault("commits-synced-later"))
        m_database.exec("PRAGMA synchronous = NORMAL");
    if (fault("nothing-synced"))
        m_database.exec("PRAGMA synchronous = OFF");
    m_database.exec("PRAGMA temp_store = MEMORY");
    // SQLite ignores errors of its own automatic checkpoints and would sync again later. After
    // a failed sync nothing may be believed, so the log is moved here, where errors count.
    sqlite3_wal_hook(
        m_database.getHandle(),
        [](void *self, sqlite3 *, const char *, int frames) {
            static_cast<SqliteConnection *>(self)->m_logFrames = frames;
            return SQLITE_OK;
        },
        this);
    migrate(m_database, applicationId, migrations);
}

SqliteConnection::~SqliteConnection()
{
    // Closing moves the log into the file; after a failure it stays for the next start to judge.
    if (m_failed)
        sqlite3_db_config(m_database.getHandle(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

void SqliteConnection::moveLog()
{
    int frames = 0;
    int moved = 0;
    m_drainReaders();
    const int code = sqlite3_wal_checkpoint_v2(m_database.getHandle(), nullptr,
                                               SQLITE_CHECKPOINT_PASSIVE, &frames, &moved);
    if (code != SQLITE_OK && code != SQLITE_BUSY)
        throw SQLite::Exception(m_database.getHandle(), code);
    // Whoever begins to read from now on finds everything in the file, and leaves the log to the
    // next commit, which begins it anew.
    m_drainReaders();
    // A reader that took longer kept a part of it. Not every commit pays for him.
    const bool whole = code == SQLITE_OK && moved == frames;
    m_moveAt = whole ? m_mostFrames : m_logFrames + m_mostFrames / 2 + 1;
}

std::string keyBytes(ActionKey key)
{
    std::string bytes;
    for (const std::uint64_t half : {key.high, key.low})
        for (int shift = 56; shift >= 0; shift -= 8)
            bytes.push_back(static_cast<char>(half >> shift & 0xff));
    return bytes;
}

ActionKey keyOf(const std::string &bytes)
{
    ActionKey key;
    if (bytes.size() != 16)
        return key;
    for (std::size_t i = 0; i < 16; ++i) {
        std::uint64_t &half = i < 8 ? key.high : key.low;
        half = half << 8 | static_cast<unsigned char>(bytes[i]);
    }
    return key;
}

} // namespace zvx
