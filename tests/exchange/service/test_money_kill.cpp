#include "exchange/service/embedded_bank.h"
#include "exchange/service/link_fixture.h"
#include "exchange/service/program.h"
#include "exchange/service/until.h"

#include <csignal>
#include <cstdio>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <vector>

namespace {

using nlohmann::json;
using zvxtest::Program;
using zvxtest::RawClient;
using zvxtest::until;

/// The whole service on a disk, whose account has a card and some money.
class MoneyKillTest : public zvxtest::LinkTest
{
protected:
    void fund(std::int64_t fen)
    {
        beginSignedIn();
        bindCard();
        const std::size_t before = texts();
        const json sent = act(lc + "pay/send.html", "phone=" + phone, token);
        const json done = act(lc + "pay/trade.html",
                              "amount=" + std::to_string(fen) + "&code=" + codeAfter(before)
                                  + "&first=" + sent["data"]["first"].get<std::string>()
                                  + "&second=" + sent["data"]["second"].get<std::string>(),
                              token);
        ASSERT_EQ(done["status"], "ok") << done;
        service.reset();
    }

    std::vector<std::string> arguments(unsigned delay) const
    {
        return {"serve", "--state",      folder.path().string(), "--robots",
                "0",     "--bank-delay", std::to_string(delay)};
    }
    json ask(std::uint16_t port, const std::string &path, const std::string &fields) const
    {
        RawClient client(port);
        client.post(lc + path, fields, token);
        const auto answer = client.answer();
        return answer ? json::parse(answer->body) : json();
    }

    /// What the bank's own books say went out.
    std::int64_t paidByTheBank() const
    {
        std::ifstream in(folder.path() / zvx::EmbeddedBank::kFileName);
        std::int64_t sum = 0;
        std::string id;
        std::string way;
        std::string word;
        for (std::int64_t fen = 0; in >> id >> way >> fen >> word;)
            sum += way == "out" && word == "done" ? fen : 0;
        return sum;
    }
};

TEST_F(MoneyKillTest, CashAddsUpHoweverOftenTheServiceIsKilled)
{
    constexpr std::int64_t start = 1'000'000;
    fund(start);
    std::mt19937 random(11);
    std::map<std::string, std::int64_t> asked; // fen by key
    std::set<std::string> told; // keys of money that has moved, as its owner was told
    for (int round = 0; round < 10; ++round) {
        Program program(arguments(random() % 30), Program::Nothing);
        const std::uint16_t port = program.port();
        std::vector<std::pair<std::string, RawClient>> clients;
        for (auto i = 2 + random() % 9; i > 0; --i) {
            const std::string key = newKey();
            asked[key] = 1 + static_cast<std::int64_t>(random() % 5'000);
            clients.emplace_back(key, RawClient(port));
            clients.back().second.post(lc + "pay/cash-deal.html",
                                       "amount=" + std::to_string(asked[key]) + "&key=" + key,
                                       token);
        }
        // Some answers are awaited, so that the end comes at another place each time.
        for (std::size_t i = 0; i < random() % clients.size(); ++i) {
            const auto answer = clients[i].second.answer();
            if (answer && json::parse(answer->body)["status"] == "ok")
                told.insert(clients[i].first);
        }
        program.signal(SIGKILL);
        program.wait();
    }

    Program program(arguments(0), Program::Nothing);
    const std::uint16_t port = program.port();
    ASSERT_TRUE(until([&] {
        return zvxtest::fetch(port, "/metrics").body.find("zvexchange_transfers_under_way 0\n")
            != std::string::npos;
    }));
    std::int64_t moved = 0;
    int done = 0;
    for (const auto &[key, fen] : asked) {
        const json end = ask(port, "pay/cash-deal.html", "key=" + key + "&resolve=1");
        const bool isDone = end["status"] == "ok";
        EXPECT_TRUE(isDone || end["reason"] == "unknown-key") << end;
        EXPECT_TRUE(isDone || told.count(key) == 0) << "told of money that did not move";
        moved += isDone ? fen : 0;
        done += isDone ? 1 : 0;
    }
    RawClient client(port);
    client.get(lc + "cap.html", token);
    const json cap = json::parse(client.answer()->body)["data"];
    EXPECT_EQ(cap["available"], start - moved);
    EXPECT_EQ(cap["frozen"], 0);
    EXPECT_EQ(paidByTheBank(), moved);
    std::printf("%zu transfers asked for, %d done, %zu of them told before a kill\n", asked.size(),
                done, told.size());
    EXPECT_GT(done, 10);
    EXPECT_FALSE(told.empty());
}

} // namespace
