#include "exchange/accounts/password_hasher.h"

#include "exchange/service/account_fixture.h"
#include "exchange/service/until.h"

#include <atomic>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::RawClient;
using zvxtest::until;

/// Compares passwords as slowly as a test wants it.
class StuckHasher : public zvx::PasswordHasher
{
public:
    std::string hash(std::string_view) override { return "stored"; }
    bool verify(const std::string &, std::string_view) override
    {
        std::unique_lock<std::mutex> lock(m_mutex);
        ++comparing;
        m_open.wait(lock, [this] { return m_isOpen; });
        return false;
    }
    void open()
    {
        {
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_isOpen = true;
        }
        m_open.notify_all();
    }

    std::atomic<int> comparing{0};

private:
    std::mutex m_mutex;
    std::condition_variable m_open;
    bool m_isOpen = false;
};

class SignInFloodTest : public zvxtest::AccountTest
{
protected:
    SignInFloodTest() { options.passwordHasher = hasher; }
    ~SignInFloodTest() override { hasher->open(); }

    void knock(RawClient &client, int number)
    {
        client.post(lc + "login.html",
                    "key=" + newKey() + "&client=00000000000000aa&password=not-that-one&phone=139"
                        + std::to_string(10'000'000 + number));
    }

    std::shared_ptr<StuckHasher> hasher = std::make_shared<StuckHasher>();
};

TEST_F(SignInFloodTest, IsTurnedAwayAndHindersNobody)
{
    begin();
    constexpr int count = 200;
    // Eight addresses, so that no bound of one address alone holds the flood.
    std::vector<RawClient> clients;
    for (int i = 0; i < count; ++i) {
        const std::string from = "127.0.0." + std::to_string(1 + i % 8);
        clients.emplace_back(port(), from.c_str());
        knock(clients.back(), i);
    }
    const auto turnedAway
        = [&] { return std::stoi(metric("zvexchange_answers_total{status=\"5xx\"}")); };
    // Two threads that compare and a queue of 64 before them; the others are told at once.
    ASSERT_TRUE(until([&] { return turnedAway() == count - 66; })) << turnedAway();

    RawClient reader(port());
    for (int i = 0; i < 50; ++i) {
        reader.get(lc + "market/list.html");
        const auto list = reader.answer();
        ASSERT_TRUE(list);
        EXPECT_EQ(list->status, 200);
        reader.get(lc + "sync.html?protocol=1&check=0");
        const auto poll = reader.answer();
        ASSERT_TRUE(poll);
        EXPECT_EQ(json::parse(poll->body)["data"]["topics"]["check"]["version"], 1);
    }
    EXPECT_EQ(act(lc + "reg/send.html", "phone=13900000001")["status"], "ok")
        << "what needs no password goes on";
    EXPECT_EQ(turnedAway(), count - 66);

    hasher->open();
    std::map<std::string, int> answers;
    for (RawClient &client : clients) {
        const auto answer = client.answer();
        ASSERT_TRUE(answer);
        const json body = json::parse(answer->body);
        EXPECT_EQ(answer->status, body["status"] == "busy" ? 503 : 200);
        EXPECT_NE(body["message"], "");
        ++answers[body["status"] == "busy" ? "busy" : body["reason"].get<std::string>()];
    }
    EXPECT_EQ(answers, (std::map<std::string, int>{{"busy", count - 66}, {"wrong-password", 66}}));
}

TEST_F(SignInFloodTest, OneAddressTakesItsShareAlone)
{
    begin();
    std::vector<RawClient> clients;
    for (int i = 0; i < 40; ++i) {
        clients.emplace_back(port());
        knock(clients.back(), i);
    }
    const auto busy = [&] { return metric("zvexchange_answers_total{status=\"5xx\"}"); };
    const std::string rest = std::to_string(40 - options.accountLimits.hashesOfPeer);
    ASSERT_TRUE(until([&] { return busy() == rest; })) << busy();
    RawClient other(port(), "127.0.0.2");
    knock(other, 100);
    ASSERT_TRUE(
        until([&] { return metric("zvexchange_account_queue_depth{platform=\"lc\"}") == "0"; }));
    EXPECT_EQ(busy(), rest);
    hasher->open();
    EXPECT_EQ(json::parse(other.answer()->body)["reason"], "wrong-password");
}

TEST_F(SignInFloodTest, TheEndAnswersWhatWaits)
{
    begin();
    RawClient client(port());
    knock(client, 1);
    ASSERT_TRUE(until([&] { return hasher->comparing == 1; }));
    std::thread end([this] { service->stop(); });
    ASSERT_TRUE(until([&] {
        try {
            RawClient late(port());
            return false;
        } catch (const std::runtime_error &) {
            return true; // Nobody is let in any more.
        }
    }));
    hasher->open();
    end.join();
    const auto answer = client.answer();
    ASSERT_TRUE(answer);
    EXPECT_EQ(json::parse(answer->body)["reason"], "wrong-password");
}

} // namespace
