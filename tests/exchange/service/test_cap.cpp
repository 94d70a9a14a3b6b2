#include "exchange/service/cap_figures.h"
#include "exchange/service/json_text.h"
#include "exchange/service/trading_fixture.h"

#include "exchange/service/until.h"

#include <algorithm>
#include <atomic>
#include <random>
#include <thread>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::outcome;
using zvxtest::RawClient;
using zvxtest::until;

/// A market of two collections, the first of which was dealt in.
MarketSnapshot twoCollections()
{
    MarketSnapshot market;
    auto index = std::make_shared<std::vector<std::pair<CollectionId, Row>>>();
    for (Row row = 0; row < 2; ++row) {
        auto info = std::make_shared<CollectionInfo>();
        info->id = CollectionId(2100 + row);
        info->code = "21100" + std::to_string(row);
        info->name = row == 0 ? "青石桥大版" : "重阳";
        TradeLevels trade;
        trade.previousClose = Fen(500);
        if (row == 0)
            trade.latest = Fen(1100);
        auto collection = std::make_shared<CollectionSnapshot>();
        collection->info = info;
        collection->trade = {1, std::make_shared<const TradeLevels>(trade)};
        market.collections.push_back(collection);
        index->emplace_back(info->id, row);
    }
    market.index = index;
    return market;
}

HoldingView holding(std::int64_t collection, std::int64_t quantity, std::int64_t frozen,
                    std::int64_t cost)
{
    return {CollectionId(collection), Quantity(quantity), Quantity(frozen), Fen(cost)};
}

TEST(CapFigures, CountHoldingsAtTheLatestPriceOrThePreviousClose)
{
    AccountState account;
    account.cash.available = Fen(1'000);
    account.cash.frozenCash = Fen(50);
    account.holdings = {holding(2100, 3, 1, 3'010), holding(2101, 7, 0, 3'511)};
    const CapFigures figures = capFigures(account, twoCollections());
    EXPECT_EQ(figures.heldMarketValue, Fen(3 * 1100 + 7 * 500));
    EXPECT_EQ(figures.profit, Fen(6'800 - 6'521));
    EXPECT_EQ(figures.total, Fen(6'800 + 1'050));
    JsonText text;
    writeCap(text, figures);
    EXPECT_EQ(json::parse(text.view()), json::parse(R"({
        "heldMarketValue": 6800, "profit": 279, "available": 1000, "frozen": 50, "total": 7850,
        "items": [{"collection": "2100", "code": "211000", "name": "青石桥大版", "quantity": 3,
                   "sellable": 2, "cost": 3010, "latest": 1100},
                  {"collection": "2101", "code": "211001", "name": "重阳", "quantity": 7,
                   "sellable": 7, "cost": 3511, "latest": 500}]})"));
}

TEST(CapFigures, TellWhatWasPaidToTheFen)
{
    for (const std::int64_t cost : {0, 4, 5, 6, 14}) {
        AccountState account;
        account.holdings = {holding(2100, 4, 0, cost)};
        const CapFigures figures = capFigures(account, twoCollections());
        EXPECT_EQ(figures.holdings[0].cost, Fen(cost));
        EXPECT_EQ(figures.profit, Fen(4'400 - cost));
    }
}

TEST(CapFigures, StopAtTheBound)
{
    AccountState account;
    account.cash.available = Fen(kAmountBound);
    account.holdings = {holding(2100, kAmountBound, 0, kAmountBound),
                        holding(2101, kAmountBound, kAmountBound, kAmountBound)};
    const CapFigures figures = capFigures(account, twoCollections());
    EXPECT_EQ(figures.heldMarketValue, Fen(kAmountBound));
    EXPECT_EQ(figures.profit, Fen(kAmountBound));
    EXPECT_EQ(figures.total, Fen(kAmountBound));
    EXPECT_EQ(figures.holdings[1].sellable, Quantity(0));
}

TEST(CapFigures, WhatIsNotOnTheListCountsAsPaid)
{
    AccountState account;
    account.holdings = {holding(9999, 3, 0, 700)}; // which no price of one piece makes
    const CapFigures figures = capFigures(account, twoCollections());
    EXPECT_EQ(figures.heldMarketValue, Fen(700));
    EXPECT_EQ(figures.profit, Fen(0));
    ASSERT_EQ(figures.holdings.size(), 1u);
    EXPECT_EQ(figures.holdings[0].name, "");
    JsonText text;
    writeCap(text, figures);
    EXPECT_EQ(json::parse(text.view())["items"], json::parse(R"([
        {"collection": "9999", "code": "", "name": "", "quantity": 3, "sellable": 3, "cost": 700,
         "latest": null}])"));
}

class CapTest : public zvxtest::TradingTest
{
};

TEST_F(CapTest, AnAccountThatNeverTradedHasZeros)
{
    begin();
    EXPECT_EQ(get("cap.html", 5),
              (json{{"protocol", 1},
                    {"status", "ok"},
                    {"boot", get("cap.html", 6)["boot"]},
                    {"version", 1},
                    {"data",
                     {{"heldMarketValue", 0},
                      {"profit", 0},
                      {"available", 0},
                      {"frozen", 0},
                      {"total", 0},
                      {"items", json::array()}}}}));
}

TEST_F(CapTest, ItsVersionGoesUpByOneForEachCommitThatChangedTheAccount)
{
    begin();
    const auto version
        = [this](std::int64_t account) { return get("cap.html", account)["version"].get<int>(); };
    fund(1, 1'000'000); // opened, and given money
    EXPECT_EQ(version(1), 3);
    EXPECT_EQ(version(2), 1);
    const std::string order = std::to_string(placed(buy(1, 950, 1)));
    EXPECT_EQ(version(1), 4);
    EXPECT_EQ(outcome(buy(1, 1'101, 1)), "refused price-limit");
    EXPECT_EQ(version(1), 4) << "a refusal changes nothing";
    EXPECT_EQ(outcome(revoke(1, order)), "ok");
    EXPECT_EQ(version(1), 5);
    EXPECT_EQ(outcome(buy(2, 950, 1)), "refused money");
    EXPECT_EQ(version(2), 2) << "it was opened";
}

/// One up for each deposit of one fen: the answer must hold at least what its version counts.
TEST_F(CapTest, WhatItTellsIsNeverOlderThanItsVersion)
{
    begin();
    carryOut({OpenAccount{AccountId(1), kDefaultFee, {}}}); // version 2, nothing yet
    std::atomic<bool> enough{false};
    std::thread payer([&] {
        while (!enough)
            floor->market().writer().execute({Deposit{AccountId(1), Fen(1), {}}});
    });
    RawClient client(floor->port());
    std::int64_t last = 0;
    for (int i = 0; i < 300; ++i) {
        client.get("/lc/youbika/cap.html", "1");
        const auto answer = client.answer(30s);
        ASSERT_TRUE(answer);
        const json body = json::parse(answer->body);
        const std::int64_t version = body["version"];
        EXPECT_GE(body["data"]["available"].get<std::int64_t>(), version - 2);
        EXPECT_GE(version, last);
        last = version;
    }
    enough = true;
    payer.join();
    EXPECT_GT(last, 2);
    const json settled = get("cap.html", 1);
    EXPECT_EQ(settled["data"]["available"].get<std::int64_t>(),
              settled["version"].get<std::int64_t>() - 2);
}

/// Clients trade at random over HTTP; the same commands go into a market in memory, whose views are
/// added up slowly in the end.
TEST_F(CapTest, EqualsASlowRecountAfterRandomTrading)
{
    options.clock = std::make_shared<ManualClock>(TimeMs(1'577'840'400'000));
    begin();
    constexpr std::int64_t accounts = 6;
    const std::vector<std::int64_t> collections = {2100, 2101, 2102};
    Market twin;
    std::vector<Event> events;
    const auto both = [&](const Command &command) {
        carryOut({command});
        EXPECT_EQ(twin.apply(command, TimeMs(1), events).status, Status::Accepted);
    };
    for (const auto &info : *floor->market().snapshot()->infos.data) {
        const auto row = floor->market().snapshot()->rowOf(info->id);
        ListCollection list;
        list.collection = info->id;
        list.issued = info->listed;
        list.previousClose
            = floor->market().snapshot()->collections[*row]->trade.data->previousClose;
        EXPECT_EQ(twin.apply(list, TimeMs(1), events).status, Status::Accepted);
    }
    twin.apply(SetPhase{true}, TimeMs(1), events);
    for (std::int64_t id = 1; id <= accounts; ++id) {
        both(OpenAccount{AccountId(id), PartsPerMillion(1'000 * id), {}});
        both(Deposit{AccountId(id), Fen(5'000'000), {}});
        for (const std::int64_t collection : collections)
            both(
                GrantHolding{AccountId(id), CollectionId(collection), Quantity(300), Fen(777), {}});
    }
    std::mt19937 random(20'200'101);
    const auto pick = [&random](std::int64_t least, std::int64_t most) {
        return std::uniform_int_distribution<std::int64_t>(least, most)(random);
    };
    int taken = 0;
    for (int i = 0; i < 400; ++i) {
        const std::int64_t account = pick(1, accounts);
        if (pick(1, 5) == 1) {
            const std::int64_t number
                = pick(1, std::max<std::int64_t>(twin.lastOrder().value(), 1));
            const json answer = revoke(account, std::to_string(number));
            const Result result = twin.apply(
                RevokeOrders{AccountId(account), {OrderNumber(number)}, {}}, TimeMs(1), events);
            EXPECT_EQ(answer["status"] == "ok", result.status == Status::Accepted);
            continue;
        }
        PlaceOrder order;
        order.account = AccountId(account);
        order.collection = CollectionId(collections[static_cast<std::size_t>(pick(0, 2))]);
        order.side = pick(0, 1) == 0 ? Side::Buy : Side::Sell;
        const std::int64_t close = twin.collection(order.collection)->day.previousClose.value();
        order.price = Fen(close + pick(-close / 9, close / 9));
        order.quantity = Quantity(pick(1, 40));
        const json answer
            = post(order.side == Side::Buy ? "trade/buy.html" : "trade/sell.html",
                   "key=" + newKey() + "&collection=" + std::to_string(order.collection.value())
                       + "&price=" + std::to_string(order.price.value())
                       + "&quantity=" + std::to_string(order.quantity.value()),
                   account);
        const Result result = twin.apply(order, TimeMs(1), events);
        EXPECT_EQ(answer["status"] == "ok", result.status == Status::Accepted) << answer;
        if (answer["status"] == "ok") {
            ++taken;
            EXPECT_EQ(answer["data"]["order"], result.order.value());
        }
    }
    EXPECT_GT(taken, 150);
    ASSERT_GT(twin.lastDeal(), Sequence(50));

    // The last prices are published a little later.
    static_cast<ManualClock &>(*options.clock).advance(2'000);
    const auto latestOf = [&twin](CollectionId id) {
        const DayFigures day = twin.collection(id)->day;
        return day.last.value() > 0 ? day.last : day.previousClose;
    };
    EXPECT_TRUE(until([&] {
        const auto snapshot = floor->market().snapshot();
        return std::all_of(collections.begin(), collections.end(), [&](std::int64_t id) {
            const TradeLevels &trade
                = *snapshot->collections[*snapshot->rowOf(CollectionId(id))]->trade.data;
            return trade.latest.value_or(trade.previousClose) == latestOf(CollectionId(id));
        });
    }));
    for (std::int64_t id = 1; id <= accounts; ++id) {
        const AccountView view = *twin.account(AccountId(id));
        std::vector<HoldingView> held;
        twin.holdingsOf(AccountId(id), held);
        std::int64_t value = 0;
        std::int64_t paid = 0;
        for (const HoldingView &each : held) {
            value += latestOf(each.collection).value() * each.quantity.value();
            paid += each.cost.value();
        }
        const json told = cap(id);
        EXPECT_EQ(told["heldMarketValue"], value);
        EXPECT_EQ(told["profit"], value - paid);
        EXPECT_EQ(told["available"], view.available.value());
        EXPECT_EQ(told["frozen"], view.frozenCash.value());
        EXPECT_EQ(told["total"], value + view.available.value() + view.frozenCash.value());
        ASSERT_EQ(told["items"].size(), held.size());
        for (std::size_t i = 0; i < held.size(); ++i) {
            const json &item = told["items"][i];
            EXPECT_EQ(item["collection"], std::to_string(held[i].collection.value()));
            EXPECT_EQ(item["quantity"], held[i].quantity.value());
            EXPECT_EQ(item["sellable"], held[i].quantity.value() - held[i].frozen.value());
            EXPECT_EQ(item["latest"], latestOf(held[i].collection).value());
            EXPECT_EQ(item["cost"], held[i].cost.value());
        }
    }
}

} // namespace
