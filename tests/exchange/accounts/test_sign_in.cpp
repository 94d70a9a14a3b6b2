#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/password_pool.h"

namespace zvx {
namespace {

using test::await;
using test::DeskBench;
using test::kElsewhere;
using test::kHere;
using test::Outcome;
using test::Pending;
using test::phone;

TEST(SignIn, GivesATokenAndTheAccount)
{
    DeskBench bench;
    const AccountId first = bench.makeAccount(phone(1), "correct-1");
    EXPECT_EQ(first, AccountId(1));
    const Outcome answer = bench.signIn(phone(1), "correct-1", 77);
    ASSERT_EQ(answer.status, AccountStatus::Done);
    EXPECT_EQ(answer.token.size(), 43u);
    EXPECT_EQ(answer.token.find_first_not_of(
                  "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_"),
              std::string::npos);
    EXPECT_EQ(answer.profile.id, AccountId(1));
    EXPECT_EQ(answer.profile.number, "LC00000001");
    EXPECT_EQ(answer.profile.phone, phone(1));
    EXPECT_EQ(answer.profile.name, "139****0001");
    EXPECT_EQ(answer.profile.created, test::kMorning);
    const SessionState session = bench.desk().session(answer.token);
    EXPECT_EQ(session.kind, SessionState::Live);
    EXPECT_EQ(session.account, AccountId(1));
    EXPECT_EQ(session.client, 77u);
    EXPECT_EQ(session.session, answer.session);
    EXPECT_EQ(bench.makeAccount(phone(2)), AccountId(2));
}

TEST(SignIn, AnUnknownPhoneIsToldAndCostsWhatAWrongPasswordDoes)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    struct Case {
        const char *name;
        std::string phone;
    };
    for (const Case &one : {Case{"wrong password", phone(1)}, Case{"unknown phone", phone(99)}}) {
        SCOPED_TRACE(one.name);
        const int verifications = bench.hasher->verifications;
        const int hashes = bench.hasher->hashes;
        const std::uint64_t commits = bench.desk().counters().commits;
        const Outcome answer = bench.signIn(one.phone, "incorrect-1");
        EXPECT_EQ(answer.status, AccountStatus::WrongPassword);
        EXPECT_EQ(answer.wait, 0);
        EXPECT_TRUE(answer.token.empty());
        EXPECT_EQ(answer.profile.id, AccountId());
        EXPECT_EQ(bench.hasher->verifications, verifications + 1);
        EXPECT_EQ(bench.hasher->hashes, hashes);
        EXPECT_EQ(bench.desk().counters().commits, commits);
    }
    // The password that nobody's account was made of does not open it either.
    EXPECT_EQ(bench.signIn(phone(99), "correct-1").status, AccountStatus::WrongPassword);
}

TEST(SignIn, RequestsThatAreNoneAreRefusedBeforeAnythingHappens)
{
    DeskBench bench;
    const auto ask = [&](const std::string &phone, const std::string &password, ActionKey key,
                         const std::string &peer) {
        AccountStatus status = AccountStatus::Done;
        bench.desk().signIn({phone, Secret(password), 1, key, peer},
                            [&](const AccountAnswer &answer) { status = answer.status; });
        return status; // told before the call returns
    };
    const ActionKey key{1, 1};
    EXPECT_EQ(ask(phone(1), "correct-1", {}, kHere), AccountStatus::BadKey);
    EXPECT_EQ(ask("12345678901", "correct-1", key, kHere), AccountStatus::BadPhone);
    EXPECT_EQ(ask(phone(1), "short", key, kHere), AccountStatus::BadPassword);
    EXPECT_EQ(ask(phone(1), "correct-1", key, ""), AccountStatus::BadPeer);
    EXPECT_EQ(bench.hasher->verifications, 0);
    // The key is not used up.
    EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, kHere, key).status,
              AccountStatus::WrongPassword);
}

TEST(SignIn, TenAttemptsFromOneAddressAndThenOneInThirtySeconds)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    for (int i = 0; i < 10; ++i)
        ASSERT_EQ(bench.signIn(phone(1), "incorrect-1").status, AccountStatus::WrongPassword) << i;
    const int verifications = bench.hasher->verifications;
    // Refused without a look at the password, the right one too.
    Outcome refused = bench.signIn(phone(1), "correct-1");
    EXPECT_EQ(refused.status, AccountStatus::TooOften);
    EXPECT_EQ(refused.wait, 30);
    EXPECT_EQ(bench.hasher->verifications, verifications);
    EXPECT_EQ(bench.desk().counters().refusedByLimit, 1u);
    bench.clock->advance(29'001);
    refused = bench.signIn(phone(1), "correct-1");
    EXPECT_EQ(refused.status, AccountStatus::TooOften);
    EXPECT_EQ(refused.wait, 1);
    bench.clock->advance(999);
    EXPECT_EQ(bench.signIn(phone(1), "incorrect-1").status, AccountStatus::WrongPassword);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::TooOften);
}

TEST(SignIn, AnAttackerAtOneAddressDoesNotLockOutTheUserAtAnother)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    for (int i = 0; i < 200; ++i) {
        bench.signIn(phone(1), "incorrect-1", 1, kElsewhere);
        bench.clock->advance(1'000);
    }
    EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, kElsewhere).status, AccountStatus::TooOften);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, kHere).status, AccountStatus::Done);
    // Nor does it stand in the way of other phones at its own address.
    EXPECT_EQ(bench.signIn(phone(2), "incorrect-1", 1, kElsewhere).status,
              AccountStatus::WrongPassword);
}

TEST(SignIn, ManyAddressesTogetherGetSixtyAttemptsAtAPhone)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    int checked = 0;
    for (int i = 0; i < 100; ++i) {
        const Outcome answer
            = bench.signIn(phone(1), "incorrect-1", 1, "203.0.113." + std::to_string(i));
        checked += answer.status == AccountStatus::WrongPassword ? 1 : 0;
    }
    EXPECT_EQ(checked, 60);
    const Outcome refused = bench.signIn(phone(1), "correct-1");
    EXPECT_EQ(refused.status, AccountStatus::TooOften);
    EXPECT_EQ(refused.wait, 10);
    bench.clock->advance(10'000);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Done);
}

TEST(SignIn, TheAddressesOfOneNetworkOfVersionSixAreOne)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    for (int i = 0; i < 10; ++i)
        bench.signIn(phone(1), "incorrect-1", 1, "2001:db8:1:2::" + std::to_string(i + 1));
    EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, "2001:db8:1:2:ffff::1").status,
              AccountStatus::TooOften);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, "2001:db8:1:3::1").status,
              AccountStatus::Done);
}

TEST(SignIn, ASuccessFillsTheBucketOfItsAddress)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < 9; ++i)
            ASSERT_EQ(bench.signIn(phone(1), "incorrect-1").status, AccountStatus::WrongPassword);
        ASSERT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Done) << round;
    }
}

TEST(SignIn, AttemptsAtOnceAreCountedBeforeTheyAreChecked)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.hashesOfPeer = 64; });
    bench.makeAccount(phone(1), "correct-1");
    test::Gate gate;
    bench.hasher->meanwhile = [&] { gate.pass(); };
    std::vector<Pending> all;
    for (int i = 0; i < 30; ++i)
        all.push_back(bench.signInLater(phone(1), "incorrect-1"));
    gate.open();
    int checked = 0;
    for (Pending &one : all)
        checked += await(one).status == AccountStatus::WrongPassword ? 1 : 0;
    EXPECT_EQ(checked, 10);
}

TEST(SignIn, AFullPoolSaysBusyAtOnceAndCountsNothing)
{
    const auto hasher = std::make_shared<test::FakeHasher>();
    DeskBench small([&](AccountDeskOptions &options) {
        options.passwords = std::make_shared<PasswordPool>(hasher, 1, 2);
        options.limits.signInsOfPeer = 4;
    });
    small.makeAccount(phone(1), "correct-1");
    test::Gate gate;
    hasher->meanwhile = [&] { gate.pass(); };
    Pending running = small.signInLater(phone(1), "incorrect-1");
    ASSERT_TRUE(gate.awaitVisitor());
    Pending second = small.signInLater(phone(1), "incorrect-1");
    Pending third = small.signInLater(phone(1), "incorrect-1");
    const ActionKey key = small.newKey();
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(small.signIn(phone(1), "correct-1", 1, kHere, key).status, AccountStatus::Busy);
    EXPECT_EQ(small.desk().counters().turnedAway, 5u);
    gate.open();
    for (Pending *one : {&running, &second, &third})
        EXPECT_EQ(await(*one).status, AccountStatus::WrongPassword);
    // The fourth attempt is still there, and the key was not used up.
    EXPECT_EQ(small.signIn(phone(1), "correct-1", 1, kHere, key).status, AccountStatus::Done);
}

TEST(SignIn, OneAddressDoesNotFillThePoolForAllOthers)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.hashesOfPeer = 3; });
    bench.makeAccount(phone(1), "correct-1");
    test::Gate gate;
    bench.hasher->meanwhile = [&] { gate.pass(); };
    std::vector<Pending> flood;
    for (int i = 0; i < 10; ++i)
        flood.push_back(bench.signInLater(phone(100 + i), "incorrect-1", 1, kElsewhere));
    Pending honest = bench.signInLater(phone(1), "correct-1");
    gate.open();
    int busy = 0;
    for (Pending &one : flood)
        busy += await(one).status == AccountStatus::Busy ? 1 : 0;
    EXPECT_EQ(busy, 7);
    EXPECT_EQ(await(honest).status, AccountStatus::Done);
    // What came back makes room again.
    EXPECT_EQ(bench.signIn(phone(120), "incorrect-1", 1, kElsewhere).status,
              AccountStatus::WrongPassword);
}

TEST(SignIn, AMachineWithoutMemoryForAHashIsBusy)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    bench.hasher->outOfMemory = true;
    for (int i = 0; i < 20; ++i)
        ASSERT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Busy);
    bench.hasher->outOfMemory = false;
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Done);
}

TEST(SignIn, APasswordThatIsReplacedWhileItIsComparedOpensNothing)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    bench.pass(60'000);
    const std::string code = bench.codeFor(CodePurpose::Reset, phone(1));
    test::Gate gate;
    std::atomic<bool> hold{true};
    bench.hasher->meanwhile = [&] {
        if (hold.exchange(false))
            gate.pass();
    };
    Pending late = bench.signInLater(phone(1), "correct-1");
    ASSERT_TRUE(gate.awaitVisitor());
    EXPECT_EQ(bench.reset(phone(1), "correct-2", code).status, AccountStatus::Done);
    gate.open();
    EXPECT_EQ(await(late).status, AccountStatus::WrongPassword);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::WrongPassword);
    EXPECT_EQ(bench.signIn(phone(1), "correct-2").status, AccountStatus::Done);
}

TEST(SignIn, MoreNamesThanCanBeCountedAreToldBusy)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.throttleBound = 5; });
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(bench.signIn(phone(i), "incorrect-1").status, AccountStatus::WrongPassword);
    EXPECT_EQ(bench.signIn(phone(6), "incorrect-1").status, AccountStatus::Busy);
    EXPECT_EQ(bench.signIn(phone(4), "incorrect-1").status, AccountStatus::WrongPassword);
    bench.clock->advance(30'000); // the buckets of the first four are full and forgotten
    EXPECT_EQ(bench.signIn(phone(6), "incorrect-1").status, AccountStatus::WrongPassword);
}

} // namespace
} // namespace zvx
