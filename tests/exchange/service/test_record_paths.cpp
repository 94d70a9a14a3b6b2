#include "exchange/service/account_fixture.h"
#include "exchange/service/trading_fixture.h"

#include <string>
#include <vector>

namespace {

using namespace zvx;
using nlohmann::json;
using zvxtest::outcome;

const std::vector<std::string> recordPaths
    = {"revoke.html",          "myaccount/entrust.html", "myaccount/his-entrust.html",
       "myaccount/trade.html", "myaccount/gather.html",  "myaccount/hold.html"};

/// An account's orders, deals, sums and holdings, as clients ask for them.
class RecordPathsTest : public zvxtest::TradingTest
{
protected:
    json orders(const std::string &path, std::int64_t account) const
    {
        return get(path, account)["data"]["orders"];
    }
    json deals(const std::string &query, std::int64_t account) const
    {
        return get("myaccount/trade.html" + query, account)["data"]["deals"];
    }
    json gather(std::int64_t account) const
    {
        return get("myaccount/gather.html", account)["data"]["items"];
    }
    /// The values of one field of each row.
    static json each(const json &rows, const char *field)
    {
        json values = json::array();
        for (const json &row : rows)
            values.push_back(row[field]);
        return values;
    }
    static json numbers(const json &orders) { return each(orders, "order"); }
};

TEST_F(RecordPathsTest, FollowAnOrderFromItsPlacingToItsWithdrawal)
{
    begin();
    fund(1, 100'000);
    fund(2, 0, 50);
    const std::string key = newKey();
    ASSERT_EQ(outcome(post("trade/buy.html", zvxtest::orderForm(key, 1000, 10), 1)), "ok");
    const json placed = orders("revoke.html", 1);
    ASSERT_EQ(placed.size(), 1u);
    json wanted = {{"order", 1},
                   {"time", placed[0]["time"]},
                   {"collection", "2100"},
                   {"code", "211001"},
                   {"name", "青石桥大版"},
                   {"side", 1},
                   {"price", 1000},
                   {"quantity", 10},
                   {"filled", 0},
                   {"averagePrice", nullptr},
                   {"amount", 0},
                   {"fee", 0},
                   {"frozen", 10'030},
                   {"state", 1},
                   {"key", key}};
    EXPECT_EQ(placed[0], wanted);
    EXPECT_GT(placed[0]["time"].get<std::int64_t>(), 1'500'000'000'000);
    EXPECT_EQ(cap(1)["frozen"], 10'030);

    // Four of them are sold to it.
    ASSERT_EQ(outcome(sell(2, 990, 4)), "ok");
    wanted["filled"] = 4;
    wanted["averagePrice"] = 1000;
    wanted["amount"] = 4'000;
    wanted["fee"] = 12;
    wanted["frozen"] = 6'018;
    wanted["state"] = 2;
    for (const std::string path :
         {"revoke.html", "myaccount/entrust.html", "myaccount/his-entrust.html"})
        EXPECT_EQ(orders(path, 1), json::array({wanted})) << path;
    EXPECT_EQ(orders("revoke.html", 2), json::array());
    const json sold = orders("myaccount/entrust.html", 2);
    ASSERT_EQ(sold.size(), 1u);
    EXPECT_EQ(sold[0]["side"], 2);
    EXPECT_EQ(sold[0]["price"], 990);
    EXPECT_EQ(sold[0]["averagePrice"], 1000);
    EXPECT_EQ(sold[0]["state"], 3);
    EXPECT_EQ(sold[0]["frozen"], 0);

    // The rest comes back to the fen.
    ASSERT_EQ(outcome(revoke(1, "1")), "ok");
    wanted["frozen"] = 0;
    wanted["state"] = 5;
    EXPECT_EQ(orders("myaccount/entrust.html", 1), json::array({wanted}));
    EXPECT_EQ(orders("revoke.html", 1), json::array());
    EXPECT_EQ(cap(1)["frozen"], 0);
    EXPECT_EQ(cap(1)["available"], 100'000 - 4'012);

    json bought = {{"sequence", 1},    {"time", deals("", 1)[0]["time"]},
                   {"side", 1},        {"collection", "2100"},
                   {"code", "211001"}, {"name", "青石桥大版"},
                   {"price", 1000},    {"quantity", 4},
                   {"amount", 4'000},  {"fee", 12}};
    EXPECT_EQ(deals("", 1), json::array({bought}));
    bought["side"] = 2;
    EXPECT_EQ(deals("", 2), json::array({bought}));
    EXPECT_EQ(gather(1),
              json::parse(R"([{"collection": "2100", "code": "211001", "name": "青石桥大版",
                               "buyQuantity": 4, "buyAmount": 4000, "buyFee": 12,
                               "sellQuantity": 0, "sellAmount": 0, "sellFee": 0,
                               "sellProfit": 0}])"));
    // Its pieces had cost 10.00 each, so selling them there lost the fee.
    EXPECT_EQ(gather(2),
              json::parse(R"([{"collection": "2100", "code": "211001", "name": "青石桥大版",
                               "buyQuantity": 0, "buyAmount": 0, "buyFee": 0,
                               "sellQuantity": 4, "sellAmount": 4000, "sellFee": 12,
                               "sellProfit": -12}])"));
}

/// The market's day never ends, and clients' date edits end with it: asking for that one day has to
/// find everything.
TEST_F(RecordPathsTest, TheDayThatClientsAskForIsTheMarketsOwn)
{
    begin();
    fund(1, 100'000);
    fund(2, 0, 50);
    placed(buy(1, 1000, 5));
    placed(sell(2, 1000, 5));
    floor->exchange().settle();
    placed(buy(1, 1000, 2));
    placed(sell(2, 1000, 2));
    struct Case {
        const char *bounds;
        int found;
    };
    for (const Case &each :
         {Case{"?start=2020/01/01&stop=2020/01/01", 2},
          Case{"?start=2016/01/01&stop=2020/01/01", 2},
          Case{"?start=2016/01/01&stop=2019/12/31", 0},
          Case{"?start=2016/01/01&stop=2016/01/01", 0},
          Case{"?start=2020/01/02&stop=2020/01/31", 0},
          Case{"?start=2020/01/02&stop=2020/01/01", 0}, Case{"?start=2020/01/01&stop=", 2},
          Case{"?start=&stop=2019/12/31", 0}, Case{"?start=&stop=", 2}, Case{"", 2}}) {
        for (const std::int64_t account : {1, 2}) {
            EXPECT_EQ(deals(each.bounds, account).size(), each.found) << each.bounds;
            EXPECT_EQ(
                orders(std::string("myaccount/his-entrust.html") + each.bounds, account).size(),
                each.found)
                << each.bounds;
        }
    }
}

TEST_F(RecordPathsTest, ASettlementEndsTheListsOfTheSession)
{
    begin();
    fund(1, 100'000, 10);
    fund(2, 100'000);
    placed(buy(2, 1000, 3));
    placed(sell(1, 1000, 5)); // two of them rest
    placed(buy(1, 950, 4));
    EXPECT_EQ(numbers(orders("myaccount/entrust.html", 1)), json({3, 2}));
    floor->exchange().settle();
    EXPECT_EQ(orders("myaccount/entrust.html", 1), json::array());
    EXPECT_EQ(orders("revoke.html", 1), json::array());
    EXPECT_EQ(gather(1), json::array());
    EXPECT_EQ(gather(2), json::array());
    const json past = orders("myaccount/his-entrust.html", 1);
    EXPECT_EQ(numbers(past), json({3, 2}));
    EXPECT_EQ(each(past, "state"), json({4, 5})) << "the day took back what was left";
    EXPECT_EQ(each(past, "frozen"), json({0, 0}));
    EXPECT_EQ(deals("", 1).size(), 1u);
    placed(buy(2, 1000, 1));
    EXPECT_EQ(numbers(orders("myaccount/entrust.html", 2)), json({4}));
    EXPECT_EQ(numbers(orders("myaccount/his-entrust.html", 2)), json({4, 1}));
    restart();
    EXPECT_EQ(numbers(orders("myaccount/entrust.html", 2)), json({4}));
    EXPECT_EQ(numbers(orders("revoke.html", 2)), json({4}));
}

TEST_F(RecordPathsTest, AnOrderGivesWayToANewerOneOfItsAccount)
{
    begin();
    fund(1, 100'000, 10);
    placed(buy(1, 1000, 5));
    placed(sell(1, 990, 2));
    const json both = orders("myaccount/entrust.html", 1);
    EXPECT_EQ(each(both, "state"), json({1, 4}));
    EXPECT_EQ(numbers(orders("revoke.html", 1)), json({2}));
    EXPECT_EQ(deals("", 1), json::array());
    EXPECT_EQ(gather(1), json::array());
    EXPECT_EQ(cap(1)["available"], 100'000);
}

TEST_F(RecordPathsTest, PagesAndTypesChooseAmongTheNewest)
{
    begin();
    fund(1, 10'000'000, 100);
    for (int i = 0; i < 23; ++i)
        placed(i % 3 == 0 ? sell(1, 1050, 1) : buy(1, 950, 1));
    for (const std::string path :
         {"revoke.html", "myaccount/entrust.html", "myaccount/his-entrust.html"}) {
        EXPECT_EQ(numbers(orders(path, 1)), json({23, 22, 21, 20, 19, 18, 17, 16, 15, 14})) << path;
        EXPECT_EQ(numbers(orders(path + "?page=3", 1)), json({3, 2, 1})) << path;
        EXPECT_EQ(numbers(orders(path + "?page=2&size=11", 1)),
                  json({12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2}))
            << path;
        EXPECT_EQ(orders(path + "?page=4", 1), json::array()) << path;
        EXPECT_EQ(orders(path + "?page=2147483647&size=200", 1), json::array()) << path;
        EXPECT_EQ(orders(path + "?size=200", 1).size(), 23u) << path;
        EXPECT_EQ(orders(path, 2), json::array()) << path;
    }
    for (const std::string path : {"myaccount/entrust.html", "myaccount/his-entrust.html"}) {
        EXPECT_EQ(numbers(orders(path + "?type=0&size=4", 1)), json({22, 19, 16, 13})) << path;
        EXPECT_EQ(numbers(orders(path + "?type=0&size=4&page=2", 1)), json({10, 7, 4, 1})) << path;
        EXPECT_EQ(orders(path + "?type=0&size=4&page=3", 1), json::array()) << path;
        EXPECT_EQ(numbers(orders(path + "?type=1&size=3", 1)), json({23, 21, 20})) << path;
        EXPECT_EQ(numbers(orders(path + "?type=2&size=3", 1)), json({23, 22, 21})) << path;
    }
    EXPECT_EQ(orders("revoke.html?type=0", 1).size(), 10u) << "it knows no type";
}

TEST_F(RecordPathsTest, DealsAreToldByTheSideThatTheAccountTook)
{
    begin();
    fund(1, 1'000'000, 100);
    fund(2, 1'000'000, 100);
    carryOut({SetFeeRate{AccountId(1), CollectionId(2100), PartsPerMillion(0)}});
    for (int i = 0; i < 12; ++i) {
        const std::int64_t buyer = i % 4 == 0 ? 2 : 1;
        placed(buy(buyer, 1000 + i, 2));
        placed(sell(3 - buyer, 1000 + i, 2));
    }
    EXPECT_EQ(each(deals("?type=0", 1), "sequence"), json({9, 5, 1}));
    EXPECT_EQ(each(deals("?type=1", 2), "sequence"), json({9, 5, 1}));
    EXPECT_EQ(each(deals("?type=1&size=5", 1), "sequence"), json({12, 11, 10, 8, 7}));
    EXPECT_EQ(each(deals("?type=2&page=2", 1), "sequence"), json({2, 1}));
    EXPECT_EQ(each(deals("?page=2", 1), "side"), json({1, 2}));
    EXPECT_EQ(each(deals("?page=2", 2), "side"), json({2, 1}));
    EXPECT_EQ(each(deals("?page=2", 1), "fee"), json({0, 0})) << "each its own rate";
    EXPECT_EQ(each(deals("?page=2", 2), "fee"), json({6, 6}));
    EXPECT_EQ(deals("?page=3", 1), json::array());
    EXPECT_EQ(deals("", 3), json::array());
}

TEST_F(RecordPathsTest, AveragePricesAreRoundedAndAmountsAreNot)
{
    begin();
    fund(1, 1'000'000);
    fund(2, 0, 100);
    const auto field
        = [this](const char *name) { return orders("myaccount/entrust.html", 1)[0][name]; };
    placed(sell(2, 1000, 1));
    placed(sell(2, 1001, 1));
    placed(buy(1, 1010, 9));
    EXPECT_EQ(field("averagePrice"), 1001) << "1000.5";
    EXPECT_EQ(field("amount"), 2'001);
    placed(sell(2, 1000, 7)); // at the 10.10 of the order that rests
    EXPECT_EQ(field("averagePrice"), 1008) << "9071 / 9 = 1007.9";
    EXPECT_EQ(field("amount"), 9'071);
    EXPECT_EQ(field("state"), 3);
}

TEST_F(RecordPathsTest, HoldingsAreThoseOfTheWholeAccountInPages)
{
    begin();
    fund(1, 1'000'000);
    std::vector<Command> grants;
    for (int i = 0; i < 4; ++i)
        grants.push_back(
            GrantHolding{AccountId(1), CollectionId(2100 + i), Quantity(5 + i), Fen(100), {}});
    carryOut(grants);
    const auto hold = [this](const std::string &query, std::int64_t account = 1) {
        return get("myaccount/hold.html" + query, account)["data"]["items"];
    };
    EXPECT_EQ(hold(""), cap(1)["items"]);
    EXPECT_EQ(each(hold("?size=3"), "collection"), json({"2100", "2101", "2102"}));
    EXPECT_EQ(each(hold("?size=3&page=2"), "collection"), json({"2103"}));
    EXPECT_EQ(hold("?size=3&page=3"), json::array());
    EXPECT_EQ(hold("", 2), json::array());
    placed(sell(1, 1000, 2));
    EXPECT_EQ(hold("?size=1")[0]["sellable"], 3);
}

TEST_F(RecordPathsTest, WrongParametersAreNamed)
{
    begin();
    struct Case {
        const char *query;
        const char *wrong;
    };
    const std::vector<Case> pages
        = {{"?page=0", "page"}, {"?page=-1", "page"},  {"?page=01", "page"},
           {"?page=x", "page"}, {"?page=", "page"},    {"?page=2147483648", "page"},
           {"?size=0", "size"}, {"?size=201", "size"}, {"?size=1.5", "size"}};
    const std::vector<Case> kinds = {{"?type=3", "type"}, {"?type=", "type"}, {"?type=-1", "type"}};
    const std::vector<Case> days = {{"?start=2020-01-01", "start"}, {"?start=2020/1/1", "start"},
                                    {"?stop=2020/02/30", "stop"},   {"?stop=20200101", "stop"},
                                    {"?stop=0000/01/01", "stop"},   {"?start=x&page=0", "page"}};
    for (const std::string &path : recordPaths) {
        const bool hasPage = path != "myaccount/gather.html";
        const bool hasDays = path == "myaccount/his-entrust.html" || path == "myaccount/trade.html";
        const bool hasKind = hasDays || path == "myaccount/entrust.html";
        const auto expect = [&](const std::vector<Case> &cases, bool isLookedAt) {
            for (const Case &each : cases)
                EXPECT_EQ(outcome(get(path + each.query, 1)),
                          isLookedAt ? std::string("bad-request ") + each.wrong : "ok")
                    << path << each.query;
        };
        expect(pages, hasPage);
        expect(kinds, hasKind);
        if (hasDays || !hasPage)
            expect(days, hasDays);
        EXPECT_EQ(outcome(get(path + "?start=x&stop=y&other=z", 1)),
                  hasDays ? "bad-request start" : "ok");
        EXPECT_EQ(outcome(get(path + "?protocol=2", 1)), "protocol") << path;
        EXPECT_EQ(outcome(get(path + "?protocol=1", 1)), "ok") << path;
    }
}

/// The same paths behind the whole service's door.
class RecordSessionTest : public zvxtest::AccountTest
{
};

TEST_F(RecordSessionTest, NeedASessionBeforeAllElse)
{
    begin();
    registerAccount("13900000001", "abc123");
    const std::string token = signIn("13900000001", "abc123");
    for (const std::string &path : recordPaths) {
        EXPECT_EQ(get(lc + path)["status"], "session") << path;
        EXPECT_EQ(get(lc + path + "?page=x&protocol=9")["status"], "session") << path;
        EXPECT_EQ(get(lc + path, "nobody")["status"], "session") << path;
        EXPECT_EQ(get(ch + path, token)["status"], "session") << "of another platform: " << path;
        for (const std::string &market : {lc, tea}) {
            const json answer = get(market + path, token);
            EXPECT_EQ(answer["status"], "ok") << path;
            ASSERT_EQ(answer["data"].size(), 1u) << answer;
            EXPECT_EQ(*answer["data"].begin(), json::array()) << path;
        }
        const json posted = post(lc + path, "key=" + newKey(), token);
        EXPECT_EQ(posted["status"], "method") << path;
    }
    const std::string newer = signIn("13900000001", "abc123", "00000000000000bb");
    for (const std::string &path : recordPaths) {
        EXPECT_EQ(get(lc + path + "?page=x", token)["status"], "elsewhere") << path;
        EXPECT_EQ(get(lc + path, newer)["status"], "ok") << path;
    }
}

} // namespace
