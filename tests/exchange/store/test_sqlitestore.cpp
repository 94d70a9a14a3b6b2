#include "exchange/store/recovery.h"
#include "exchange/store/sqliteschema.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <algorithm>

namespace zvx {
namespace {

using test::listing;
using test::RandomTrading;
using test::Scribe;
using test::TempFolder;

/// Fills a store with some sessions of trading.
void trade(Scribe &scribe, std::uint32_t seed, int commands)
{
    RandomTrading trading(seed, test::smallMarket());
    scribe.carryOut(listing(test::smallMarket()));
    scribe.carryOut(trading.opening());
    std::vector<Command> batch;
    int batches = 0;
    for (int i = 0; i < commands; ++i) {
        batch.push_back(trading.next());
        if (batch.size() == 4) {
            scribe.carryOut(batch, ++batches % 20 == 0);
            batch.clear();
        }
    }
    scribe.carryOut(batch);
}

TEST(SqliteStore, TablesMadeAnewEqualThoseThatGrew)
{
    const TempFolder folder;
    SqliteStore store(folder / "m.market");
    Scribe scribe(store, Market());
    trade(scribe, 5, 3'000);
    ASSERT_GT(scribe.market().session(), Sequence(2));
    ASSERT_GT(scribe.market().lastDeal(), Sequence(200));
    const std::string grown = store.describeTables();
    for (const char *table : {"orders ", "deals ", "cash ", "holdings ", "days ", "composites ",
                              "issues ", "running ", "minutes ", "phases ", "flows "})
        EXPECT_NE(("\n" + grown).find(std::string("\n") + table), std::string::npos) << table;
    rebuildTables(store);
    EXPECT_EQ(store.describeTables(), grown);
}

TEST(SqliteStore, ARebuildThatFailsLeavesTheTablesAsTheyWere)
{
    const TempFolder folder;
    std::string before;
    {
        SqliteStore store(folder / "m.market");
        Scribe scribe(store, Market());
        trade(scribe, 6, 100);
        before = store.describeTables();
        EXPECT_THROW(
            store.rebuildTables([](const Store::TablePutter &) { throw Damaged("planted"); }),
            Damaged);
    }
    EXPECT_EQ(SqliteStore(folder / "m.market").describeTables(), before);
}

TEST(SqliteStore, AMarketComesBackFromCheckpointsAndFromTheFirstEventAlike)
{
    const TempFolder folder;
    std::uint64_t hash = 0;
    std::int64_t last = 0;
    {
        SqliteStore store(folder / "m.market");
        Scribe scribe(store, Market());
        trade(scribe, 7, 1'500);
        hash = scribe.market().stateHash();
        last = scribe.last();
    }
    SqliteStore store(folder / "m.market");
    const Recovered recovered = recoverMarket(store);
    EXPECT_EQ(recovered.market.stateHash(), hash);
    EXPECT_EQ(recovered.lastCommand, last);
    EXPECT_GT(recovered.checkpoint, 0);
    EXPECT_LT(recovered.checkpoint, last);
    EXPECT_TRUE(recovered.notices.empty());
    EXPECT_EQ(replayMarket(store).stateHash(), hash);
    EXPECT_EQ(store.checkpoints().size(), 3u); // older ones were dropped
}

TEST(SqliteStore, ADamagedCheckpointIsPassedOver)
{
    const TempFolder folder;
    std::uint64_t hash = 0;
    std::vector<std::int64_t> numbers;
    {
        SqliteStore store(folder / "m.market");
        Scribe scribe(store, Market());
        trade(scribe, 8, 800);
        hash = scribe.market().stateHash();
        numbers = store.checkpoints();
    }
    ASSERT_EQ(numbers.size(), 3u);
    const std::string file = (folder / "m.market").string();
    {
        SQLite::Database database(file, SQLite::OPEN_READWRITE);
        database.exec("UPDATE checkpoints SET state = x'00112233' WHERE number = "
                      + std::to_string(numbers[0]));
        database.exec("UPDATE checkpoints SET hash = hash + 1 WHERE number = "
                      + std::to_string(numbers[1]));
    }
    {
        SqliteStore store(file);
        const Recovered recovered = recoverMarket(store);
        EXPECT_EQ(recovered.market.stateHash(), hash);
        EXPECT_EQ(recovered.checkpoint, numbers[2]);
        EXPECT_EQ(recovered.notices.size(), 2u);
    }
    {
        SQLite::Database database(file, SQLite::OPEN_READWRITE);
        database.exec("DELETE FROM checkpoints WHERE number = " + std::to_string(numbers[2]));
    }
    SqliteStore store(file);
    const Recovered recovered = recoverMarket(store);
    EXPECT_EQ(recovered.market.stateHash(), hash);
    EXPECT_EQ(recovered.checkpoint, 0);
}

TEST(SqliteStore, ACheckpointBehindTheLastCommandShowsThatCommandsWereLost)
{
    const TempFolder folder;
    {
        SqliteStore store(folder / "m.market");
        Scribe scribe(store, Market());
        trade(scribe, 8, 800);
        // Only money moves, so that the tables of orders and deals would not tell.
        scribe.carryOut({Deposit{AccountId(1), Fen(5), {}}}, true);
    }
    {
        SQLite::Database database((folder / "m.market").string(), SQLite::OPEN_READWRITE);
        ASSERT_EQ(
            database.exec("DELETE FROM commands WHERE number = (SELECT max(number) FROM commands)"),
            1);
    }
    SqliteStore store(folder / "m.market");
    EXPECT_THROW(recoverMarket(store), Damaged);
}

TEST(SqliteStore, DamagedEventsAreRefused)
{
    struct Damage {
        const char *name;
        const char *sql;
    };
    const Damage damages[] = {
        {"a command is missing", "DELETE FROM commands WHERE number = 40"},
        {"bytes that are no event", "UPDATE commands SET events = x'ff' WHERE number = 40"},
        {"an event of another history",
         "UPDATE commands SET events = (SELECT events FROM commands WHERE number = 1) "
         "WHERE number = 40"},
        {"a deal without its event",
         "UPDATE deals SET sequence = 999999 WHERE sequence = "
         "(SELECT max(sequence) FROM deals)"},
    };
    for (const Damage &damage : damages) {
        SCOPED_TRACE(damage.name);
        const TempFolder folder;
        {
            SqliteStore store(folder / "m.market");
            Scribe scribe(store, Market());
            trade(scribe, 9, 300);
        }
        {
            SQLite::Database database((folder / "m.market").string(), SQLite::OPEN_READWRITE);
            database.exec("DELETE FROM checkpoints");
            ASSERT_GT(database.exec(damage.sql), 0);
        }
        SqliteStore store(folder / "m.market");
        EXPECT_ANY_THROW(recoverMarket(store));
    }
}

TEST(SqliteStore, ReadsBackWhatItWasGiven)
{
    const TempFolder folder;
    SqliteStore store(folder / "m.market");
    Batch batch;
    batch.commands
        = {{1, TimeMs(5), {0x0123456789abcdef, 0xfedcba9876543210}, std::string("a\0b", 3)},
           {2, TimeMs(6), {}, "c"}};
    batch.checkpoint = StoredCheckpoint{2, 0xffffffffffffffff, std::string("\0state", 6)};
    store.commit(batch);
    std::vector<StoredCommand> read;
    store.readCommands(1, 2, [&](const StoredCommand &command) { read.push_back(command); });
    ASSERT_EQ(read.size(), 2u);
    EXPECT_EQ(read[0].time, TimeMs(5));
    EXPECT_EQ(read[0].key, batch.commands[0].key);
    EXPECT_EQ(read[0].events, batch.commands[0].events);
    EXPECT_TRUE(read[1].key.isNull());
    EXPECT_EQ(store.checkpoint(2).hash, 0xffffffffffffffff);
    EXPECT_EQ(store.checkpoint(2).state, batch.checkpoint->state);
    EXPECT_THROW(store.checkpoint(1), StoreError);
    EXPECT_THROW(store.readCommands(1, 3, [](const StoredCommand &) {}), StoreError);
}

TEST(SqliteStore, NothingGoesOnAfterACommitThatFailed)
{
    const TempFolder folder;
    SqliteStore store(folder / "m.market");
    Batch batch;
    batch.commands = {{1, TimeMs(5), {}, "a"}};
    store.commit(batch);
    EXPECT_THROW(store.commit(batch), StoreError); // the same number again
    batch.commands[0].number = 2;
    EXPECT_THROW(store.commit(batch), StoreError);
    EXPECT_EQ(SqliteStore(folder / "m.market").lastCommand(), 1);
}

TEST(SqliteStore, LatestDealsAreOfTheSessionAndOldestFirst)
{
    const TempFolder folder;
    SqliteStore store(folder / "m.market");
    Batch batch;
    for (std::int64_t i = 1; i <= 10; ++i) {
        DealRow row;
        row.deal.sequence = Sequence(i);
        row.deal.collection = CollectionId(i % 2 + 1);
        row.deal.price = Fen(100 + i);
        row.session = Sequence(i <= 4 ? 1 : 2);
        row.ordinal = Sequence((i <= 4 ? i + 1 : i - 3) / 2);
        batch.tables.deals.push_back(row);
    }
    store.commit(batch);
    const auto sequences = [&](CollectionId id, Sequence session, std::size_t limit) {
        std::vector<std::int64_t> found;
        for (const DealRow &row : store.latestDeals(id, session, limit))
            found.push_back(row.deal.sequence.value());
        return found;
    };
    EXPECT_EQ(sequences(CollectionId(1), Sequence(2), 200), (std::vector<std::int64_t>{6, 8, 10}));
    EXPECT_EQ(sequences(CollectionId(1), Sequence(2), 2), (std::vector<std::int64_t>{8, 10}));
    EXPECT_EQ(sequences(CollectionId(1), Sequence(3), 200), (std::vector<std::int64_t>{}));
    EXPECT_EQ(sequences(CollectionId(9), Sequence(2), 200), (std::vector<std::int64_t>{}));
}

TEST(SqliteStore, RefusesANewerFileAndLeavesItAlone)
{
    const TempFolder folder;
    const std::filesystem::path file = folder / "m.market";
    {
        SqliteStore store(file);
    }
    const int newest = static_cast<int>(marketMigrations().size());
    {
        SQLite::Database database(file.string(), SQLite::OPEN_READWRITE);
        database.exec("PRAGMA user_version = " + std::to_string(newest + 1));
    }
    try {
        SqliteStore store(file);
        FAIL();
    } catch (const StoreError &error) {
        const std::string what = error.what();
        EXPECT_NE(what.find(file.string()), std::string::npos) << what;
        EXPECT_NE(what.find("newer program"), std::string::npos) << what;
    }
    SQLite::Database database(file.string(), SQLite::OPEN_READONLY);
    EXPECT_EQ(database.execAndGet("PRAGMA user_version").getInt(), newest + 1);
}

TEST(SqliteStore, RefusesWhatIsNoStore)
{
    const TempFolder folder;
    test::writeFile(folder / "text", std::string(5'000, 'x'));
    EXPECT_THROW(SqliteStore(folder / "text"), StoreError);
    {
        SQLite::Database other((folder / "other").string(),
                               SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        other.exec("CREATE TABLE shopping (item TEXT)");
    }
    const std::string before = test::readFile(folder / "other");
    EXPECT_THROW(SqliteStore(folder / "other"), StoreError);
    EXPECT_EQ(test::readFile(folder / "other"), before);
    EXPECT_THROW(SqliteStore("/nowhere/at/all"), StoreError);
    EXPECT_THROW(SqliteStore(folder / "new", "no-such-vfs"), StoreError);
}

TEST(Migration, TakesEachStepOnceAndStopsWhereOneFails)
{
    const TempFolder folder;
    SQLite::Database database((folder / "d").string(),
                              SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
    const auto version = [&] { return database.execAndGet("PRAGMA user_version").getInt(); };
    const std::string first = "CREATE TABLE a (x INTEGER); INSERT INTO a VALUES (1);";
    const std::string second = "ALTER TABLE a ADD COLUMN y INTEGER; UPDATE a SET y = x + 1;";
    migrate(database, 77, {first});
    EXPECT_EQ(version(), 1);
    migrate(database, 77, {first, second});
    EXPECT_EQ(version(), 2);
    EXPECT_EQ(database.execAndGet("SELECT y FROM a").getInt(), 2);
    EXPECT_ANY_THROW(migrate(
        database, 77, {first, second, "CREATE TABLE b (x INTEGER); INSERT INTO c VALUES (1);"}));
    EXPECT_EQ(version(), 2);
    EXPECT_EQ(database.execAndGet("SELECT count(*) FROM sqlite_schema WHERE name = 'b'").getInt(),
              0);
    EXPECT_THROW(migrate(database, 78, {first, second}), StoreError);
    EXPECT_THROW(migrate(database, 77, {first}), StoreError);
}

/// Each fixture is the dump of a store as that version wrote it; its hash was noted then.
TEST(Migration, OpensTheFilesOfAllVersions)
{
    const int newest = static_cast<int>(marketMigrations().size());
    for (int version = 1; version <= newest; ++version) {
        const std::string name = "market-v" + std::to_string(version);
        SCOPED_TRACE(name);
        const TempFolder folder;
        const std::filesystem::path file = folder / "m.market";
        {
            SQLite::Database database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
            database.exec(test::readFile(test::dataFile(name + ".sql")));
            ASSERT_EQ(database.execAndGet("PRAGMA user_version").getInt(), version);
        }
        SqliteStore store(file);
        const Recovered recovered = recoverMarket(store);
        EXPECT_EQ(std::to_string(recovered.market.stateHash()) + "\n",
                  test::readFile(test::dataFile(name + ".hash")));
        EXPECT_TRUE(recovered.notices.empty());
        EXPECT_GT(recovered.checkpoint, 0);
        EXPECT_GT(recovered.lastCommand, recovered.checkpoint);
        EXPECT_EQ(replayMarket(store).stateHash(), recovered.market.stateHash());
        const std::string tables = store.describeTables();
        for (const char *table :
             {"orders ", "deals ", "issues ", "running ", "minutes ", "phases "})
            EXPECT_NE(("\n" + tables).find(std::string("\n") + table), std::string::npos)
                << "made anew from the events: " << table;
        rebuildTables(store);
        EXPECT_EQ(store.describeTables(), tables);
    }
}

/// Writes the store that becomes a new version's fixture; run it by name with the file to write in
/// ZVX_FIXTURE, dump the file with "sqlite3 FILE .dump", and add its two pragmas.
TEST(Migration, DISABLED_WritesAFixture)
{
    const char *file = std::getenv("ZVX_FIXTURE");
    ASSERT_NE(file, nullptr);
    SqliteStore store(file);
    Scribe scribe(store, Market());
    RandomTrading trading(1, test::smallMarket());
    scribe.carryOut(listing(test::smallMarket()));
    scribe.carryOut(trading.opening());
    for (int i = 0; i < 120; ++i)
        scribe.carryOut({trading.next()}, i == 60);
    scribe.carryOut({SettleDay{TradingDay(20'200'101)}});
    for (int i = 0; i < 60; ++i)
        scribe.carryOut({trading.next()});
    std::printf("%llu\n", static_cast<unsigned long long>(scribe.market().stateHash()));
}

} // namespace
} // namespace zvx
