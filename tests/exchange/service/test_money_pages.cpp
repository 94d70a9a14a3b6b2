#include "exchange/service/embedded_bank.h"
#include "exchange/service/link_fixture.h"
#include "exchange/service/money_page.h"

#include "exchange/service/until.h"

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using zvx::Fen;
using zvx::readYuan;
using zvxtest::RawAnswer;
using zvxtest::until;

TEST(MoneyPage, ReadsYuanAsPeopleTypeThem)
{
    const std::pair<const char *, std::int64_t> good[] = {{"1", 100},
                                                          {"0.01", 1},
                                                          {"1.5", 150},
                                                          {"1.50", 150},
                                                          {"  20 ", 2'000},
                                                          {"1,234.56", 123'456},
                                                          {"1,234,567", 123'456'700},
                                                          {"12,345", 1'234'500},
                                                          {"1234567.89", 123'456'789},
                                                          {"0", 0},
                                                          {"007", 700},
                                                          {"999999999999.99", 99'999'999'999'999}};
    for (const auto &[text, fen] : good) {
        ASSERT_TRUE(readYuan(text)) << text;
        EXPECT_EQ(readYuan(text)->value(), fen) << text;
    }
    for (const char *bad : {"",
                            " ",
                            ".",
                            ".5",
                            "1.",
                            "1.234",
                            "0.001",
                            "-1",
                            "+1",
                            "1e3",
                            "0x10",
                            "1 000",
                            "1,23",
                            "1234,567",
                            ",123",
                            "1,,234",
                            "1,2345",
                            "1.2,3",
                            "1.2.3",
                            "１",
                            "¥1",
                            "1元",
                            "abc",
                            "1\n",
                            "1234567890123",
                            "99999999999999999999999999"})
        EXPECT_FALSE(readYuan(bad)) << bad;
}

class MoneyPagesTest : public zvxtest::LinkTest
{
protected:
    MoneyPagesTest() { options.accountLimits.linksOfAccount = 1'000; }

    void beginBound()
    {
        beginSignedIn();
        bindCard();
    }
    std::int64_t available(const std::string &market = "/lc/youbika/") const
    {
        return get(market + "cap.html", token)["data"]["available"];
    }
    /// Moves money in by the pages, and expects that it works.
    void moveIn(const std::string &amount, const std::string &market = "/lc/youbika/")
    {
        const std::size_t before = texts();
        const RawAnswer second
            = submit(page(newAddress("in", market)), "prepare", "amount=" + amount);
        ASSERT_EQ(second.status, 200) << second.body;
        const RawAnswer third = submit(second, "confirm", "code=" + codeAfter(before));
        ASSERT_EQ(third.status, 200) << third.body;
        ASSERT_TRUE(has(third, "<h1>入金成功</h1>")) << third.body;
    }
    static bool has(const RawAnswer &answer, const std::string &text)
    {
        return answer.body.find(text) != std::string::npos;
    }
    static std::string faultOf(const RawAnswer &answer)
    {
        const std::string fault = between(answer.body, "<p class=\"fault\"", "</p>");
        return fault.substr(fault.find('>') + 1);
    }
    static std::string noticeOf(const RawAnswer &answer)
    {
        return between(answer.body, "role=\"alert\">", "</p>");
    }
};

TEST_F(MoneyPagesTest, MoneyInIsConfirmedByACode)
{
    beginBound();
    const std::size_t before = texts();
    const std::string address = newAddress("in");
    const RawAnswer first = page(address);
    EXPECT_EQ(first.status, 200);
    EXPECT_TRUE(has(first, "<dt>转出</dt><dd>岚川银行（尾号0121）</dd>")) << first.body;
    EXPECT_TRUE(has(first, "<dt>转入</dt><dd>LC00000001（邮币）</dd>"));
    const RawAnswer second = submit(first, "prepare", "amount=1,234.50");
    EXPECT_EQ(second.status, 200);
    EXPECT_TRUE(has(second, "<dt>金额</dt><dd>1,234.50元</dd>")) << second.body;
    EXPECT_EQ(available(), 0) << "nothing has moved yet";
    const std::string code = codeAfter(before);
    EXPECT_EQ(faultOf(submit(second, "confirm",
                             "code=" + (code == "000000" ? std::string("000001") : "000000"))),
              "验证码错误");
    EXPECT_EQ(available(), 0);
    const RawAnswer third = submit(second, "confirm", "code=" + code);
    EXPECT_EQ(third.status, 200);
    EXPECT_TRUE(has(third, "<h1>入金成功</h1>")) << third.body;
    EXPECT_TRUE(has(third, "1,234.50元"));
    EXPECT_EQ(available(), 123'450);
    EXPECT_EQ(available(tea), 0) << "it is the money of one server";
    for (const RawAnswer &over : {submit(second, "confirm", "code=" + code), page(address),
                                  submit(first, "prepare", "amount=1")}) {
        EXPECT_EQ(over.status, 410);
        EXPECT_TRUE(has(over, "<h1>链接已使用</h1>"));
    }
    EXPECT_EQ(available(), 123'450) << "a reload moves nothing";
}

TEST_F(MoneyPagesTest, MoneyOutIsShownBeforeItMoves)
{
    beginBound();
    moveIn("100");
    const RawAnswer first = page(newAddress("out"));
    EXPECT_TRUE(has(first, "<dt>转出</dt><dd>LC00000001（邮币）</dd>")) << first.body;
    EXPECT_TRUE(has(first, "<dt>转入</dt><dd>岚川银行（尾号0121）</dd>"));
    const RawAnswer second = submit(first, "prepare", "amount=30.01");
    EXPECT_EQ(second.status, 200);
    EXPECT_TRUE(has(second, "<dd>30.01元</dd>"));
    EXPECT_FALSE(has(second, "验证码")) << "money out takes no code";
    EXPECT_EQ(available(), 10'000);
    const RawAnswer third = submit(second, "confirm", "");
    EXPECT_EQ(third.status, 200);
    EXPECT_TRUE(has(third, "<h1>出金成功</h1>")) << third.body;
    EXPECT_EQ(available(), 6'999);
    EXPECT_EQ(submit(second, "confirm", "").status, 410);
    EXPECT_EQ(available(), 6'999);
}

TEST_F(MoneyPagesTest, AmountsAreRefusedBeforeAnythingMovesOrIsSent)
{
    options.moneyLimits.ofTransfer = Fen(500'000);
    beginBound();
    const std::size_t before = texts();
    for (const char *which : {"in", "out"}) {
        const RawAnswer first = page(newAddress(which));
        EXPECT_TRUE(has(first, "单笔最多5,000.00元"));
        for (const char *amount : {"", "0", "0.00", "0.001", "-1", "1e2", "5000.01", "abc",
                                   "99999999999999999999", "%22%3E%3Cb%3E"}) {
            const RawAnswer refused = submit(first, "prepare", std::string("amount=") + amount);
            EXPECT_EQ(refused.status, 400) << amount;
            EXPECT_EQ(faultOf(refused), "请输入正确的金额，最多两位小数") << amount;
            EXPECT_FALSE(has(refused, "<b>"));
        }
        EXPECT_TRUE(has(submit(first, "prepare", "amount=5000.01"), "value=\"5000.01\""));
        EXPECT_EQ(submit(first, "prepare", "").status, 400);
    }
    EXPECT_EQ(texts(), before);
    EXPECT_EQ(available(), 0);
    EXPECT_EQ(submit(page(newAddress("in")), "prepare", "amount=5000").status, 200);
}

TEST_F(MoneyPagesTest, ACodeIsForItsAmountAlone)
{
    beginBound();
    const std::size_t before = texts();
    const RawAnswer small = submit(page(newAddress("in")), "prepare", "amount=1");
    const std::string code = codeAfter(before);
    const RawAnswer large = submit(page(newAddress("in")), "prepare", "amount=9000");
    const std::string newest = codeAfter(before + 1);
    EXPECT_EQ(faultOf(submit(small, "confirm", "code=" + newest)), "验证码已过期，请重新获取");
    EXPECT_EQ(faultOf(submit(small, "confirm", "code=" + code)), "验证码已过期，请重新获取");
    EXPECT_EQ(available(), 0);
    EXPECT_TRUE(has(submit(large, "confirm", "code=" + newest), "入金成功"));
    EXPECT_EQ(available(), 900'000);
}

TEST_F(MoneyPagesTest, WhatIsNotThereIsNotPaidOutAndTheLinkStaysGood)
{
    beginBound();
    moveIn("10");
    const std::string address = newAddress("out");
    const RawAnswer refused
        = submit(submit(page(address), "prepare", "amount=10.01"), "confirm", "");
    EXPECT_EQ(refused.status, 400);
    EXPECT_NE(noticeOf(refused), "") << refused.body;
    EXPECT_EQ(available(), 1'000);
    EXPECT_EQ(submit(refused, "prepare", "amount=1").status, 200) << "the same link again";
    const RawAnswer done = submit(submit(page(address), "prepare", "amount=10"), "confirm", "");
    EXPECT_TRUE(has(done, "出金成功")) << done.body;
    EXPECT_EQ(available(), 0);
}

TEST_F(MoneyPagesTest, ABankThatRefusesLeavesEverythingAsItWas)
{
    beginBound();
    moveIn("10");
    service.reset();
    options.bankRefusal = zvx::BankRefusal::All;
    begin();
    const std::size_t before = texts();
    const RawAnswer second = submit(page(newAddress("in")), "prepare", "amount=5");
    const RawAnswer in = submit(second, "confirm", "code=" + codeAfter(before));
    EXPECT_EQ(in.status, 400);
    EXPECT_NE(noticeOf(in), "") << in.body;
    const RawAnswer out
        = submit(submit(page(newAddress("out")), "prepare", "amount=5"), "confirm", "");
    EXPECT_EQ(out.status, 400);
    EXPECT_NE(noticeOf(out), "") << out.body;
    EXPECT_EQ(available(), 1'000);
}

TEST_F(MoneyPagesTest, ABankThatIsSilentIsToldAsSuch)
{
    options.moneyLimits.answerWait = 50;
    options.bankDelay = 400ms;
    beginBound();
    const std::size_t before = texts();
    const RawAnswer second = submit(page(newAddress("in")), "prepare", "amount=5");
    const RawAnswer third = submit(second, "confirm", "code=" + codeAfter(before));
    EXPECT_EQ(third.status, 200);
    EXPECT_TRUE(has(third, "<h1>银行处理中</h1>")) << third.body;
    EXPECT_TRUE(until([&] { return available() == 500; })) << "the bank's word comes later";
    EXPECT_EQ(submit(second, "confirm", "code=000000").status, 410);
}

} // namespace
