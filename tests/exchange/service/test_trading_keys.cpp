#include "exchange/service/trading_fixture.h"

#include "exchange/service/until.h"

#include <algorithm>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::Hold;
using zvxtest::orderForm;
using zvxtest::outcome;
using zvxtest::RawClient;
using zvxtest::until;

class TradingKeysTest : public zvxtest::TradingTest
{
protected:
    json buyWith(const std::string &key, std::int64_t price = 950) const
    {
        return post("trade/buy.html", orderForm(key, price, 1), 1);
    }
    json resolve(const std::string &key, const std::string &path = "trade/buy.html") const
    {
        return post(path, "key=" + key + "&resolve=1", 1);
    }
    /// What a buy of one piece at 9.50 reserves.
    static constexpr std::int64_t reserved = 953;
};

TEST_F(TradingKeysTest, ARepetitionIsAnsweredAgainAndDoesNothing)
{
    begin();
    fund(1, 1'000'000);
    const std::string key = newKey();
    const json first = buyWith(key);
    EXPECT_EQ(outcome(first), "ok");
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(buyWith(key), first);
    EXPECT_EQ(cap(1)["frozen"], reserved);

    const std::string second = newKey();
    const std::string form = "key=" + second + "&orders=" + first["data"]["order"].dump();
    const json revoked = post("trade/revoke.html", form, 1);
    EXPECT_EQ(revoked["data"], (json{{"revoked", 1}}));
    EXPECT_EQ(post("trade/revoke.html", form, 1), revoked);
    EXPECT_EQ(buyWith(key), first) << "what became of the order later is another question";
    EXPECT_EQ(cap(1)["frozen"], 0);
}

TEST_F(TradingKeysTest, ARefusalStandsEvenWhenItsReasonIsGone)
{
    begin();
    fund(1, 0);
    const std::string key = newKey();
    const json refused = buyWith(key);
    EXPECT_EQ(outcome(refused), "refused money");
    carryOut({Deposit{AccountId(1), Fen(100'000), {}}});
    EXPECT_EQ(buyWith(key), refused);
    EXPECT_EQ(resolve(key), refused);
    EXPECT_EQ(cap(1)["frozen"], 0);
}

TEST_F(TradingKeysTest, APreparedOrderMayBeSentAgainAfterARefusal)
{
    begin();
    fund(1, 0);
    const std::string form = orderForm(newKey(), 950, 1) + "&prepared=1";
    EXPECT_EQ(outcome(post("trade/buy.html", form, 1)), "refused money");
    carryOut({SetPhase{false}});
    EXPECT_EQ(outcome(post("trade/buy.html", form, 1)), "refused closed");
    carryOut({SetPhase{true}, Deposit{AccountId(1), Fen(100'000), {}}});
    const json first = post("trade/buy.html", form, 1);
    EXPECT_EQ(outcome(first), "ok");
    EXPECT_EQ(post("trade/buy.html", form, 1), first);
    EXPECT_EQ(cap(1)["frozen"], reserved);
}

TEST_F(TradingKeysTest, AKeyThatComesBackWithOtherContentIsRefused)
{
    begin();
    fund(1, 1'000'000, 5);
    const std::string key = newKey();
    const json first = buyWith(key, 950);
    EXPECT_EQ(outcome(buyWith(key, 951)), "refused key-differs");
    EXPECT_EQ(outcome(post("trade/buy.html", orderForm(key, 950, 2), 1)), "refused key-differs");
    EXPECT_EQ(outcome(post("trade/sell.html", orderForm(key, 950, 1), 1)), "refused key-differs");
    EXPECT_EQ(outcome(post("trade/revoke.html", "key=" + key + "&orders=1", 1)),
              "refused key-differs");
    EXPECT_EQ(outcome(resolve(key, "trade/revoke.html")), "refused key-differs");
    EXPECT_EQ(buyWith(key, 950), first);

    const std::string second = newKey();
    EXPECT_EQ(outcome(post("trade/revoke.html", "key=" + second + "&orders=1", 1)), "ok");
    EXPECT_EQ(outcome(post("trade/revoke.html", "key=" + second + "&orders=1,2", 1)),
              "refused key-differs");
    EXPECT_EQ(outcome(resolve(second, "trade/sell.html")), "refused key-differs");
    EXPECT_EQ(outcome(post("trade/buy.html", orderForm(key, 950, 1), 2)), "refused money")
        << "keys of others are others";
}

TEST_F(TradingKeysTest, AskingForAKeyBurnsItWhereNothingWasDone)
{
    begin();
    fund(1, 1'000'000);
    const std::string key = newKey();
    const json burnt = resolve(key);
    EXPECT_EQ(outcome(burnt), "refused unknown-key");
    EXPECT_EQ(outcome(buyWith(key)), "refused unknown-key") << "it came too late";
    EXPECT_EQ(resolve(key), burnt);
    EXPECT_EQ(cap(1)["frozen"], 0);
}

TEST_F(TradingKeysTest, AskingForAKeyGivesTheFirstAnswer)
{
    begin();
    fund(1, 1'000'000);
    const std::string key = newKey();
    const json first = buyWith(key);
    EXPECT_EQ(resolve(key), first);
    const std::string second = newKey();
    const json revoked = post("trade/revoke.html",
                              "key=" + second + "&orders=" + first["data"]["order"].dump(), 1);
    EXPECT_EQ(resolve(second, "trade/revoke.html"), revoked);
    const std::string third = newKey();
    const json unknown = post("trade/revoke.html", "key=" + third + "&orders=77", 1);
    EXPECT_EQ(outcome(resolve(third, "trade/revoke.html")), outcome(unknown));
    EXPECT_EQ(post("trade/revoke.html", "key=" + third + "&orders=77&resolve=1", 1), unknown);
}

TEST_F(TradingKeysTest, WithoutItsOrdersAWithdrawalTellsNothingOfThem)
{
    begin();
    fund(1, 1'000'000);
    fund(2, 1'000'000);
    const std::string ended = std::to_string(placed(buy(2, 900, 1)));
    EXPECT_EQ(outcome(revoke(2, ended)), "ok");
    std::vector<json> answers;
    for (const std::string &number : {ended, std::string("88")}) {
        const std::string key = newKey();
        EXPECT_EQ(outcome(post("trade/revoke.html", "key=" + key + "&orders=" + number, 1)),
                  "refused unknown-order");
        answers.push_back(resolve(key, "trade/revoke.html"));
    }
    EXPECT_EQ(answers[0], answers[1]) << "an order of somebody else, and one that nobody placed";
    EXPECT_EQ(outcome(answers[0]), "refused unknown-order");
}

TEST_F(TradingKeysTest, AskingWhileTheOrderIsUnderWayGivesItsAnswer)
{
    begin();
    fund(1, 1'000'000);
    const std::string key = newKey();
    const auto hold = std::make_shared<Hold>();
    holdWriter(hold);
    RawClient order(floor->port());
    order.post("/lc/youbika/trade/buy.html", orderForm(key, 950, 1), "1");
    EXPECT_TRUE(until([&] { return floor->market().writer().waiting() == 1; }));
    RawClient asking(floor->port());
    asking.post("/lc/youbika/trade/buy.html", "key=" + key + "&resolve=1", "1");
    EXPECT_TRUE(until([&] { return floor->market().writer().waiting() == 2; }));
    hold->release();
    const json first = json::parse(order.answer(30s)->body);
    EXPECT_EQ(outcome(first), "ok");
    EXPECT_EQ(json::parse(asking.answer(30s)->body), first);
    EXPECT_EQ(cap(1)["frozen"], reserved);
}

TEST_F(TradingKeysTest, AnAnswerThatGotLostIsThereWhenItIsAskedFor)
{
    begin();
    fund(1, 1'000'000);
    const std::string key = newKey();
    const auto hold = std::make_shared<Hold>();
    holdWriter(hold);
    {
        RawClient gone(floor->port());
        gone.post("/lc/youbika/trade/buy.html", orderForm(key, 950, 1), "1");
        EXPECT_TRUE(until([&] { return floor->market().writer().waiting() == 1; }));
    }
    hold->release();
    const json first = resolve(key);
    EXPECT_EQ(outcome(first), "ok");
    EXPECT_EQ(cap(1)["frozen"], reserved);
    restart();
    json later = resolve(key);
    later["boot"] = first["boot"];
    EXPECT_EQ(later, first);
    EXPECT_EQ(outcome(buyWith(key, 951)), "refused key-differs");
}

TEST_F(TradingKeysTest, ARaceBetweenOrderAndQuestionHasOneOutcome)
{
    begin();
    fund(1, 100'000'000);
    int done = 0;
    for (int i = 0; i < 60; ++i) {
        const std::string key = newKey();
        RawClient order(floor->port());
        RawClient asking(floor->port());
        order.post("/lc/youbika/trade/buy.html", orderForm(key, 950, 1), "1");
        asking.post("/lc/youbika/trade/buy.html", "key=" + key + "&resolve=1", "1");
        const json answer = json::parse(order.answer(30s)->body);
        EXPECT_EQ(json::parse(asking.answer(30s)->body), answer);
        EXPECT_TRUE(outcome(answer) == "ok" || outcome(answer) == "refused unknown-key");
        done += outcome(answer) == "ok";
    }
    EXPECT_EQ(cap(1)["frozen"], done * reserved);
}

TEST_F(TradingKeysTest, ManyRepetitionsAtOnceHaveOneEffect)
{
    begin();
    fund(1, 1'000'000);
    const std::string key = newKey();
    std::vector<std::unique_ptr<RawClient>> clients;
    for (int i = 0; i < 50; ++i) {
        clients.push_back(std::make_unique<RawClient>(floor->port()));
        clients.back()->post("/lc/youbika/trade/buy.html", orderForm(key, 950, 1), "1");
    }
    json first;
    for (const auto &client : clients) {
        const json answer = json::parse(client->answer(30s)->body);
        EXPECT_EQ(outcome(answer), "ok");
        if (first.is_null())
            first = answer;
        EXPECT_EQ(answer, first);
    }
    EXPECT_EQ(cap(1)["frozen"], reserved);
}

TEST_F(TradingKeysTest, KeysHaveABoundAndASettlementMakesRoom)
{
    options.writer.limits.keysOfAccount = 2;
    begin();
    fund(1, 1'000'000);
    EXPECT_EQ(outcome(buyWith(newKey())), "ok");
    EXPECT_EQ(outcome(buyWith(newKey())), "ok");
    const std::string key = newKey();
    EXPECT_EQ(outcome(buyWith(key)), "refused too-many");
    EXPECT_EQ(outcome(resolve(key)), "busy") << "it could not be burnt";
    EXPECT_EQ(cap(1)["frozen"], 2 * reserved);
    carryOut({SettleDay{TradingDay(20'200'101)}, SettleDay{TradingDay(20'200'101)}});
    EXPECT_EQ(outcome(resolve(key)), "refused unknown-key");
    EXPECT_EQ(outcome(buyWith(newKey())), "ok");
}

} // namespace
