#include "exchange/service/demo_gifts.h"

#include "exchange/core/market.h"
#include "exchange/store/exchange.h"
#include "exchange/store/marketreader.h"

#include "exchange/service/account_fixture.h"
#include "exchange/service/program.h"
#include "exchange/service/until.h"

#include <csignal>
#include <fstream>
#include <set>
#include <sstream>

namespace {

using namespace zvx;
using nlohmann::json;
using zvxtest::until;

const std::string demoPhone = "13800000000";
const std::string demoPassword = "demo888888";

/// The gifts alone, on an exchange without a service.
class DemoGiftsTest : public testing::Test
{
protected:
    DemoGiftsTest()
    {
        std::ifstream in(ZVX_SMALL_CATALOGUE);
        std::ostringstream text;
        text << in.rdbuf();
        catalogue = text.str();
    }

    void open()
    {
        ExchangeOptions options;
        options.folder = folder.path();
        options.firstCatalogue = catalogue;
        exchange = std::make_unique<Exchange>(std::move(options));
    }
    void close() { exchange.reset(); }

    /// Gives to account 1 of each market of `platforms`, as a start of the service does.
    void give(const std::string &platforms = "ch lc")
    {
        DemoGifts gifts(folder.path());
        gifts.give(
            *exchange,
            [&](const MarketServer &market) {
                const bool has = platforms.find(market.platform()) != std::string::npos;
                return has ? std::optional<AccountId>(1) : std::nullopt;
            },
            [&](const std::string &line) {
                notices.push_back(line);
                marks.push_back(mark());
            });
    }
    AccountState stateIn(const std::string &prefix) const
    {
        return exchange->market(prefix)->readers().read(
            [](MarketReader &reader) { return reader.account(AccountId(1)); });
    }
    std::int64_t moneyIn(const std::string &prefix) const
    {
        return stateIn(prefix).cash.available.value();
    }
    std::string mark() const
    {
        std::ifstream in(folder.path() / DemoGifts::fileName);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
    void writeMark(const std::string &text) const
    {
        std::ofstream(folder.path() / DemoGifts::fileName) << text;
    }

    zvxtest::TemporaryFolder folder;
    std::string catalogue;
    std::unique_ptr<Exchange> exchange;
    std::vector<std::string> notices;
    std::vector<std::string> marks; ///< what the mark held at each notice
};

TEST_F(DemoGiftsTest, AreMoneyAndPiecesInEveryMarketOnce)
{
    DemoGifts(folder.path()).markNewFolder();
    EXPECT_TRUE(DemoGifts(folder.path()).isMarked());
    open();
    for (int start = 0; start < 3; ++start) {
        give();
        for (const std::string prefix : {"/ch/youbi/", "/lc/youbika/", "/lc/chajiu/"}) {
            const AccountState state = stateIn(prefix);
            EXPECT_EQ(state.cash.available, Fen(100'000'000)) << prefix;
            ASSERT_EQ(state.holdings.size(), 8u) << prefix;
            for (const HoldingView &holding : state.holdings)
                EXPECT_EQ(holding.quantity, Quantity(100));
        }
        EXPECT_EQ(stateIn("/lc/youbika/").holdings[0].cost, Fen(100 * 1000))
            << "at the previous close";
        exchange->settle();
        close();
        open();
    }
    EXPECT_EQ(notices.size(), 3u) << "one line a market, and never again";
    EXPECT_EQ(mark(), "/ch/youbi/ 1 done\n/lc/chajiu/ 1 done\n/lc/youbika/ 1 done\n");
}

TEST_F(DemoGiftsTest, AreFinishedAfterAnInterruption)
{
    DemoGifts(folder.path()).markNewFolder();
    open();
    give("ch");
    // As a kill leaves it behind the commits of one market, and before the others'.
    writeMark("/ch/youbi/ 1 begun\n/lc/chajiu/ 1 begun\n/lc/youbika/ 1 begun\n");
    close();
    open();
    exchange->settle();
    give();
    for (const std::string prefix : {"/ch/youbi/", "/lc/youbika/", "/lc/chajiu/"}) {
        EXPECT_EQ(moneyIn(prefix), 100'000'000) << prefix;
        EXPECT_EQ(stateIn(prefix).holdings[0].quantity, Quantity(100)) << prefix;
    }
    EXPECT_EQ(mark(), "/ch/youbi/ 1 done\n/lc/chajiu/ 1 done\n/lc/youbika/ 1 done\n");
}

TEST_F(DemoGiftsTest, AreMarkedBeforeTheyAreGiven)
{
    DemoGifts(folder.path()).markNewFolder();
    open();
    exchange->settle();
    give();
    ASSERT_EQ(marks.size(), 3u);
    for (const std::string &each : marks)
        EXPECT_EQ(each, "/ch/youbi/ 2 begun\n/lc/chajiu/ 2 begun\n/lc/youbika/ 2 begun\n");
}

TEST_F(DemoGiftsTest, AreNotRepeatedWhereTheKeysAreForgotten)
{
    DemoGifts(folder.path()).markNewFolder();
    open();
    give();
    close();
    writeMark("/ch/youbi/ 1 begun\n/lc/chajiu/ 1 begun\n/lc/youbika/ 1 begun\n");
    open();
    exchange->settle();
    exchange->settle();
    notices.clear();
    give();
    EXPECT_EQ(moneyIn("/lc/youbika/"), 100'000'000) << "never twice";
    EXPECT_EQ(notices.size(), 3u);
    EXPECT_EQ(mark(), "/ch/youbi/ 1 done\n/lc/chajiu/ 1 done\n/lc/youbika/ 1 done\n");
}

TEST_F(DemoGiftsTest, LeaveMostOfASmallIssueToOthers)
{
    json all = json::parse(catalogue);
    json &rows = all["platforms"][1]["markets"][0]["collections"];
    rows[0]["listed"] = 9;
    rows[1]["listed"] = 10;
    rows[2]["listed"] = 999;
    rows[3]["listed"] = 1000;
    rows[4]["suspended"] = true;
    json more = json::array();
    for (int i = 0; i < 117; ++i) {
        json row = rows[7];
        row["id"] = 50'000 + i;
        row["code"] = std::to_string(500'000 + i);
        more.push_back(row);
    }
    all["platforms"][0]["markets"][0]["collections"] = more;
    catalogue = all.dump();
    DemoGifts(folder.path()).markNewFolder();
    open();
    give();
    std::map<std::int64_t, std::int64_t> pieces;
    for (const HoldingView &holding : stateIn("/lc/youbika/").holdings)
        pieces[holding.collection.value()] = holding.quantity.value();
    EXPECT_EQ(pieces,
              (std::map<std::int64_t, std::int64_t>{{2101, 1},
                                                    {2102, 99},
                                                    {2103, 100},
                                                    {2104, 100},
                                                    {2105, 100},
                                                    {2106, 100},
                                                    {2107, 100}}));
    std::set<std::int64_t> spread;
    for (const HoldingView &holding : stateIn("/ch/youbi/").holdings)
        spread.insert(holding.collection.value());
    EXPECT_EQ(spread.size(), 50u);
    EXPECT_EQ(*spread.begin(), 50'000);
    EXPECT_GT(*spread.rbegin(), 50'100) << "from the whole list";
}

TEST_F(DemoGiftsTest, AMarketThatIsAddedLaterGetsItsShare)
{
    DemoGifts(folder.path()).markNewFolder();
    open();
    give("ch");
    EXPECT_EQ(moneyIn("/lc/youbika/"), 0);
    give("ch lc");
    EXPECT_EQ(moneyIn("/lc/youbika/"), 100'000'000);
    EXPECT_EQ(moneyIn("/ch/youbi/"), 100'000'000);
}

TEST_F(DemoGiftsTest, MarkNewFoldersAlone)
{
    open();
    close();
    DemoGifts gifts(folder.path());
    gifts.markNewFolder();
    EXPECT_FALSE(gifts.isMarked());
    EXPECT_FALSE(std::filesystem::exists(folder.path() / DemoGifts::fileName));
}

TEST_F(DemoGiftsTest, ABrokenMarkIsSaidAndNotGuessedAt)
{
    for (const char *text : {"/lc/youbika/\n", "/lc/youbika/ x done\n", "/lc/youbika/ 1 perhaps\n",
                             "/lc/youbika/ 0 done\n"}) {
        writeMark(text);
        EXPECT_THROW(DemoGifts{folder.path()}, std::runtime_error) << text;
    }
}

TEST(DemoProgram, StartsThatAreKilledGiveEverythingOnce)
{
    const zvxtest::TemporaryFolder folder;
    const std::string state = (folder.path() / "state").string();
    const std::vector<std::string> serve = {
        "serve", "--state", state, "--catalogue", ZVX_SMALL_CATALOGUE, "--robots", "20", "--demo"};
    // A line of the log or a file of the folder, after which the start is killed. A kill that came
    // late may have let the gifts be finished; the next start then serves without a word of them.
    const char *const serving = "serving address";
    int killed = 0;
    for (const char *sight : {"demo.gifts", "catalogue.json", "lc-youbika.market", "lc.accounts",
                              "/ch/youbi/: the demo", "/lc/youbika/: the demo", serving}) {
        zvxtest::Program program(serve, zvxtest::Program::Nothing);
        EXPECT_TRUE(until([&] {
            return std::filesystem::exists(state + '/' + sight) || !program.isRunning()
                || program.errors.find(sight) != std::string::npos
                || program.errors.find(serving) != std::string::npos;
        })) << sight;
        program.signal(SIGKILL);
        killed += program.wait() == -1 ? 1 : 0;
    }
    EXPECT_EQ(killed, 7);
    zvxtest::Program program(serve, zvxtest::Program::Nothing);
    const std::uint16_t port = program.port();
    for (const std::string market : {"/ch/youbi/", "/lc/youbika/", "/lc/chajiu/"}) {
        zvxtest::RawClient client(port);
        client.post(market + "login.html",
                    "key=" + std::string(30, '1') + std::to_string(10 + killed)
                        + "&client=00000000000000aa&phone=" + demoPhone
                        + "&password=" + demoPassword);
        const json account = json::parse(client.answer()->body)["data"];
        ASSERT_TRUE(account.is_object()) << market;
        client.get(market + "cap.html", account["token"]);
        const json cap = json::parse(client.answer()->body)["data"];
        EXPECT_EQ(cap["available"], 100'000'000) << market;
        EXPECT_EQ(cap["items"].size(), 8u) << market;
        for (const json &holding : cap["items"])
            EXPECT_EQ(holding["quantity"], 100) << market;
    }
}

/// The whole: a service with and without --demo.
class DemoServiceTest : public zvxtest::AccountTest
{
protected:
    json enter(const std::string &market)
    {
        return act(market + "login.html",
                   "client=00000000000000aa&phone=" + demoPhone + "&password=" + demoPassword);
    }
    bool hasAccount() { return enter(lc)["status"] == "ok"; }
};

TEST_F(DemoServiceTest, ANewFolderGetsTheAccountOnEachPlatform)
{
    options.demo = true;
    options.robotOrdersPerSecond = 50;
    begin();
    for (int start = 0; start < 2; ++start) {
        for (const std::string &market : {lc, tea, ch}) {
            const json answer = enter(market);
            ASSERT_EQ(answer["status"], "ok") << answer;
            EXPECT_EQ(answer["data"]["account"]["phone"], demoPhone);
        }
        const json cap = get(lc + "cap.html", enter(lc)["data"]["token"])["data"];
        EXPECT_EQ(cap["available"], 100'000'000);
        EXPECT_EQ(cap["items"].size(), 8u);
        EXPECT_EQ(cap["items"][0]["quantity"], 100);
        restart();
    }
    options.demo = false;
    restart();
    EXPECT_TRUE(hasAccount()) << "it stays without the option";
}

TEST_F(DemoServiceTest, OthersNeverGetIt)
{
    begin();
    EXPECT_FALSE(hasAccount());
    options.demo = true;
    restart();
    EXPECT_FALSE(hasAccount()) << "the folder was not made with it";
    EXPECT_FALSE(std::filesystem::exists(folder.path() / DemoGifts::fileName));
}

TEST_F(DemoServiceTest, AFolderOfBeforeThereWereAccountsStaysWithoutIt)
{
    begin();
    service.reset();
    for (const char *name : {"lc.accounts", "ch.accounts"})
        std::filesystem::remove(folder.path() / name);
    options.demo = true;
    begin();
    EXPECT_FALSE(hasAccount());
}

TEST_F(DemoServiceTest, AStartThatWasKilledEarlyIsFinishedByTheNext)
{
    // As a kill leaves it between the mark and the catalogue.
    DemoGifts(folder.path()).markNewFolder();
    options.demo = true;
    begin();
    EXPECT_TRUE(hasAccount());
    EXPECT_EQ(get(lc + "cap.html", enter(lc)["data"]["token"])["data"]["available"], 100'000'000);
}

TEST_F(DemoServiceTest, AFolderWithAKnownPasswordIsServedOnLoopbackAlone)
{
    options.demo = true;
    begin();
    service.reset();
    options.demo = false;
    options.address = "0.0.0.0";
    EXPECT_THROW(Service(options, log), std::runtime_error);
    options.address = "127.0.0.2";
    EXPECT_NO_THROW(begin());
}

} // namespace
