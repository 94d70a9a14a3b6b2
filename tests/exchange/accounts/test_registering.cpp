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

constexpr std::int64_t kMinute = AccountLimits::kMinute;

TEST(Registering, MakesAnAccountThatStays)
{
    DeskBench bench;
    const std::string code = bench.codeFor(CodePurpose::Register, phone(1));
    const Outcome made = bench.registerAccount(phone(1), "correct-1", code, phone(77));
    EXPECT_EQ(made.status, AccountStatus::Done);
    EXPECT_TRUE(made.token.empty());
    bench.reopen();
    const Outcome signedIn = bench.signIn(phone(1), "correct-1");
    ASSERT_EQ(signedIn.status, AccountStatus::Done);
    EXPECT_EQ(signedIn.profile.referee, phone(77)); // nobody, and nobody is told
    const ProfileAnswer profile = bench.profile(signedIn.profile.id);
    EXPECT_EQ(profile.status, AccountStatus::Done);
    EXPECT_EQ(profile.profile.number, "LC00000001");
    EXPECT_EQ(profile.profile.phone, phone(1));
    EXPECT_EQ(profile.profile.name, "139****0001");
    EXPECT_EQ(profile.profile.referee, phone(77));
    EXPECT_EQ(profile.profile.created, test::kMorning);
    EXPECT_EQ(bench.profile(AccountId(2)).status, AccountStatus::AccountUnknown);
    EXPECT_EQ(bench.makeAccount(phone(2)), AccountId(2));
}

TEST(Registering, RefusesWhatIsMalformed)
{
    DeskBench bench;
    const std::string code = bench.codeFor(CodePurpose::Register, phone(1));
    struct Case {
        const char *referee;
        std::string phone;
        const char *password;
        std::string code;
        AccountStatus wanted;
    };
    for (const Case &one :
         {Case{"1390000000", phone(1), "correct-1", code, AccountStatus::BadReferee},
          Case{"", "1390000000", "correct-1", code, AccountStatus::BadPhone},
          Case{"", phone(1), "five5", code, AccountStatus::BadPassword},
          Case{"", phone(1), "with blank", code, AccountStatus::BadPassword},
          Case{"", phone(1), "correct-1", code + "0", AccountStatus::BadCode},
          Case{"", phone(1), "correct-1", "12a4", AccountStatus::BadCode},
          Case{"", phone(1), "correct-1", "", AccountStatus::BadCode}})
        EXPECT_EQ(bench.registerAccount(one.phone, one.password, one.code, one.referee).status,
                  one.wanted)
            << one.referee << one.password;
    EXPECT_EQ(bench.reset(phone(1), "five5", code).status, AccountStatus::BadPassword);
    EXPECT_EQ(bench.reset(phone(1), "correct-1", "123456").status, AccountStatus::BadCode);
    // None of them was a guess.
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", code).status, AccountStatus::Done);
}

TEST(Registering, TwiceWithOneCodeMakesOneAccount)
{
    DeskBench bench;
    const std::string code = bench.codeFor(CodePurpose::Register, phone(1));
    test::Gate gate;
    bench.hasher->meanwhile = [&] { gate.pass(); };
    // Both codes are right when they are looked at.
    Pending first = bench.registerLater(phone(1), "correct-1", code);
    Pending second = bench.registerLater(phone(1), "correct-2", code, {}, kElsewhere);
    bench.settle();
    gate.open();
    const AccountStatus one = await(first).status;
    const AccountStatus other = await(second).status;
    // The pool has two threads, so either may win.
    const bool firstWon = one == AccountStatus::Done;
    EXPECT_EQ(firstWon ? other : one, AccountStatus::AlreadyRegistered);
    EXPECT_EQ(firstWon ? one : other, AccountStatus::Done);
    EXPECT_EQ(bench.signIn(phone(1), firstWon ? "correct-1" : "correct-2").status,
              AccountStatus::Done);
    EXPECT_EQ(bench.profile(AccountId(2)).status, AccountStatus::AccountUnknown);
}

TEST(Registering, AFullPoolKeepsTheCodeAndTheKeyGood)
{
    const auto hasher = std::make_shared<test::FakeHasher>();
    DeskBench bench([&](AccountDeskOptions &options) {
        options.passwords = std::make_shared<PasswordPool>(hasher, 1, 1);
    });
    const std::string code = bench.codeFor(CodePurpose::Register, phone(1));
    test::Gate gate;
    hasher->meanwhile = [&] { gate.pass(); };
    Pending running = bench.signInLater(phone(8), "incorrect-1");
    ASSERT_TRUE(gate.awaitVisitor());
    Pending waiting = bench.signInLater(phone(9), "incorrect-1");
    const ActionKey key = bench.newKey();
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", code, {}, kHere, key).status,
              AccountStatus::Busy);
    gate.open();
    await(running);
    await(waiting);
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", code, {}, kHere, key).status,
              AccountStatus::Done);
}

TEST(Reset, SetsThePasswordAndEndsAllSessions)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    bench.makeAccount(phone(2), "correct-1");
    const Outcome one = bench.signIn(phone(1), "correct-1", 5);
    const Outcome two = bench.signIn(phone(1), "correct-1", 5);
    const Outcome other = bench.signIn(phone(2), "correct-1", 5);
    bench.pass(kMinute);
    const std::size_t before = bench.ended().size();
    const std::string code = bench.codeFor(CodePurpose::Reset, phone(1));
    EXPECT_EQ(bench.reset(phone(1), "correct-2", code).status, AccountStatus::Done);
    EXPECT_EQ(bench.kind(one.token), SessionState::Ended);
    EXPECT_EQ(bench.kind(two.token), SessionState::Ended);
    EXPECT_EQ(bench.kind(other.token), SessionState::Live);
    const std::vector<std::int64_t> ended = bench.ended();
    EXPECT_EQ(
        std::vector<std::int64_t>(ended.begin() + static_cast<std::ptrdiff_t>(before), ended.end()),
        (std::vector<std::int64_t>{one.session, two.session}));
    bench.reopen();
    EXPECT_EQ(bench.kind(one.token), SessionState::Ended);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::WrongPassword);
    EXPECT_EQ(bench.signIn(phone(1), "correct-2").status, AccountStatus::Done);
}

TEST(Reset, LetsTheOwnerInThoughOthersUsedUpTheAttempts)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    for (int i = 0; i < 10; ++i)
        bench.signIn(phone(1), "incorrect-1");
    for (int i = 0; i < 60; ++i)
        bench.signIn(phone(1), "incorrect-1", 1, "203.0.113." + std::to_string(i));
    ASSERT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::TooOften);
    const std::string code = bench.codeFor(CodePurpose::Reset, phone(1));
    ASSERT_EQ(bench.reset(phone(1), "correct-2", code).status, AccountStatus::Done);
    EXPECT_EQ(bench.signIn(phone(1), "correct-2").status, AccountStatus::Done);
}

TEST(Reset, TwiceWithOneCodeSetsOnePassword)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    bench.pass(kMinute);
    const std::string code = bench.codeFor(CodePurpose::Reset, phone(1));
    test::Gate gate;
    bench.hasher->meanwhile = [&] { gate.pass(); };
    Pending first = bench.resetLater(phone(1), "correct-2", code);
    Pending second = bench.resetLater(phone(1), "correct-3", code);
    bench.settle();
    gate.open();
    const AccountStatus one = await(first).status;
    const AccountStatus other = await(second).status;
    const bool firstWon = one == AccountStatus::Done;
    EXPECT_EQ(firstWon ? other : one, AccountStatus::CodeUsed);
    EXPECT_EQ(bench.signIn(phone(1), firstWon ? "correct-2" : "correct-3").status,
              AccountStatus::Done);
    EXPECT_EQ(bench.signIn(phone(1), firstWon ? "correct-3" : "correct-2").status,
              AccountStatus::WrongPassword);
}

TEST(Demo, AFileThatIsMadeAsADemoHasItsAccountForEver)
{
    bool demo = true;
    DeskBench bench([&](AccountDeskOptions &options) { options.demo = demo; });
    EXPECT_TRUE(bench.desk().isDemo());
    EXPECT_EQ(bench.desk().demoAccount(), AccountId(1));
    const Outcome answer = bench.signIn("13800000000", "demo888888");
    ASSERT_EQ(answer.status, AccountStatus::Done);
    EXPECT_EQ(answer.profile.name, "演示账户");
    EXPECT_EQ(answer.profile.id, AccountId(1));
    EXPECT_EQ(bench.makeAccount(phone(2)), AccountId(2));
    demo = false;
    bench.reopen();
    EXPECT_TRUE(bench.desk().isDemo());
    EXPECT_EQ(bench.signIn("13800000000", "demo888888").status, AccountStatus::Done);
    demo = true;
    bench.reopen();
    EXPECT_EQ(bench.profile(AccountId(3)).status, AccountStatus::AccountUnknown);
}

TEST(Demo, AFileThatIsNoneNeverBecomesOne)
{
    bool demo = false;
    DeskBench bench([&](AccountDeskOptions &options) { options.demo = demo; });
    EXPECT_FALSE(bench.desk().isDemo());
    EXPECT_EQ(bench.desk().demoAccount(), std::nullopt);
    demo = true;
    bench.reopen();
    EXPECT_FALSE(bench.desk().isDemo());
    EXPECT_EQ(bench.signIn("13800000000", "demo888888").status, AccountStatus::WrongPassword);
    EXPECT_EQ(bench.profile(AccountId(1)).status, AccountStatus::AccountUnknown);
}

} // namespace
} // namespace zvx
