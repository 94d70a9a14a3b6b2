#include "exchange/store/exchange.h"
#include "exchange/store/recovery.h"
#include "exchange/store/sqlitestore.h"

#include "exchange/service/account_fixture.h"
#include "exchange/service/program.h"
#include "exchange/service/until.h"

#include <atomic>
#include <csignal>
#include <map>
#include <mutex>
#include <thread>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::Program;
using zvxtest::RawClient;
using zvxtest::until;

/// Two people of 岚川 who are signed in, and have money and pieces of 2100.
class TradingServiceTest : public zvxtest::AccountTest
{
protected:
    void beginWithTwo()
    {
        begin();
        for (int i = 0; i < 2; ++i) {
            registerAccount(phones[i], "password");
            // The first action opens the account in the market.
            EXPECT_EQ(buy(signIn(phones[i], "password"), 1000, 1)["reason"], "money");
        }
        service.reset();
        fundAll();
        begin();
        for (int i = 0; i < 2; ++i)
            tokens[i] = signIn(phones[i], "password");
    }

    json buy(const std::string &token, std::int64_t price, std::int64_t quantity)
    {
        return order("trade/buy.html", token, price, quantity);
    }
    json sell(const std::string &token, std::int64_t price, std::int64_t quantity)
    {
        return order("trade/sell.html", token, price, quantity);
    }
    std::int64_t version(const std::string &token)
    {
        return get(lc + "cap.html", token)["version"];
    }
    std::string syncPath(std::int64_t held, int wait) const
    {
        return lc + "sync.html?protocol=1&boot=" + service->boot() + "&wait=" + std::to_string(wait)
            + "&cap=" + std::to_string(held);
    }
    bool parked(std::size_t count) const
    {
        return until([&] { return metric("zvexchange_polls_parked") == std::to_string(count); });
    }

    const std::string phones[2] = {"13811112222", "13833334444"};
    std::string tokens[2];

private:
    json order(const std::string &path, const std::string &token, std::int64_t price,
               std::int64_t quantity)
    {
        return act(lc + path,
                   "collection=2100&price=" + std::to_string(price)
                       + "&quantity=" + std::to_string(quantity),
                   token);
    }

    void fundAll()
    {
        ExchangeOptions exchangeOptions;
        exchangeOptions.folder = folder.path();
        std::vector<AccountId> accounts;
        {
            SqliteStore store(folder.path() / "lc-youbika.market");
            accounts = recoverMarket(store).market.accounts();
        }
        ASSERT_EQ(accounts.size(), 2u);
        Exchange exchange(exchangeOptions);
        for (const AccountId account : accounts)
            exchange.market(lc)->writer().execute(
                {Deposit{account, Fen(1'000'000), {}},
                 GrantHolding{account, CollectionId(2100), Quantity(100), Fen(1000), {}}});
    }
};

TEST_F(TradingServiceTest, TradesInTheNameOfTheTokenAlone)
{
    beginWithTwo();
    const std::string order = "collection=2100&price=1000&quantity=1";
    EXPECT_EQ(act(lc + "trade/buy.html", order)["status"], "session");
    EXPECT_EQ(act(lc + "trade/revoke.html", "orders=1")["status"], "session");
    EXPECT_EQ(get(lc + "cap.html")["status"], "session");
    EXPECT_EQ(act(lc + "trade/buy.html", order, "0123456789abcdef")["status"], "session");
    EXPECT_EQ(
        act(ch + "trade/buy.html", "collection=1100&price=1000&quantity=1", tokens[0])["status"],
        "session")
        << "the other platform knows other tokens";

    const std::int64_t mine = buy(tokens[0], 1000, 1)["data"]["order"];
    EXPECT_GT(mine, 0);
    EXPECT_EQ(act(lc + "trade/revoke.html", "orders=" + std::to_string(mine), tokens[1])["reason"],
              "unknown-order");
    EXPECT_EQ(get(lc + "cap.html", tokens[0])["data"]["frozen"], 1003);
    EXPECT_EQ(get(lc + "cap.html", tokens[1])["data"]["frozen"], 0);
    EXPECT_EQ(get(tea + "cap.html", tokens[0])["data"]["total"], 0) << "money is of one market";

    const std::string newer = signIn(phones[0], "password", "00000000000000bb");
    EXPECT_EQ(buy(tokens[0], 1000, 1)["status"], "elsewhere");
    EXPECT_EQ(get(lc + "cap.html", newer)["data"]["frozen"], 1003) << "and nothing was done";
}

TEST_F(TradingServiceTest, APollLearnsOfTheDealThatSomebodyElseMade)
{
    beginWithTwo();
    EXPECT_EQ(sell(tokens[0], 1000, 5)["status"], "ok");
    const std::int64_t held = version(tokens[0]);
    RawClient seller(port());
    seller.get(syncPath(held, 25'000), tokens[0]);
    RawClient buyer(port());
    buyer.get(syncPath(version(tokens[1]), 25'000), tokens[1]);
    RawClient nobody(port());
    nobody.get(syncPath(0, 25'000));
    ASSERT_TRUE(parked(3)) << "without an account there is nothing to tell of, whatever is held";

    // Another account's order that meets nobody.
    const std::string other = signIn(phones[1], "password"); // the same client: both stay good
    EXPECT_EQ(buy(other, 900, 1)["status"], "ok");
    const auto own = buyer.answer();
    ASSERT_TRUE(own);
    EXPECT_TRUE(parked(2));

    EXPECT_EQ(buy(other, 1000, 2)["status"], "ok");
    const auto answer = seller.answer();
    ASSERT_TRUE(answer);
    EXPECT_EQ(json::parse(answer->body)["data"]["topics"],
              (json{{"cap", {{"version", held + 1}, {"gap", true}}}}));
    const json cap = get(lc + "cap.html", tokens[0]);
    EXPECT_EQ(cap["version"], held + 1);
    EXPECT_EQ(cap["data"]["items"][0]["quantity"], 98);
    EXPECT_EQ(get(syncPath(held + 1, 0), tokens[0])["data"]["topics"], json::object());
    EXPECT_EQ(get(syncPath(0, 0), tokens[0])["data"]["topics"]["cap"]["gap"], true);
    EXPECT_EQ(get(syncPath(0, 0))["data"]["topics"], json::object());
}

TEST_F(TradingServiceTest, AThousandPollsStayParkedWhileOneIsTold)
{
    beginWithTwo();
    const std::int64_t held = version(tokens[1]);
    std::vector<RawClient> parkedClients;
    for (int i = 0; i < 1'000; ++i) {
        parkedClients.emplace_back(port());
        parkedClients.back().get(syncPath(held, 25'000), tokens[1]);
    }
    RawClient one(port());
    one.get(syncPath(version(tokens[0]), 25'000), tokens[0]);
    ASSERT_TRUE(parked(1'001));
    EXPECT_EQ(buy(tokens[0], 950, 1)["status"], "ok");
    ASSERT_TRUE(one.answer());
    EXPECT_EQ(metric("zvexchange_polls_parked"), "1000");
    EXPECT_EQ(buy(tokens[1], 950, 1)["status"], "ok");
    for (RawClient &client : parkedClients) {
        const auto answer = client.answer(60s);
        ASSERT_TRUE(answer);
        EXPECT_EQ(json::parse(answer->body)["data"]["topics"]["cap"]["version"], held + 1);
    }
}

/// What one client of a service that is about to die has sent, and what it heard.
struct Sent {
    std::string key;
    std::string order; ///< "" where no answer came
};

/// The program with the demo account, which is killed in the middle of orders.
class KilledTradingTest : public testing::Test
{
protected:
    void start()
    {
        program = std::make_unique<Program>(std::vector<std::string>{
            "serve", "--state", (folder.path() / "state").string(), "--demo", "--robots", "0",
            "--catalogue", ZVX_SMALL_CATALOGUE});
        port = program->port();
        ASSERT_NE(port, 0);
    }
    void signIn()
    {
        const json answer = post("login.html",
                                 "key=" + newKey()
                                     + "&phone=13800000000&password=demo888888&client="
                                       "00000000000000aa");
        ASSERT_EQ(answer["status"], "ok") << answer;
        token = answer["data"]["token"];
    }
    std::string newKey()
    {
        char text[40];
        std::snprintf(text, sizeof text, "%032x", ++m_keys);
        return text;
    }
    static std::string form(const std::string &key, std::int64_t price)
    {
        return "key=" + key + "&collection=2100&price=" + std::to_string(price) + "&quantity=1";
    }
    json post(const std::string &path, const std::string &fields) const
    {
        RawClient client(port);
        client.post("/lc/youbika/" + path, fields, token);
        const auto answer = client.answer(60s);
        return answer ? json::parse(answer->body) : json();
    }
    json cap() const
    {
        RawClient client(port);
        client.get("/lc/youbika/cap.html", token);
        return json::parse(client.answer(60s)->body)["data"];
    }

    zvxtest::TemporaryFolder folder;
    std::unique_ptr<Program> program;
    std::uint16_t port = 0;
    std::string token;

private:
    std::atomic<unsigned> m_keys{0};
};

TEST_F(KilledTradingTest, EveryKeyStillHasItsAnswer)
{
    start();
    signIn();
    const json before = cap();
    std::mutex mutex;
    std::vector<Sent> sent;
    std::vector<std::thread> clients;
    for (int i = 0; i < 6; ++i) {
        clients.emplace_back([&] {
            try {
                RawClient client(port);
                for (int n = 0; n < 10'000; ++n) {
                    Sent each{newKey(), ""};
                    client.post("/lc/youbika/trade/buy.html", form(each.key, 950), token);
                    const auto answer = client.answer(60s);
                    if (answer)
                        each.order = json::parse(answer->body)["data"]["order"].dump();
                    const std::lock_guard<std::mutex> lock(mutex);
                    sent.push_back(each);
                    if (!answer)
                        return;
                }
            } catch (const std::runtime_error &) {
                // The connection broke while it was written to; that order went nowhere.
            }
        });
    }
    EXPECT_TRUE(until([&] {
        const std::lock_guard<std::mutex> lock(mutex);
        return sent.size() > 60;
    }));
    program->signal(SIGKILL);
    for (std::thread &client : clients)
        client.join();
    program->wait();
    start();
    signIn();

    std::int64_t done = 0;
    std::int64_t unanswered = 0;
    for (const Sent &each : sent) {
        const json answer = post("trade/buy.html", "key=" + each.key + "&resolve=1");
        if (!each.order.empty()) {
            EXPECT_EQ(answer["data"]["order"].dump(), each.order) << "it was acknowledged";
            EXPECT_EQ(post("trade/buy.html", form(each.key, 950))["data"], answer["data"]);
        } else {
            ++unanswered;
            EXPECT_TRUE(answer["status"] == "ok" || answer["reason"] == "unknown-key") << answer;
        }
        done += answer["status"] == "ok";
    }
    EXPECT_GT(unanswered, 0) << "nothing was under way when it was killed";
    EXPECT_EQ(post("trade/buy.html", form(sent.front().key, 951))["reason"], "key-differs");
    const json after = cap();
    EXPECT_EQ(after["frozen"].get<std::int64_t>(), done * 953);
    EXPECT_EQ(after["available"].get<std::int64_t>(),
              before["available"].get<std::int64_t>() - done * 953);
}

} // namespace
