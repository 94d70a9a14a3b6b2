#include "exchange/service/trading_fixture.h"

#include "exchange/service/until.h"

#include <algorithm>
#include <set>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::Hold;
using zvxtest::orderForm;
using zvxtest::outcome;
using zvxtest::RawClient;
using zvxtest::TradingFloor;
using zvxtest::until;

class TradingPathsTest : public zvxtest::TradingTest
{
};

TEST_F(TradingPathsTest, TwoAccountsTradeWithEachOther)
{
    begin();
    fund(1, 1'000'000);
    fund(2, 1'000'000, 50);
    const std::int64_t sold = placed(sell(2, 1000, 30));
    const std::int64_t bought = placed(buy(1, 1005, 20));
    EXPECT_GT(bought, sold);
    // At the price that rested, 0.3 % on either side: 200.00 and 0.60.
    const json buyer = cap(1);
    EXPECT_EQ(buyer["available"], 1'000'000 - 20'000 - 60);
    EXPECT_EQ(buyer["frozen"], 0);
    EXPECT_EQ(buyer["items"][0]["quantity"], 20);
    EXPECT_EQ(buyer["items"][0]["sellable"], 20);
    EXPECT_EQ(buyer["items"][0]["cost"], 20'060);
    const json seller = cap(2);
    EXPECT_EQ(seller["available"], 1'000'000 + 20'000 - 60);
    EXPECT_EQ(seller["items"][0]["quantity"], 30);
    EXPECT_EQ(seller["items"][0]["sellable"], 20) << "ten of them still are for sale";
}

TEST_F(TradingPathsTest, AWithdrawalGivesBackExactlyTheRest)
{
    begin();
    fund(1, 1'000'000);
    fund(2, 0, 50);
    const std::int64_t order = placed(buy(1, 1001, 33));
    EXPECT_EQ(cap(1)["frozen"], 33'033 + 99);
    placed(sell(2, 990, 10)); // filled at 10.01: 100.10, and 0.30 of fee
    EXPECT_EQ(cap(1)["frozen"], 23'023 + 69);
    const json revoked = revoke(1, std::to_string(order));
    EXPECT_EQ(revoked["data"], (json{{"revoked", 1}}));
    EXPECT_EQ(cap(1)["frozen"], 0);
    EXPECT_EQ(cap(1)["available"], 1'000'000 - 10'010 - 30);
    EXPECT_EQ(cap(1)["items"][0]["quantity"], 10);

    const std::int64_t offer = placed(sell(2, 1000, 40));
    EXPECT_EQ(cap(2)["items"][0]["sellable"], 0);
    EXPECT_EQ(outcome(sell(2, 1000, 1)), "refused holdings");
    EXPECT_EQ(outcome(revoke(2, std::to_string(offer))), "ok");
    EXPECT_EQ(cap(2)["items"][0]["sellable"], 40);
}

TEST_F(TradingPathsTest, MoneyForTenPiecesBuysTenAndAFenLessNine)
{
    begin();
    fund(1, 10'030);
    fund(2, 10'029);
    fund(3, 10'029);
    EXPECT_EQ(outcome(buy(1, 1000, 10)), "ok");
    EXPECT_EQ(cap(1)["available"], 0);
    EXPECT_EQ(outcome(buy(2, 1000, 10)), "refused money");
    EXPECT_EQ(cap(2)["available"], 10'029);
    EXPECT_EQ(outcome(buy(3, 1000, 9)), "ok");
    EXPECT_EQ(cap(3)["available"], 10'029 - 9'027);
}

TEST_F(TradingPathsTest, PricesEndAtTheLimits)
{
    begin();
    fund(1, 100'000'000, 100);
    const std::pair<std::int64_t, const char *> table[] = {
        {899, "refused price-limit"},
        {900, "ok"},
        {1100, "ok"},
        {1101, "refused price-limit"},
        {kPriceBound, "refused price-limit"},
        {kAmountBound, "refused price-limit"},
    };
    for (const auto &[price, expected] : table) {
        EXPECT_EQ(outcome(buy(1, price, 1)), expected) << price;
        EXPECT_EQ(outcome(sell(1, price, 1)), expected) << price;
    }
}

TEST_F(TradingPathsTest, EveryRuleHasItsWord)
{
    begin();
    fund(1, 1'000'000, 10);
    const auto order = [this](const std::string &fields) {
        return outcome(post("trade/buy.html", "key=" + newKey() + '&' + fields, 1));
    };
    const std::int64_t mine = placed(buy(1, 900, 1));
    EXPECT_EQ(order("collection=1100&price=1000&quantity=1"), "refused unknown-collection")
        << "it belongs to another market";
    EXPECT_EQ(order("collection=-1&price=1000&quantity=1"), "refused unknown-collection");
    EXPECT_EQ(order("collection=99999999999&price=1000&quantity=1"), "refused unknown-collection");
    EXPECT_EQ(order("collection=2100&price=1000&quantity=100000001"), "refused quantity");
    EXPECT_EQ(order("collection=2100&price=1000&quantity=9000000000000000"), "refused quantity");
    EXPECT_EQ(order("collection=2100&price=1000&quantity=100000000"), "refused money");
    EXPECT_EQ(outcome(sell(1, 1000, 11)), "refused holdings");

    carryOut({SuspendCollection{CollectionId(2100), true}});
    EXPECT_EQ(outcome(buy(1, 1, 1)), "refused suspended");
    EXPECT_EQ(order("collection=1100&price=1&quantity=1"), "refused unknown-collection");
    carryOut({SetPhase{false}});
    EXPECT_EQ(outcome(buy(1, 1, 1)), "refused closed");
    EXPECT_EQ(order("collection=1100&price=1&quantity=1"), "refused closed");
    carryOut({FreezeAccount{AccountId(1), true}});
    EXPECT_EQ(outcome(buy(1, 1, 1)), "refused frozen");
    EXPECT_EQ(outcome(sell(1, 1, 1)), "refused frozen");
    EXPECT_EQ(outcome(revoke(1, std::to_string(mine))), "refused frozen");
    EXPECT_EQ(cap(1)["frozen"], 903) << "who is frozen may look";
    carryOut({FreezeAccount{AccountId(1), false}});
    EXPECT_EQ(outcome(revoke(1, std::to_string(mine))), "ok") << "also while the market is closed";
    EXPECT_EQ(outcome(revoke(1, std::to_string(mine))), "refused order-done");
}

TEST_F(TradingPathsTest, ARefusalIsASentence)
{
    begin();
    fund(1, 0);
    const json answer = buy(1, 1000, 1);
    EXPECT_EQ(answer["message"], "可用资金不足。");
    EXPECT_FALSE(answer.contains("data"));
}

TEST_F(TradingPathsTest, OrdersOfOthersAreNotThere)
{
    begin();
    fund(1, 1'000'000);
    fund(2, 1'000'000, 10);
    const std::string open = std::to_string(placed(buy(1, 900, 1)));
    const std::string ended = std::to_string(placed(buy(1, 901, 1)));
    EXPECT_EQ(outcome(revoke(1, ended)), "ok");
    const std::string filled = std::to_string(placed(buy(1, 1000, 1)));
    placed(sell(2, 1000, 1));
    const std::uint64_t orders = 4;
    std::set<std::string> messages;
    for (const std::string &number :
         {open, ended, filled, std::string("77"), std::string("2147483647")}) {
        const json answer = revoke(2, number);
        EXPECT_EQ(outcome(answer), "refused unknown-order") << number;
        std::string message = answer["message"];
        message.replace(message.find(number), number.size(), "N");
        messages.insert(message);
        EXPECT_EQ(answer["data"], (json{{"revoked", 0}, {"failed", {std::stoll(number)}}}));
    }
    EXPECT_EQ(messages, std::set<std::string>{"没有委托 N。"}) << "nothing tells them apart";
    EXPECT_EQ(cap(1)["frozen"], 903) << "it still is there";
    EXPECT_EQ(outcome(revoke(1, filled)), "refused order-done");
    EXPECT_EQ(placed(buy(1, 900, 1)), static_cast<std::int64_t>(orders + 1));
}

TEST_F(TradingPathsTest, SeveralOrdersAreWithdrawnAndThoseThatCannotBeAreNamed)
{
    begin();
    fund(1, 1'000'000);
    fund(2, 1'000'000);
    std::vector<std::int64_t> mine;
    for (int i = 0; i < 4; ++i)
        mine.push_back(placed(buy(1, 900 + i, 1)));
    const std::int64_t foreign = placed(buy(2, 950, 1));
    const auto text = [](std::vector<std::int64_t> numbers) {
        std::string list;
        for (const std::int64_t number : numbers)
            list += (list.empty() ? "" : ",") + std::to_string(number);
        return list;
    };
    EXPECT_EQ(revoke(1, text({mine[0]}))["data"], (json{{"revoked", 1}}));

    const std::string key = newKey();
    const std::string form
        = "key=" + key + "&orders=" + text({mine[0], 99, mine[2], foreign, mine[1]});
    const json first = post("trade/revoke.html", form, 1);
    EXPECT_EQ(outcome(first), "refused unknown-order");
    EXPECT_EQ(first["message"],
              "没有委托 99、" + std::to_string(foreign) + "。委托 " + std::to_string(mine[0])
                  + " 已成交或已撤销，不能再撤。其余 2 笔已撤销。");
    EXPECT_EQ(first["data"], (json{{"revoked", 2}, {"failed", {99, foreign, mine[0]}}}));
    EXPECT_EQ(cap(1)["frozen"], 906) << "the fourth was not named";
    EXPECT_EQ(cap(2)["frozen"], 953);

    // The first answer again, whatever happened since.
    EXPECT_EQ(outcome(revoke(1, text({mine[3]}))), "ok");
    EXPECT_EQ(post("trade/revoke.html", form, 1), first);
    EXPECT_EQ(post("trade/revoke.html", form + "&resolve=1", 1), first);
    restart();
    json later = post("trade/revoke.html", form, 1);
    EXPECT_NE(later["boot"], first["boot"]);
    later["boot"] = first["boot"];
    EXPECT_EQ(later, first);

    const json ended = revoke(1, text({mine[0], mine[1]}));
    EXPECT_EQ(outcome(ended), "refused order-done");
    EXPECT_EQ(ended["data"], (json{{"revoked", 0}, {"failed", {mine[0], mine[1]}}}));
}

TEST_F(TradingPathsTest, ALongListOfFailuresIsCountedInTheMessageAndWholeInTheData)
{
    begin();
    fund(1, 0);
    std::string list = "1001";
    for (int i = 1; i < 200; ++i)
        list += ',' + std::to_string(1001 + i);
    const json answer = revoke(1, list);
    EXPECT_EQ(answer["message"],
              "没有委托 1001、1002、1003、1004、1005、1006、1007、1008、1009、1010 等 200 笔。");
    EXPECT_EQ(answer["data"]["failed"].size(), 200u);
}

TEST_F(TradingPathsTest, WrongFieldsAreNamedAndDoNothing)
{
    begin();
    fund(1, 1'000'000, 10);
    const std::string order = "&collection=2100&price=1000&quantity=1";
    const std::string all = std::string("key=") + newKey() + order;
    std::string many = "1";
    for (int i = 2; i <= 201; ++i)
        many += ',' + std::to_string(i);
    struct Row {
        const char *path;
        std::string form;
        const char *field;
    };
    const std::string key = "key=" + newKey();
    const Row table[] = {
        {"trade/buy.html", order.substr(1), "key"},
        {"trade/buy.html", "key=5E000000000000000000000000000001" + order, "key"},
        {"trade/buy.html", "key=00000000000000000000000000000000" + order, "key"},
        {"trade/buy.html", key + "&price=1000&quantity=1", "collection"},
        {"trade/buy.html", key + "&collection=&price=1000&quantity=1", "collection"},
        {"trade/buy.html", key + "&collection=2100x&price=1000&quantity=1", "collection"},
        {"trade/buy.html", key + "&collection=02100&price=1000&quantity=1", "collection"},
        {"trade/sell.html", key + "&collection=2100&quantity=1", "price"},
        {"trade/sell.html", key + "&collection=2100&price=0&quantity=1", "price"},
        {"trade/sell.html", key + "&collection=2100&price=-5&quantity=1", "price"},
        {"trade/sell.html", key + "&collection=2100&price=10.00&quantity=1", "price"},
        {"trade/sell.html", key + "&collection=2100&price=9000000000000001&quantity=1", "price"},
        {"trade/sell.html", key + "&collection=2100&price=99999999999999999999&quantity=1",
         "price"},
        {"trade/buy.html", key + "&collection=2100&price=1000", "quantity"},
        {"trade/buy.html", key + "&collection=2100&price=1000&quantity=0", "quantity"},
        {"trade/buy.html", key + "&collection=2100&price=1000&quantity=+1", "quantity"},
        {"trade/buy.html", key + order + "&prepared=0", "prepared"},
        {"trade/buy.html", key + order + "&prepared=yes", "prepared"},
        {"trade/buy.html", key + order + "&resolve=2", "resolve"},
        {"trade/buy.html", key + order + "&price=1000", "form"},
        {"trade/revoke.html", key, "orders"},
        {"trade/revoke.html", key + "&orders=", "orders"},
        {"trade/revoke.html", key + "&orders=0", "orders"},
        {"trade/revoke.html", key + "&orders=1,", "orders"},
        {"trade/revoke.html", key + "&orders=,1", "orders"},
        {"trade/revoke.html", key + "&orders=1,,2", "orders"},
        {"trade/revoke.html", key + "&orders=1, 2", "orders"},
        {"trade/revoke.html", key + "&orders=1,2,1", "orders"},
        {"trade/revoke.html", key + "&orders=1,2,2,3", "orders"},
        {"trade/revoke.html", key + "&orders=2147483648", "orders"},
        {"trade/revoke.html", key + "&orders=" + many, "orders"},
        {"trade/revoke.html", key + "&orders=x&resolve=1", "orders"},
    };
    const std::uint64_t before = commands();
    for (const Row &row : table) {
        const json answer = post(row.path, row.form, 1);
        EXPECT_EQ(answer["status"], "bad-request") << row.form;
        EXPECT_NE(answer["message"].get<std::string>().find(row.field), std::string::npos)
            << row.form << answer;
    }
    EXPECT_EQ(post("trade/buy.html", all + "&protocol=2", 1).value("status", ""), "protocol");
    EXPECT_EQ(get("cap.html?protocol=2", 1).value("status", ""), "protocol");
    EXPECT_EQ(commands(), before);
    EXPECT_EQ(outcome(post("trade/buy.html", all + "&protocol=1&other=7", 1)), "ok");
}

TEST_F(TradingPathsTest, AnAccountIsOpenedByItsFirstAction)
{
    begin();
    EXPECT_EQ(outcome(buy(71, 1000, 1)), "refused money");
    EXPECT_EQ(outcome(sell(72, 1000, 1)), "refused holdings");
    EXPECT_EQ(outcome(revoke(73, "1")), "refused unknown-order");
    EXPECT_EQ(outcome(post("trade/buy.html", "key=" + newKey() + "&resolve=1", 74)),
              "refused unknown-key");
    for (const std::int64_t id : {71, 72, 73, 74}) {
        const auto fees = floor->market().readers().read(
            [id](MarketReader &reader) { return reader.fees(AccountId(id)); });
        ASSERT_TRUE(fees) << id;
        EXPECT_EQ(fees->fee, floor->market().fee());
    }
    EXPECT_EQ(cap(75)["total"], 0);
    EXPECT_FALSE(floor->market().readers().read([](MarketReader &reader) {
        return reader.fees(AccountId(75));
    })) << "who only looks opens nothing";
}

TEST_F(TradingPathsTest, ManyFirstActionsAtOnceHaveOneAnswerEach)
{
    begin();
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 40; ++i) {
        clients.push_back(std::make_unique<RawClient>(floor->port()));
        clients.back()->post("/lc/youbika/trade/buy.html", orderForm(newKey(), 1000, 1), "80");
    }
    for (const auto &client : clients) {
        const auto answer = client->answer(30s);
        ASSERT_TRUE(answer);
        EXPECT_EQ(outcome(json::parse(answer->body)), "refused money");
        EXPECT_FALSE(client->answer(1ms)) << "and no second one";
    }
}

TEST_F(TradingPathsTest, TwoHundredAndFiftySixOrdersShareCommits)
{
    begin();
    constexpr int count = 256;
    for (std::int64_t id = 1; id <= 16; ++id)
        fund(id, 10'000'000);
    const std::uint64_t commits = floor->market().writer().counters().commits;
    const auto hold = std::make_shared<Hold>();
    holdWriter(hold);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < count; ++i) {
        clients.push_back(std::make_unique<RawClient>(floor->port()));
        clients.back()->post("/lc/youbika/trade/buy.html", orderForm(newKey(), 950, 1),
                             std::to_string(i % 16 + 1));
    }
    EXPECT_TRUE(until([&] { return floor->market().writer().waiting() == count; }));
    hold->release();
    std::set<std::int64_t> numbers;
    for (const auto &client : clients) {
        const auto answer = client->answer(60s);
        ASSERT_TRUE(answer);
        numbers.insert(placed(json::parse(answer->body)));
    }
    EXPECT_EQ(numbers.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(floor->market().writer().counters().commits, commits + 1);
}

TEST_F(TradingPathsTest, AFullQueueAnswersBusyOnceAndDoesNothing)
{
    options.writer.queueBound = 3;
    begin();
    fund(1, 1'000'000);
    const auto hold = std::make_shared<Hold>();
    holdWriter(hold);
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 5; ++i) {
        clients.push_back(std::make_unique<RawClient>(floor->port()));
        clients.back()->post("/lc/youbika/trade/buy.html", orderForm(newKey(), 950, 1), "1");
        const std::size_t waiting = std::min<std::size_t>(clients.size(), 3);
        EXPECT_TRUE(until([&] { return floor->market().writer().waiting() == waiting; }));
    }
    for (int i = 3; i < 5; ++i) {
        const auto busy = clients[static_cast<std::size_t>(i)]->answer();
        ASSERT_TRUE(busy);
        EXPECT_EQ(busy->status, 503);
        EXPECT_EQ(json::parse(busy->body)["status"], "busy");
    }
    hold->release();
    for (int i = 0; i < 3; ++i)
        placed(json::parse(clients[static_cast<std::size_t>(i)]->answer()->body));
    EXPECT_EQ(cap(1)["frozen"], 3 * 953);
}

TEST_F(TradingPathsTest, AQueueThatFillsBetweenOpeningAndOrderAnswersBusyOnce)
{
    options.writer.queueBound = 2;
    begin();
    MarketWriter &writer = floor->market().writer();
    for (const int fillers : {1, 2}) {
        SCOPED_TRACE(fillers);
        const std::int64_t account = 90 + fillers;
        const auto hold = std::make_shared<Hold>();
        holdWriter(hold);
        // Answered just before the order is found to lack its account.
        ASSERT_TRUE(writer.submit(SetPhase{true}, [&writer, fillers](const Result &) {
            for (int i = 0; i < fillers; ++i)
                EXPECT_TRUE(writer.submit(SetPhase{true}, {}));
        }));
        RawClient client(floor->port());
        client.post("/lc/youbika/trade/buy.html", orderForm(newKey(), 1000, 1),
                    std::to_string(account));
        EXPECT_TRUE(until([&] { return writer.waiting() == 2; }));
        hold->release();
        const auto answer = client.answer(30s);
        ASSERT_TRUE(answer);
        EXPECT_EQ(outcome(json::parse(answer->body)), "busy");
        EXPECT_FALSE(client.answer(1ms));
        EXPECT_EQ(outcome(buy(account, 1000, 1)), "refused money") << "nothing stays behind";
    }
}

TEST_F(TradingPathsTest, AMarketThatEndedAnswersFailed)
{
    begin();
    fund(1, 1'000'000);
    floor->market().writer().stop();
    EXPECT_EQ(buy(1, 950, 1)["status"], "failed");
    EXPECT_EQ(revoke(1, "1")["status"], "failed");
    EXPECT_EQ(post("trade/buy.html", "key=" + newKey() + "&resolve=1", 1)["status"], "failed");
}

TEST_F(TradingPathsTest, AMarketWithoutRoomForAnotherAccountSaysSo)
{
    options.writer.limits.accounts = 1;
    begin();
    fund(1, 1'000'000);
    EXPECT_EQ(outcome(buy(2, 950, 1)), "refused too-many");
    EXPECT_EQ(outcome(post("trade/buy.html", "key=" + newKey() + "&resolve=1", 2)), "busy");
    EXPECT_EQ(outcome(buy(1, 950, 1)), "ok");
}

TEST_F(TradingPathsTest, OpenOrdersHaveABound)
{
    options.writer.limits.openOrdersOfAccount = 2;
    begin();
    fund(1, 1'000'000);
    EXPECT_EQ(outcome(buy(1, 950, 1)), "ok");
    EXPECT_EQ(outcome(buy(1, 950, 1)), "ok");
    EXPECT_EQ(outcome(buy(1, 950, 1)), "refused too-many");
}

TEST_F(TradingPathsTest, TradingGoesOnWhileEveryReaderIsBusy)
{
    options.queries.threads = 2;
    options.queries.bound = 1;
    begin();
    fund(1, 1'000'000);
    const auto hold = std::make_shared<Hold>();
    class Nobody : public HttpResponseSink
    {
        void answer(HttpAnswer) override { }
        void watch(std::function<void()>) override { }
        void lose() override { }
    };
    for (int i = 0; i < 2; ++i) {
        floor->queries().answer(floor->market(), HttpResponder(std::make_shared<Nobody>()),
                                [hold](MarketReader &) {
                                    hold->pass();
                                    return HttpAnswer();
                                });
        hold->awaitVisitors(i + 1);
    }
    RawClient waiting(floor->port());
    waiting.get("/lc/youbika/cap.html", "1");
    EXPECT_TRUE(until([&] { return floor->counters().requests == 1; }));
    EXPECT_EQ(get("cap.html", 1)["status"], "busy");
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(outcome(buy(1, 950, 1)), "ok");
    EXPECT_FALSE(waiting.answer(1ms)) << "its readers still are busy";
    hold->release();
    const auto answer = waiting.answer(30s);
    ASSERT_TRUE(answer);
    EXPECT_EQ(json::parse(answer->body)["data"]["frozen"], 20 * 953) << "it was read afterwards";
}

} // namespace
