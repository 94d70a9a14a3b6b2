#include "exchange/accounts/account_rules.h"
#include "exchange/accounts/account_status.h"
#include "exchange/accounts/answer_memory.h"
#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/digest.h"
#include "exchange/accounts/throttle.h"

#include <cctype>
#include <cstring>
#include <set>

namespace zvx {
namespace {

using test::phone;

std::vector<AccountStatus> allStatuses()
{
    std::vector<AccountStatus> all;
    for (int i = 0; i <= static_cast<int>(kLastAccountStatus); ++i)
        all.push_back(static_cast<AccountStatus>(i));
    return all;
}

TEST(AccountStatus, HasAWordForProgramsAndASentenceForPeople)
{
    std::set<std::string_view> words;
    for (const AccountStatus status : allStatuses()) {
        SCOPED_TRACE(reason(status));
        const bool done = status == AccountStatus::Done;
        EXPECT_EQ(reason(status).empty(), done);
        EXPECT_EQ(sentence(status).empty(), done);
        EXPECT_EQ(verdict(status) == AccountVerdict::Done, done);
        EXPECT_TRUE(words.insert(reason(status)).second);
        for (const char c : reason(status))
            EXPECT_TRUE(std::islower(static_cast<unsigned char>(c)) || c == '-') << c;
        const std::string told = sentence(status, 4711);
        EXPECT_EQ(told.find('%'), std::string::npos) << told;
        const bool waits = status == AccountStatus::TooOften || status == AccountStatus::CodePause;
        EXPECT_EQ(told.find("4711") != std::string::npos, waits) << told;
        EXPECT_TRUE(done || static_cast<unsigned char>(told[0]) >= 0xe4) << "not Chinese: " << told;
    }
    EXPECT_EQ(sentence(AccountStatus::TooOften, 30), "操作过于频繁，请30秒后再试");
}

TEST(AccountStatus, KeepsItsNumbersSinceTheyAreStored)
{
    EXPECT_EQ(static_cast<int>(AccountStatus::KeyUnknown), 12);
    EXPECT_EQ(static_cast<int>(AccountStatus::CodeWrong), 18);
    EXPECT_EQ(static_cast<int>(AccountStatus::AlreadyRegistered), 23);
    EXPECT_EQ(static_cast<int>(AccountStatus::LinkUnknown), 27);
    EXPECT_EQ(static_cast<int>(kLastAccountStatus), 35);
    EXPECT_EQ(static_cast<int>(AccountAction::SignIn), 0);
    EXPECT_EQ(static_cast<int>(AccountAction::Register), 4);
    EXPECT_EQ(static_cast<int>(AccountAction::RemoveFavourite), 8);
    EXPECT_EQ(static_cast<int>(SessionState::Elsewhere), 1);
}

TEST(AccountStatus, TellsWhatIsFinal)
{
    EXPECT_EQ(verdict(AccountStatus::Busy), AccountVerdict::Busy);
    EXPECT_EQ(verdict(AccountStatus::Failed), AccountVerdict::Failed);
    EXPECT_EQ(verdict(AccountStatus::BadPhone), AccountVerdict::Malformed);
    EXPECT_EQ(verdict(AccountStatus::WrongPassword), AccountVerdict::Refused);
    EXPECT_EQ(verdict(AccountStatus::KeyUnknown), AccountVerdict::Refused);
}

TEST(AccountRules, Phones)
{
    for (const char *good : {"13800000000", "14000000000", "15912345678", "17099999999",
                             "18812345678", "1|012345678"}) // the bar in the class is a bar
        EXPECT_TRUE(isPhone(good)) << good;
    for (const char *bad :
         {"", "1380000000", "138000000000", "12800000000", "16800000000", "19800000000",
          "23800000000", "1380000000a", "138 0000000", "13800000 00", "１３８０００００００0"})
        EXPECT_FALSE(isPhone(bad)) << bad;
}

TEST(AccountRules, Passwords)
{
    for (const char *good : {"123456", "12345678901234567890", "ABC#$%", "密码密码密码",
                             "一二三四五六七八九十一二三四五六七八九十", "🔑🔑🔑🔑🔑🔑"})
        EXPECT_TRUE(isPassword(good)) << good;
    for (const char *bad : {"", "12345", "123456789012345678901", "密码密码密",
                            "一二三四五六七八九十一二三四五六七八九十一", "123 456", " 123456",
                            "123456\t", "1234\n56", "123\v456", "密码\u3000密码密码",
                            "pass\u00a0word", "pass\u2003word", "pass\u2028word", "      "})
        EXPECT_FALSE(isPassword(bad)) << bad;
    EXPECT_TRUE(isPassword("pass\u200bword")); // joins nothing, but is no blank
}

TEST(AccountRules, CodesAndMarkets)
{
    EXPECT_TRUE(isCode(CodePurpose::Register, "0000"));
    EXPECT_TRUE(isCode(CodePurpose::Money, "000000"));
    for (const char *bad : {"", "000", "00000", "00a0", "-000", "000 "})
        EXPECT_FALSE(isCode(CodePurpose::Reset, bad)) << bad;
    EXPECT_TRUE(isMarketPrefix("/lc/youbika/"));
    for (const std::string &bad : {std::string(), std::string("/lc/"), std::string("/lc/youbika"),
                                   std::string("lc/youbika/"), std::string("/lc//"),
                                   std::string("/a/b/c/"), "/lc/" + std::string(60, 'x') + "/"})
        EXPECT_FALSE(isMarketPrefix(bad)) << bad;
}

TEST(AccountRules, Peers)
{
    struct Case {
        std::string peer;
        std::string group;
    };
    for (const Case &one :
         {Case{"192.0.2.7", "192.0.2.7"}, Case{"::ffff:192.0.2.7", "192.0.2.7"},
          Case{"2001:db8:1:2:3:4:5:6", "2001:db8:1:2::/64"},
          Case{"2001:0DB8:0001:0002::9", "2001:db8:1:2::/64"}, Case{"fe80::1%eth0", "fe80::/64"},
          Case{"::1", "::/64"}, Case{"pipe", "pipe"}, Case{"", ""}, Case{std::string(65, '1'), ""}})
        EXPECT_EQ(peerGroup(one.peer), one.group);
}

TEST(AccountRules, NumbersNamesAndDays)
{
    EXPECT_EQ(maskedPhone("13812345678"), "138****5678");
    EXPECT_EQ(accountNumber("lc", AccountId(1)), "LC00000001");
    EXPECT_EQ(accountNumber("ch", AccountId(1234567890)), "CH1234567890");
    const TimeMs midnight(1'577'808'000'000); // 2020-01-01 00:00 in UTC+8
    EXPECT_EQ(exchangeDay(midnight), exchangeDay(test::kMorning));
    EXPECT_EQ(exchangeDay(TimeMs(midnight.value() - 1)), exchangeDay(midnight) - 1);
}

TEST(SecretText, GoesWhereItIsMoved)
{
    Secret one("pass");
    Secret two(std::move(one));
    EXPECT_TRUE(one.empty()); // NOLINT(bugprone-use-after-move): that is the question
    EXPECT_EQ(two.text(), "pass");
    Secret three("other");
    three = std::move(two);
    EXPECT_EQ(three.text(), "pass");
    const Secret copy = three.copy();
    three.clear();
    EXPECT_TRUE(three.empty());
    EXPECT_EQ(three.text(), "");
    EXPECT_EQ(copy.text(), "pass");
    EXPECT_TRUE(Secret("").empty());
    char bytes[] = "secret";
    wipe(bytes, 6);
    EXPECT_EQ(std::string_view(bytes, 6), std::string_view("\0\0\0\0\0\0", 6));
}

TEST(Digests, TellListsApart)
{
    const auto of = [](auto... parts) {
        Digest digest(16);
        (digest << ... << parts);
        return digest.finish();
    };
    const std::string a = "ab";
    EXPECT_EQ(of(a, std::string("c")), of(std::string("ab"), std::string("c")));
    EXPECT_NE(of(std::string("ab"), std::string("c")), of(std::string("a"), std::string("bc")));
    EXPECT_NE(of(std::string("abc")), of(std::string("abc"), std::string()));
    EXPECT_NE(of(std::int64_t(1)), of(std::int64_t(256)));
    Digest keyed(16, std::string(32, 'k'));
    keyed << std::string_view("abc");
    EXPECT_NE(keyed.finish(), of(std::string("abc")));
    EXPECT_TRUE(sameBytes("abc", "abc"));
    EXPECT_FALSE(sameBytes("abc", "abd"));
    EXPECT_FALSE(sameBytes("abc", "ab"));
}

/// Gives the numbers that it was made with.
class ListedRandom : public RandomSource
{
public:
    explicit ListedRandom(std::vector<std::uint32_t> numbers) : m_numbers(std::move(numbers)) { }
    void fill(void *to, std::size_t size) override
    {
        ASSERT_EQ(size, 4u);
        std::memcpy(to, &m_numbers.at(m_next++), size);
    }
    std::size_t used() const { return m_next; }

private:
    std::vector<std::uint32_t> m_numbers;
    std::size_t m_next = 0;
};

TEST(Chance, DrawsAgainWhereTheFirstNumbersWouldBeLikelier)
{
    // 2^32 = 10 * 429496729 + 6: the draws 0 to 5 are too many.
    ListedRandom random({0, 5, 6, 4'294'967'295u, 7});
    EXPECT_EQ(uniform(random, 10), 6u);
    EXPECT_EQ(random.used(), 3u);
    EXPECT_EQ(uniform(random, 10), 5u);
    EXPECT_EQ(uniform(random, 1), 0u);
}

TEST(Throttles, GiveATokenBackAtATimeAndNeverMoreThanTheyHold)
{
    Throttle throttle(3, 100, 10);
    SteadyMs now = 1'000;
    for (int i = 0; i < 3; ++i) {
        EXPECT_EQ(throttle.wait("a", now), 0) << i;
        throttle.take("a", now);
    }
    EXPECT_EQ(throttle.wait("a", now), 100);
    EXPECT_EQ(throttle.wait("b", now), 0);
    now += 60;
    EXPECT_EQ(throttle.wait("a", now), 40);
    now += 40;
    EXPECT_EQ(throttle.wait("a", now), 0);
    throttle.take("a", now);
    EXPECT_EQ(throttle.wait("a", now), 100);
    throttle.giveBack("a");
    EXPECT_EQ(throttle.wait("a", now), 0);
    throttle.take("a", now);
    throttle.refill("a");
    now += 100'000; // a long rest fills it to the brim and no further
    for (int i = 0; i < 3; ++i)
        throttle.take("a", now);
    EXPECT_EQ(throttle.wait("a", now), 100);
    throttle.giveBack("nobody");
}

TEST(Throttles, AreBounded)
{
    Throttle throttle(1, 5'000, 2);
    throttle.take("a", 0);
    throttle.take("b", 0);
    EXPECT_TRUE(throttle.room("a", 0));
    EXPECT_FALSE(throttle.room("c", 0));
    EXPECT_FALSE(throttle.room("c", 4'999));
    EXPECT_TRUE(throttle.room("c", 6'000));
}

KnownAnswer answered(AccountStatus status)
{
    AccountAnswer answer;
    answer.status = status;
    return {AccountAction::SignIn, "f", std::make_shared<const AccountAnswer>(std::move(answer))};
}

TEST(AnswerMemories, ForgetWhatIsOldAndWhatIsTooMuch)
{
    AnswerMemory memory(100, 2);
    const auto name = [](std::uint64_t i) { return KeyName{AccountId(1), {1, i}}; };
    memory.put(name(1), answered(AccountStatus::Done), 0);
    memory.put(name(1), answered(AccountStatus::Busy), 50); // the first one counts
    ASSERT_NE(memory.find(name(1), 99), nullptr);
    EXPECT_EQ(memory.find(name(1), 99)->answer->status, AccountStatus::Done);
    EXPECT_EQ(memory.find(KeyName{AccountId(2), {1, 1}}, 99), nullptr);
    EXPECT_EQ(memory.find(name(1), 100), nullptr);
    for (std::uint64_t i = 1; i <= 3; ++i)
        memory.put(name(i), answered(AccountStatus::Done), 200);
    EXPECT_EQ(memory.find(name(1), 200), nullptr);
    EXPECT_NE(memory.find(name(2), 200), nullptr);
    EXPECT_NE(memory.find(name(3), 200), nullptr);
}

TEST(AnswerMemories, LetGoOfTheTokens)
{
    AnswerMemory memory(100, 10);
    KnownAnswer known = answered(AccountStatus::Done);
    const std::weak_ptr<const AccountAnswer> watched = known.answer;
    memory.put({{}, {1, 1}}, std::move(known), 0);
    memory.forgetOld(99);
    EXPECT_FALSE(watched.expired());
    memory.forgetOld(100);
    EXPECT_TRUE(watched.expired());
}

} // namespace
} // namespace zvx
