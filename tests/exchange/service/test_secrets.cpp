#include "exchange/accounts/outbox.h"

#include "exchange/service/program.h"
#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <cstdio>
#include <fstream>
#include <map>
#include <sstream>

namespace {

using nlohmann::json;
using zvxtest::fetch;
using zvxtest::Program;
using zvxtest::RawClient;
using zvxtest::until;

const std::string prefix = "/lc/youbika/";
const std::string password = "Tiger-Password-7f3a";
const std::string nextPassword = "Tiger-Nextword-91c2";
const std::string wrongPassword = "Tiger-Badword-55e1";
const std::string badCode = "TigerCode8x";
const std::string cardNumber = "9990008888777766";
const std::string madeUpToken = "TigerTokenTigerTokenTigerTokenTigerToken123";

std::string textOf(const std::filesystem::path &file)
{
    std::ifstream in(file, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

/// A whole run of the program, whose every trace is searched for what nobody may find.
class SecretsTest : public testing::Test
{
protected:
    SecretsTest() : state(folder.path() / "state") { }

    std::string key()
    {
        char text[40];
        std::snprintf(text, sizeof text, "%032x", ++m_keys);
        return text;
    }
    json act(const std::string &path, const std::string &fields, const std::string &token = {})
    {
        RawClient client(port);
        client.post(prefix + path, "key=" + key() + '&' + fields, token);
        return json::parse(client.answer()->body);
    }
    /// Sends bytes as they are; what comes back is kept to be searched.
    void send(const std::string &bytes)
    {
        RawClient client(port);
        client.send(bytes);
        client.endSending();
        answers += client.rest();
    }
    void sendForm(const std::string &body, const std::string &headers = {},
                  const std::string &address = "login.html")
    {
        send("POST " + prefix + address + " HTTP/1.1\r\nHost: 127.0.0.1\r\n" + headers
             + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    }

    std::map<std::string, std::string> files() const
    {
        std::map<std::string, std::string> all;
        for (const auto &entry : std::filesystem::directory_iterator(state)) {
            if (entry.is_regular_file())
                all[entry.path().filename().string()] = textOf(entry.path());
        }
        return all;
    }

    /// Sends a code to a phone until it is one that stood nowhere before.
    std::string code(const std::string &path, const std::string &phone)
    {
        const auto before = files();
        const std::size_t size = outbox().size();
        EXPECT_EQ(act(path, "phone=" + phone)["status"], "ok");
        EXPECT_TRUE(until([&] {
            return outbox().find('\t' + phone + '\t', size) != std::string::npos
                && outbox().back() == '\n';
        }));
        const std::string text = outbox().substr(size);
        const std::size_t first = text.find_first_of("0123456789", text.rfind('\t'));
        const std::string found = text.substr(first, 4);
        bool isNew = phone.find(found) == std::string::npos;
        for (const auto &[name, bytes] : before)
            isNew = isNew && bytes.find(found) == std::string::npos;
        if (isNew)
            codes.push_back(found);
        return found;
    }
    std::string outbox() const { return textOf(state / zvx::Outbox::kFileName); }

    /// The page of a link, or what a form of it leads to. Pages hold their own link, so they are
    /// not searched.
    std::string page(const std::string &link, const std::string &form = {}) const
    {
        RawClient client(port);
        if (form.empty())
            client.get("/lc/card.html?s=" + link);
        else
            client.post("/lc/card.html?s=" + link, form);
        return client.answer()->body;
    }
    /// What opens the form that holds a button of this step.
    static std::string opened(const std::string &page, const std::string &step)
    {
        const std::string field = "name=\"form\" value=\"";
        const std::size_t button = page.find("value=\"" + step + "\"");
        return "step=" + step + "&form=" + page.substr(page.rfind(field, button) + field.size(), 32)
            + '&';
    }
    /// Binds a card by the pages, with everything wrong first, and gives the link.
    std::string bindCard(const std::string &token);

    zvxtest::TemporaryFolder folder;
    const std::filesystem::path state;
    std::uint16_t port = 0;
    std::vector<std::string> codes;
    std::string answers;

private:
    unsigned m_keys = 0;
};

std::string SecretsTest::bindCard(const std::string &token)
{
    RawClient client(port);
    client.get(prefix + "pay/hx.html", token);
    const std::string link = json::parse(client.answer()->body)["data"]["code"];
    const std::string first = opened(page(link), "prepare");
    const std::string card = "holder=林晓月&bank=luming&number=";
    page(link, card + cardNumber);
    page(link, first + card + cardNumber + "%zz");
    page(link, first + card + cardNumber + "9");
    page(link, first + "holder=" + cardNumber + "&bank=" + cardNumber + "&number=" + cardNumber);
    page(link + "x", first + card + cardNumber);
    send("GET /cgi-bin/qrcode.html?s=" + link + "&x=" + cardNumber
         + " HTTP/1.1\r\nHost: h\r\n\r\n");
    send("GET /lc/card.html?s=" + link + "#" + cardNumber + " HTTP/1.1\r\nHost: h\r\n\r\n");
    const auto before = files();
    const std::size_t size = outbox().size();
    const std::string second = page(link, first + card + cardNumber);
    EXPECT_TRUE(until([&] { return outbox().find('\n', size) != std::string::npos; }));
    const std::string text = outbox().substr(size);
    const std::string found = text.substr(text.find_first_of("0123456789", text.rfind('\t')), 6);
    bool isNew = true;
    for (const auto &[name, bytes] : before)
        isNew = isNew && bytes.find(found) == std::string::npos;
    if (isNew)
        codes.push_back(found);
    page(link, opened(second, "confirm") + "code=" + badCode);
    EXPECT_NE(page(link, opened(second, "confirm") + "code=" + found).find("绑定成功"),
              std::string::npos);
    page(link, opened(second, "confirm") + "code=" + found);
    return link;
}

TEST_F(SecretsTest, AreFoundNowhere)
{
    Program program(
        {"serve", "--state", state.string(), "--catalogue", ZVX_SMALL_CATALOGUE, "--robots", "0"},
        Program::Nothing);
    port = program.port();

    // Everything goes well.
    std::string token;
    for (int i = 0; i < 3; ++i) {
        const std::string phone = "1390000000" + std::to_string(i);
        const std::string client = "client=00000000000000aa&phone=" + phone;
        const std::string first = code("reg/send.html", phone);
        ASSERT_EQ(
            act("reg.html",
                "referee=&phone=" + phone + "&password=" + password + "&code=" + first)["status"],
            "ok");
        token = act("login.html", client + "&password=" + password)["data"]["token"];
        EXPECT_EQ(act("myaccount/append.html", "collection=2100", token)["status"], "ok");
        RawClient poll(port);
        poll.get(prefix + "sync.html?protocol=1&check=1&wait=25000", token);
        const std::string second = code("forget/send.html", phone);
        EXPECT_EQ(
            act("forget/validate.html",
                "phone=" + phone + "&password=" + nextPassword + "&code=0" + second)["status"],
            "bad-request");
        EXPECT_EQ(act("forget/validate.html",
                      "phone=" + phone + "&password=" + nextPassword + "&code=" + second)["status"],
                  "ok");
        EXPECT_EQ(json::parse(poll.answer()->body)["status"], "session");
        EXPECT_EQ(act("login.html", client + "&password=" + wrongPassword)["status"], "refused");
        token = act("login.html", client + "&password=" + nextPassword)["data"]["token"];
    }
    ASSERT_GE(token.size(), 40u);
    ASSERT_FALSE(codes.empty());

    const std::string link = bindCard(token);
    ASSERT_EQ(link.size(), 24u);

    // And everything goes wrong.
    const std::string form = "phone=13900000000&password=" + password + "&code=" + badCode
        + "&client=00000000000000aa";
    const std::string formType = "Content-Type: application/x-www-form-urlencoded\r\n";
    const std::string authorization = "Authorization: Bearer " + token + "\r\n";
    sendForm(form);
    sendForm(form, "Content-Type: text/plain\r\n");
    sendForm("{\"password\": \"" + password + "\"}", "Content-Type: application/json\r\n");
    for (const std::string path : {"login.html", "reg.html", "forget/validate.html",
                                   "myaccount/append.html", "trade/buy.html", "nowhere.html"}) {
        sendForm(form, formType, path);
        sendForm(form + "&key=" + key(), formType, path);
        sendForm(form + "&key=" + key(), formType + authorization, path);
        sendForm(form + "&key=" + key() + "&resolve=x", formType, path);
        sendForm("password=" + password + "%zz", formType, path);
        sendForm("password=" + password + "%00", formType, path);
        sendForm("password=" + password + "&password=" + password, formType, path);
        sendForm(form + "&" + std::string(70'000, 'x'), formType, path);
        sendForm(form, formType, path + "?" + form);
        sendForm(form, formType + "Transfer-Encoding: chunked\r\n", path);
    }
    const std::string get = "GET " + prefix;
    const std::string tail = " HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    for (const std::string path : {"sync.html", "myaccount.html", "cap.html", "login.html",
                                   "market/list.html", "nowhere.html"}) {
        send(get + path + "?" + form + tail + "\r\n");
        send(get + path + "?token=" + token + "&protocol=" + password + tail + "\r\n");
        send(get + path + "?protocol=1&collection=" + password + tail + "\r\n");
        send(get + path + "?x=" + password + "%zz" + tail + "\r\n");
        send(get + path + tail + "Authorization: Bearer " + madeUpToken + "\r\n\r\n");
        send(get + path + tail + "Authorization: " + password + "\r\n\r\n");
        send(get + path + tail + authorization + authorization + "\r\n");
        send(get + path + tail + authorization + " " + password + "\r\n\r\n");
        send(get + path + tail + password + "\r\n\r\n");
    }
    send(get + password + tail + "\r\n");
    send(get + std::string(5000, 'a') + password + tail + "\r\n");
    send(get + "#" + password + tail + "\r\n");
    send("GET /" + password + "/" + token + "/x" + tail + "\r\n");
    send(password + " / HTTP/1.1\r\nHost: h\r\n\r\n");
    send("GET / " + password + "\r\nHost: h\r\n\r\n");
    send("GET / HTTP/1.1\r\nHost: " + password + "\r\n\r\n");
    send("GET / HTTP/1.1\r\nHost: 127.0.0.1\r\nX: " + std::string(20'000, 'a') + password
         + "\r\n\r\n");
    send(password + "\r\n\r\n");
    answers += fetch(port, "/metrics").body;

    const std::string limits = textOf("/proc/" + std::to_string(program.pid()) + "/limits");
    EXPECT_NE(limits.find("Max core file size        0                    0 "), std::string::npos)
        << limits;
    Program listing({"outbox", "--state", state.string()}, Program::Nothing);
    EXPECT_EQ(listing.wait(), 0);
    EXPECT_EQ(listing.output, outbox()) << "while the service runs";
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0) << program.errors;

    auto traces = files();
    EXPECT_EQ(traces.count("lc.accounts"), 1u);
    EXPECT_EQ(traces.count(zvx::Outbox::kFileName), 1u);
    EXPECT_NE(traces["zvexchange.log"].find("request refused status=413"), std::string::npos);
    traces["the standard output"] = program.output;
    traces["the standard error output"] = program.errors;
    traces["an answer"] = answers;
    for (const auto &[name, bytes] : traces) {
        for (const std::string &secret : {password, nextPassword, wrongPassword, token, madeUpToken,
                                          badCode, std::string("Tiger"), link, cardNumber})
            EXPECT_EQ(bytes.find(secret), std::string::npos) << secret << " in " << name;
        if (name == zvx::Outbox::kFileName)
            continue;
        for (const std::string &code : codes)
            EXPECT_EQ(bytes.find(code), std::string::npos) << code << " in " << name;
    }
    namespace fs = std::filesystem;
    for (const auto &entry : fs::directory_iterator(state))
        EXPECT_EQ(entry.status().permissions() & (fs::perms::group_all | fs::perms::others_all),
                  fs::perms::none)
            << entry.path();
}

} // namespace
