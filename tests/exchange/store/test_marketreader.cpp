#include "exchange/store/marketreader.h"

#include "exchange/core/market.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketwriter.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

namespace zvx {
namespace {

using test::kMorning;
using test::RandomTrading;
using test::TempFolder;

/// A writer at work on a file, and beside it the same market in memory.
class Desk
{
public:
    explicit Desk(int logFrames = SqliteStore::kLogFrames)
    {
        auto store = std::make_unique<SqliteStore>(file(), std::string(), logFrames);
        store->drainReadersWith([this] { readers.drain(); });
        writer = std::make_unique<MarketWriter>(std::move(store), test::smallMarket(),
                                                std::make_shared<ManualClock>(kMorning),
                                                MarketWriter::Events());
        writer->start();
        for (const CatalogueCollection &entry : test::smallMarket().collections) {
            ListCollection list;
            list.collection = entry.id;
            list.previousClose = entry.previousClose;
            list.issued = entry.listed;
            twin(list);
        }
        twin(SetPhase{true});
    }

    std::filesystem::path file() const { return m_folder / "m.market"; }

    /// Carries the command out in both; returns when the writer acknowledged it.
    Result carryOut(const Command &command)
    {
        twin(command);
        return writer->execute({command}).front();
    }

    const Market &market() const { return m_market; }

private:
    void twin(const Command &command)
    {
        std::vector<Event> events;
        m_market.apply(command, kMorning, events);
    }

    TempFolder m_folder;
    Market m_market;

public:
    MarketReaders readers{file(), {}};
    std::unique_ptr<MarketWriter> writer;
};

void expectEqual(const AccountState &read, const Market &market, AccountId id)
{
    const AccountView view = market.account(id).value_or(AccountView{});
    EXPECT_EQ(read.cash.account, id);
    EXPECT_EQ(read.cash.available, view.available);
    EXPECT_EQ(read.cash.frozenCash, view.frozenCash);
    EXPECT_EQ(read.cash.frozen, view.frozen);
    EXPECT_EQ(read.cash.fee, view.fee);
    std::vector<HoldingView> holdings;
    market.holdingsOf(id, holdings);
    ASSERT_EQ(read.holdings.size(), holdings.size());
    for (std::size_t i = 0; i < holdings.size(); ++i) {
        EXPECT_EQ(read.holdings[i].collection, holdings[i].collection);
        EXPECT_EQ(read.holdings[i].quantity, holdings[i].quantity);
        EXPECT_EQ(read.holdings[i].frozen, holdings[i].frozen);
        EXPECT_EQ(read.holdings[i].cost, holdings[i].cost);
    }
}

TEST(MarketReader, SeesEachCommandThatWasAcknowledged)
{
    Desk desk;
    RandomTrading trading(31, test::smallMarket());
    MarketReader reader(desk.file());
    for (const Command &command : trading.opening())
        desk.carryOut(command);
    for (int i = 0; i < 400 && !testing::Test::HasFailure(); ++i) {
        desk.carryOut(trading.next());
        for (std::int64_t id = 1; id <= RandomTrading::kAccounts; ++id)
            expectEqual(reader.account(AccountId(id)), desk.market(), AccountId(id));
    }
}

TEST(MarketReader, KnowsNothingOfAnAccountThatNeverTraded)
{
    Desk desk;
    MarketReader reader(desk.file());
    expectEqual(reader.account(AccountId(7)), desk.market(), AccountId(7));
    EXPECT_FALSE(reader.fees(AccountId(7)));
    EXPECT_TRUE(reader.orders({OrderNumber(1)}).empty());
}

TEST(MarketReader, FindsTheFeesOfAnAccount)
{
    Desk desk;
    MarketReader reader(desk.file());
    const auto ppm = [](std::int64_t rate) { return PartsPerMillion(rate); };
    desk.carryOut(OpenAccount{
        AccountId(7), ppm(2500), {{CollectionId(1103), ppm(100)}, {CollectionId(1101), ppm(0)}}});
    desk.carryOut(OpenAccount{AccountId(8), ppm(3000), {{CollectionId(1101), ppm(9)}}});
    auto fees = reader.fees(AccountId(7));
    ASSERT_TRUE(fees);
    EXPECT_EQ(fees->fee, ppm(2500));
    using Special = decltype(fees->special);
    EXPECT_EQ(fees->special,
              (Special{{CollectionId(1101), ppm(0)}, {CollectionId(1103), ppm(100)}}));
    desk.carryOut(SetFeeRate{AccountId(7), CollectionId(0), ppm(4000)});
    desk.carryOut(SetFeeRate{AccountId(7), CollectionId(1103), ppm(200)});
    fees = reader.fees(AccountId(7));
    EXPECT_EQ(fees->fee, ppm(4000));
    EXPECT_EQ(fees->special,
              (Special{{CollectionId(1101), ppm(0)}, {CollectionId(1103), ppm(200)}}));
    for (const auto &[collection, fee] : fees->special)
        EXPECT_EQ(desk.market().feeRate(AccountId(7), collection), fee);
}

PlaceOrder order(std::int64_t account, Side side, std::int64_t price, std::int64_t quantity,
                 ActionKey key)
{
    PlaceOrder place;
    place.account = AccountId(account);
    place.collection = CollectionId(1100);
    place.side = side;
    place.price = Fen(price);
    place.quantity = Quantity(quantity);
    place.key = key;
    return place;
}

TEST(MarketReader, FindsOrdersWithTheActionsThatPlacedAndRevokedThem)
{
    Desk desk;
    MarketReader reader(desk.file());
    desk.carryOut(OpenAccount{AccountId(1), kDefaultFee, {}});
    desk.carryOut(Deposit{AccountId(1), Fen(1'000'000), {}});
    desk.carryOut(order(1, Side::Buy, 950, 1, {1, 1})); // 1
    desk.carryOut(order(1, Side::Buy, 951, 1, {})); // 2, without a key
    desk.carryOut(order(1, Side::Buy, 952, 1, {1, 3})); // 3
    desk.carryOut(order(1, Side::Buy, 953, 1, {1, 4})); // 4
    desk.carryOut(RevokeOrders{AccountId(1), {OrderNumber(1)}, {}});
    desk.carryOut(RevokeOrders{AccountId(1), {OrderNumber(1)}, {2, 1}});
    // Both in one batch, so that neither takes the other's orders.
    desk.writer->execute({RevokeOrders{AccountId(1), {OrderNumber(2)}, {}},
                          RevokeOrders{AccountId(1), {OrderNumber(2), OrderNumber(3)}, {2, 2}}});
    std::vector<std::string> found;
    for (const OrderRow &row : reader.orders(
             {OrderNumber(4), OrderNumber(9), OrderNumber(3), OrderNumber(2), OrderNumber(1)}))
        found.push_back(std::to_string(row.order.value()) + " key " + std::to_string(row.key.low)
                        + " revoked by " + std::to_string(row.revokeKey.low) + " state "
                        + std::to_string(static_cast<int>(row.state)));
    EXPECT_EQ(
        found,
        (std::vector<std::string>{"4 key 4 revoked by 0 state 0", "3 key 3 revoked by 2 state 2",
                                  "2 key 0 revoked by 0 state 2", "1 key 1 revoked by 0 state 2"}));
    desk.writer->stop();
    SqliteStore store(desk.file());
    const std::string grown = store.describeTables();
    rebuildTables(store);
    EXPECT_EQ(store.describeTables(), grown);
}

/// Reads account 1 on its own thread, again and again, and checks what holds after each commit.
class Watcher
{
public:
    Watcher(MarketReaders &readers, std::function<void(const AccountState &)> check)
        : m_thread([this, &readers, check = std::move(check)] {
              do {
                  check(readers.read(
                      [](MarketReader &reader) { return reader.account(AccountId(1)); }));
                  ++reads;
              } while (!m_enough);
          })
    {
    }
    ~Watcher()
    {
        m_enough = true;
        m_thread.join();
    }

    std::atomic<int> reads{0};

private:
    std::atomic<bool> m_enough{false};
    std::thread m_thread;
};

TEST(MarketReader, ReadsWholeCommitsBesideABusyWriter)
{
    Desk desk(20); // the log is moved into the file every few commits
    // Account 1 buys from account 2 at one price and without a fee: what it has stays worth the
    // same, and a reader that saw money and pieces of two commits would find something missing.
    constexpr std::int64_t price = 1000;
    constexpr std::int64_t money = 5'000'000;
    for (const std::int64_t id : {1, 2}) {
        desk.carryOut(OpenAccount{AccountId(id), PartsPerMillion(0), {}});
        desk.carryOut(Deposit{AccountId(id), Fen(money), {}});
    }
    desk.carryOut(GrantHolding{AccountId(2), CollectionId(1100), Quantity(5'000), Fen(1), {}});
    std::atomic<std::int64_t> acknowledged{0};
    std::atomic<std::int64_t> wrong{0};
    std::atomic<std::int64_t> stale{0};
    {
        std::vector<std::unique_ptr<Watcher>> watchers;
        for (int i = 0; i < 3; ++i) {
            watchers.push_back(std::make_unique<Watcher>(desk.readers, [&](const AccountState &) {
                const std::int64_t bought = acknowledged;
                const AccountState state = desk.readers.read(
                    [](MarketReader &reader) { return reader.account(AccountId(1)); });
                std::int64_t worth = state.cash.available.value() + state.cash.frozenCash.value();
                std::int64_t pieces = 0;
                for (const HoldingView &holding : state.holdings)
                    pieces += holding.quantity.value();
                worth += pieces * price;
                wrong += worth != money;
                stale += pieces < bought;
            }));
        }
        for (int i = 0; i < 150; ++i) {
            desk.carryOut(order(2, Side::Sell, price, 1, {}));
            desk.carryOut(order(1, Side::Buy, price, 1, {}));
            ++acknowledged;
        }
        for (const auto &watcher : watchers)
            EXPECT_GT(watcher->reads, 5);
    }
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(stale, 0);
    EXPECT_EQ(desk.market().holding(AccountId(1), CollectionId(1100)).quantity, Quantity(150));
}

TEST(MarketReader, ReadersThatNeverRestDoNotLetTheLogGrow)
{
    constexpr int frames = 50;
    Desk desk(frames);
    desk.carryOut(OpenAccount{AccountId(1), kDefaultFee, {}});
    std::filesystem::path log = desk.file();
    log += "-wal";
    std::uintmax_t longest = 0;
    {
        std::vector<std::unique_ptr<Watcher>> watchers;
        for (int i = 0; i < 3; ++i)
            watchers.push_back(
                std::make_unique<Watcher>(desk.readers, [](const AccountState &) {}));
        for (int i = 0; i < 600; ++i) {
            desk.carryOut(Deposit{AccountId(1), Fen(1), {}});
            longest = std::max(longest, std::filesystem::file_size(log));
        }
    }
    EXPECT_LT(longest / 4'120, 4u * frames);
}

TEST(MarketReader, SeesTheTablesBeforeOrAfterTheyWereMadeAnew)
{
    const TempFolder folder;
    const std::filesystem::path file = folder / "m.market";
    {
        MarketWriter writer(std::make_unique<SqliteStore>(file), test::smallMarket(),
                            std::make_shared<ManualClock>(kMorning), MarketWriter::Events());
        writer.start();
        RandomTrading trading(5, test::smallMarket());
        writer.execute(trading.opening());
        std::vector<Command> commands;
        for (int i = 0; i < 300; ++i)
            commands.push_back(trading.next());
        writer.execute(std::move(commands));
    }
    SqliteStore store(file);
    MarketReaders readers(file, {});
    const auto read
        = [&] { return readers.read([](MarketReader &r) { return r.account(AccountId(1)); }); };
    const AccountState before = read();
    ASSERT_FALSE(before.holdings.empty());
    std::atomic<int> other{0};
    {
        Watcher watcher(readers, [&](const AccountState &state) {
            other += state.cash.available != before.cash.available
                || state.holdings.size() != before.holdings.size();
        });
        for (int i = 0; i < 5; ++i)
            rebuildTables(store);
    }
    EXPECT_EQ(other, 0);
}

TEST(MarketReader, CannotChangeWhatItReadsAndNamesTheFileThatIsNotThere)
{
    const TempFolder folder;
    try {
        MarketReader reader(folder / "nowhere.market");
        FAIL();
    } catch (const StoreError &error) {
        EXPECT_NE(std::string(error.what()).find("nowhere.market"), std::string::npos);
    }
    EXPECT_FALSE(std::filesystem::exists(folder / "nowhere.market"));
}

TEST(MarketReaders, OpensAnotherOnlyWhileOneIsReading)
{
    Desk desk;
    MarketReaders &readers = desk.readers;
    const auto self = [](MarketReader &reader) { return &reader; };
    MarketReader *first = readers.read(self);
    EXPECT_EQ(readers.read(self), first);
    readers.read([&](MarketReader &outer) {
        EXPECT_EQ(&outer, first);
        EXPECT_NE(readers.read(self), first);
        return 0;
    });
    EXPECT_THROW(readers.read([](MarketReader &) -> int { throw StoreError("planted"); }),
                 StoreError);
}

TEST(MarketReaders, LeaveNoLogBehindWhenTheExchangeStops)
{
    const TempFolder folder;
    ExchangeOptions options;
    options.folder = folder / "state";
    options.firstCatalogue = test::readFile(test::dataFile("small-catalogue.json"));
    Exchange exchange(options);
    MarketServer *market = exchange.market("/lc/youbika/");
    market->writer().execute({OpenAccount{AccountId(1), kDefaultFee, {}}});
    EXPECT_EQ(market->readers()
                  .read([](MarketReader &reader) { return reader.account(AccountId(1)); })
                  .cash.fee,
              kDefaultFee);
    exchange.stop();
    for (const auto &entry : std::filesystem::directory_iterator(folder / "state"))
        EXPECT_EQ(entry.path().string().find("-wal"), std::string::npos) << entry.path();
}

/// The step to the second version empties the tables; whatever happens before they are made anew,
/// the market is never opened without them.
TEST(Migration, TablesThatWereEmptiedComeBackAtTheNextStart)
{
    const TempFolder folder;
    const std::filesystem::path file = folder / "m.market";
    {
        SQLite::Database database(file.string(), SQLite::OPEN_READWRITE | SQLite::OPEN_CREATE);
        database.exec(test::readFile(test::dataFile("market-v1.sql")));
    }
    {
        SqliteStore store(file); // and the program is killed here
        EXPECT_TRUE(store.tablesAreEmpty());
    }
    SqliteStore store(file);
    const Recovered recovered = recoverMarket(store);
    EXPECT_FALSE(store.tablesAreEmpty());
    MarketReader reader(file);
    for (const AccountId id : recovered.market.accounts())
        expectEqual(reader.account(id), recovered.market, id);
    std::vector<OrderNumber> numbers;
    for (std::int64_t i = 1; i <= recovered.market.lastOrder().value(); ++i)
        numbers.push_back(OrderNumber(i));
    int keyed = 0;
    for (const OrderRow &row : reader.orders(numbers)) {
        const auto answer = recovered.market.answerOf(row.account, row.key);
        keyed += answer && answer->order == row.order;
    }
    EXPECT_GT(keyed, 10);
}

} // namespace
} // namespace zvx
