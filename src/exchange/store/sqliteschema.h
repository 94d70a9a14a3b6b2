#pragma once

#include <string>
#include <vector>

namespace SQLite {
class Database;
}

namespace zvx {

/// Marks a SQLite file as a market's store: "ZVXM".
constexpr int kMarketApplicationId = 0x5a56584d;

/// The steps that lead to today's tables: entry n leads from version n to version n + 1. A released
/// entry never changes; a new version is a new entry and a new fixture file beside the tests.
const std::vector<std::string> &marketMigrations();

/**
 * The version of a file, 0 of an empty one. Reads only.
 * Throws StoreError for a file of another kind or of a newer version.
 */
int checkVersion(SQLite::Database &database, int applicationId,
                 const std::vector<std::string> &migrations);

/**
 * Brings a file to the newest version, each step in a transaction of its own with its version
 * number. An empty file is version 0.
 * Throws StoreError for a file of another kind or of a newer version, and leaves it as it was.
 */
void migrate(SQLite::Database &database, int applicationId,
             const std::vector<std::string> &migrations);

} // namespace zvx
