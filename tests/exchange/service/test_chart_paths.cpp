#include "exchange/service/mutator.h"
#include "exchange/service/trading_fixture.h"
#include "exchange/service/until.h"

#include "exchange/store/calendar.h"
#include "exchange/store/pasttrading.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>

namespace {

using namespace zvx;
using nlohmann::json;
using zvxtest::Hold;
using zvxtest::outcome;
using zvxtest::until;

constexpr std::int64_t morning = 1'577'840'400'000; // 2020-01-01 09:00 in UTC+8
constexpr std::int64_t minute = 60'000;

/// A clock that goes on by a step whenever somebody looks at it.
class SteppingClock : public ManualClock
{
public:
    SteppingClock() : ManualClock(TimeMs(morning)) { }

    TimeMs wall() const override
    {
        return TimeMs(ManualClock::wall().value() + (m_passed += step));
    }

    std::atomic<std::int64_t> step{0};

private:
    mutable std::atomic<std::int64_t> m_passed{0};
};

class ChartPathsTest : public zvxtest::TradingTest
{
protected:
    ChartPathsTest() { options.clock = clock; }

    void begin()
    {
        TradingTest::begin();
        fund(1, 900'000'000, 5'000);
        fund(2, 900'000'000, 5'000);
    }
    void deal(std::int64_t price, std::int64_t quantity)
    {
        placed(sell(1, price, quantity));
        placed(buy(2, price, quantity));
    }
    /// So many deals of one piece at 10.00, each of them by two commands.
    void manyDeals(int count)
    {
        std::vector<Command> orders;
        for (int i = 0; i < count; ++i) {
            const bool there = i < count / 2;
            for (const Side side : {Side::Sell, Side::Buy}) {
                PlaceOrder order;
                order.account = AccountId((side == Side::Sell) == there ? 1 : 2);
                order.collection = CollectionId(2100);
                order.side = side;
                order.price = Fen(1'000);
                order.quantity = Quantity(1);
                orders.push_back(order);
            }
        }
        carryOut(orders);
    }
    void settle() { carryOut({SettleDay{TradingDay(20'200'101)}}); }

    /// Of an answer that is expected to be one.
    json data(const std::string &path) const { return dataOf(get(path, 1), path); }
    /// The same of the market with a history.
    json chajiu(const std::string &path) const
    {
        return dataOf(json::parse(zvxtest::fetch(floor->port(), "/lc/chajiu/" + path).body), path);
    }

    const std::shared_ptr<SteppingClock> clock = std::make_shared<SteppingClock>();

private:
    static json dataOf(const json &answer, const std::string &path)
    {
        EXPECT_EQ(answer["status"], "ok") << path << answer;
        EXPECT_FALSE(answer.contains("version"));
        return answer["data"];
    }
};

TEST_F(ChartPathsTest, TellsMinutesOfTheRunningSession)
{
    begin();
    EXPECT_EQ(data("market/jit.html?collection=2100"),
              (json{{"id", "2100"},
                    {"tradingDay", "2020-01-01"},
                    {"session", 1},
                    {"previousClose", 1000},
                    {"spans", json::array({json::array({morning, nullptr})})},
                    {"minutes", json::array()}}));
    clock->advance(1'234);
    deal(1'000, 2);
    deal(1'010, 1);
    clock->advance(3 * minute);
    deal(990, 4);
    const json first = json::array({morning, 1010, 1003, 3});
    const json second = json::array({morning + 3 * minute, 990, 996, 4});
    EXPECT_EQ(data("market/jit.html?collection=2100")["minutes"], json::array({first, second}));
    const std::string from = "market/jit.html?collection=2100&from=";
    EXPECT_EQ(data(from + "0")["minutes"], json::array({first, second}));
    EXPECT_EQ(data(from + std::to_string(morning))["minutes"], json::array({first, second}));
    EXPECT_EQ(data(from + std::to_string(morning + 1))["minutes"], json::array({second}))
        << "the average is still that of the session";
    EXPECT_EQ(data(from + std::to_string(morning + 4 * minute))["minutes"], json::array());

    clock->advance(minute);
    settle();
    const json next = data("market/jit.html?collection=2100");
    EXPECT_EQ(next["session"], 2);
    EXPECT_EQ(next["previousClose"], 990);
    EXPECT_EQ(next["minutes"], json::array());
    EXPECT_EQ(next["spans"], json::array({json::array({morning + 4 * minute, nullptr})}));
}

TEST_F(ChartPathsTest, TellsTheNewestFiveThousandMinutes)
{
    begin();
    clock->step = minute / 2;
    manyDeals(5'010);
    const json told = data("market/jit.html?collection=2100");
    const json &minutes = told["minutes"];
    ASSERT_EQ(minutes.size(), 5'000u);
    EXPECT_EQ(minutes[0], json::array({morning + 11 * minute, 1000, 1000, 1}));
    EXPECT_EQ(minutes[4'999][0], morning + 5'010 * minute);
    EXPECT_EQ(told["spans"][0][0], morning);
    for (std::size_t i = 1; i < minutes.size(); ++i)
        ASSERT_EQ(minutes[i][0], minutes[i - 1][0].get<std::int64_t>() + minute);

    clock->step = 0;
    const json page = data("market/detail.html?collection=2100&size=5000&page=2")["deals"];
    EXPECT_EQ(page.size(), 10u);
    EXPECT_EQ(page[0]["sequence"], 1);
    EXPECT_EQ(data("market/detail.html?collection=2100&size=5000")["deals"].size(), 5'000u);
}

TEST_F(ChartPathsTest, TellsWhenTheMarketWasClosed)
{
    begin();
    clock->advance(90 * minute + 5);
    carryOut({SetPhase{false}});
    EXPECT_EQ(data("market/jit.html?collection=2100")["spans"],
              json::array({json::array({morning, morning + 91 * minute})}));
    clock->advance(60 * minute);
    carryOut({SetPhase{true}});
    EXPECT_EQ(data("market/jit.html?collection=2100")["spans"],
              json::array({json::array({morning, morning + 91 * minute}),
                           json::array({morning + 150 * minute, nullptr})}));
}

TEST_F(ChartPathsTest, JoinsAllSessionsOfADayAndTheRunningOne)
{
    begin();
    for (const char *path : {"market/day.html", "market/week.html", "market/month.html"})
        EXPECT_EQ(data(std::string(path) + "?collection=2100"),
                  (json{{"id", "2100"}, {"session", 1}, {"bars", json::array()}}));
    deal(1'000, 2);
    deal(1'050, 2);
    settle();
    deal(1'100, 1);
    deal(1'010, 1);
    settle();
    settle(); // nothing was dealt in this one
    deal(1'020, 5);
    const json bar = json::array({"2020-01-01", 1000, 1100, 1000, 1020, 11, 11'310});
    for (const char *path : {"market/day.html", "market/week.html", "market/month.html"}) {
        const json told = data(std::string(path) + "?collection=2100");
        EXPECT_EQ(told["session"], 4);
        EXPECT_EQ(told["bars"], json::array({bar})) << path;
        EXPECT_EQ(data(std::string(path) + "?collection=2100&before=2020-01-01")["bars"],
                  json::array());
        EXPECT_EQ(data(std::string(path) + "?collection=2100&before=2020-01-02&count=1")["bars"],
                  json::array({bar}));
    }
    restart();
    EXPECT_EQ(data("market/day.html?collection=2100")["bars"], json::array({bar}))
        << "a restart goes on with the session";
}

TEST_F(ChartPathsTest, BeginsAnewOnAnotherDay)
{
    begin();
    deal(1'000, 2);
    carryOut({SettleDay{TradingDay(20'200'102)}});
    deal(1'010, 3);
    EXPECT_EQ(data("market/day.html?collection=2100")["bars"],
              json::array({json::array({"2020-01-01", 1000, 1000, 1000, 1000, 2, 2000}),
                           json::array({"2020-01-02", 1010, 1010, 1010, 1010, 3, 3030})}));
    EXPECT_EQ(data("market/week.html?collection=2100")["bars"],
              json::array({json::array({"2020-01-02", 1000, 1010, 1000, 1010, 5, 5030})}));
    EXPECT_EQ(data("market/jit.html?collection=2100")["tradingDay"], "2020-01-02");
}

TEST_F(ChartPathsTest, ShowsAHistoryWhereTheCatalogueSaysSo)
{
    begin();
    // The market of the other tests has none.
    EXPECT_EQ(data("market/day.html?collection=2101")["bars"], json::array());
    const std::vector<Bar> past
        = pastTrading({CollectionId(3101), Fen(1'005), Quantity(20'000), kDefaultLimit});
    const json days = chajiu("market/day.html?collection=3101&count=5000")["bars"];
    ASSERT_EQ(days.size(), past.size());
    for (std::size_t i = 0; i < days.size(); ++i)
        ASSERT_EQ(days[i],
                  json::array({dayText(past[i].day), past[i].open.value(), past[i].high.value(),
                               past[i].low.value(), past[i].close.value(), past[i].volume.value(),
                               past[i].amount.value()}));
    EXPECT_EQ(days[0][0], "2016-01-04");
    EXPECT_EQ(days.back()[0], "2019-12-31");
    EXPECT_EQ(days.back()[4], 1'005);
    EXPECT_EQ(chajiu("market/day.html?collection=3101")["bars"].size(), 1'000u);
    EXPECT_EQ(chajiu("market/day.html?collection=3101")["bars"].back(), days.back());

    const json weeks = chajiu("market/week.html?collection=3101")["bars"];
    EXPECT_EQ(weeks.size(), 209u);
    EXPECT_EQ(weeks[0][0], "2016-01-08");
    EXPECT_EQ(weeks.back()[0], "2019-12-31");
    const json months = chajiu("market/month.html?collection=3101")["bars"];
    EXPECT_EQ(months.size(), 48u);
    EXPECT_EQ(months[0][0], "2016-01-29");
    EXPECT_EQ(months.back()[4], 1'005);
}

/// A client that walks back page by page, each before the first bar that it has, gets every bar
/// once.
TEST_F(ChartPathsTest, WalksBackWithoutHolesOrRepetitions)
{
    begin();
    for (const std::string path : {"market/day.html", "market/week.html", "market/month.html"}) {
        const std::string address = path + "?collection=3105&count=";
        const json whole = chajiu(address + "5000")["bars"];
        ASSERT_GT(whole.size(), 40u);
        json walked = json::array();
        std::string before;
        for (int pages = 0; pages < 1'000; ++pages) {
            json page = chajiu(address + "17" + before)["bars"];
            if (page.empty())
                break;
            ASSERT_LE(page.size(), 17u);
            before = "&before=" + page[0][0].get<std::string>();
            page.insert(page.end(), walked.begin(), walked.end());
            walked = std::move(page);
        }
        EXPECT_EQ(walked, whole) << path;
    }
    // In the middle of a week, the week is still to come.
    EXPECT_EQ(chajiu("market/week.html?collection=3105&count=1&before=2019-12-25")["bars"][0][0],
              "2019-12-20");
    EXPECT_EQ(chajiu("market/week.html?collection=3105&count=1&before=2019-12-28")["bars"][0][0],
              "2019-12-27");
}

TEST_F(ChartPathsTest, TheWeekOfTheTurnHoldsHistoryAndDeals)
{
    begin();
    MarketServer &market = *floor->exchange().market("/lc/chajiu/");
    const CollectionId id(3100);
    std::vector<Command> commands;
    for (const std::int64_t account : {1, 2}) {
        commands.push_back(OpenAccount{AccountId(account), kDefaultFee, {}});
        commands.push_back(Deposit{AccountId(account), Fen(10'000'000), {}});
    }
    commands.push_back(GrantHolding{AccountId(1), id, Quantity(100), Fen(1'000), {}});
    for (const Side side : {Side::Sell, Side::Buy}) {
        PlaceOrder order;
        order.account = AccountId(side == Side::Sell ? 1 : 2);
        order.collection = id;
        order.side = side;
        order.price = Fen(1'090);
        order.quantity = Quantity(6);
        commands.push_back(order);
    }
    for (const Result &result : market.writer().execute(commands))
        ASSERT_EQ(result.status, Status::Accepted);
    const json days = chajiu("market/day.html?collection=3100&count=3")["bars"];
    ASSERT_EQ(days.size(), 3u);
    EXPECT_EQ(days[2], json::array({"2020-01-01", 1090, 1090, 1090, 1090, 6, 6540}));
    EXPECT_EQ(days[1][0], "2019-12-31");
    const json week = chajiu("market/week.html?collection=3100&count=1")["bars"][0];
    EXPECT_EQ(week[0], "2020-01-01");
    EXPECT_EQ(week[1], days[0][1]) << "it began on Monday, 2019-12-30";
    EXPECT_EQ(days[0][0], "2019-12-30");
    EXPECT_EQ(week[2], std::max({days[0][2], days[1][2], days[2][2]}));
    EXPECT_EQ(week[3], std::min({days[0][3], days[1][3], days[2][3]}));
    EXPECT_EQ(week[4], 1'090);
    EXPECT_EQ(week[5], days[0][5].get<std::int64_t>() + days[1][5].get<std::int64_t>() + 6);
    const json months = chajiu("market/month.html?collection=3100&count=2")["bars"];
    EXPECT_EQ(months[0][0], "2019-12-31");
    EXPECT_EQ(months[1], days[2]);
}

TEST_F(ChartPathsTest, TellsPagesOfDeals)
{
    begin();
    for (std::int64_t i = 1; i <= 5; ++i) {
        clock->advance(10);
        deal(1'000 + i, i);
    }
    const std::string path = "market/detail.html?collection=2100";
    const json whole = data(path);
    EXPECT_EQ(whole["id"], "2100");
    EXPECT_EQ(whole["page"], 1);
    ASSERT_EQ(whole["deals"].size(), 5u);
    EXPECT_EQ(whole["deals"][0],
              (json{{"sequence", 1},
                    {"time", morning + 10},
                    {"price", 1001},
                    {"quantity", 1},
                    {"side", 1}}));
    const auto sequences = [&](const std::string &rest) {
        std::string found;
        const json told = data(path + rest);
        for (const json &one : told["deals"])
            found += std::to_string(one["sequence"].get<int>());
        return found;
    };
    EXPECT_EQ(sequences("&page=1&size=2"), "45");
    EXPECT_EQ(sequences("&page=2&size=2"), "23");
    EXPECT_EQ(sequences("&page=3&size=2"), "1");
    EXPECT_EQ(sequences("&page=4&size=2"), "");
    EXPECT_EQ(sequences("&page=2147483647&size=5000"), "");
    EXPECT_EQ(sequences("&size=0"), "");
    EXPECT_EQ(sequences("&size=-7"), "");
    EXPECT_EQ(data(path + "&page=3&size=-7")["page"], 3);
    settle();
    EXPECT_EQ(sequences("&size=5000"), "") << "the running session alone";
}

TEST_F(ChartPathsTest, RefusesWrongParametersByName)
{
    begin();
    const std::pair<const char *, const char *> table[] = {
        {"market/jit.html", "collection"},
        {"market/jit.html?collection=", "collection"},
        {"market/jit.html?collection=21x0", "collection"},
        {"market/jit.html?collection=2100&from=-1", "from"},
        {"market/jit.html?collection=2100&from=", "from"},
        {"market/jit.html?collection=2100&from=1.5", "from"},
        {"market/jit.html?collection=2100&from=253402300800000", "from"},
        {"market/jit.html?collection=2100&from=99999999999999999999", "from"},
        {"market/jit.html?collection=2100&protocol=x", "protocol"},
        {"market/day.html?count=5", "collection"},
        {"market/day.html?collection=2100&count=0", "count"},
        {"market/day.html?collection=2100&count=5001", "count"},
        {"market/day.html?collection=2100&count=-1", "count"},
        {"market/day.html?collection=2100&count=010", "count"},
        {"market/day.html?collection=2100&before=", "before"},
        {"market/day.html?collection=2100&before=2019-02-29", "before"},
        {"market/day.html?collection=2100&before=2019/12/31", "before"},
        {"market/day.html?collection=2100&before=2019-12-31x", "before"},
        {"market/week.html?collection=2100&before=20191231", "before"},
        {"market/month.html?collection=2100&before=0000-00-00", "before"},
        {"market/detail.html?page=1", "collection"},
        {"market/detail.html?collection=2100&page=0", "page"},
        {"market/detail.html?collection=2100&page=-1", "page"},
        {"market/detail.html?collection=2100&page=2147483648", "page"},
        {"market/detail.html?collection=2100&size=5001", "size"},
        {"market/detail.html?collection=2100&size=--1", "size"},
        {"market/detail.html?collection=2100&size=-", "size"},
        {"market/detail.html?collection=2100&size=-01", "size"},
        {"market/detail.html?collection=2100&size=99999999999999999999", "size"},
    };
    for (const auto &[path, name] : table)
        EXPECT_EQ(outcome(get(path, 1)), std::string("bad-request ") + name) << path;
    EXPECT_EQ(outcome(get("market/jit.html?collection=2100&protocol=2", 1)), "protocol");
    EXPECT_EQ(outcome(get("market/day.html?collection=x&protocol=2", 1)), "protocol");
}

TEST_F(ChartPathsTest, KnowsCollectionsOfItsOwnServerAlone)
{
    begin();
    for (const char *path : {"market/jit.html", "market/day.html", "market/week.html",
                             "market/month.html", "market/detail.html"}) {
        for (const char *id :
             {"-1", "0", "1100", "3100", "2108", "2147483647", "9223372036854775807", "-2100"})
            EXPECT_EQ(outcome(get(std::string(path) + "?collection=" + id, 1)), "not-found")
                << path << id;
        EXPECT_EQ(outcome(get(std::string(path) + "?collection=2100", 1)), "ok") << path;
    }
}

TEST_F(ChartPathsTest, AFullPoolIsToldAtOnceAndServesOnLater)
{
    options.queries.threads = 1;
    options.queries.bound = 2;
    begin();
    const auto hold = std::make_shared<Hold>();
    for (int i = 0; i < 3; ++i) {
        floor->queries().answer(floor->market(), HttpResponder(nullptr), [hold](MarketReader &) {
            hold->pass();
            return HttpAnswer::of(200, "{}");
        });
        if (i == 0)
            hold->awaitVisitors(); // the others wait behind it
    }
    for (const char *path : {"market/jit.html", "market/day.html", "market/week.html",
                             "market/month.html", "market/detail.html"})
        EXPECT_EQ(outcome(get(std::string(path) + "?collection=2100", 1)), "busy") << path;
    EXPECT_EQ(outcome(get("market/jit.html?collection=2100&from=x", 1)), "bad-request from")
        << "what is wrong needs no place to wait";
    hold->release();
    EXPECT_TRUE(until([&] { return floor->queries().waiting() == 0; }));
    EXPECT_EQ(outcome(get("market/jit.html?collection=2100", 1)), "ok");
}

/// Whatever stands in an address, the answer is one of those that the protocol knows, and bounded.
TEST_F(ChartPathsTest, MutatedQueriesAreAnsweredOrRefused)
{
    begin();
    deal(1'000, 2);
    std::vector<std::string> corpus;
    for (const char *query :
         {"market/jit.html?collection=2100&from=1577840400000&protocol=1",
          "market/day.html?collection=2100&count=1000&before=2019-12-31",
          "market/week.html?count=5000&collection=2100", "market/month.html?collection=2107",
          "market/detail.html?collection=2100&page=1&size=5000",
          "market/detail.html?collection=2100&page=2&size=-3"})
        corpus.push_back(query);
    const zvxtest::FuzzEffort effort;
    zvxtest::Mutator mutator(effort.seed, corpus, zvxtest::formSpice());
    std::map<std::string, int> seen;
    for (int i = 0; i < 1'500 * effort.times; ++i) {
        SCOPED_TRACE(effort.describe(i));
        const std::string bent = mutator.next(2);
        // The floor knows no more than the paths of charts and trading.
        const std::string path = bent.substr(0, bent.find('?'));
        const PathEntry *entry = findPath(path);
        if (!entry || roomOf(entry->kind) != PathRoom::Charts)
            continue;
        const std::string target = "/lc/youbika/" + bent;
        const auto isPlain = [](char c) { return c > 0x20 && c < 0x7f && c != '#'; };
        if (!std::all_of(target.begin(), target.end(), isPlain))
            continue;
        const json answer = get(bent, 1);
        const std::string status = answer.value("status", std::string("none"));
        ++seen[status];
        ASSERT_TRUE(status == "ok" || status == "bad-request" || status == "not-found"
                    || status == "protocol" || status == "busy")
            << bent << answer;
    }
    EXPECT_GT(seen["ok"], 50);
    EXPECT_GT(seen["bad-request"], 50);
}

} // namespace
