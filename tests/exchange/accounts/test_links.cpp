#include "exchange/accounts/desk_bench.h"

#include <set>

namespace zvx {
namespace {

using test::DeskBench;
using test::kCard;
using test::kElsewhere;
using test::kHere;
using test::kOtherCard;
using test::Outcome;
using test::phone;

constexpr std::int64_t kMinute = AccountLimits::kMinute;
const std::string kMarket = "/lc/youbika/";

class Links : public testing::Test
{
protected:
    Links() : account(bench.makeAccount(phone(1))) { bench.pass(5 * kMinute); }

    std::string make(LinkPurpose purpose = LinkPurpose::OpenAccount)
    {
        const Outcome made = bench.makeLink(purpose, account);
        EXPECT_EQ(made.status, AccountStatus::Done);
        return made.token;
    }
    LinkState state(const std::string &link) { return bench.desk().link(link); }
    /// Prepares something at a link and gives the code that was sent for it.
    std::string prepared(const std::string &link, std::int64_t fen)
    {
        const std::size_t before = bench.texts->texts().size();
        EXPECT_EQ(bench.prepareAmount(link, fen).status, AccountStatus::Done);
        return bench.newestCode(before + 1);
    }

    DeskBench bench;
    AccountId account;
};

TEST_F(Links, AreTextThatFitsIntoAnAddress)
{
    std::set<std::string> all;
    for (int i = 0; i < 30; ++i) {
        const std::string token = make(LinkPurpose::MoneyOut);
        EXPECT_EQ(token.size(), 24u);
        EXPECT_EQ(token.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz"
                                          "0123456789-_"),
                  std::string::npos)
            << token;
        all.insert(token);
    }
    EXPECT_EQ(all.size(), 30u);
}

TEST_F(Links, StandForAnAccountAndAServer)
{
    const std::string token = bench.makeLink(LinkPurpose::MoneyIn, account, "/lc/chajiu/").token;
    const LinkState link = state(token);
    EXPECT_EQ(link.kind, LinkState::Live);
    EXPECT_EQ(link.purpose, LinkPurpose::MoneyIn);
    EXPECT_EQ(link.account, account);
    EXPECT_EQ(link.market, "/lc/chajiu/");
    EXPECT_EQ(link.amount, Fen());
    EXPECT_FALSE(link.card);
    EXPECT_FALSE(link.key.isNull());
    for (const std::string &unknown :
         {std::string(), token.substr(1), token + "A", std::string(5'000, 'A')})
        EXPECT_EQ(state(unknown).kind, LinkState::Unknown);
    EXPECT_EQ(bench.makeLink(LinkPurpose::MoneyIn, AccountId(99)).status,
              AccountStatus::AccountUnknown);
    EXPECT_EQ(bench.makeLink(LinkPurpose::MoneyIn, account, "nowhere").status,
              AccountStatus::BadMarket);
}

TEST_F(Links, ExpireByTheWallClock)
{
    const std::string early = make(LinkPurpose::MoneyOut);
    bench.clock->advance(15 * kMinute - 1);
    const std::string late = make(LinkPurpose::MoneyOut);
    EXPECT_EQ(state(early).kind, LinkState::Live);
    EXPECT_EQ(bench.prepareAmount(early, 100).status, AccountStatus::Done);
    bench.clock->advance(1);
    EXPECT_EQ(state(early).kind, LinkState::Expired);
    EXPECT_EQ(state(late).kind, LinkState::Live);
    EXPECT_EQ(bench.prepareAmount(early, 100).status, AccountStatus::LinkExpired);
    EXPECT_EQ(bench.confirmLink(early).status, AccountStatus::LinkExpired);
    EXPECT_EQ(bench.sendLinkCode(early).status, AccountStatus::LinkExpired);
    // Whoever comes on the next day is still told so, later it is as if it had never been.
    bench.pass(AccountLimits::kDay);
    EXPECT_EQ(state(early).kind, LinkState::Expired);
    bench.pass(kMinute);
    EXPECT_EQ(state(early).kind, LinkState::Unknown);
    EXPECT_EQ(bench.prepareAmount(early, 100).status, AccountStatus::LinkUnknown);
}

TEST_F(Links, AreGoodForOneUse)
{
    const std::string token = make(LinkPurpose::MoneyOut);
    EXPECT_EQ(bench.confirmLink(token).status, AccountStatus::BadAmount) << "nothing is prepared";
    EXPECT_EQ(bench.prepareAmount(token, 12'345).status, AccountStatus::Done);
    EXPECT_EQ(state(token).amount, Fen(12'345));
    EXPECT_EQ(state(token).kind, LinkState::Live);
    EXPECT_EQ(bench.confirmLink(token).status, AccountStatus::Done);
    EXPECT_EQ(state(token).kind, LinkState::Used);
    EXPECT_EQ(state(token).amount, Fen(12'345));
    for (int i = 0; i < 2; ++i) {
        EXPECT_EQ(bench.confirmLink(token).status, AccountStatus::LinkUsed);
        EXPECT_EQ(bench.prepareAmount(token, 1).status, AccountStatus::LinkUsed);
        bench.reopen();
    }
    EXPECT_EQ(state(token).amount, Fen(12'345));
    bench.clock->advance(15 * kMinute);
    EXPECT_EQ(state(token).kind, LinkState::Used) << "used is what its holder has to know";
}

TEST_F(Links, OfMoneyInNeedTheCodeThatWasSentForTheAmount)
{
    const std::string token = make(LinkPurpose::MoneyIn);
    EXPECT_EQ(bench.sendLinkCode(token).status, AccountStatus::CodeMissing);
    EXPECT_EQ(bench.confirmLink(token, "123456").status, AccountStatus::CodeMissing);
    const std::string first = prepared(token, 100'000);
    ASSERT_EQ(first.size(), 6u);
    const auto text = bench.texts->texts().back();
    EXPECT_EQ(text.phone, phone(1));
    EXPECT_NE(text.text.find("转入资金1,000.00元"), std::string::npos) << text.text;

    EXPECT_EQ(bench.prepareAmount(token, 900'000).status, AccountStatus::CodePause);
    EXPECT_EQ(state(token).amount, Fen(100'000)) << "what the code was sent for stays";
    EXPECT_EQ(bench.prepareAmount(token, 100'000).status, AccountStatus::Done)
        << "a button that was touched twice";
    EXPECT_EQ(bench.texts->texts().size(), 2u);
    bench.clock->advance(kMinute);
    const std::string second = prepared(token, 900'000);
    ASSERT_NE(first, second);
    EXPECT_EQ(bench.confirmLink(token, first).status, AccountStatus::CodeWrong);
    for (const std::string bad : {"", "12345", "1234567", "12345a", "１２３４５６"})
        EXPECT_EQ(bench.confirmLink(token, bad).status, AccountStatus::BadCode) << bad;
    EXPECT_EQ(state(token).kind, LinkState::Live);
    EXPECT_EQ(bench.confirmLink(token, second).status, AccountStatus::Done);
    EXPECT_EQ(state(token).kind, LinkState::Used);
    EXPECT_EQ(state(token).amount, Fen(900'000));
    EXPECT_EQ(bench.confirmLink(token, second).status, AccountStatus::LinkUsed);
}

TEST_F(Links, AreNotConfirmedByTheCodeOfAnother)
{
    const std::string one = make(LinkPurpose::MoneyIn);
    const std::string two = make(LinkPurpose::MoneyIn);
    const std::string first = prepared(one, 100);
    bench.clock->advance(kMinute);
    const std::string second = prepared(two, 200);
    // Neither the newest code at the other link, nor a guess at it there, nor the old one.
    EXPECT_EQ(bench.confirmLink(one, second).status, AccountStatus::CodeExpired);
    EXPECT_EQ(bench.confirmLink(one, first).status, AccountStatus::CodeExpired);
    EXPECT_EQ(bench.desk().counters().wrongCodes, 0u);
    EXPECT_EQ(bench.confirmLink(two, second).status, AccountStatus::Done);
    // And a code for money of the client's is none here, and the other way round.
    bench.clock->advance(kMinute);
    const std::string money = bench.codeFor(CodePurpose::Money, phone(1), account);
    const std::string mine = prepared(one, 100);
    EXPECT_EQ(bench.confirmLink(one, money).status, AccountStatus::CodeWrong);
    EXPECT_EQ(bench.checkMoney(account, phone(1), mine).status, AccountStatus::CodeWrong);
    EXPECT_EQ(bench.confirmLink(one, mine).status, AccountStatus::Done);
}

TEST_F(Links, CodesExpireAndAreLimitedInGuesses)
{
    const std::string token = make(LinkPurpose::MoneyIn);
    const std::string code = prepared(token, 100);
    bench.clock->advance(5 * kMinute);
    EXPECT_EQ(bench.confirmLink(token, code).status, AccountStatus::CodeExpired);
    EXPECT_EQ(bench.sendLinkCode(token).status, AccountStatus::Done);
    EXPECT_EQ(bench.sendLinkCode(token).status, AccountStatus::CodePause);
    const std::string fresh = bench.newestCode(3);
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(bench.confirmLink(token, DeskBench::wrong(fresh), kElsewhere).status,
                  AccountStatus::CodeWrong);
    EXPECT_EQ(bench.confirmLink(token, fresh, kElsewhere).status, AccountStatus::GuessLimit);
    EXPECT_EQ(bench.confirmLink(token, fresh, kHere).status, AccountStatus::CodeSpent);
    EXPECT_EQ(bench.desk().counters().wrongCodes, 5u);
    EXPECT_EQ(bench.desk().counters().refusedByLimit, 3u);
    EXPECT_EQ(state(token).kind, LinkState::Live);
    bench.clock->advance(kMinute);
    EXPECT_EQ(bench.sendLinkCode(token).status, AccountStatus::Done);
    EXPECT_EQ(bench.confirmLink(token, bench.newestCode(4)).status, AccountStatus::Done);
}

TEST_F(Links, AreOfOnePurpose)
{
    const std::string card = make(LinkPurpose::OpenAccount);
    const std::string money = make(LinkPurpose::MoneyIn);
    EXPECT_EQ(bench.prepareAmount(card, 100).status, AccountStatus::LinkUnknown);
    EXPECT_EQ(bench.prepareCard(money).status, AccountStatus::LinkUnknown);
    EXPECT_EQ(bench.texts->texts().size(), 1u);
    EXPECT_EQ(bench.giveLinkBack(card, state(card).key).status, AccountStatus::LinkUnknown);
}

TEST_F(Links, TakeAmountsOfMoneyAlone)
{
    const std::string token = make(LinkPurpose::MoneyOut);
    for (const std::int64_t fen : {std::int64_t{0}, std::int64_t{-1}, kAmountBound + 1, INT64_MIN})
        EXPECT_EQ(bench.prepareAmount(token, fen).status, AccountStatus::BadAmount) << fen;
    EXPECT_EQ(bench.prepareAmount(token, kAmountBound).status, AccountStatus::Done);
    EXPECT_EQ(bench.prepareAmount(token, 100, "").status, AccountStatus::BadPeer);
}

TEST_F(Links, AreGivenBackWhereNothingMoved)
{
    const std::string token = make(LinkPurpose::MoneyIn);
    const ActionKey key = state(token).key;
    const std::string code = prepared(token, 100);
    EXPECT_EQ(bench.giveLinkBack(token, key).status, AccountStatus::LinkUnknown) << "not used";
    ASSERT_EQ(bench.confirmLink(token, code).status, AccountStatus::Done);
    EXPECT_EQ(state(token).key, key) << "whoever looks again finds the same transfer";
    EXPECT_EQ(bench.giveLinkBack(token, {1, 2}).status, AccountStatus::LinkUnknown);
    EXPECT_EQ(bench.giveLinkBack(token, key).status, AccountStatus::Done);
    EXPECT_EQ(bench.giveLinkBack(token, key).status, AccountStatus::LinkUnknown);
    bench.reopen();
    EXPECT_EQ(state(token).kind, LinkState::Live);
    EXPECT_NE(state(token).key, key) << "a key stands for one transfer";
    EXPECT_EQ(state(token).amount, Fen());
    EXPECT_EQ(bench.confirmLink(token, code).status, AccountStatus::CodeMissing);
    bench.clock->advance(kMinute);
    EXPECT_EQ(bench.confirmLink(token, prepared(token, 200)).status, AccountStatus::Done);
    EXPECT_EQ(state(token).amount, Fen(200));
}

TEST_F(Links, ARefusedTransferUsesUpItsCode)
{
    const std::string token = make(LinkPurpose::MoneyIn);
    const std::string code = prepared(token, 100);
    ASSERT_EQ(bench.confirmLink(token, code).status, AccountStatus::Done);
    ASSERT_EQ(bench.giveLinkBack(token, state(token).key).status, AccountStatus::Done);
    EXPECT_EQ(bench.prepareAmount(token, 100).status, AccountStatus::CodePause)
        << "the code of the first attempt is no code of the second";
}

TEST_F(Links, SurviveARestart)
{
    const std::string token = make(LinkPurpose::MoneyIn);
    const std::string code = prepared(token, 4'200);
    const LinkState before = state(token);
    bench.reopen();
    const LinkState after = state(token);
    EXPECT_EQ(after.kind, LinkState::Live);
    EXPECT_EQ(after.amount, before.amount);
    EXPECT_EQ(after.key, before.key);
    EXPECT_EQ(bench.confirmLink(token, code).status, AccountStatus::Done);
}

TEST_F(Links, AreLimitedForEachAccount)
{
    const AccountId other = bench.makeAccount(phone(2));
    for (int i = 0; i < 40; ++i)
        ASSERT_EQ(bench.makeLink(LinkPurpose::MoneyIn, account).status, AccountStatus::Done) << i;
    const Outcome refused = bench.makeLink(LinkPurpose::MoneyIn, account);
    EXPECT_EQ(refused.status, AccountStatus::TooOften);
    EXPECT_EQ(refused.wait, 10);
    EXPECT_EQ(refused.token, "");
    EXPECT_EQ(bench.makeLink(LinkPurpose::MoneyIn, other).status, AccountStatus::Done);
    bench.clock->advance(10'000);
    EXPECT_EQ(bench.makeLink(LinkPurpose::MoneyIn, account).status, AccountStatus::Done);
}

TEST_F(Links, AreUsedOnceByManyAtOnce)
{
    const std::string token = make(LinkPurpose::MoneyOut);
    ASSERT_EQ(bench.prepareAmount(token, 100).status, AccountStatus::Done);
    std::atomic<int> done{0};
    std::atomic<int> used{0};
    std::atomic<int> answered{0};
    for (int i = 0; i < 50; ++i)
        bench.desk().confirmLink({Secret(token), {}, kHere}, [&](const AccountAnswer &answer) {
            done += answer.status == AccountStatus::Done ? 1 : 0;
            used += answer.status == AccountStatus::LinkUsed ? 1 : 0;
            ++answered;
        });
    bench.settle();
    EXPECT_EQ(answered, 50);
    EXPECT_EQ(done, 1);
    EXPECT_EQ(used, 49);
}

} // namespace
} // namespace zvx
