#include "exchange/store/marketreader.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"
#include "exchange/store/support.h"

#include <SQLiteCpp/SQLiteCpp.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace zvx {
namespace {

using test::kMorning;
using test::Scribe;
using test::TempFolder;

BeginTransfer transfer(std::int64_t account, bool incoming, std::int64_t fen, std::uint64_t key)
{
    BeginTransfer command;
    command.account = AccountId(account);
    command.incoming = incoming;
    command.amount = Fen(fen);
    command.bank = {1, key};
    command.card = 0x8000000000000000u + key;
    command.key = {2, key};
    return command;
}

EndTransfer word(std::int64_t number, bool done)
{
    return {TransferNumber(number), done};
}

/// "7 in 500 done 1500": number, way, amount, state, balance.
std::string text(const FlowRow &row)
{
    static constexpr const char *states[] = {"pending", "done", "refused"};
    return std::to_string(row.number) + (row.incoming ? " in " : " out ")
        + std::to_string(row.amount.value()) + ' ' + states[static_cast<int>(row.state)] + ' '
        + std::to_string(row.balance.value());
}

std::vector<std::string> texts(const std::vector<FlowRow> &rows)
{
    std::vector<std::string> lines;
    for (const FlowRow &row : rows)
        lines.push_back(text(row));
    return lines;
}

using Lines = std::vector<std::string>;

/// A store that is written, and a reader beside it.
class FlowsTest : public testing::Test
{
protected:
    FlowsTest() { begin(); }

    void begin()
    {
        reader.reset();
        scribe.reset();
        store.reset();
        store = std::make_unique<SqliteStore>(folder / "m.market");
        scribe = std::make_unique<Scribe>(*store, recoverMarket(*store).market);
        reader = std::make_unique<MarketReader>(folder / "m.market");
    }
    void carryOut(const std::vector<Command> &commands) { scribe->carryOut(commands); }

    std::vector<FlowRow> page(std::int64_t account, RecordPage page = {})
    {
        return reader->flows(AccountId(account), page);
    }

    TempFolder folder;
    std::unique_ptr<SqliteStore> store;
    std::unique_ptr<Scribe> scribe;
    std::unique_ptr<MarketReader> reader;
};

TEST_F(FlowsTest, TellWhatCameAndWentAndWhatTheBankSaid)
{
    carryOut({OpenAccount{AccountId(1), kDefaultFee, {}},
              OpenAccount{AccountId(2), kDefaultFee, {}}, Deposit{AccountId(1), Fen(1'000), {}}});
    carryOut({transfer(1, false, 300, 1), transfer(2, true, 50, 2), transfer(1, true, 70, 3)});
    EXPECT_EQ(texts(page(1)),
              (Lines{"4 in 70 pending 700", "2 out 300 pending 700", "1 in 1000 done 1000"}));
    EXPECT_EQ(texts(reader->waitingFlows()),
              (Lines{"2 out 300 pending 700", "3 in 50 pending 0", "4 in 70 pending 700"}));
    scribe->now = TimeMs(kMorning.value() + 5);
    carryOut({word(1, false), word(3, true), Withdraw{AccountId(1), Fen(20), {}},
              transfer(1, false, 5'000, 4)}); // more than there is: no flow
    EXPECT_EQ(texts(page(1)),
              (Lines{"5 out 20 done 1050", "4 in 70 done 1070", "2 out 300 refused 1000",
                     "1 in 1000 done 1000"}));
    EXPECT_EQ(texts(page(2)), (Lines{"3 in 50 pending 0"}));
    EXPECT_EQ(texts(page(3)), Lines());
    EXPECT_EQ(texts(reader->waitingFlows()), (Lines{"3 in 50 pending 0"}));

    const FlowRow row = page(1)[1];
    EXPECT_EQ(row.account, AccountId(1));
    EXPECT_EQ(row.begunAt, kMorning);
    EXPECT_EQ(row.endedAt, TimeMs(kMorning.value() + 5));
    EXPECT_EQ(row.day, TradingDay(20'200'101));
    EXPECT_EQ(row.transfer, TransferNumber(3));
    EXPECT_EQ(row.bank, (TransferId{1, 3}));
    EXPECT_EQ(row.card, 0x8000000000000003u);
    EXPECT_EQ(row.key, (ActionKey{2, 3}));
    EXPECT_TRUE(page(1)[0].bank.isNull());
    EXPECT_TRUE(page(1)[0].key.isNull());
    EXPECT_EQ(page(1)[0].transfer, TransferNumber(0));
}

TEST_F(FlowsTest, AreFoundByKeyAndByTransfer)
{
    carryOut({OpenAccount{AccountId(1), kDefaultFee, {}},
              OpenAccount{AccountId(2), kDefaultFee, {}}, transfer(1, true, 10, 1),
              transfer(2, true, 20, 1), transfer(1, true, 30, 2)});
    EXPECT_EQ(text(reader->flowOf(AccountId(1), {2, 1}).value()), "1 in 10 pending 0");
    EXPECT_EQ(text(reader->flowOf(AccountId(2), {2, 1}).value()), "2 in 20 pending 0");
    EXPECT_FALSE(reader->flowOf(AccountId(2), {2, 2}));
    EXPECT_FALSE(reader->flowOf(AccountId(1), {}));
    EXPECT_EQ(text(reader->flowOf(TransferNumber(3)).value()), "3 in 30 pending 0");
    EXPECT_FALSE(reader->flowOf(TransferNumber(4)));
    EXPECT_FALSE(reader->flowOf(TransferNumber(0)));
    // A key that the market forgot may be used again; then the newer flow is meant.
    carryOut({SettleDay{TradingDay(20'200'101)}, SettleDay{TradingDay(20'200'101)},
              transfer(1, true, 40, 1)});
    EXPECT_EQ(text(reader->flowOf(AccountId(1), {2, 1}).value()), "4 in 40 pending 0");
}

TEST_F(FlowsTest, AWordThatComesAfterARestartFindsItsFlow)
{
    carryOut({OpenAccount{AccountId(1), kDefaultFee, {}}, Deposit{AccountId(1), Fen(100), {}},
              transfer(1, false, 60, 1)});
    begin();
    carryOut({transfer(1, true, 5, 2)});
    begin();
    carryOut({word(1, true), word(2, false)});
    EXPECT_EQ(texts(page(1)),
              (Lines{"3 in 5 refused 40", "2 out 60 done 40", "1 in 100 done 100"}));
    const std::string grown = store->describeTables();
    rebuildTables(*store);
    EXPECT_EQ(store->describeTables(), grown);
}

TEST_F(FlowsTest, SumsCountTheTransfersOfATimeAndAWay)
{
    carryOut({OpenAccount{AccountId(1), kDefaultFee, {}},
              OpenAccount{AccountId(2), kDefaultFee, {}}, Deposit{AccountId(1), Fen(1'000), {}},
              transfer(1, true, 1, 1)});
    scribe->now = TimeMs(kMorning.value() + 10);
    carryOut({transfer(1, true, 20, 2), transfer(1, false, 300, 3), transfer(2, true, 4'000, 4),
              Deposit{AccountId(1), Fen(50'000), {}}, transfer(1, true, 600'000, 5), word(5, false),
              transfer(1, true, 7'000'000, 6), word(6, true)});
    const auto sum = [this](bool incoming, std::int64_t since, std::size_t most) {
        const FlowSum found
            = reader->flowSum(AccountId(1), incoming, TimeMs(kMorning.value() + since), most);
        return std::to_string(found.count) + ": " + std::to_string(found.amount.value());
    };
    EXPECT_EQ(sum(true, 0, 100), "4: 7000021");
    EXPECT_EQ(sum(true, 1, 100), "3: 7000020");
    EXPECT_EQ(sum(true, 10, 100), "3: 7000020");
    EXPECT_EQ(sum(true, 11, 100), "0: 0");
    EXPECT_EQ(sum(false, 0, 100), "1: 300");
    EXPECT_EQ(sum(true, 0, 2), "2: 7000000") << "the newest two, of which one was refused";
}

TEST_F(FlowsTest, PagesAreCutAsAListWouldBe)
{
    std::vector<Command> commands
        = {OpenAccount{AccountId(1), kDefaultFee, {}}, OpenAccount{AccountId(2), kDefaultFee, {}}};
    std::uint64_t key = 0;
    for (int day = 0; day < 6; ++day) {
        commands.push_back(SettleDay{TradingDay(20'200'101 + day)});
        for (int i = 0; i < 11; ++i) {
            ++key;
            commands.push_back(transfer(1 + (key % 5 == 0 ? 1 : 0), key % 3 == 0, 1, key));
            commands.push_back(Deposit{AccountId(1), Fen(5), {}});
        }
    }
    Limits many;
    many.transfersOfAccount = 1'000;
    scribe = std::make_unique<Scribe>(*store, Market(TradingDay(20'200'101), many));
    carryOut(commands);

    // Everything, the oldest first.
    std::vector<FlowRow> all;
    for (std::int64_t number = 1;; ++number) {
        const auto found
            = reader->flows(AccountId(1), {RecordPage::All, {}, TradingDay(99'991'231), number, 7});
        if (found.empty())
            break;
        all.insert(all.end(), found.begin(), found.end());
    }
    ASSERT_GT(all.size(), 90u);
    for (std::size_t i = 1; i < all.size(); ++i) {
        ASSERT_LT(all[i].number, all[i - 1].number);
        ASSERT_LE(all[i].day, all[i - 1].day);
    }
    int pages = 0;
    for (const auto way : {RecordPage::All, RecordPage::Incoming, RecordPage::Outgoing})
        for (const std::int64_t first :
             {19'700'101, 20'200'101, 20'200'103, 20'200'106, 20'200'107})
            for (const std::int64_t last : {20'191'231, 20'200'102, 20'200'104, 99'991'231})
                for (const std::int64_t size : {1, 4, 10, 200})
                    for (const std::int64_t page : {1, 2, 3, 9, 10'000, 0x7fffffff}) {
                        std::vector<FlowRow> kept;
                        std::copy_if(all.begin(), all.end(), std::back_inserter(kept),
                                     [&](const FlowRow &row) {
                                         return row.day.value() >= first && row.day.value() <= last
                                             && (way == RecordPage::All
                                                 || row.incoming == (way == RecordPage::Incoming));
                                     });
                        const std::size_t begin
                            = std::min(kept.size(), static_cast<std::size_t>((page - 1) * size));
                        const std::size_t end
                            = std::min(kept.size(), begin + static_cast<std::size_t>(size));
                        const std::vector<FlowRow> wanted(
                            kept.begin() + static_cast<std::ptrdiff_t>(begin),
                            kept.begin() + static_cast<std::ptrdiff_t>(end));
                        const auto found = reader->flows(
                            AccountId(1), {way, TradingDay(first), TradingDay(last), page, size});
                        ASSERT_EQ(texts(found), texts(wanted))
                            << static_cast<int>(way) << ' ' << first << ' ' << last << ' ' << page
                            << ' ' << size;
                        pages += found.empty() ? 0 : 1;
                    }
    EXPECT_GT(pages, 200);
}

/// No question about flows sorts rows or walks through those that it does not tell.
TEST_F(FlowsTest, QuestionsAreAnsweredByIndexes)
{
    SQLite::Database database((folder / "m.market").string(), SQLite::OPEN_READONLY);
    for (const char *question :
         {"SELECT place FROM flows WHERE account = 1 ORDER BY place DESC LIMIT 1",
          "SELECT number FROM flows WHERE account = 1 AND place BETWEEN 5 AND 9 "
          "ORDER BY place DESC",
          "SELECT number FROM flows WHERE account = 1 AND incoming = 1 AND way_place BETWEEN 5 AND "
          "9 ORDER BY way_place DESC",
          "SELECT place FROM flows WHERE account = 1 AND day >= 5 ORDER BY day, place LIMIT 1",
          "SELECT place FROM flows WHERE account = 1 AND day <= 5 ORDER BY day DESC, place DESC "
          "LIMIT 1",
          "SELECT way_place FROM flows WHERE account = 1 AND incoming = 0 AND day <= 5 "
          "ORDER BY day DESC, way_place DESC LIMIT 1",
          "SELECT number FROM flows WHERE transfer = 4 AND transfer > 0",
          "SELECT number FROM flows WHERE state = 0 ORDER BY number",
          "SELECT begun FROM flows WHERE account = 1 AND incoming = 1 ORDER BY way_place DESC"}) {
        SQLite::Statement plan(database, std::string("EXPLAIN QUERY PLAN ") + question);
        std::string steps;
        while (plan.executeStep())
            steps += plan.getColumn(3).getString() + '\n';
        EXPECT_NE(steps.find("INDEX"), std::string::npos) << question << '\n' << steps;
        EXPECT_EQ(steps.find("TEMP B-TREE"), std::string::npos) << question << '\n' << steps;
    }
}

} // namespace
} // namespace zvx
