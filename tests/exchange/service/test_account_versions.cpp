#include "exchange/service/account_versions.h"
#include "exchange/service/market_board.h"
#include "exchange/service/poll_hub.h"
#include "exchange/service/robot_crowd.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <thread>

namespace {

using namespace zvx;
using namespace std::chrono_literals;

TEST(AccountVersions, BeginAtOneAndGoUpByOneForEachChange)
{
    AccountVersions versions;
    EXPECT_EQ(versions.of(AccountId(7)), 1u);
    versions.raise(AccountId(7));
    versions.raise(AccountId(7));
    EXPECT_EQ(versions.of(AccountId(7)), 3u);
    EXPECT_EQ(versions.of(AccountId(8)), 1u);
}

TEST(ChangedAccounts, AsksOnceForWhatGathersMeanwhile)
{
    ChangedAccounts changed;
    EXPECT_FALSE(changed.add({})) << "nothing to look at";
    EXPECT_TRUE(changed.add({AccountId(1), AccountId(2)}));
    EXPECT_FALSE(changed.add({AccountId(1)}));
    EXPECT_EQ(changed.take(), (std::vector<AccountId>{AccountId(1), AccountId(2), AccountId(1)}));
    EXPECT_TRUE(changed.take().empty());
    EXPECT_TRUE(changed.add({AccountId(3)}));
}

TEST(ChangedAccounts, LeavesRobotsOut)
{
    const AccountId robot(RobotCrowd::firstAccount);
    const AccountId person(RobotCrowd::firstAccount - 1);
    ChangedAccounts changed;
    EXPECT_FALSE(changed.add({robot, AccountId(AccountId::most)}));
    EXPECT_TRUE(changed.take().empty());
    EXPECT_TRUE(changed.add({robot, person, robot}));
    EXPECT_FALSE(changed.add({robot}));
    EXPECT_EQ(changed.take(), std::vector<AccountId>{person});
}

TEST(ChangedAccounts, LosesNothingBetweenTwoThreads)
{
    ChangedAccounts changed;
    constexpr int rounds = 20'000;
    std::thread writer([&changed] {
        for (int i = 0; i < rounds; ++i)
            changed.add({AccountId(i % 3 + 1)});
    });
    std::map<std::int64_t, int> counts;
    for (int taken = 0; taken < rounds;) {
        for (const AccountId account : changed.take()) {
            ++counts[account.value()];
            ++taken;
        }
    }
    writer.join();
    EXPECT_EQ(counts[1] + counts[2] + counts[3], rounds);
    EXPECT_TRUE(changed.take().empty());
}

/// Remembers how one request ended.
class Sink : public HttpResponseSink
{
public:
    explicit Sink(int &answers) : m_answers(answers) { }
    void answer(HttpAnswer) override { ++m_answers; }
    void watch(std::function<void()> gone) override { leave = std::move(gone); }
    void lose() override { }

    std::function<void()> leave;

private:
    int &m_answers;
};

class AccountPollsTest : public testing::Test
{
protected:
    AccountPollsTest()
    {
        auto empty = std::make_shared<MarketSnapshot>();
        empty->check = {1, std::make_shared<const CheckSnapshot>()};
        empty->list = std::make_shared<const ListSnapshot>();
        board.publish(empty);
    }

    static SyncQuestion watching(std::int64_t account, std::uint64_t held)
    {
        SyncQuestion question;
        question.held[indexOf(Topic::Cap)] = held;
        question.account = AccountId(account);
        return question;
    }
    std::shared_ptr<Sink> park(const SyncQuestion &question, int &answers)
    {
        auto sink = std::make_shared<Sink>(answers);
        hub.park(board, question, HttpResponder(sink), std::chrono::steady_clock::now() + 1h);
        return sink;
    }
    void change(std::vector<AccountId> accounts)
    {
        for (const AccountId account : accounts)
            board.accounts().raise(account);
        hub.wake(board, accounts);
    }
    std::string topics(const SyncQuestion &question)
    {
        std::vector<HttpFragment> parts;
        board.appendTopics(question, parts);
        std::string text;
        for (const HttpFragment &part : parts)
            text += *part;
        return text;
    }

    std::shared_ptr<PlatformBoard> platform = std::make_shared<PlatformBoard>();
    BuildCounters builds{};
    MarketBoard board{platform, builds};
    int asked = 0;
    PollHub hub{10'000,
                [this](MarketBoard &, const SyncQuestion &) {
                    ++asked;
                    return HttpAnswer();
                },
                [](PollHub::Time) {}};
};

TEST_F(AccountPollsTest, TellsAnAccountOfItsOwnChangeWithAGap)
{
    EXPECT_EQ(topics(watching(5, 0)), "\"cap\":{\"version\":1,\"gap\":true}");
    EXPECT_EQ(topics(watching(5, 1)), "");
    board.accounts().raise(AccountId(5));
    EXPECT_EQ(topics(watching(5, 1)), "\"cap\":{\"version\":2,\"gap\":true}");
    EXPECT_EQ(topics(watching(6, 1)), "");
    SyncQuestion nobody = watching(5, 0);
    nobody.account.reset();
    EXPECT_EQ(topics(nobody), "") << "without an account there is nothing to tell";
    EXPECT_FALSE(board.differs(nobody));
}

TEST_F(AccountPollsTest, WakesThePollsOfChangedAccountsAlone)
{
    int five = 0;
    int six = 0;
    int other = 0;
    park(watching(5, 1), five);
    park(watching(5, 1), five);
    park(watching(6, 1), six);
    SyncQuestion check;
    check.held[indexOf(Topic::Check)] = 1;
    check.account = AccountId(5);
    park(check, other);
    change({AccountId(5)});
    EXPECT_EQ(five, 2);
    EXPECT_EQ(six, 0);
    EXPECT_EQ(other, 0) << "it does not watch what changed";
    EXPECT_EQ(hub.parked(), 2u);
    change({AccountId(5), AccountId(6), AccountId(6)});
    EXPECT_EQ(six, 1);
    EXPECT_EQ(hub.parked(), 1u);
    hub.endAll();
    EXPECT_EQ(five + six + other, 4);
    EXPECT_EQ(hub.parked(), 0u);
    change({AccountId(5)});
    EXPECT_EQ(asked, 4);
}

TEST_F(AccountPollsTest, ForgetsThePollOfAClientThatLeft)
{
    int answers = 0;
    const auto sink = park(watching(5, 1), answers);
    park(watching(5, 1), answers);
    sink->leave();
    change({AccountId(5)});
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(hub.parked(), 0u);
}

TEST_F(AccountPollsTest, AWakeCostsWhatItWakesAndNotWhatIsParked)
{
    int answers = 0;
    for (std::int64_t account = 1; account <= 5'000; ++account)
        park(watching(account, 1), answers);
    // Nobody asks the board about polls of other accounts: their questions would differ now.
    for (std::int64_t account = 1; account <= 5'000; ++account)
        board.accounts().raise(AccountId(account));
    hub.wake(board, {AccountId(77), AccountId(9'999)});
    EXPECT_EQ(answers, 1);
    EXPECT_EQ(hub.parked(), 4'999u);
}

} // namespace
