#include "exchange/accounts/outbox.h"
#include "exchange/service/embedded_carrier.h"

#include "exchange/service/program.h"
#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::Program;
using zvxtest::RawClient;
using zvxtest::until;

constexpr std::chrono::milliseconds patience = 60s;
constexpr std::int64_t piecesAtFirst = 100; // of each collection, by --demo

/// What somebody wanted, and what he was told of it.
struct Intent {
    enum Kind { Request, Cancel, Sell };
    Kind kind = Request;
    std::string collection; ///< of a request and an order
    std::int64_t quantity = 0;
    std::string parcel = {}; ///< that is to be cancelled, or that a request was told
    bool isTold = false; ///< that it is done
};

/// The program with the demo account, which is killed again and again.
class DeliveryKillTest : public testing::Test
{
protected:
    std::vector<std::string> arguments(const std::string &prepare, const std::string &ship) const
    {
        return {"serve",
                "--state",
                folder.path().string(),
                "--catalogue",
                ZVX_SMALL_CATALOGUE,
                "--robots",
                "0",
                "--demo",
                "--prepare-delay",
                prepare,
                "--ship-delay",
                ship};
    }
    std::string newKey()
    {
        char text[40];
        std::snprintf(text, sizeof text, "%032x", ++m_keys);
        return text;
    }
    void signIn(std::uint16_t port)
    {
        RawClient client(port);
        client.post(lc + "login.html",
                    "phone=13800000000&password=demo888888&client=00000000000000aa&key="
                        + newKey());
        const auto answer = client.answer(patience);
        ASSERT_TRUE(answer);
        token = json::parse(answer->body)["data"]["token"];
    }
    static const char *pathOf(const Intent &intent)
    {
        return intent.kind == Intent::Sell ? "trade/sell.html" : "trade/take.html";
    }
    static std::string fieldsOf(const Intent &intent)
    {
        if (intent.kind == Intent::Cancel)
            return "cancel=" + intent.parcel;
        const std::string what
            = "collection=" + intent.collection + "&quantity=" + std::to_string(intent.quantity);
        // Nobody bids: an order rests and holds its pieces.
        return intent.kind == Intent::Sell
            ? what + "&price=1000"
            : what + "&person=林晓月&phone=13911112222&address=和平路1号";
    }
    RawClient send(std::uint16_t port, const std::string &key, const Intent &intent,
                   const std::string &more = {}) const
    {
        RawClient client(port);
        client.post(lc + pathOf(intent), "key=" + key + more + '&' + fieldsOf(intent), token);
        return client;
    }
    json data(std::uint16_t port, const std::string &path) const
    {
        RawClient client(port);
        client.get(lc + path, token);
        const auto answer = client.answer(patience);
        return answer ? json::parse(answer->body)["data"] : json();
    }
    /// All that was asked for, by its id.
    std::map<std::string, json> takes(std::uint16_t port) const
    {
        std::map<std::string, json> all;
        for (int page = 1;; ++page) {
            const json rows = data(
                port, "myaccount/take-list.html?size=200&page=" + std::to_string(page))["takes"];
            if (rows.empty())
                return all;
            for (const json &row : rows)
                EXPECT_TRUE(all.emplace(row["id"], row).second) << "told twice: " << row;
        }
    }
    /// How often the carrier's ledger has a parcel with these words.
    std::map<std::string, int> inLedger(const std::string &words) const
    {
        std::map<std::string, int> count;
        std::ifstream in(folder.path() / zvx::EmbeddedCarrier::kFileName);
        for (std::string line; std::getline(in, line);)
            if (line.substr(33) == words)
                ++count[line.substr(0, 32)];
        return count;
    }
    /// How often the outbox says that a parcel with this number was sent.
    std::map<std::string, int> inOutbox() const
    {
        const std::string mark = "，已发货，运单号";
        std::map<std::string, int> count;
        std::ifstream in(folder.path() / zvx::Outbox::kFileName);
        for (std::string line; std::getline(in, line);) {
            const std::size_t at = line.find(mark);
            if (at != std::string::npos)
                ++count[line.substr(at + mark.size())];
        }
        return count;
    }

    const std::string lc = "/lc/youbika/";
    const zvxtest::TemporaryFolder folder;
    std::string token;

private:
    unsigned m_keys = 0;
};

TEST_F(DeliveryKillTest, PiecesAddUpHoweverOftenTheServiceIsKilled)
{
    std::mt19937 random(23);
    const char *const delays[] = {"0", "0.05", "30", "30"};
    std::map<std::string, Intent> intents; // by key
    std::vector<std::string> parcels; // that somebody was told of
    for (int round = 0; round < 10; ++round) {
        Program program(arguments(delays[random() % 4], delays[random() % 2]), Program::Nothing);
        const std::uint16_t port = program.port();
        if (token.empty())
            signIn(port);
        std::vector<std::pair<std::string, RawClient>> clients;
        const auto begin = [&](const Intent &intent) {
            const std::string key = newKey();
            clients.emplace_back(key, send(port, key, intent));
            intents[key] = intent;
        };
        std::size_t heard = 0;
        const auto hear = [&](std::size_t count) {
            for (; heard < count; ++heard) {
                const auto answer = clients[heard].second.answer(patience);
                ASSERT_TRUE(answer) << program.errors;
                const json body = json::parse(answer->body);
                Intent &intent = intents[clients[heard].first];
                intent.isTold = body["status"] == "ok";
                if (!intent.isTold || intent.kind != Intent::Request)
                    continue;
                intent.parcel = body["data"]["id"];
                parcels.push_back(intent.parcel);
            }
        };
        begin({Intent::Request, "2100", 1});
        hear(1);
        for (auto i = 4 + random() % 9; i > 0; --i) {
            Intent intent;
            intent.kind = static_cast<Intent::Kind>(random() % 3);
            intent.collection = random() % 2 == 0 ? "2100" : "2101";
            intent.quantity = 1 + static_cast<std::int64_t>(random() % 4);
            // Often one that was asked for a moment ago.
            if (intent.kind == Intent::Cancel)
                intent.parcel = parcels[parcels.size() - 1
                                        - random() % std::min<std::size_t>(parcels.size(), 5)];
            begin(intent);
        }
        // Some answers are awaited, so that the end comes at another place each time.
        hear(1 + random() % clients.size());
        ASSERT_TRUE(program.isRunning()) << program.errors;
        program.signal(SIGKILL);
        program.wait();
    }

    Program program(arguments("0", "0"), Program::Nothing);
    const std::uint16_t port = program.port();
    ASSERT_TRUE(until(
        [&] {
            return zvxtest::fetch(port, "/metrics").body.find("zvexchange_deliveries_under_way 0\n")
                != std::string::npos;
        },
        patience));
    std::set<std::string> wanted;
    std::set<std::string> cancelled;
    std::map<std::string, std::int64_t> orders; // pieces by collection
    int told = 0;
    for (auto &[key, intent] : intents) {
        RawClient client = send(port, key, intent, "&resolve=1");
        const auto answer = client.answer(patience);
        ASSERT_TRUE(answer);
        const json end = json::parse(answer->body);
        const bool isDone = end["status"] == "ok";
        EXPECT_TRUE(isDone || end["status"] == "refused") << end;
        EXPECT_TRUE(isDone || !intent.isTold) << "told of what did not happen: " << end;
        told += intent.isTold ? 1 : 0;
        if (!isDone)
            continue;
        if (intent.kind == Intent::Request) {
            EXPECT_TRUE(!intent.isTold || end["data"]["id"] == intent.parcel) << end;
            wanted.insert(end["data"]["id"]);
        } else if (intent.kind == Intent::Cancel) {
            cancelled.insert(intent.parcel);
        } else {
            orders[intent.collection] += intent.quantity;
        }
    }

    const std::map<std::string, json> rows = takes(port);
    const std::map<std::string, int> packed = inLedger("packed");
    const std::map<std::string, int> sent = inLedger("sent");
    std::map<std::string, std::int64_t> gone; // pieces by collection
    std::set<std::string> known;
    std::map<int, int> states;
    for (const auto &[id, row] : rows) {
        known.insert(id);
        const int state = row["state"];
        ++states[state];
        EXPECT_TRUE(state == 1 || state == 4) << row;
        EXPECT_EQ(state == 1, cancelled.count(id) == 1) << row;
        EXPECT_EQ(sent.count(id), state == 4 ? 1u : 0u) << row;
        EXPECT_TRUE(state == 1 || packed.count(id) == 1) << row;
        EXPECT_EQ(row["person"], "林晓月") << row;
        if (state == 4)
            gone[row["collection"]] += row["quantity"].get<std::int64_t>();
    }
    EXPECT_EQ(known, wanted) << "a parcel for each request that was done, and no other";
    for (const auto &[id, times] : packed)
        EXPECT_EQ(times, 1) << id << " was packed again";
    for (const auto &[id, times] : sent)
        EXPECT_EQ(times, 1) << id << " was sent again";
    for (const auto &[number, times] : inOutbox())
        EXPECT_EQ(times, 1) << number << " was sent again";
    const json holdings = data(port, "myaccount/hold.html?size=200")["items"];
    EXPECT_EQ(holdings.size(), 8u);
    for (const json &item : holdings) {
        const std::string id = item["collection"];
        EXPECT_EQ(item["quantity"], piecesAtFirst - gone[id]) << id;
        EXPECT_EQ(item["sellable"], piecesAtFirst - gone[id] - orders[id]) << id;
    }
    std::printf("%zu intents, %d told before a kill; %d parcels sent, %d cancelled\n",
                intents.size(), told, states[4], states[1]);
    EXPECT_GT(told, 10);
    EXPECT_GT(states[4], 5);
    EXPECT_GT(states[1], 2);
}

} // namespace
