#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/password_pool.h"
#include "exchange/store/powercutdisk.h"
#include "exchange/store/store.h"

#include <thread>

namespace zvx {
namespace {

using test::await;
using test::DeskBench;
using test::Gate;
using test::Outcome;
using test::Pending;
using test::phone;

/// Keeps the desk's thread standing in a callback until the gate opens.
void hold(DeskBench &bench, Gate &gate)
{
    bench.desk().profile(AccountId(1), [&gate](const ProfileAnswer &) { gate.pass(); });
    ASSERT_TRUE(gate.awaitVisitor());
}

TEST(DeskQueue, IsBoundedAndSaysSoAtOnce)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.queueBound = 5; });
    const AccountId account = bench.makeAccount(phone(1));
    Gate gate;
    hold(bench, gate);
    std::vector<Pending> waiting;
    for (int i = 0; i < 5; ++i)
        waiting.push_back(bench.favouriteLater(account, i + 1));
    EXPECT_EQ(bench.desk().waiting(), 5u);
    EXPECT_EQ(bench.favourite(account, 6).status, AccountStatus::Busy);
    AccountStatus told = AccountStatus::Done;
    bench.desk().profile(account, [&](const ProfileAnswer &answer) { told = answer.status; });
    EXPECT_EQ(told, AccountStatus::Busy);
    EXPECT_EQ(bench.desk().counters().turnedAway, 2u);
    gate.open();
    for (Pending &one : waiting)
        EXPECT_EQ(await(one).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourites(account), (std::vector<std::int64_t>{1, 2, 3, 4, 5}));
}

TEST(DeskQueue, WhatWaitsTogetherIsCommittedTogether)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.batchBound = 50; });
    const AccountId account = bench.makeAccount(phone(1));
    Gate gate;
    hold(bench, gate);
    const std::uint64_t before = bench.desk().counters().commits;
    std::vector<Pending> waiting;
    for (int i = 0; i < 120; ++i)
        waiting.push_back(bench.favouriteLater(account, i + 1));
    gate.open();
    for (Pending &one : waiting)
        await(one);
    EXPECT_EQ(bench.desk().counters().commits - before, 3u);
}

TEST(DeskQueue, StoppingAnswersWhatWaitsAndTakesNoMore)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1), "correct-1");
    Gate passwords;
    bench.hasher->meanwhile = [&] { passwords.pass(); };
    Pending half = bench.signInLater(phone(1), "correct-1");
    ASSERT_TRUE(passwords.awaitVisitor());
    Gate gate;
    hold(bench, gate);
    Pending favourite = bench.favouriteLater(account, 5);
    std::thread stopper([&] { bench.desk().stop(); });
    gate.open();
    EXPECT_EQ(await(favourite).status, AccountStatus::Done);
    passwords.open();
    stopper.join();
    EXPECT_EQ(await(half).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourite(account, 6).status, AccountStatus::Failed);
    AccountStatus told = AccountStatus::Done;
    bench.desk().profile(account, [&](const ProfileAnswer &answer) { told = answer.status; });
    EXPECT_EQ(told, AccountStatus::Failed);
    EXPECT_FALSE(bench.desk().failed());
    EXPECT_TRUE(bench.fatals().empty());
    bench.reopen();
    EXPECT_EQ(bench.favourites(account), (std::vector<std::int64_t>{5}));
}

TEST(DeskQueue, AStoppedPoolLeavesNobodyWaiting)
{
    const auto hasher = std::make_shared<test::FakeHasher>();
    const auto pool = std::make_shared<PasswordPool>(hasher, 1, 8);
    DeskBench bench([&](AccountDeskOptions &options) { options.passwords = pool; });
    bench.makeAccount(phone(1), "correct-1");
    Gate gate;
    hasher->meanwhile = [&] { gate.pass(); };
    Pending running = bench.signInLater(phone(1), "correct-1");
    ASSERT_TRUE(gate.awaitVisitor());
    Pending waiting = bench.signInLater(phone(1), "correct-1");
    bench.settle();
    std::thread stopper([&] { pool->stop(); });
    EXPECT_EQ(await(waiting).status, AccountStatus::Busy);
    gate.open();
    stopper.join();
    EXPECT_EQ(await(running).status, AccountStatus::Done);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Busy);
}

TEST(DeskQueue, CallbacksMayBeEmpty)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1), "correct-1");
    bench.desk().changeFavourite({account, "/lc/youbika/", CollectionId(5), true, {1, 1}}, {});
    bench.desk().signIn({phone(1), Secret("correct-1"), 1, {1, 2}, test::kHere}, {});
    bench.desk().signIn({"no phone", Secret("correct-1"), 1, {1, 3}, test::kHere}, {});
    bench.desk().profile(account, {});
    bench.desk().favourites(account, "/lc/youbika/", 1, 10, {});
    EXPECT_EQ(bench.favourites(account), (std::vector<std::int64_t>{5}));
}

TEST(DeskQueue, AFailedCommitEndsTheDeskAndIsNotTriedAgain)
{
    test::PowerCutDisk disk(7);
    DeskBench bench([&](AccountDeskOptions &options) {
        options.vfs = disk.name();
        options.folder.clear();
    });
    const AccountId account = bench.makeAccount(phone(1), "correct-1");
    bench.clock->advance(AccountLimits::kMinute);
    bench.settle();
    Gate passwords;
    bench.hasher->meanwhile = [&] { passwords.pass(); };
    const ActionKey key = bench.newKey();
    Pending half = bench.signInLater(phone(1), "correct-1", 1, test::kHere, key);
    ASSERT_TRUE(passwords.awaitVisitor());
    Pending repeated = bench.signInLater(phone(1), "correct-1", 1, test::kHere, key);
    Gate gate;
    hold(bench, gate);
    std::vector<Pending> waiting;
    for (int i = 0; i < 3; ++i)
        waiting.push_back(bench.favouriteLater(account, i + 1));
    std::promise<AccountStatus> profile;
    bench.desk().profile(account,
                         [&](const ProfileAnswer &answer) { profile.set_value(answer.status); });
    disk.cutAfter(0);
    gate.open();
    for (Pending &one : waiting)
        EXPECT_EQ(await(one).status, AccountStatus::Failed);
    EXPECT_EQ(await(half).status, AccountStatus::Failed);
    EXPECT_EQ(await(repeated).status, AccountStatus::Failed);
    EXPECT_EQ(profile.get_future().get(), AccountStatus::Failed);
    EXPECT_TRUE(bench.desk().failed());
    // The disk is back, but what it holds is not known before it is read again.
    disk.powerOn();
    EXPECT_EQ(bench.favourite(account, 9).status, AccountStatus::Failed);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Failed);
    passwords.open();
    bench.desk().stop();
    EXPECT_EQ(bench.fatals().size(), 1u);
    EXPECT_EQ(bench.fatals().front().find("correct-1"), std::string::npos);
    bench.reopen();
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Done);
    EXPECT_EQ(bench.favourite(account, 9).status, AccountStatus::Done);
}

} // namespace
} // namespace zvx
