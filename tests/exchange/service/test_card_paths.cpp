#include "exchange/service/link_fixture.h"
#include "exchange/service/qr_reader.h"

namespace {

using nlohmann::json;
using zvxtest::fetch;
using zvxtest::GreyPicture;
using zvxtest::RawAnswer;
using zvxtest::RawClient;
using zvxtest::readPng;
using zvxtest::readQrCode;

class CardPathsTest : public zvxtest::LinkTest
{
protected:
    std::string own() const { return "http://127.0.0.1"; }
    /// Asks with a Host of one's own.
    json hx(const std::string &host, const std::string &parameters = "") const
    {
        RawClient client(port());
        client.send("GET " + lc + "pay/hx.html" + parameters + " HTTP/1.1\r\nHost: " + host
                    + "\r\nAuthorization: Bearer " + token + "\r\n\r\n");
        return json::parse(client.answer()->body);
    }
};

TEST_F(CardPathsTest, NeedASession)
{
    beginSignedIn();
    EXPECT_EQ(get(lc + "pay/hx.html")["status"], "session");
    EXPECT_EQ(get(lc + "pay/hx.html?addresses=1")["status"], "session");
    EXPECT_EQ(get(ch + "pay/hx.html", token)["status"], "session");
    EXPECT_EQ(AccountTest::post(lc + "pay/hx.html", "a=b", token)["status"], "method");
    EXPECT_EQ(get(lc + "pay/hx.html?protocol=2", token)["status"], "protocol");
    for (const char *bad : {"0", "2", "x", ""}) {
        const json answer = get(lc + "pay/hx.html?addresses=" + std::string(bad), token);
        EXPECT_EQ(answer["status"], "bad-request") << bad;
        EXPECT_EQ(answer["reason"], "addresses") << bad;
    }
}

TEST_F(CardPathsTest, AnAccountWithoutACardGetsAFreshCodeEachTime)
{
    beginSignedIn();
    const json first = get(lc + "pay/hx.html", token)["data"];
    EXPECT_EQ(first.size(), 2u);
    EXPECT_EQ(first["bound"], false);
    const std::string code = first["code"];
    EXPECT_EQ(code.size(), 24u);
    EXPECT_NE(newCode(), code);
    EXPECT_NE(newCode(tea), code);
    EXPECT_EQ(page("/lc/card.html?s=" + code).status, 200) << "and the earlier ones stay good";
    EXPECT_EQ(page("/ch/card.html?s=" + code).status, 404);
}

TEST_F(CardPathsTest, TheQrCodeIsReadBackToTheAddressOfThePage)
{
    beginSignedIn();
    const std::string code = newCode();
    const std::string address = own() + "/lc/card.html?s=" + code;
    const RawAnswer root = page("/cgi-bin/qrcode.html?s=" + code);
    for (const RawAnswer &answer :
         {root, page(lc + "pay/qrcode.html?s=" + code), page(tea + "pay/qrcode.html?s=" + code)}) {
        ASSERT_EQ(answer.status, 200);
        EXPECT_EQ(headerOf(answer, "Content-Type"), "image/png");
        EXPECT_EQ(headerOf(answer, "Cache-Control"), "no-store");
        EXPECT_EQ(headerOf(answer, "X-Content-Type-Options"), "nosniff");
        EXPECT_EQ(readQrCode(readPng(answer.body)), address);
    }
    EXPECT_EQ(page(address.substr(own().size())).status, 200);
    EXPECT_EQ(page("/cgi-bin/qrcode.html?x=1&s=" + code + "&protocol=1").status, 200);
}

TEST_F(CardPathsTest, TheQrCodeLeadsToTheHostThatWasAskedOrToThePublicUrl)
{
    beginSignedIn();
    const auto picture = [&](const std::string &host) {
        RawClient client(port());
        client.send("GET /cgi-bin/qrcode.html?s=" + newCode() + " HTTP/1.1\r\nHost: " + host
                    + "\r\n\r\n");
        return readQrCode(readPng(client.answer()->body));
    };
    EXPECT_EQ(picture("localhost:8080").rfind("http://localhost:8080/lc/card.html?s=", 0), 0u);
    EXPECT_EQ(picture("[::1]:80").rfind("http://[::1]:80/lc/card.html?s=", 0), 0u);
    service.reset();
    options.publicUrl = "https://exchange.example.org/";
    begin();
    for (const char *host : {"localhost:8080", "exchange.example.org"})
        EXPECT_EQ(picture(host).rfind("https://exchange.example.org/lc/card.html?s=", 0), 0u);
    RawClient client(port());
    client.send("GET /healthz HTTP/1.1\r\nHost: other.example.org\r\n\r\n");
    EXPECT_EQ(client.answer()->status, 400) << "a public URL opens the service to no other name";
}

TEST_F(CardPathsTest, ThereIsNoQrCodeForWhatIsNoCode)
{
    beginSignedIn();
    const std::string used = newCode();
    bindCard();
    const std::string money = newAddress("in");
    for (const std::string &code :
         {std::string(), std::string("AAAAAAAAAAAAAAAAAAAAAAAA"), used, used + "A",
          std::string(3'000, 'A'), std::string("%3Cscript%3E"),
          money.substr(money.find('=') + 1)}) {
        for (const std::string &path : {std::string("/cgi-bin/"), lc + "pay/"}) {
            const RawAnswer answer = page(path + "qrcode.html?s=" + code);
            EXPECT_EQ(answer.status, 404) << path << code;
            EXPECT_EQ(json::parse(answer.body)["status"], "not-found");
            EXPECT_EQ(answer.body.find("script"), std::string::npos);
        }
    }
    EXPECT_EQ(page("/cgi-bin/qrcode.html").status, 404);
    EXPECT_EQ(page("/cgi-bin/other.html").status, 404);
}

TEST_F(CardPathsTest, AnExpiredCodeHasNoQrCode)
{
    options.accountLimits.linkLife = 0;
    beginSignedIn();
    const std::string code = newCode();
    EXPECT_EQ(page("/cgi-bin/qrcode.html?s=" + code).status, 404);
    EXPECT_EQ(page(lc + "pay/qrcode.html?s=" + code).status, 404);
    const RawAnswer answer = page("/lc/card.html?s=" + code);
    EXPECT_EQ(answer.status, 410);
    EXPECT_NE(answer.body.find("链接已过期"), std::string::npos);
}

TEST_F(CardPathsTest, PicturesAnswerWhatBrowsersAskOfThem)
{
    beginSignedIn();
    for (const std::string &address :
         {"/cgi-bin/qrcode.html?s=" + newCode(), std::string("/bank/chenghu.png")}) {
        const RawAnswer whole = page(address);
        RawClient head(port());
        head.send("HEAD " + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n\r\n");
        const std::string answer = head.rest();
        EXPECT_EQ(answer.substr(0, 15), "HTTP/1.1 200 OK");
        EXPECT_NE(answer.find("Content-Length: " + std::to_string(whole.body.size())),
                  std::string::npos);
        EXPECT_EQ(answer.find("\r\n\r\n") + 4, answer.size()) << "no body";
        const RawAnswer refused = LinkTest::post(address, "a=b");
        EXPECT_EQ(refused.status, 405);
        EXPECT_EQ(headerOf(refused, "Allow"), "GET, HEAD");
    }
}

TEST_F(CardPathsTest, ABoundCardIsToldWithThePictureOfItsBank)
{
    beginSignedIn();
    bindCard();
    const json card = hx("localhost:4711")["data"];
    EXPECT_EQ(card,
              (json{{"bound", true},
                    {"picturePrefix", "http://localhost:4711/bank/"},
                    {"pictureName", "lanchuan"},
                    {"pictureSuffix", "png"},
                    {"tail", "0121"}}));
    EXPECT_EQ(get(lc + "myaccount.html", token)["data"]["name"], "林晓月");
    restart();
    EXPECT_EQ(hx("localhost:4711")["data"], card);
    EXPECT_EQ(get(lc + "myaccount.html", token)["data"]["name"], "林晓月");
}

TEST_F(CardPathsTest, EachBankHasAPicture)
{
    begin();
    for (const char *bank : {"chenghu", "lanchuan", "yunting", "qingyu", "wangshu", "luming"}) {
        const RawAnswer answer = page("/bank/" + std::string(bank) + ".png");
        ASSERT_EQ(answer.status, 200) << bank;
        EXPECT_EQ(headerOf(answer, "Content-Type"), "image/png");
        const GreyPicture picture = readPng(answer.body);
        EXPECT_EQ(picture.width, 160) << bank;
        EXPECT_EQ(picture.height, 40) << bank;
        EXPECT_LT(answer.body.size(), 20'000u);
    }
    for (const char *file :
         {"nobody.png", "chenghu", "chenghu.svg", ".png", "", "chenghu.png/", "../lc/page.css"})
        EXPECT_EQ(page("/bank/" + std::string(file)).status, 404) << file;
}

TEST_F(CardPathsTest, AddressesLeadToPagesOfMoney)
{
    beginSignedIn();
    bindCard();
    const json one = hx("127.0.0.1:4711", "?addresses=1")["data"];
    const json two = hx("127.0.0.1:4711", "?addresses=1")["data"];
    EXPECT_EQ(one.size(), 2u);
    const std::string in = one["in"];
    const std::string out = one["out"];
    EXPECT_EQ(in.rfind("http://127.0.0.1:4711/lc/money-in.html?s=", 0), 0u) << in;
    EXPECT_EQ(out.rfind("http://127.0.0.1:4711/lc/money-out.html?s=", 0), 0u) << out;
    EXPECT_NE(in, two["in"]);
    EXPECT_NE(out, two["out"]);
    const RawAnswer page = this->page(newAddress("in", tea));
    EXPECT_EQ(page.status, 200);
    EXPECT_NE(page.body.find("LC00000001（茶酒）"), std::string::npos) << page.body;
}

TEST_F(CardPathsTest, AddressesOfAnAccountWithoutACardLeadToTheOneThatBindsOne)
{
    beginSignedIn();
    const std::string in = newAddress("in");
    EXPECT_EQ(in.rfind("/lc/card.html?s=", 0), 0u) << in;
    EXPECT_EQ(page(in).status, 200);
    EXPECT_EQ(newAddress("out").rfind("/lc/card.html?s=", 0), 0u);
}

TEST_F(CardPathsTest, CodesAreLimitedForEachAccount)
{
    options.accountLimits.linksOfAccount = 2;
    beginSignedIn();
    newCode();
    newCode();
    const json refused = get(lc + "pay/hx.html", token);
    EXPECT_EQ(refused["status"], "refused");
    EXPECT_EQ(refused["reason"], "too-often");
}

} // namespace
