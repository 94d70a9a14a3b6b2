#include "exchange/accounts/desk_bench.h"

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
constexpr std::int64_t kDay = AccountLimits::kDay;

TEST(Keys, ARepeatedSignInGivesTheSameToken)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    const ActionKey key = bench.newKey();
    const Outcome first = bench.signIn(phone(1), "correct-1", 3, kHere, key);
    const int verifications = bench.hasher->verifications;
    // The password is no part of the content, nor is the way that the request took.
    const Outcome again = bench.signIn(phone(1), "incorrect-1", 3, kElsewhere, key);
    EXPECT_EQ(again.status, AccountStatus::Done);
    EXPECT_EQ(again.token, first.token);
    EXPECT_EQ(again.session, first.session);
    EXPECT_EQ(again.profile.id, first.profile.id);
    EXPECT_EQ(bench.hasher->verifications, verifications);
    const Outcome resolved = bench.resolve(AccountAction::SignIn, key);
    EXPECT_EQ(resolved.token, first.token);
    for (const Outcome &other : {bench.signIn(phone(2), "correct-1", 3, kHere, key),
                                 bench.signIn(phone(1), "correct-1", 4, kHere, key),
                                 bench.reset(phone(1), "correct-1", "1234", kHere, key),
                                 bench.resolve(AccountAction::Reset, key)}) {
        EXPECT_EQ(other.status, AccountStatus::KeyDiffers);
        EXPECT_TRUE(other.token.empty());
    }
}

TEST(Keys, ASignInsAnswerIsKnownForTenMinutesAndNotOverARestart)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    const ActionKey key = bench.newKey();
    bench.signIn(phone(1), "correct-1", 1, kHere, key);
    bench.pass(10 * kMinute - 1);
    EXPECT_EQ(bench.resolve(AccountAction::SignIn, key).status, AccountStatus::Done);
    bench.pass(1);
    EXPECT_EQ(bench.resolve(AccountAction::SignIn, key).status, AccountStatus::KeyUnknown);

    const ActionKey other = bench.newKey();
    bench.signIn(phone(1), "correct-1", 1, kHere, other);
    bench.reopen();
    EXPECT_EQ(bench.resolve(AccountAction::SignIn, other).status, AccountStatus::KeyUnknown);
}

TEST(Keys, ARefusalIsTheAnswerWhateverIsTriedUnderTheKey)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    const ActionKey key = bench.newKey();
    EXPECT_EQ(bench.signIn(phone(1), "incorrect-1", 1, kHere, key).status,
              AccountStatus::WrongPassword);
    const int verifications = bench.hasher->verifications;
    EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, kHere, key).status,
              AccountStatus::WrongPassword);
    EXPECT_EQ(bench.hasher->verifications, verifications);
    EXPECT_EQ(bench.resolve(AccountAction::SignIn, key).status, AccountStatus::WrongPassword);
}

TEST(Keys, AnActionWithTracesIsDoneOnceEvenOverARestart)
{
    DeskBench bench;
    const ActionKey sent = bench.newKey();
    const ActionKey guessed = bench.newKey();
    const ActionKey made = bench.newKey();
    ASSERT_EQ(bench.sendCode(CodePurpose::Register, phone(1), {}, kHere, sent).status,
              AccountStatus::Done);
    const std::string code = test::codeIn(bench.texts->texts(1).back().text);
    const std::string wrong = DeskBench::wrong(code);
    ASSERT_EQ(bench.registerAccount(phone(1), "correct-1", wrong, {}, kHere, guessed).status,
              AccountStatus::CodeWrong);
    ASSERT_EQ(bench.registerAccount(phone(1), "correct-1", code, {}, kHere, made).status,
              AccountStatus::Done);
    const AccountId account = bench.signIn(phone(1), "correct-1").profile.id;
    const ActionKey liked = bench.newKey();
    ASSERT_EQ(bench.favourite(account, 5, true, "/lc/youbika/", liked).status, AccountStatus::Done);
    ASSERT_EQ(bench.favourite(account, 6).status, AccountStatus::Done);

    for (int round = 0; round < 2; ++round) {
        const int hashes = bench.hasher->hashes;
        EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(1), {}, kHere, sent).status,
                  AccountStatus::Done);
        EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", code, {}, kHere, guessed).status,
                  AccountStatus::CodeWrong);
        EXPECT_EQ(bench.registerAccount(phone(1), "another-1", "0000", {}, kHere, made).status,
                  AccountStatus::Done);
        EXPECT_EQ(bench.favourite(account, 5, true, "/lc/youbika/", liked).status,
                  AccountStatus::Done);
        EXPECT_EQ(bench.favourites(account), (std::vector<std::int64_t>{5, 6}));
        EXPECT_EQ(bench.hasher->hashes, hashes);
        EXPECT_EQ(bench.resolve(AccountAction::SendRegisterCode, sent).status, AccountStatus::Done);
        EXPECT_EQ(bench.resolve(AccountAction::Register, guessed).status, AccountStatus::CodeWrong);
        EXPECT_EQ(bench.resolve(AccountAction::Register, made).status, AccountStatus::Done);
        EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, liked, account).status,
                  AccountStatus::Done);
        // Other content.
        EXPECT_EQ(bench.registerAccount(phone(2), "correct-1", code, {}, kHere, made).status,
                  AccountStatus::KeyDiffers);
        EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", code, phone(9), kHere, made).status,
                  AccountStatus::KeyDiffers);
        EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(1), {}, kHere, sent).status,
                  AccountStatus::KeyDiffers);
        EXPECT_EQ(bench.favourite(account, 7, true, "/lc/youbika/", liked).status,
                  AccountStatus::KeyDiffers);
        EXPECT_EQ(bench.favourite(account, 5, true, "/lc/qianbi/", liked).status,
                  AccountStatus::KeyDiffers);
        EXPECT_EQ(bench.favourite(account, 5, false, "/lc/youbika/", liked).status,
                  AccountStatus::KeyDiffers);
        EXPECT_EQ(bench.resolve(AccountAction::Reset, made).status, AccountStatus::KeyDiffers);
        bench.desk().stop(); // so that a second text would have been sent
        EXPECT_EQ(bench.texts->texts().size(), 1u);
        bench.reopen();
    }
}

TEST(Keys, AreKnownForTwoDays)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    const ActionKey key = bench.newKey();
    bench.favourite(account, 5, true, "/lc/youbika/", key);
    bench.pass(2 * kDay);
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, key, account).status, AccountStatus::Done);
    bench.pass(kMinute);
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, key, account).status,
              AccountStatus::KeyUnknown);
}

TEST(Keys, NoMoreThanSoManyAreStored)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.keyBound = 4; });
    const AccountId account = bench.makeAccount(phone(1));
    std::vector<ActionKey> keys;
    for (int i = 0; i < 6; ++i) {
        keys.push_back(bench.newKey());
        bench.favourite(account, i + 1, true, "/lc/youbika/", keys.back());
    }
    bench.pass(kMinute);
    for (int i = 2; i < 6; ++i)
        EXPECT_EQ(
            bench.resolve(AccountAction::AddFavourite, keys[static_cast<std::size_t>(i)], account)
                .status,
            AccountStatus::Done)
            << i;
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, keys[1], account).status,
              AccountStatus::KeyUnknown);
}

TEST(Keys, AKeyThatIsAskedForBeforeItsActionIsBurnt)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1), "correct-1");
    const std::string code = bench.codeFor(CodePurpose::Register, phone(2));
    const ActionKey liked = bench.newKey();
    const ActionKey made = bench.newKey();
    const ActionKey entered = bench.newKey();
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, liked, account).status,
              AccountStatus::KeyUnknown);
    EXPECT_EQ(bench.resolve(AccountAction::Register, made).status, AccountStatus::KeyUnknown);
    EXPECT_EQ(bench.resolve(AccountAction::SignIn, entered).status, AccountStatus::KeyUnknown);
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(bench.favourite(account, 5, true, "/lc/youbika/", liked).status,
                  AccountStatus::KeyUnknown);
        EXPECT_EQ(bench.registerAccount(phone(2), "correct-1", code, {}, kHere, made).status,
                  AccountStatus::KeyUnknown);
        EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, kHere, entered).status,
                  AccountStatus::KeyUnknown);
        EXPECT_EQ(bench.resolve(AccountAction::Register, made).status, AccountStatus::KeyUnknown);
        EXPECT_EQ(bench.favourite(account, 5, false, "/lc/youbika/", liked).status,
                  AccountStatus::KeyDiffers);
        EXPECT_TRUE(bench.favourites(account).empty());
        bench.reopen();
    }
    // The code is still good: nothing was done under the burnt key.
    EXPECT_EQ(bench.registerAccount(phone(2), "correct-1", code).status, AccountStatus::Done);
}

TEST(Keys, StrangersBurnOnlySoMany)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.burntAtOnce = 3; });
    const AccountId account = bench.makeAccount(phone(1));
    for (int i = 0; i < 3; ++i)
        ASSERT_EQ(bench.resolve(AccountAction::SignIn, bench.newKey()).status,
                  AccountStatus::KeyUnknown);
    const ActionKey key = bench.newKey();
    const std::uint64_t commits = bench.desk().counters().commits;
    EXPECT_EQ(bench.resolve(AccountAction::SignIn, key).status, AccountStatus::Busy);
    EXPECT_EQ(bench.desk().counters().commits, commits);
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, bench.newKey(), account).status,
              AccountStatus::KeyUnknown);
    bench.clock->advance(10);
    EXPECT_EQ(bench.resolve(AccountAction::SignIn, key).status, AccountStatus::KeyUnknown);
}

TEST(Keys, OfAnAccountAreItsOwn)
{
    DeskBench bench;
    const AccountId one = bench.makeAccount(phone(1));
    const AccountId two = bench.makeAccount(phone(2));
    const ActionKey key = bench.newKey();
    EXPECT_EQ(bench.favourite(one, 5, true, "/lc/youbika/", key).status, AccountStatus::Done);
    // Nobody learns or burns the keys of others.
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, key, two).status,
              AccountStatus::KeyUnknown);
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, key).status, AccountStatus::KeyUnknown);
    EXPECT_EQ(bench.resolve(AccountAction::AddFavourite, key, one).status, AccountStatus::Done);
}

TEST(Keys, RepetitionsOfAnActionUnderWayWaitForItsAnswer)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.waitersOfKey = 3; });
    bench.makeAccount(phone(1), "correct-1");
    test::Gate gate;
    bench.hasher->meanwhile = [&] { gate.pass(); };
    const ActionKey key = bench.newKey();
    const int verifications = bench.hasher->verifications;
    Pending first = bench.signInLater(phone(1), "correct-1", 1, kHere, key);
    ASSERT_TRUE(gate.awaitVisitor());
    Pending second = bench.signInLater(phone(1), "incorrect-1", 1, kHere, key);
    Pending third = bench.signInLater(phone(1), "correct-1", 1, kElsewhere, key);
    Pending asked = bench.resolveLater(AccountAction::SignIn, key);
    EXPECT_EQ(bench.signIn(phone(2), "correct-1", 1, kHere, key).status, AccountStatus::KeyDiffers);
    EXPECT_EQ(bench.resolve(AccountAction::Register, key).status, AccountStatus::KeyDiffers);
    EXPECT_EQ(bench.signIn(phone(1), "correct-1", 1, kHere, key).status, AccountStatus::Busy);
    gate.open();
    const Outcome answer = await(first);
    EXPECT_EQ(answer.status, AccountStatus::Done);
    for (Pending *one : {&second, &third, &asked})
        EXPECT_EQ(await(*one).token, answer.token);
    EXPECT_EQ(bench.hasher->verifications, verifications + 1);
}

TEST(Keys, RepetitionsInOneBatchAreDoneOnce)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    const ActionKey key = bench.newKey();
    std::vector<Pending> all;
    for (int i = 0; i < 20; ++i)
        all.push_back(bench.favouriteLater(account, 5, true, "/lc/youbika/", key));
    for (Pending &one : all)
        EXPECT_EQ(await(one).status, AccountStatus::Done);
    EXPECT_EQ(bench.favourites(account), (std::vector<std::int64_t>{5}));
}

} // namespace
} // namespace zvx
