#include "exchange/accounts/desk_bench.h"

#include <algorithm>
#include <thread>

namespace zvx {
namespace {

using test::DeskBench;
using test::kHere;
using test::Outcome;
using test::phone;

constexpr std::int64_t kDay = AccountLimits::kDay;

TEST(Sessions, ASecondClientEndsTheFirstOneElsewhere)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    const Outcome first = bench.signIn(phone(1), "correct-1", 10);
    const Outcome again = bench.signIn(phone(1), "correct-1", 10);
    EXPECT_NE(first.token, again.token);
    EXPECT_EQ(bench.kind(first.token), SessionState::Live);
    EXPECT_EQ(bench.kind(again.token), SessionState::Live);

    const std::size_t before = bench.ended().size();
    const Outcome other = bench.signIn(phone(1), "correct-1", 11);
    EXPECT_EQ(bench.kind(first.token), SessionState::Elsewhere);
    EXPECT_EQ(bench.kind(again.token), SessionState::Elsewhere);
    EXPECT_EQ(bench.kind(other.token), SessionState::Live);
    std::vector<std::int64_t> ended = bench.ended();
    ended.erase(ended.begin(), ended.begin() + static_cast<std::ptrdiff_t>(before));
    EXPECT_EQ(ended, (std::vector<std::int64_t>{first.session, again.session}));
    EXPECT_EQ(bench.desk().session(first.token).session, first.session);
    EXPECT_EQ(bench.desk().session(first.token).account, AccountId(1));
}

TEST(Sessions, ATokenThatNobodyGaveIsUnknown)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    const Outcome answer = bench.signIn(phone(1), "correct-1");
    for (const std::string &token :
         {std::string(), std::string("x"), answer.token + "A", answer.token.substr(1),
          std::string(100'000, 'A'), std::string(answer.token.rbegin(), answer.token.rend())})
        EXPECT_EQ(bench.kind(token), SessionState::Unknown) << token.size();
}

TEST(Sessions, TheOldestOfNineTokensOfAClientEnds)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    std::vector<Outcome> all;
    for (int i = 0; i < 9; ++i)
        all.push_back(bench.signIn(phone(1), "correct-1", 5));
    EXPECT_EQ(bench.kind(all[0].token), SessionState::Ended);
    for (std::size_t i = 1; i < all.size(); ++i)
        EXPECT_EQ(bench.kind(all[i].token), SessionState::Live) << i;
    EXPECT_EQ(bench.ended().back(), all[0].session);
}

TEST(Sessions, OthersAreToldWhenTheStateHasChanged)
{
    std::vector<SessionState::Kind> seen;
    std::string token;
    AccountDesk *desk = nullptr;
    DeskBench bench([&](AccountDeskOptions &options) {
        options.sessionsEnded
            = [&](const std::vector<std::int64_t> &) { seen.push_back(desk->session(token).kind); };
    });
    desk = &bench.desk();
    bench.makeAccount(phone(1), "correct-1");
    token = bench.signIn(phone(1), "correct-1", 1).token;
    seen.clear();
    bench.signIn(phone(1), "correct-1", 2);
    EXPECT_EQ(seen, (std::vector<SessionState::Kind>{SessionState::Elsewhere}));
    bench.close();
}

TEST(Sessions, OutliveTheServiceAndSoDoesElsewhere)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    const Outcome gone = bench.signIn(phone(1), "correct-1", 1);
    const Outcome live = bench.signIn(phone(1), "correct-1", 2);
    bench.reopen();
    EXPECT_EQ(bench.kind(gone.token), SessionState::Elsewhere);
    const SessionState state = bench.desk().session(live.token);
    EXPECT_EQ(state.kind, SessionState::Live);
    EXPECT_EQ(state.account, AccountId(1));
    EXPECT_EQ(state.client, 2u);
    EXPECT_EQ(state.session, live.session);
    // The next one ends it, and has a number of its own.
    const Outcome next = bench.signIn(phone(1), "correct-1", 3);
    EXPECT_EQ(next.session, live.session + 1);
    EXPECT_EQ(bench.kind(live.token), SessionState::Elsewhere);
    EXPECT_EQ(bench.ended().back(), live.session);
}

TEST(Sessions, EndAfterThirtyDaysHoweverMuchTheyAreUsed)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    const Outcome answer = bench.signIn(phone(1), "correct-1", 1);
    bench.pass(30 * kDay - 1);
    EXPECT_EQ(bench.kind(answer.token), SessionState::Live);
    const std::size_t before = bench.ended().size();
    bench.clock->advance(1);
    EXPECT_EQ(bench.kind(answer.token), SessionState::Ended); // at once
    bench.pass(AccountLimits::kMinute);
    const std::vector<std::int64_t> ended = bench.ended();
    EXPECT_EQ(std::count(ended.begin() + static_cast<std::ptrdiff_t>(before), ended.end(),
                         answer.session),
              1);
    bench.reopen();
    EXPECT_EQ(bench.kind(answer.token), SessionState::Ended);
    bench.pass(30 * kDay + 2 * AccountLimits::kMinute);
    EXPECT_EQ(bench.kind(answer.token), SessionState::Unknown); // forgotten
    bench.reopen();
    EXPECT_EQ(bench.kind(answer.token), SessionState::Unknown);
}

TEST(Sessions, OnlySoManyEndedOnesAreRemembered)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.endedSessions = 3; });
    bench.makeAccount(phone(1), "correct-1");
    std::vector<Outcome> all;
    for (std::uint64_t client = 1; client <= 6; ++client) {
        all.push_back(bench.signIn(phone(1), "correct-1", 100 + client));
        bench.clock->advance(10);
    }
    bench.pass(AccountLimits::kMinute);
    for (std::size_t i = 0; i < 2; ++i)
        EXPECT_EQ(bench.kind(all[i].token), SessionState::Unknown) << i;
    for (std::size_t i = 2; i < 5; ++i)
        EXPECT_EQ(bench.kind(all[i].token), SessionState::Elsewhere) << i;
    EXPECT_EQ(bench.kind(all[5].token), SessionState::Live);
}

TEST(Sessions, ManyThreadsSigningInLeaveOneSessionAlive)
{
    DeskBench bench([](AccountDeskOptions &options) {
        options.limits.signInsOfPeer = 1'000;
        options.limits.signInsOfPhone = 1'000;
        options.limits.hashesOfPeer = 64;
    });
    for (int account = 1; account <= 3; ++account)
        bench.makeAccount(phone(account), "correct-1");
    constexpr std::uint64_t kThreads = 6;
    constexpr std::uint64_t kRounds = 20;
    std::mutex mutex;
    std::vector<Outcome> all[4];
    std::atomic<bool> reading{true};
    std::vector<std::thread> threads;
    for (std::uint64_t t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            for (std::uint64_t i = 0; i < kRounds; ++i) {
                const int account = static_cast<int>((t + i) % 3) + 1;
                Outcome answer;
                do {
                    std::promise<Outcome> promise;
                    auto future = promise.get_future();
                    bench.desk().signIn({phone(account), Secret("correct-1"), t * 1'000 + i,
                                         ActionKey{t + 1, i * 1'000'000 + 1}, kHere},
                                        [&](const AccountAnswer &told) {
                                            promise.set_value(test::outcomeOf(told));
                                        });
                    answer = future.get();
                } while (answer.status == AccountStatus::Busy);
                std::lock_guard<std::mutex> guard(mutex);
                all[account].push_back(answer);
            }
        });
    }
    // Somebody asks for tokens all the time, as polls do.
    std::thread reader([&] {
        while (reading) {
            std::string token;
            {
                std::lock_guard<std::mutex> guard(mutex);
                if (!all[1].empty())
                    token = all[1].back().token;
            }
            (void)bench.desk().session(token);
        }
    });
    for (std::thread &thread : threads)
        thread.join();
    reading = false;
    reader.join();
    std::size_t answers = 0;
    for (int account = 1; account <= 3; ++account) {
        int live = 0;
        for (const Outcome &answer : all[account]) {
            EXPECT_EQ(answer.status, AccountStatus::Done);
            const SessionState state = bench.desk().session(answer.token);
            EXPECT_EQ(state.account, AccountId(account));
            live += state.kind == SessionState::Live ? 1 : 0;
            EXPECT_TRUE(state.kind == SessionState::Live || state.kind == SessionState::Elsewhere);
        }
        EXPECT_EQ(live, 1) << account;
        answers += all[account].size();
    }
    EXPECT_EQ(answers, kThreads * kRounds);
    // Each ended one was told once.
    std::vector<std::int64_t> ended = bench.ended();
    std::sort(ended.begin(), ended.end());
    EXPECT_EQ(std::adjacent_find(ended.begin(), ended.end()), ended.end());
}

} // namespace
} // namespace zvx
