#include "exchange/accounts/bank_names.h"
#include "exchange/accounts/card_rules.h"
#include "exchange/accounts/desk_bench.h"

#include <algorithm>

namespace zvx {
namespace {

using test::DeskBench;
using test::kCard;
using test::kOtherCard;
using test::Outcome;
using test::phone;

constexpr std::int64_t kMinute = AccountLimits::kMinute;

TEST(CardRules, DigitsOfACardNumber)
{
    const auto digits = [](std::string_view text) { return std::string(cardDigits(text).text()); };
    EXPECT_EQ(digits("9990005555666678"), "9990005555666678");
    EXPECT_EQ(digits(" 9990 0055 5566 6678 "), "9990005555666678");
    EXPECT_EQ(digits("9990-0055-5566-6678"), "9990005555666678");
    EXPECT_EQ(digits("999000444433332221"), "999000444433332221");
    EXPECT_EQ(digits("9990001234567890121"), "9990001234567890121");
    for (const std::string bad :
         {"", "    ", "9990005555666677", "9990005555666687", "999000555566667",
          "99900012345678901214", "0000000000000000", "9990005555666678x", "9990.0055.5566.6678",
          "９９９０００５５５５６６６６７８", "9990005555666678\n", "-9990005555666678e0"})
        EXPECT_EQ(digits(bad), "") << bad;
    // Each wrong digit, and each two neighbours that changed places but 0 and 9, are found.
    const std::string right = kCard;
    for (std::size_t i = 0; i < right.size(); ++i) {
        for (char c = '0'; c <= '9'; ++c) {
            std::string typed = right;
            typed[i] = c;
            EXPECT_EQ(!digits(typed).empty(), c == right[i]) << typed;
        }
    }
    for (std::size_t i = 1; i < right.size(); ++i) {
        std::string typed = right;
        std::swap(typed[i - 1], typed[i]);
        const bool unseen
            = typed == right || typed.substr(i - 1, 2) == "90" || typed.substr(i - 1, 2) == "09";
        EXPECT_EQ(!digits(typed).empty(), unseen) << typed;
    }
}

TEST(CardRules, NamesOfHolders)
{
    for (const std::string good : {"林晓月", "李明", "欧阳小雨", "买买提·吐尔逊", "㐱𠮷", "Li Ming",
                                   "J. R. O'Neill", "Anne-Marie", "Zoë Müller",
                                   "一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十"})
        EXPECT_TRUE(isHolderName(good)) << good;
    for (const std::string bad :
         {"", "林", "A", " 林晓月", "林晓月 ", "林  晓月", "林晓月1", "<b>林</b>", "\"林晓月\"",
          "林&晓月", "林晓月；", "·林晓月", "林晓月·", "--", "林\t晓月", "林\n晓月", "🙂🙂",
          "林晓月/", "一二三四五六七八九十一二三四五六七八九十一二三四五六七八九十一"})
        EXPECT_FALSE(isHolderName(bad)) << bad;
}

TEST(CardRules, BanksAreKnownById)
{
    for (const Bank &bank : knownBanks()) {
        EXPECT_EQ(findBank(bank.id), &bank);
        EXPECT_TRUE(std::all_of(bank.id.begin(), bank.id.end(),
                                [](char c) { return c >= 'a' && c <= 'z'; }));
    }
    EXPECT_EQ(findBank(""), nullptr);
    EXPECT_EQ(findBank("nobody"), nullptr);
}

class Cards : public testing::Test
{
protected:
    Cards() : account(bench.makeAccount(phone(1))) { bench.pass(5 * kMinute); }

    std::string make(AccountId whose)
    {
        return bench.makeLink(LinkPurpose::OpenAccount, whose).token;
    }
    std::string prepared(const std::string &link, const std::string &number = kCard)
    {
        const std::size_t before = bench.texts->texts().size();
        EXPECT_EQ(bench.prepareCard(link, number).status, AccountStatus::Done);
        return bench.newestCode(before + 1);
    }

    DeskBench bench;
    AccountId account;
};

TEST_F(Cards, AreBoundByACode)
{
    EXPECT_FALSE(bench.desk().cardOf(account));
    const std::string link = make(account);
    const std::string code = prepared(link);
    const auto text = bench.texts->texts().back();
    EXPECT_EQ(text.phone, phone(1));
    EXPECT_NE(text.text.find("绑定尾号0121的银行卡"), std::string::npos) << text.text;
    EXPECT_FALSE(bench.desk().cardOf(account));
    ASSERT_TRUE(bench.desk().link(link).card);
    EXPECT_EQ(bench.desk().link(link).card->tail, "0121");
    EXPECT_EQ(bench.confirmLink(link, DeskBench::wrong(code)).status, AccountStatus::CodeWrong);
    EXPECT_FALSE(bench.desk().cardOf(account));
    EXPECT_EQ(bench.confirmLink(link, code).status, AccountStatus::Done);
    for (int i = 0; i < 2; ++i) {
        const auto card = bench.desk().cardOf(account);
        ASSERT_TRUE(card);
        EXPECT_EQ(card->bank, "lanchuan");
        EXPECT_EQ(card->holder, "林晓月");
        EXPECT_EQ(card->tail, "0121");
        EXPECT_EQ(card->fingerprint.size(), 32u);
        EXPECT_EQ(card->fingerprint.find_first_not_of("0123456789abcdef"), std::string::npos);
        EXPECT_EQ(bench.desk().link(link).kind, LinkState::Used);
        EXPECT_EQ(bench.confirmLink(link, code).status, AccountStatus::LinkUsed);
        bench.reopen();
    }
    EXPECT_FALSE(bench.desk().cardOf(AccountId(99)));
}

TEST_F(Cards, GiveTheirHoldersNameToAnAccountWithoutOne)
{
    EXPECT_EQ(bench.profile(account).profile.name, "139****0001");
    const std::string link = make(account);
    const std::string code = prepared(link);
    EXPECT_EQ(bench.profile(account).profile.name, "139****0001");
    ASSERT_EQ(bench.confirmLink(link, code).status, AccountStatus::Done);
    EXPECT_EQ(bench.profile(account).profile.name, "林晓月");
    bench.reopen();
    EXPECT_EQ(bench.profile(account).profile.name, "林晓月");
}

TEST(CardsOfTheDemo, LeaveItsName)
{
    DeskBench bench([](AccountDeskOptions &options) { options.demo = true; });
    const AccountId account = *bench.desk().demoAccount();
    bench.bindCard(account);
    EXPECT_EQ(bench.desk().cardOf(account)->holder, "林晓月");
    EXPECT_EQ(bench.profile(account).profile.name, "演示账户");
}

TEST_F(Cards, AreOneForAnAccount)
{
    const std::string first = make(account);
    const std::string second = make(account);
    const std::string third = make(account);
    bench.clock->advance(kMinute);
    const std::string code = prepared(second);
    ASSERT_EQ(bench.confirmLink(second, code).status, AccountStatus::Done);
    for (const std::string &other : {first, third}) {
        EXPECT_EQ(bench.desk().link(other).kind, LinkState::Used);
        EXPECT_EQ(bench.prepareCard(other, kOtherCard).status, AccountStatus::LinkUsed);
    }
    EXPECT_EQ(bench.makeLink(LinkPurpose::OpenAccount, account).status, AccountStatus::CardBound);
    EXPECT_EQ(bench.makeLink(LinkPurpose::MoneyIn, account).status, AccountStatus::Done);
    EXPECT_EQ(bench.desk().cardOf(account)->tail, "0121");
}

TEST_F(Cards, AreOneAccounts)
{
    const AccountId other = bench.makeAccount(phone(2));
    bench.pass(kMinute);
    bench.bindCard(account);
    const std::string link = make(other);
    // Told to those only who hold the code.
    const std::string code = prepared(link, "9990 0012 3456 7890 121");
    EXPECT_EQ(bench.confirmLink(link, DeskBench::wrong(code)).status, AccountStatus::CodeWrong);
    EXPECT_EQ(bench.confirmLink(link, code).status, AccountStatus::CardTaken);
    EXPECT_FALSE(bench.desk().cardOf(other));
    EXPECT_EQ(bench.desk().link(link).kind, LinkState::Live);
    EXPECT_EQ(bench.profile(other).profile.name, "139****0002");
    bench.clock->advance(kMinute);
    EXPECT_EQ(bench.confirmLink(link, prepared(link, kOtherCard)).status, AccountStatus::Done);
    EXPECT_EQ(bench.desk().cardOf(other)->tail, "6678");
}

TEST_F(Cards, AreConfirmedAsTheTextSays)
{
    const std::string link = make(account);
    const std::string code = prepared(link);
    // Another card within the pause is refused, and the first one stays.
    for (const Outcome &changed :
         {bench.prepareCard(link, kOtherCard), bench.prepareCard(link, kCard, "王小明"),
          bench.prepareCard(link, kCard, "林晓月", "luming")})
        EXPECT_EQ(changed.status, AccountStatus::CodePause);
    EXPECT_EQ(bench.prepareCard(link).status, AccountStatus::Done) << "touched twice";
    EXPECT_EQ(bench.texts->texts().size(), 2u);
    ASSERT_EQ(bench.confirmLink(link, code).status, AccountStatus::Done);
    const auto card = bench.desk().cardOf(account);
    EXPECT_EQ(card->tail + card->holder + card->bank, "0121林晓月lanchuan");
}

TEST_F(Cards, OfWrongDetailsAreRefusedBeforeATextIsSent)
{
    const std::string link = make(account);
    EXPECT_EQ(bench.prepareCard(link, kCard, "林晓月", "nobody").status, AccountStatus::BadBank);
    EXPECT_EQ(bench.prepareCard(link, kCard, "林晓月", "").status, AccountStatus::BadBank);
    EXPECT_EQ(bench.prepareCard(link, kCard, "林").status, AccountStatus::BadHolder);
    EXPECT_EQ(bench.prepareCard(link, kCard, "<script>").status, AccountStatus::BadHolder);
    EXPECT_EQ(bench.prepareCard(link, "9990001234567890122").status, AccountStatus::BadCardNumber);
    EXPECT_EQ(bench.prepareCard("no-such-link").status, AccountStatus::LinkUnknown);
    EXPECT_EQ(bench.texts->texts().size(), 1u);
    EXPECT_FALSE(bench.desk().link(link).card);
}

TEST_F(Cards, FingerprintsBelongToThePlatform)
{
    DeskBench elsewhere([](AccountDeskOptions &options) {
        options.random = std::make_shared<test::SeededRandom>(2);
    });
    const AccountId there = elsewhere.makeAccount(phone(1));
    elsewhere.bindCard(there);
    bench.bindCard(account);
    EXPECT_NE(bench.desk().cardOf(account)->fingerprint,
              elsewhere.desk().cardOf(there)->fingerprint);
}

} // namespace
} // namespace zvx
