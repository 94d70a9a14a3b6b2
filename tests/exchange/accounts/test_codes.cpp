#include "exchange/accounts/desk_bench.h"

#include <set>

namespace zvx {
namespace {

using test::await;
using test::codeIn;
using test::DeskBench;
using test::kElsewhere;
using test::kHere;
using test::Outcome;
using test::Pending;
using test::phone;

constexpr std::int64_t kSecond = 1'000;
constexpr std::int64_t kMinute = AccountLimits::kMinute;
constexpr std::int64_t kDay = AccountLimits::kDay;

TEST(Codes, HaveFourDigitsOrSixAndSayWhatTheyAreFor)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    struct Case {
        CodePurpose purpose;
        std::string phone;
        AccountId account;
        std::size_t digits;
        std::string word;
    };
    for (const Case &one : {Case{CodePurpose::Register, phone(2), {}, 4, "注册"},
                            Case{CodePurpose::Reset, phone(1), {}, 4, "找回密码"},
                            Case{CodePurpose::Money, phone(1), account, 6, "资金"}}) {
        SCOPED_TRACE(one.word);
        const std::size_t before = bench.texts->texts().size();
        const std::string code = bench.codeFor(one.purpose, one.phone, one.account);
        EXPECT_EQ(code.size(), one.digits);
        const std::string text = bench.texts->texts(before + 1).back().text;
        EXPECT_EQ(text.rfind("【岚川】验证码" + code + "，用于", 0), 0u) << text;
        EXPECT_NE(text.find(one.word), std::string::npos) << text;
        EXPECT_NE(text.find("，5分钟内有效"), std::string::npos) << text;
    }
}

TEST(Codes, AreDrawnFromAllDigits)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.textsOfPeer = 1'000; });
    std::set<std::string> codes;
    std::set<char> digits[4];
    for (int i = 0; i < 120; ++i) {
        const std::string code = bench.codeFor(CodePurpose::Register, phone(i));
        codes.insert(code);
        for (std::size_t k = 0; k < 4; ++k)
            digits[k].insert(code.at(k));
    }
    EXPECT_GT(codes.size(), 110u);
    for (const auto &place : digits)
        EXPECT_EQ(place.size(), 10u); // leading zeros as well
}

TEST(Codes, OneAMinuteForAPhoneAndPurpose)
{
    DeskBench bench;
    const AccountId account = bench.makeAccount(phone(1));
    bench.pass(kMinute);
    ASSERT_EQ(bench.sendCode(CodePurpose::Reset, phone(1)).status, AccountStatus::Done);
    bench.clock->advance(20 * kSecond + 1);
    const Outcome refused = bench.sendCode(CodePurpose::Reset, phone(1), {}, kElsewhere);
    EXPECT_EQ(refused.status, AccountStatus::CodePause);
    EXPECT_EQ(refused.wait, 40);
    EXPECT_EQ(sentence(refused.status, refused.wait), "验证码已发送，请40秒后再重新获取");
    // Other purposes and phones have pauses of their own.
    EXPECT_EQ(bench.sendCode(CodePurpose::Money, phone(1), account).status, AccountStatus::Done);
    EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(2)).status, AccountStatus::Done);
    bench.clock->advance(40 * kSecond - 1);
    EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(1)).status, AccountStatus::Done);
    // Over a restart too.
    bench.reopen();
    EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(1)).status, AccountStatus::CodePause);
}

TEST(Codes, TenADayForAPhoneOverAllPurposes)
{
    DeskBench bench;
    // The exchange's day ends at 16:00 UTC; the bench begins at 01:00.
    for (int i = 0; i < 10; ++i) {
        const CodePurpose purpose = i % 2 == 0 ? CodePurpose::Register : CodePurpose::Reset;
        ASSERT_EQ(bench.sendCode(purpose, phone(1)).status, AccountStatus::Done) << i;
        bench.clock->advance(kMinute);
        if (i == 6)
            bench.reopen();
    }
    EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(1)).status, AccountStatus::CodeLimit);
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(1)).status, AccountStatus::CodeLimit);
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(2)).status, AccountStatus::Done);
    const std::int64_t now = bench.clock->wall().value();
    const std::int64_t midnight = test::kMorning.value() + 15 * 60 * kMinute;
    bench.pass(midnight - now - 1);
    EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(1)).status, AccountStatus::CodeLimit);
    bench.pass(1);
    EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(1)).status, AccountStatus::Done);
}

TEST(Codes, OneAddressCannotHaveTextsSentToTheWholeCountry)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.textsOfPeer = 5; });
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(bench.sendCode(CodePurpose::Register, phone(i)).status, AccountStatus::Done);
    const Outcome refused = bench.sendCode(CodePurpose::Register, phone(5));
    EXPECT_EQ(refused.status, AccountStatus::TooOften);
    EXPECT_EQ(refused.wait, 10);
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(5), {}, kElsewhere).status,
              AccountStatus::Done);
}

TEST(Codes, SendingTellsNothingAboutThePhone)
{
    // The same questions for a phone with an account and one without: same answers, as many rows.
    const auto story = [](CodePurpose purpose, bool known) {
        DeskBench bench([](AccountDeskOptions &options) {
            options.limits.guessesOfPeer = 8;
            options.limits.guessesOfPhone = 8;
        });
        bench.makeAccount(phone(known ? 1 : 2));
        bench.pass(3 * kDay); // what was asked while registering is forgotten
        std::string log;
        const auto note = [&](const Outcome &answer) {
            log += std::string(reason(answer.status)) + " " + std::to_string(answer.wait) + "\n";
        };
        const auto guess = [&](const char *code) {
            note(purpose == CodePurpose::Reset
                     ? bench.reset(phone(1), "correct-2", code)
                     : bench.registerAccount(phone(1), "correct-2", code));
        };
        guess("0000"); // nothing was sent
        const std::uint64_t commits = bench.desk().counters().commits;
        note(bench.sendCode(purpose, phone(1)));
        note(bench.sendCode(purpose, phone(1)));
        // One code in ten thousand is the right one; the seed of the bench's chance does not give
        // it here.
        for (int i = 0; i < 6; ++i)
            guess("1234");
        bench.clock->advance(kMinute);
        note(bench.sendCode(purpose, phone(1)));
        guess("1234");
        bench.clock->advance(5 * kMinute);
        guess("1234");
        bench.clock->advance(kMinute);
        note(bench.sendCode(purpose, phone(1)));
        for (int i = 0; i < 3; ++i)
            guess("1234");
        log += std::to_string(bench.desk().counters().commits - commits) + " commits, "
            + std::to_string(bench.hasher->hashes) + " hashes, "
            + std::to_string(bench.hasher->verifications) + " verifications\n";
        bench.pass(2 * kDay);
        guess("1234");
        return log;
    };
    for (const CodePurpose purpose : {CodePurpose::Register, CodePurpose::Reset}) {
        const std::string known = story(purpose, true);
        EXPECT_EQ(known, story(purpose, false));
        for (const char *word :
             {"no-code", "code-pause", "wrong-code", "code-spent", "code-expired", "guess-limit"})
            EXPECT_NE(known.find(word), std::string::npos) << word << "\n" << known;
    }
}

TEST(Codes, NoTextGoesToAPhoneWithoutAnAccountAndNoCodeToOneThatHasIt)
{
    DeskBench bench;
    bench.makeAccount(phone(1));
    bench.pass(kMinute);
    const std::size_t before = bench.texts->texts().size();
    ASSERT_EQ(bench.sendCode(CodePurpose::Reset, phone(2)).status, AccountStatus::Done);
    ASSERT_EQ(bench.sendCode(CodePurpose::Register, phone(1)).status, AccountStatus::Done);
    const auto texts = bench.texts->texts(before + 1);
    ASSERT_EQ(texts.size(), before + 1); // messages leave in their order, so there is no other
    EXPECT_EQ(texts.back().phone, phone(1));
    EXPECT_EQ(test::codeIn(texts.back().text), "");
    EXPECT_NE(texts.back().text.find("已注册"), std::string::npos);
}

TEST(Codes, AnAnswerDoesNotWaitForTheGateway)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.textBound = 2; });
    test::Gate gate;
    bench.texts->meanwhile = [&] { gate.pass(); };
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(1)).status, AccountStatus::Done);
    ASSERT_TRUE(gate.awaitVisitor()); // its text is being sent, and does not get ahead
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(2)).status, AccountStatus::Done);
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(3)).status, AccountStatus::Done);
    // No room for another text: nothing happens, also where none would have been sent.
    const ActionKey key = bench.newKey();
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(4), {}, kHere, key).status,
              AccountStatus::Busy);
    EXPECT_EQ(bench.sendCode(CodePurpose::Reset, phone(5)).status, AccountStatus::Busy);
    gate.open();
    bench.texts->texts(3);
    // What is told Busy may be asked again with the same key.
    Outcome again;
    do
        again = bench.sendCode(CodePurpose::Register, phone(4), {}, kHere, key);
    while (again.status == AccountStatus::Busy);
    EXPECT_EQ(again.status, AccountStatus::Done);
    bench.desk().stop();
    EXPECT_EQ(bench.texts->texts().size(), 4u);
    EXPECT_EQ(bench.desk().counters().texts, 4u);
}

TEST(Codes, ABrokenGatewayIsTheOperatorsBusiness)
{
    DeskBench bench;
    bench.texts->broken = true;
    EXPECT_EQ(bench.sendCode(CodePurpose::Register, phone(1)).status, AccountStatus::Done);
    bench.desk().stop();
    EXPECT_EQ(bench.desk().counters().textsFailed, 1u);
    EXPECT_EQ(bench.notices(),
              (std::vector<std::string>{"a text message was not sent: the gateway is broken"}));
}

TEST(Codes, WrongExpiredUsedAndMissingAreToldApart)
{
    DeskBench bench;
    bench.makeAccount(phone(1), "correct-1");
    bench.pass(kMinute);
    EXPECT_EQ(bench.reset(phone(1), "correct-2", "1234").status, AccountStatus::CodeMissing);
    const std::string code = bench.codeFor(CodePurpose::Reset, phone(1));
    EXPECT_EQ(bench.reset(phone(1), "correct-2", DeskBench::wrong(code)).status,
              AccountStatus::CodeWrong);
    bench.clock->advance(5 * kMinute - 1);
    EXPECT_EQ(bench.reset(phone(1), "correct-2", code).status, AccountStatus::Done);
    EXPECT_EQ(bench.reset(phone(1), "correct-3", code).status, AccountStatus::CodeUsed);
    EXPECT_EQ(bench.reset(phone(1), "correct-3", DeskBench::wrong(code)).status,
              AccountStatus::CodeWrong);
    bench.clock->advance(1);
    EXPECT_EQ(bench.reset(phone(1), "correct-3", code).status, AccountStatus::CodeExpired);

    const std::string late = bench.codeFor(CodePurpose::Reset, phone(1));
    bench.clock->advance(5 * kMinute);
    EXPECT_EQ(bench.reset(phone(1), "correct-3", late).status, AccountStatus::CodeExpired);
    EXPECT_EQ(bench.signIn(phone(1), "correct-2").status, AccountStatus::Done);
}

TEST(Codes, TheNewestOneCounts)
{
    DeskBench bench;
    const std::string first = bench.codeFor(CodePurpose::Register, phone(1));
    bench.clock->advance(kMinute);
    std::string second = bench.codeFor(CodePurpose::Register, phone(1));
    ASSERT_NE(first, second);
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", first).status, AccountStatus::CodeWrong);
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", second).status, AccountStatus::Done);
}

TEST(Codes, AreGoodForTheirPurposeAndPhoneAlone)
{
    DeskBench bench;
    const AccountId one = bench.makeAccount(phone(1));
    const AccountId two = bench.makeAccount(phone(2));
    bench.pass(5 * kMinute);
    const std::string reset = bench.codeFor(CodePurpose::Reset, phone(1));
    const std::string money = bench.codeFor(CodePurpose::Money, phone(1), one);
    EXPECT_EQ(bench.reset(phone(2), "correct-2", reset).status, AccountStatus::CodeMissing);
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-2", reset).status,
              AccountStatus::CodeExpired); // the one that it registered with
    EXPECT_EQ(bench.checkMoney(two, phone(2), money).status, AccountStatus::CodeMissing);
    EXPECT_EQ(bench.checkMoney(two, phone(1), money).status, AccountStatus::NotYourPhone);
    EXPECT_EQ(bench.sendCode(CodePurpose::Money, phone(1), two).status,
              AccountStatus::NotYourPhone);
    EXPECT_EQ(bench.sendCode(CodePurpose::Money, phone(9), two).status,
              AccountStatus::NotYourPhone);
    EXPECT_EQ(bench.checkMoney(AccountId(99), phone(1), money).status,
              AccountStatus::AccountUnknown);
    EXPECT_EQ(bench.checkMoney(one, phone(1), DeskBench::wrong(money)).status,
              AccountStatus::CodeWrong);
    EXPECT_EQ(bench.checkMoney(one, phone(1), money).status, AccountStatus::Done);
    EXPECT_EQ(bench.checkMoney(one, phone(1), money).status, AccountStatus::CodeUsed);
    EXPECT_EQ(bench.reset(phone(1), "correct-2", reset).status, AccountStatus::Done);
}

TEST(Codes, ForMoneyAreBoundToTheirMarketTheirPairAndTheirAmount)
{
    DeskBench bench([](AccountDeskOptions &options) {
        options.limits.guessesOfPeer = 100;
        options.limits.guessesOfPhone = 100;
        options.limits.guessesOfCode = 100;
    });
    const AccountId account = bench.makeAccount(phone(1));
    bench.makeAccount(phone(2));
    const std::string market = "/lc/youbika/";
    const ActionKey sent = bench.newKey();
    const auto send = [&](const std::string &where) {
        std::promise<AccountStatus> told;
        bench.desk().sendCode(
            {CodePurpose::Money, phone(1), account, sent, kHere, where},
            [&told](const AccountAnswer &answer) { told.set_value(answer.status); });
        return told.get_future().get();
    };
    ASSERT_EQ(send(market), AccountStatus::Done);
    const CodePair pair = bench.desk().codePair(account, market, sent);
    EXPECT_EQ(pair.first.size(), 32u);
    EXPECT_EQ(pair.second.size(), 32u);
    EXPECT_NE(pair.first, pair.second);
    EXPECT_EQ(send(market), AccountStatus::Done) << "the same question again";
    EXPECT_EQ(bench.desk().codePair(account, market, sent).first, pair.first);
    EXPECT_EQ(send("/lc/chajiu/"), AccountStatus::KeyDiffers);
    const std::string code = test::codeIn(bench.texts->texts(3).back().text);

    const auto check = [&](AccountId who, const std::string &where, const CodePair &with,
                           std::int64_t fen, ActionKey key, const std::string &typed) {
        std::promise<AccountStatus> told;
        bench.desk().checkMoneyCode(
            {who, {}, Secret(typed), key, kHere, where, with, Fen(fen)},
            [&told](const AccountAnswer &answer) { told.set_value(answer.status); });
        return told.get_future().get();
    };
    const auto fresh = [&bench] { return bench.newKey(); };
    const CodePair elsewhere = bench.desk().codePair(account, "/lc/chajiu/", sent);
    const CodePair later = bench.desk().codePair(account, market, fresh());
    EXPECT_EQ(check(account, "/lc/chajiu/", pair, 5, fresh(), code), AccountStatus::CodeWrong);
    EXPECT_EQ(check(account, "/lc/chajiu/", elsewhere, 5, fresh(), code), AccountStatus::CodeWrong);
    EXPECT_EQ(check(account, market, elsewhere, 5, fresh(), code), AccountStatus::CodeWrong);
    EXPECT_EQ(check(account, market, later, 5, fresh(), code), AccountStatus::CodeWrong);
    EXPECT_EQ(check(account, market, {pair.second, pair.first}, 5, fresh(), code),
              AccountStatus::CodeWrong);
    EXPECT_EQ(check(account, market, {pair.first, {}}, 5, fresh(), code), AccountStatus::CodeWrong);
    EXPECT_EQ(check(account, market, {}, 5, fresh(), code), AccountStatus::CodeWrong);
    EXPECT_EQ(check(AccountId(2), market, pair, 5, fresh(), code), AccountStatus::CodeMissing);
    EXPECT_EQ(check(account, market, pair, 5, fresh(), DeskBench::wrong(code)),
              AccountStatus::CodeWrong);
    const ActionKey key = fresh();
    EXPECT_EQ(check(account, market, pair, 5, key, code), AccountStatus::Done);
    EXPECT_EQ(check(account, market, pair, 5, key, code), AccountStatus::Done) << "the same again";
    EXPECT_EQ(check(account, market, pair, 6, key, code), AccountStatus::KeyDiffers);
    EXPECT_EQ(check(account, "/lc/chajiu/", pair, 5, key, code), AccountStatus::KeyDiffers);
    EXPECT_EQ(check(account, market, pair, 5, fresh(), code), AccountStatus::CodeUsed);

    // Pairs outlive the desk, and nobody's is another's.
    bench.reopen();
    EXPECT_EQ(bench.desk().codePair(account, market, sent).second, pair.second);
    EXPECT_NE(bench.desk().codePair(AccountId(2), market, sent).first, pair.first);
}

TEST(Codes, FiveWrongGuessesSpendACode)
{
    DeskBench bench([](AccountDeskOptions &options) {
        options.limits.guessesOfPeer = 100;
        options.limits.guessesOfPhone = 100;
    });
    const std::string code = bench.codeFor(CodePurpose::Register, phone(1));
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(bench.registerAccount(phone(1), "correct-1", DeskBench::wrong(code)).status,
                  AccountStatus::CodeWrong);
        if (i == 2)
            bench.reopen();
    }
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", code).status, AccountStatus::CodeSpent);
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", DeskBench::wrong(code)).status,
              AccountStatus::CodeSpent);
    bench.clock->advance(kMinute);
    const std::string fresh = bench.codeFor(CodePurpose::Register, phone(1));
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", fresh).status, AccountStatus::Done);
    EXPECT_EQ(bench.desk().counters().wrongCodes, 2u); // since the last start
}

TEST(Codes, FiveWrongGuessesADayFromOneAddress)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.guessesOfCode = 100; });
    bench.makeAccount(phone(1), "correct-1");
    bench.pass(kMinute);
    const std::string code = bench.codeFor(CodePurpose::Reset, phone(1));
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(bench.reset(phone(1), "correct-2", DeskBench::wrong(code), kElsewhere).status,
                  AccountStatus::CodeWrong);
        if (i == 2)
            bench.reopen();
    }
    const int hashes = bench.hasher->hashes;
    EXPECT_EQ(bench.reset(phone(1), "correct-2", code, kElsewhere).status,
              AccountStatus::GuessLimit);
    EXPECT_EQ(bench.hasher->hashes, hashes);
    // A fresh code does not help there, and the owner is somewhere else.
    bench.clock->advance(kMinute);
    const std::string fresh = bench.codeFor(CodePurpose::Reset, phone(1));
    EXPECT_EQ(bench.reset(phone(1), "correct-2", fresh, kElsewhere).status,
              AccountStatus::GuessLimit);
    EXPECT_EQ(bench.reset(phone(1), "correct-2", fresh, kHere).status, AccountStatus::Done);
    // Another day, another chance.
    bench.pass(kDay);
    const std::string next = bench.codeFor(CodePurpose::Reset, phone(1));
    EXPECT_EQ(bench.reset(phone(1), "correct-3", next, kElsewhere).status, AccountStatus::Done);
}

TEST(Codes, FifteenWrongGuessesADayAtAPhoneOverAllPurposesAndAddresses)
{
    for (const bool known : {true, false}) {
        SCOPED_TRACE(known ? "known phone" : "unknown phone");
        DeskBench bench;
        bench.makeAccount(phone(known ? 1 : 2), "correct-1");
        bench.pass(kMinute);
        int checked = 0;
        int refused = 0;
        for (int round = 0; round < 4; ++round) {
            ASSERT_EQ(bench.sendCode(CodePurpose::Register, phone(1)).status, AccountStatus::Done);
            ASSERT_EQ(bench.sendCode(CodePurpose::Reset, phone(1)).status, AccountStatus::Done);
            for (int i = 0; i < 3; ++i) {
                const std::string peer = "203.0.113." + std::to_string(10 * round + i);
                for (const Outcome &answer :
                     {bench.reset(phone(1), "correct-2", "1234", peer),
                      bench.registerAccount(phone(1), "correct-2", "1234", {}, peer)}) {
                    checked += answer.status == AccountStatus::CodeWrong ? 1 : 0;
                    refused += answer.status == AccountStatus::GuessLimit ? 1 : 0;
                }
            }
            bench.clock->advance(kMinute);
            bench.reopen();
        }
        EXPECT_EQ(checked, 15);
        EXPECT_EQ(refused, 9);
        if (!known)
            continue;
        // The right code is refused like every other.
        const std::string code = bench.codeFor(CodePurpose::Reset, phone(1));
        EXPECT_EQ(bench.reset(phone(1), "correct-2", code).status, AccountStatus::GuessLimit);
        EXPECT_EQ(bench.signIn(phone(1), "correct-1").status, AccountStatus::Done);
    }
}

TEST(Codes, RightOnesAreNotCountedAsGuesses)
{
    DeskBench bench([](AccountDeskOptions &options) { options.limits.codesOfDay = 100; });
    const AccountId account = bench.makeAccount(phone(1));
    for (int i = 0; i < 20; ++i) {
        bench.clock->advance(kMinute);
        const std::string code = bench.codeFor(CodePurpose::Money, phone(1), account);
        ASSERT_EQ(bench.checkMoney(account, phone(1), code).status, AccountStatus::Done) << i;
    }
}

TEST(Codes, GuessesAtOnceAreNoMoreThanGuessesInTurn)
{
    DeskBench bench;
    const std::string code = bench.codeFor(CodePurpose::Register, phone(1));
    std::vector<Pending> all;
    for (int i = 0; i < 50; ++i)
        all.push_back(bench.registerLater(phone(1), "correct-1", DeskBench::wrong(code)));
    int checked = 0;
    for (Pending &one : all)
        checked += await(one).status == AccountStatus::CodeWrong ? 1 : 0;
    EXPECT_EQ(checked, 5);
}

/// A clock whose wall can be set back, as machines' clocks are.
class SetBackClock : public SystemClock
{
public:
    TimeMs wall() const override { return TimeMs(now); }
    std::atomic<std::int64_t> now{test::kMorning.value()};
};

TEST(Codes, AClockThatIsSetBackMakesNobodyWaitAndNoCodeLiveLonger)
{
    const auto clock = std::make_shared<SetBackClock>();
    DeskBench bench([&](AccountDeskOptions &options) { options.clock = clock; });
    const std::string code = bench.codeFor(CodePurpose::Register, phone(1));
    clock->now -= 60 * kMinute;
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", code).status,
              AccountStatus::CodeExpired);
    const std::string fresh = bench.codeFor(CodePurpose::Register, phone(1));
    EXPECT_EQ(bench.registerAccount(phone(1), "correct-1", fresh).status, AccountStatus::Done);
}

} // namespace
} // namespace zvx
