#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/password_pool.h"

#include <sys/resource.h>
#include <thread>

namespace zvx {
namespace {

using test::Counter;
using test::FakeHasher;
using test::Gate;

TEST(Passwords, AreHashedWithArgon2id)
{
    ArgonHasher hasher(ArgonCost::least());
    const std::string one = hasher.hash("correct-1");
    const std::string two = hasher.hash("correct-1");
    EXPECT_EQ(one.rfind("$argon2id$", 0), 0u);
    EXPECT_NE(one, two); // each with a salt of its own
    EXPECT_EQ(one.find("correct"), std::string::npos);
    EXPECT_TRUE(hasher.verify(one, "correct-1"));
    EXPECT_TRUE(hasher.verify(two, "correct-1"));
    EXPECT_FALSE(hasher.verify(one, "correct-2"));
    EXPECT_FALSE(hasher.verify(one, "correct-1 "));
    EXPECT_FALSE(hasher.verify(one, ""));
    EXPECT_FALSE(hasher.verify("no hash", "correct-1"));
}

TEST(Passwords, CostSixtyFourMegabytesUnlessSomebodySaysOtherwise)
{
    const ArgonCost cost = ArgonCost::interactive();
    EXPECT_EQ(cost.memory, 64u << 20);
    EXPECT_GE(cost.operations, 2u);
    EXPECT_NE(ArgonHasher().hash("correct-1").find("$m=65536,"), std::string::npos);
}

TEST(PasswordPools, WorkBehindABoundedQueue)
{
    const auto hasher = std::make_shared<FakeHasher>();
    PasswordPool pool(hasher, 1, 2);
    EXPECT_EQ(hasher->hashes, 1); // the decoy
    Gate gate;
    hasher->meanwhile = [&] { gate.pass(); };
    Counter done;
    std::mutex mutex;
    std::vector<std::optional<bool>> verdicts;
    const auto note = [&](std::optional<bool> right) {
        {
            std::lock_guard<std::mutex> guard(mutex);
            verdicts.push_back(right);
        }
        done.add();
    };
    ASSERT_TRUE(pool.verify("fake:right", Secret("right"), note));
    ASSERT_TRUE(gate.awaitVisitor());
    EXPECT_TRUE(pool.verify("fake:right", Secret("wrong"), note));
    std::string stored;
    EXPECT_TRUE(pool.hash(Secret("new"), [&](const std::optional<std::string> &hash) {
        stored = hash.value_or("none");
        done.add();
    }));
    EXPECT_EQ(pool.waiting(), 2u);
    EXPECT_FALSE(pool.verify("fake:right", Secret("right"), note));
    EXPECT_FALSE(pool.hash(Secret("new"), {}));
    gate.open();
    ASSERT_TRUE(done.reaches(3));
    EXPECT_EQ(verdicts, (std::vector<std::optional<bool>>{true, false}));
    EXPECT_EQ(stored, "fake:new");
}

TEST(PasswordPools, TellWhereThereIsNoMemory)
{
    const auto hasher = std::make_shared<FakeHasher>();
    PasswordPool pool(hasher, 1, 2);
    hasher->outOfMemory = true;
    Counter done;
    std::optional<bool> right = true;
    std::optional<std::string> stored = "something";
    pool.verify("fake:right", Secret("right"), [&](std::optional<bool> told) {
        right = told;
        done.add();
    });
    ASSERT_TRUE(done.reaches(1));
    pool.hash(Secret("right"), [&](const std::optional<std::string> &told) {
        stored = told;
        done.add();
    });
    ASSERT_TRUE(done.reaches(2));
    EXPECT_EQ(right, std::nullopt);
    EXPECT_EQ(stored, std::nullopt);
    EXPECT_THROW(PasswordPool(hasher, 1, 2), std::bad_alloc);
}

TEST(PasswordPools, EndEachJobOnceWhenTheyStop)
{
    const auto hasher = std::make_shared<FakeHasher>();
    PasswordPool pool(hasher, 1, 4);
    Gate gate;
    hasher->meanwhile = [&] { gate.pass(); };
    Counter right;
    Counter dropped;
    const auto note = [&](std::optional<bool> verdict) { (verdict ? right : dropped).add(); };
    ASSERT_TRUE(pool.verify("fake:right", Secret("right"), note));
    ASSERT_TRUE(gate.awaitVisitor());
    ASSERT_TRUE(pool.verify("fake:right", Secret("right"), note));
    ASSERT_TRUE(pool.hash(Secret("new"), [&](const std::optional<std::string> &stored) {
        (stored ? right : dropped).add();
    }));
    std::thread stopper([&] { pool.stop(); });
    EXPECT_TRUE(dropped.reaches(2)); // while the first is still in hand
    EXPECT_EQ(right.value(), 0);
    gate.open();
    stopper.join();
    EXPECT_EQ(right.value(), 1);
    EXPECT_FALSE(pool.verify("fake:right", Secret("right"), note));
    pool.stop();
}

TEST(PasswordPools, LeaveTheProcessorToTrading)
{
    const auto hasher = std::make_shared<FakeHasher>();
    PasswordPool pool(hasher, 1, 1);
    const int own = ::getpriority(PRIO_PROCESS, 0);
    std::atomic<int> theirs{own};
    hasher->meanwhile = [&] { theirs = ::getpriority(PRIO_PROCESS, 0); };
    Counter done;
    pool.verify("fake:right", Secret("right"), [&](std::optional<bool>) { done.add(); });
    ASSERT_TRUE(done.reaches(1));
    constexpr int kLowest = 19;
    EXPECT_TRUE(theirs > own || own == kLowest) << theirs << " and " << own;
    EXPECT_EQ(::getpriority(PRIO_PROCESS, 0), own);
}

TEST(PasswordPools, HaveADecoyThatNothingOpens)
{
    PasswordPool pool(std::make_shared<ArgonHasher>(ArgonCost::least()), 1, 1);
    PasswordPool other(std::make_shared<ArgonHasher>(ArgonCost::least()), 1, 1);
    EXPECT_NE(pool.decoy(), other.decoy());
    EXPECT_EQ(pool.decoy().rfind("$argon2id$", 0), 0u);
    ArgonHasher hasher(ArgonCost::least());
    for (const std::string &guess : {std::string(), std::string(32, '\0'), pool.decoy()})
        EXPECT_FALSE(hasher.verify(pool.decoy(), guess));
}

} // namespace
} // namespace zvx
