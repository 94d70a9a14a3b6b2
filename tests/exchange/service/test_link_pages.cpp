#include "exchange/service/link_fixture.h"

namespace {

using nlohmann::json;
using zvxtest::RawAnswer;
using zvxtest::RawClient;

const std::string number = "9990001234567890121";

class LinkPagesTest : public zvxtest::LinkTest
{
protected:
    void SetUp() override { beginSignedIn(); }

    RawAnswer cardPage() { return page("/lc/card.html?s=" + newCode()); }
    static bool has(const RawAnswer &answer, const std::string &text)
    {
        return answer.body.find(text) != std::string::npos;
    }
    /// What every page has to be, whatever it says.
    void expectSafe(const RawAnswer &answer) const
    {
        SCOPED_TRACE(answer.body);
        EXPECT_EQ(headerOf(answer, "Content-Type"), "text/html; charset=utf-8");
        EXPECT_EQ(headerOf(answer, "Cache-Control"), "no-store");
        EXPECT_EQ(headerOf(answer, "Content-Security-Policy"),
                  "default-src 'none'; style-src 'self'; base-uri 'none'; form-action 'self'; "
                  "frame-ancestors 'none'");
        EXPECT_EQ(headerOf(answer, "Referrer-Policy"), "no-referrer");
        EXPECT_EQ(headerOf(answer, "X-Frame-Options"), "DENY");
        EXPECT_EQ(headerOf(answer, "X-Content-Type-Options"), "nosniff");
        for (const char *foreign : {"<script", "javascript:", "http:", "https:", "style=", " on"})
            EXPECT_FALSE(has(answer, foreign)) << foreign;
        EXPECT_FALSE(has(answer, number));
        EXPECT_TRUE(has(answer, "<meta name=\"viewport\""));
        EXPECT_LT(answer.body.size(), 8'000u);
        // Each opened element is closed, so no text has opened one.
        const auto count = [&](const std::string &tag) {
            std::size_t found = 0;
            for (std::size_t at = answer.body.find(tag); at != std::string::npos;
                 at = answer.body.find(tag, at + 1))
                ++found;
            return found;
        };
        for (const std::string tag : {"html", "head", "body", "main", "form", "p", "dl", "select"})
            EXPECT_EQ(count("<" + tag + ">") + count("<" + tag + " "), count("</" + tag + ">"))
                << tag;
    }
};

TEST_F(LinkPagesTest, ACardIsBoundInTwoSteps)
{
    const std::size_t before = texts();
    const std::string code = newCode();
    const RawAnswer first = page("/lc/card.html?s=" + code);
    EXPECT_EQ(first.status, 200);
    expectSafe(first);
    EXPECT_TRUE(has(first, "<h1>开户绑卡</h1>"));
    EXPECT_TRUE(has(first, "账户 LC00000001，手机 139****0001"));
    EXPECT_FALSE(has(first, phone));
    EXPECT_TRUE(has(first, "<option value=\"lanchuan\">岚川银行</option>"));
    EXPECT_EQ(texts(), before) << "nothing is sent for a look";

    const RawAnswer second = submit(first, "prepare", form);
    EXPECT_EQ(second.status, 200);
    expectSafe(second);
    EXPECT_TRUE(has(second, "<dt>持卡人</dt><dd>林晓月</dd>")) << second.body;
    EXPECT_TRUE(has(second, "<dt>银行卡</dt><dd>岚川银行（尾号0121）</dd>"));
    const std::string sms = codeAfter(before);
    ASSERT_EQ(sms.size(), 6u);

    EXPECT_EQ(get(lc + "pay/hx.html", token)["data"]["bound"], false);
    const RawAnswer third = submit(second, "confirm", "code=" + sms);
    EXPECT_EQ(third.status, 200);
    expectSafe(third);
    EXPECT_TRUE(has(third, "<h1>绑定成功</h1>"));
    EXPECT_TRUE(has(third, "岚川银行（尾号0121）"));
    const json card = get(lc + "pay/hx.html", token)["data"];
    EXPECT_EQ(card["bound"], true);
    EXPECT_EQ(card["tail"], "0121");
    EXPECT_EQ(get(lc + "myaccount.html", token)["data"]["name"], "林晓月");

    // The link has done its work: for a look, for a reload and for another card.
    for (const RawAnswer &over :
         {page("/lc/card.html?s=" + code), submit(second, "confirm", "code=" + sms),
          submit(first, "prepare", "holder=林晓月&bank=luming&number=9990005555666678")}) {
        EXPECT_EQ(over.status, 410);
        expectSafe(over);
        EXPECT_TRUE(has(over, "<h1>链接已使用</h1>"));
        EXPECT_FALSE(has(over, "<form"));
    }
    EXPECT_EQ(get(lc + "pay/hx.html", token)["data"], card);
    EXPECT_EQ(texts(), before + 1);
}

TEST_F(LinkPagesTest, SayWhatIsWrongAndKeepWhatWasTyped)
{
    const std::size_t before = texts();
    const struct {
        const char *fields;
        const char *field;
        const char *sentence;
    } table[] = {
        {"holder=&bank=lanchuan&number=9990001234567890121", "holder", "请填写持卡人姓名"},
        {"bank=lanchuan&number=9990001234567890121", "holder", "请填写持卡人姓名"},
        {"holder=林1&bank=lanchuan&number=9990001234567890121", "holder", "请填写持卡人姓名"},
        {"holder=林晓月&bank=&number=9990001234567890121", "bank", "请选择发卡银行"},
        {"holder=林晓月&bank=nobody&number=9990001234567890121", "bank", "请选择发卡银行"},
        {"holder=林晓月&number=9990001234567890121", "bank", "请选择发卡银行"},
        {"holder=林晓月&bank=lanchuan&number=", "number", "银行卡号有误"},
        {"holder=林晓月&bank=lanchuan", "number", "银行卡号有误"},
        {"holder=林晓月&bank=lanchuan&number=9990001234567890122", "number", "银行卡号有误"},
        {"holder=林晓月&bank=lanchuan&number=12", "number", "银行卡号有误"},
    };
    for (const auto &row : table) {
        SCOPED_TRACE(row.fields);
        const RawAnswer answer = submit(cardPage(), "prepare", row.fields);
        EXPECT_EQ(answer.status, 400);
        expectSafe(answer);
        EXPECT_EQ(between(answer.body, "<p class=\"fault\" id=\"", "\">"),
                  std::string(row.field) + "-fault");
        EXPECT_NE(between(answer.body, "<p class=\"fault\"", "</p>").find(row.sentence),
                  std::string::npos);
        EXPECT_TRUE(has(answer, "aria-describedby=\"" + std::string(row.field) + "-fault\""));
        const std::string fields = row.fields;
        if (fields.find("holder=林晓月") != std::string::npos) {
            EXPECT_TRUE(has(answer, "name=\"holder\" value=\"林晓月\""));
        }
        if (fields.find("bank=lanchuan") != std::string::npos) {
            EXPECT_TRUE(has(answer, "<option value=\"lanchuan\" selected>"));
        }
        EXPECT_TRUE(has(answer, "name=\"number\" value=\"\"")) << "a number is never put back";
    }
    EXPECT_EQ(texts(), before);
    const RawAnswer blanks = submit(
        cardPage(), "prepare", "holder=++林晓月+&bank=lanchuan&number=9990+0012+3456+7890+121");
    EXPECT_EQ(blanks.status, 200) << blanks.body;
}

TEST_F(LinkPagesTest, EscapeWhateverIsTyped)
{
    const std::string evil = "%22%3E%3Cscript%3Ealert(1)%3C%2Fscript%3E%3Cimg+onerror%3D%27x%27%3E";
    const RawAnswer answer
        = submit(cardPage(), "prepare", "holder=" + evil + "&bank=" + evil + "&number=" + evil);
    EXPECT_EQ(answer.status, 400);
    EXPECT_TRUE(has(answer,
                    "value=\"&quot;&gt;&lt;script&gt;alert(1)&lt;/script&gt;&lt;img "
                    "onerror=&#39;x&#39;&gt;\""))
        << answer.body;
    EXPECT_FALSE(has(answer, "<script"));
    EXPECT_FALSE(has(answer, "<img"));
    const RawAnswer braces
        = submit(cardPage(), "prepare", "holder={token}{s}&bank=luming&number=1");
    EXPECT_TRUE(has(braces, "value=\"{token}{s}\""));
    const std::string code = newCode();
    const RawAnswer second = submit(page("/lc/card.html?s=" + code), "prepare", form);
    const RawAnswer wrong = submit(second, "confirm", "code=" + evil);
    EXPECT_EQ(wrong.status, 400);
    EXPECT_FALSE(has(wrong, "<script"));
    EXPECT_FALSE(has(wrong, "alert"));
    const RawAnswer unknown = page("/lc/card.html?s=" + evil);
    EXPECT_EQ(unknown.status, 404);
    expectSafe(unknown);
    EXPECT_FALSE(has(unknown, "alert"));
}

TEST_F(LinkPagesTest, CodesAreCheckedAndLimited)
{
    const std::size_t before = texts();
    const RawAnswer second = submit(cardPage(), "prepare", form);
    const std::string sms = codeAfter(before);
    const std::string wrong = sms == "000000" ? "000001" : "000000";
    const auto fault = [&](const RawAnswer &answer) {
        EXPECT_EQ(answer.status, 400);
        expectSafe(answer);
        EXPECT_TRUE(has(answer, "岚川银行（尾号0121）")) << "the step stays";
        return between(answer.body, "id=\"code-fault\">", "</p>");
    };
    for (const char *bad : {"", "12345", "1234567", "12345x"})
        EXPECT_EQ(fault(submit(second, "confirm", "code=" + std::string(bad))), "校验码格式有误")
            << bad;
    EXPECT_EQ(fault(submit(second, "confirm", "")), "校验码格式有误");
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(fault(submit(second, "confirm", "code=" + wrong)), "验证码错误");
    EXPECT_EQ(fault(submit(second, "confirm", "code=" + sms)),
              "今日验证码错误次数过多，请明天再试");
    EXPECT_EQ(fault(submit(second, "confirm", "code=" + sms, "127.0.0.2")),
              "验证码错误次数过多，请重新获取");
    EXPECT_EQ(get(lc + "pay/hx.html", token)["data"]["bound"], false);
    const RawAnswer again = submit(second, "code", "");
    EXPECT_EQ(again.status, 200);
    expectSafe(again);
    EXPECT_TRUE(has(again, "验证码已重新发送"));
    EXPECT_EQ(submit(again, "confirm", "code=" + codeAfter(before + 1), "127.0.0.2").status, 200);
    EXPECT_EQ(get(lc + "pay/hx.html", token)["data"]["bound"], true);
}

TEST_F(LinkPagesTest, TakeFormsThatTheyHandedOutAlone)
{
    const std::size_t before = texts();
    const std::string code = newCode();
    const std::string address = "/lc/card.html?s=" + code;
    const RawAnswer first = page(address);
    const RawAnswer other = cardPage();
    const std::string guard = between(first.body, "name=\"form\" value=\"", "\"");
    ASSERT_EQ(guard.size(), 32u);
    const std::string others = between(other.body, "name=\"form\" value=\"", "\"");
    EXPECT_NE(guard, others) << "one for each link";
    for (const std::string &own : {std::string(), std::string("form=&"), "form=" + others + '&',
                                   "form=" + guard.substr(1) + '&', "form=" + guard + "0&"}) {
        const RawAnswer answer = post(address, own + "step=prepare&" + form);
        EXPECT_EQ(answer.status, 403) << own;
        expectSafe(answer);
        EXPECT_TRUE(has(answer, "页面已失效，请重新提交。"));
        EXPECT_TRUE(has(answer, "name=\"holder\" value=\"林晓月\"")) << "what was typed stays";
        // And the page that comes back is good.
        EXPECT_EQ(between(answer.body, "name=\"form\" value=\"", "\""), guard);
    }
    // The field of one step does for no other.
    for (const char *step : {"confirm", "code", "", "other", "Prepare"})
        EXPECT_EQ(post(address, "form=" + guard + "&step=" + step + "&code=123456&" + form).status,
                  403)
            << step;
    EXPECT_EQ(post(address, "form=" + guard + '&' + form).status, 403) << "without a step";
    EXPECT_EQ(texts(), before);
    EXPECT_EQ(post(address, "form=" + guard + "&step=prepare&" + form).status, 200);
    codeAfter(before);
    EXPECT_EQ(texts(), before + 1);
}

TEST_F(LinkPagesTest, ARestartMakesFormsOldAndLosesNothingElse)
{
    const std::size_t before = texts();
    const RawAnswer second = submit(cardPage(), "prepare", form);
    const std::string sms = codeAfter(before);
    restart();
    const RawAnswer old = submit(second, "confirm", "code=" + sms);
    EXPECT_EQ(old.status, 403);
    const RawAnswer again = submit(old, "prepare", form);
    EXPECT_EQ(again.status, 200);
    EXPECT_TRUE(has(again, "尾号0121"));
    EXPECT_EQ(submit(again, "confirm", "code=" + codeAfter(before + 1)).status, 200);
}

TEST_F(LinkPagesTest, RefuseWhatIsNoForm)
{
    const std::string address = "/lc/card.html?s=" + newCode();
    const auto send = [&](const std::string &type, const std::string &body) {
        RawClient client(port());
        client.send("POST " + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + type
                    + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
        return client.answer().value_or(RawAnswer());
    };
    const std::string formType = "Content-Type: application/x-www-form-urlencoded\r\n";
    for (const RawAnswer &answer :
         {send("", form), send("Content-Type: text/plain\r\n", form),
          send("Content-Type: application/json\r\n", "{}"), send(formType, "holder=%zz"),
          send(formType, "holder=%ff"), send(formType, "holder=%00"),
          send(formType, "holder=a&holder=b")}) {
        EXPECT_EQ(answer.status, 400);
        expectSafe(answer);
        EXPECT_TRUE(has(answer, "提交的内容无法识别"));
    }
    EXPECT_EQ(send(formType, std::string(70'000, 'x')).status, 413);
    EXPECT_EQ(send(formType, "").status, 403);
}

TEST_F(LinkPagesTest, AnswerHeadAndRefuseOtherMethods)
{
    const std::string address = "/lc/card.html?s=" + newCode();
    const RawAnswer whole = page(address);
    const auto ask = [&](const std::string &method, const std::string &at) {
        RawClient client(port());
        client.send(method + ' ' + at
                    + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
        return client.rest();
    };
    const std::string head = ask("HEAD", address);
    EXPECT_EQ(head.substr(0, 15), "HTTP/1.1 200 OK");
    EXPECT_NE(head.find("\r\nContent-Length: " + std::to_string(whole.body.size()) + "\r\n"),
              std::string::npos);
    EXPECT_NE(head.find("\r\nContent-Security-Policy: "), std::string::npos);
    EXPECT_EQ(head.find("\r\n\r\n") + 4, head.size());
    for (const char *method : {"PUT", "DELETE", "OPTIONS", "PATCH", "TRACE", "get"}) {
        const std::string answer = ask(method, address);
        EXPECT_EQ(answer.substr(0, 31), "HTTP/1.1 405 Method Not Allowed") << method;
        EXPECT_NE(answer.find("\r\nAllow: GET, HEAD, POST\r\n"), std::string::npos) << method;
        EXPECT_NE(answer.find("\r\nContent-Type: text/html"), std::string::npos) << method;
    }
    for (const char *page : {"/lc/agreement.html", "/lc/page.css"}) {
        EXPECT_EQ(ask("HEAD", page).substr(0, 15), "HTTP/1.1 200 OK");
        EXPECT_NE(ask("POST", page).find("\r\nAllow: GET, HEAD\r\n"), std::string::npos);
    }
}

TEST_F(LinkPagesTest, AreThereForTheirOwnLinksAlone)
{
    const std::string code = newCode();
    for (const std::string &address :
         {std::string("/lc/card.html"), std::string("/lc/card.html?s="),
          "/lc/card.html?s=" + code + "x", "/lc/card.html?S=" + code, "/lc/card.html?code=" + code,
          "/lc/card.html?s=" + std::string(3'000, 'A'), "/lc/money-in.html?s=" + code,
          "/lc/money-out.html?s=" + code, "/ch/card.html?s=" + code}) {
        for (const RawAnswer &answer : {page(address), post(address, "step=prepare&" + form)}) {
            EXPECT_EQ(answer.status, 404) << address;
            expectSafe(answer);
            EXPECT_TRUE(has(answer, "<h1>链接无效</h1>"));
            EXPECT_FALSE(has(answer, "<form"));
        }
    }
    EXPECT_EQ(page("/xx/card.html?s=" + code).status, 404);
    EXPECT_EQ(page("/lc/youbika/card.html?s=" + code).status, 404);
    EXPECT_EQ(page("/lc/card.html?s=" + code).status, 200);
}

TEST_F(LinkPagesTest, ATouchTooManySendsOneText)
{
    const std::size_t before = texts();
    options.accountLimits.codePause = 60'000;
    restart();
    const RawAnswer first = cardPage();
    EXPECT_EQ(submit(first, "prepare", form).status, 200);
    const RawAnswer second = submit(first, "prepare", form);
    EXPECT_EQ(second.status, 200);
    EXPECT_TRUE(has(second, "尾号0121"));
    const std::string sms = codeAfter(before);
    EXPECT_EQ(texts(), before + 1);
    const RawAnswer soon = submit(second, "code", "");
    EXPECT_EQ(soon.status, 400);
    EXPECT_TRUE(has(soon, "秒后再重新获取。")) << soon.body;
    EXPECT_TRUE(has(soon, "尾号0121")) << "and the code can be entered";
    const RawAnswer changed
        = submit(first, "prepare", "holder=林晓月&bank=luming&number=9990005555666678");
    EXPECT_EQ(changed.status, 400);
    EXPECT_TRUE(has(changed, "秒后再重新获取。"));
    EXPECT_TRUE(has(changed, "<option value=\"luming\" selected>"));
    EXPECT_EQ(submit(soon, "confirm", "code=" + sms).status, 200);
    EXPECT_EQ(get(lc + "pay/hx.html", token)["data"]["pictureName"], "lanchuan");
}

TEST_F(LinkPagesTest, ACardOfAnotherAccountIsRefused)
{
    bindCard();
    const std::string mine = token;
    registerAccount("13900000002", password);
    token = signIn("13900000002", password, "00000000000000bb");
    const std::size_t before = texts();
    const RawAnswer second = submit(cardPage(), "prepare", form);
    EXPECT_EQ(second.status, 200);
    ASSERT_TRUE(zvxtest::LinkTest::codeAfter(before).size() == 6);
    const RawAnswer third = submit(second, "confirm", "code=" + codeOf("13900000002"));
    EXPECT_EQ(third.status, 400);
    expectSafe(third);
    EXPECT_TRUE(has(third, "该银行卡已绑定其他账户"));
    EXPECT_TRUE(has(third, "name=\"number\"")) << "another one can be entered";
    EXPECT_EQ(get(lc + "pay/hx.html", token)["data"]["bound"], false);
    EXPECT_EQ(get(lc + "pay/hx.html", mine)["data"]["bound"], true);
}

} // namespace
