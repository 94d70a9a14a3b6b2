#include "exchange/service/browser.h"
#include "exchange/service/link_fixture.h"
#include "exchange/service/qr_reader.h"

#include <cstdlib>
#include <fstream>

namespace {

using nlohmann::json;
using zvxtest::Browser;
using zvxtest::readPng;
using zvxtest::readQrCode;
using zvxtest::scaled;

constexpr Browser::Size telephone{390, 844, true};
constexpr Browser::Size desk{1366, 768, false};

/// The roads of people through the pages, in a real browser.
class AccountOpeningTest : public zvxtest::LinkTest
{
protected:
    void SetUp() override { beginSignedIn(); }

    /// What a telephone that scans the picture of the client's dialog is led to.
    std::string scannedAddress()
    {
        const auto picture = page("/cgi-bin/qrcode.html?s=" + newCode());
        std::string address = readQrCode(scaled(readPng(picture.body), 200));
        // The clients of these tests ask without a port, which would be the service's own.
        address.insert(address.find("/lc/"), ":" + std::to_string(port()));
        return address;
    }
    std::string absolute(const std::string &address) const
    {
        return "http://127.0.0.1:" + std::to_string(port()) + address;
    }

    /// A page as it is meant to be looked at: not wider than the window, touched without effort,
    /// nothing blocked. Kept as a picture where somebody wants to look at it.
    void look(Browser &browser, const std::string &name)
    {
        SCOPED_TRACE(name);
        for (const Browser::Size &size : {desk, telephone}) {
            browser.resize(size);
            EXPECT_FALSE(browser.isTooWide());
            if (const char *to = std::getenv("ZVX_PICTURES")) {
                const std::string file = std::string(to) + '/' + name
                    + (size.isTelephone ? "-telephone.png" : "-desk.png");
                std::ofstream(file, std::ios::binary) << browser.picture();
            }
        }
        EXPECT_GE(browser.leastTouchHeight(), 44);
        for (const std::string &complaint : browser.complaints())
            ADD_FAILURE() << complaint;
    }
};

TEST_F(AccountOpeningTest, FromTheQrCodeToTheBoundCard)
{
    const std::size_t before = texts();
    Browser browser(telephone);
    const std::string address = scannedAddress();
    browser.open(address);
    EXPECT_EQ(browser.title(), "开户绑卡 - 岚川");
    EXPECT_NE(browser.text(".who").find("LC00000001"), std::string::npos);
    look(browser, "card-first");

    browser.type("#holder", "林晓月");
    browser.type("#number", "9990001234567890122");
    browser.follow("button[value=prepare]");
    EXPECT_EQ(browser.text("#bank-fault"), "请选择发卡银行");
    EXPECT_EQ(browser.value("#holder"), "林晓月") << "what was typed stays";
    EXPECT_EQ(browser.value("#number"), "");
    // A refused form is an answer with 400, of which the browser's console has a line.
    for (const std::string &complaint : browser.complaints())
        EXPECT_NE(complaint.find("400"), std::string::npos) << complaint;
    look(browser, "card-refused");

    browser.choose("#bank", "lanchuan");
    browser.type("#number", "9990 0012 3456 7890 121");
    browser.follow("button[value=prepare]");
    EXPECT_NE(browser.text("dl").find("岚川银行（尾号0121）"), std::string::npos);
    look(browser, "card-second");
    EXPECT_EQ(get(lc + "pay/hx.html", token)["data"]["bound"], false);

    const std::string code = codeAfter(before);
    browser.type("#code", code == "000000" ? "000001" : "000000");
    browser.follow("button[value=confirm]");
    EXPECT_EQ(browser.text("#code-fault"), "验证码错误");
    browser.complaints();
    look(browser, "card-wrong-code");

    browser.type("#code", code);
    browser.follow("button[value=confirm]");
    EXPECT_EQ(browser.text("h1"), "绑定成功");
    const json card = get(lc + "pay/hx.html", token)["data"];
    EXPECT_EQ(card["bound"], true) << "the client's next question";
    EXPECT_EQ(card["tail"], "0121");
    browser.complaints();

    // The same address again is over, and says so.
    browser.open(address);
    EXPECT_EQ(browser.text("h1"), "链接已使用");
    browser.open(absolute("/lc/card.html?s=AAAAAAAAAAAAAAAAAAAAAAAA"));
    EXPECT_EQ(browser.text("h1"), "链接无效");
}

TEST_F(AccountOpeningTest, MoneyGoesInAndOutByThePages)
{
    bindCard();
    const std::size_t before = texts();
    Browser browser(telephone);
    browser.open(absolute(newAddress("in")));
    look(browser, "money-in-first");
    browser.type("#amount", "1,000.50");
    browser.follow("button[value=prepare]");
    look(browser, "money-in-second");
    browser.type("#code", codeAfter(before));
    browser.follow("button[value=confirm]");
    EXPECT_EQ(browser.text("h1"), "入金成功");
    EXPECT_EQ(get(lc + "cap.html", token)["data"]["available"], 100'050);
    // "Reload" sends the confirmation again, and moves nothing.
    browser.reload();
    EXPECT_EQ(browser.text("h1"), "链接已使用");
    browser.complaints();

    browser.open(absolute(newAddress("out")));
    look(browser, "money-out-first");
    browser.type("#amount", "2000");
    browser.follow("button[value=prepare]");
    look(browser, "money-out-second");
    browser.follow("button[value=confirm]");
    EXPECT_EQ(browser.value("#amount"), "") << "the confirmation holds no amount to keep";
    EXPECT_NE(browser.text(".notice"), "") << "there is not so much money";
    browser.complaints();
    look(browser, "money-out-refused");
    browser.type("#amount", "1000");
    browser.follow("button[value=prepare]");
    browser.follow("button[value=confirm]");
    EXPECT_EQ(browser.text("h1"), "出金成功");
    EXPECT_EQ(get(lc + "cap.html", token)["data"]["available"], 50);
}

TEST_F(AccountOpeningTest, TypedTextIsNeverPartOfThePage)
{
    Browser browser(telephone);
    const std::string evil = "\"><img src=x onerror=document.title='broken'><b>";
    browser.open(scannedAddress());
    browser.type("#holder", evil.substr(0, 30));
    browser.type("#number", "1");
    browser.choose("#bank", "luming");
    browser.follow("button[value=prepare]");
    EXPECT_EQ(browser.value("#holder"), evil.substr(0, 30));
    EXPECT_EQ(browser.value("#bank"), "luming");
    EXPECT_EQ(browser.title(), "开户绑卡 - 岚川");
    EXPECT_EQ(browser.text("#holder-fault"), "请填写持卡人姓名，2至30个汉字或字母");
    EXPECT_EQ(browser.text("img"), "");
}

} // namespace
