#include "exchange/service/protocol.h"

#include "exchange/service/account_fixture.h"
#include "exchange/service/until.h"

#include <fstream>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::RawAnswer;
using zvxtest::RawClient;
using zvxtest::until;

const std::string phone = "13900000001";
const std::string other = "13900000002";
const std::string password = "open-sesame";

class AccountPathsTest : public zvxtest::AccountTest
{
protected:
    json favourites(const std::string &market, const std::string &token,
                    const std::string &parameters = "") const
    {
        return get(market + "myaccount/optional.html" + parameters, token)["data"]["collections"];
    }
    std::string login(const std::string &key, const std::string &fields) const
    {
        return "key=" + key + "&client=00000000000000aa&" + fields;
    }
};

TEST_F(AccountPathsTest, RegistersSignsInAndShowsTheAccount)
{
    begin();
    registerAccount(phone, password);
    const json signedIn = act(lc + "login.html",
                              "client=00000000000000aa&phone=" + phone + "&password=" + password);
    EXPECT_EQ(signedIn["data"]["account"],
              (json{{"account", "LC00000001"},
                    {"phone", phone},
                    {"name", "139****0001"},
                    {"poundage", 3000},
                    {"poundageOf", json::array()}}));
    const std::string token = signedIn["data"]["token"];
    EXPECT_EQ(signedIn["data"].size(), 2u);
    EXPECT_GE(token.size(), 40u);
    for (const std::string &market : {lc, tea})
        EXPECT_EQ(get(market + "myaccount.html", token)["data"], signedIn["data"]["account"])
            << "a token is good on all servers of its platform";
    EXPECT_EQ(metric("zvexchange_sign_ins_total{platform=\"lc\"}"), "1");
    EXPECT_EQ(metric("zvexchange_sign_ins_total{platform=\"ch\"}"), "0");
    EXPECT_EQ(metric("zvexchange_text_messages_total{platform=\"lc\"}"), "1");
}

TEST_F(AccountPathsTest, TheFeeIsTheOneThatTheAccountHasInTheMarket)
{
    json catalogue = json::parse(*options.firstCatalogue);
    catalogue["platforms"][1]["markets"][1]["feePpm"] = 1500;
    options.firstCatalogue = catalogue.dump();
    begin();
    registerAccount(phone, password);
    std::string token = signIn(phone, password);
    const auto fee = [&](const std::string &market) {
        return get(market + "myaccount.html", token)["data"]["poundage"];
    };
    EXPECT_EQ(fee(lc), 3000);
    EXPECT_EQ(fee(tea), 1500);
    // Its first action opens the account in the market; the catalogue's later fee is for others.
    act(tea + "trade/buy.html", "collection=3100&price=1000&quantity=1", token);
    service.reset();
    catalogue["platforms"][1]["markets"][1]["feePpm"] = 700;
    std::ofstream(folder.path() / "catalogue.json") << catalogue;
    begin();
    registerAccount(other, password);
    EXPECT_EQ(fee(tea), 1500);
    token = signIn(other, password);
    EXPECT_EQ(fee(tea), 700);
}

TEST_F(AccountPathsTest, APlatformKnowsItsOwnAccountsAlone)
{
    begin();
    registerAccount(phone, password);
    EXPECT_EQ(act(ch + "login.html",
                  "client=00000000000000aa&phone=" + phone + "&password=" + password)["reason"],
              "wrong-password");
    const std::string token = signIn(phone, password);
    EXPECT_EQ(get(ch + "myaccount.html", token)["status"], "session");
    EXPECT_EQ(get(lc + "myaccount.html", token)["status"], "ok");
}

TEST_F(AccountPathsTest, APasswordIsSetAnewWithACode)
{
    begin();
    registerAccount(phone, password);
    const std::string token = signIn(phone, password);
    ASSERT_EQ(act(lc + "forget/send.html", "phone=" + phone)["status"], "ok");
    ASSERT_TRUE(until([&] { return texts() == 2; }));
    const std::string code = codeOf(phone);
    const std::string wrong = code == "0000" ? "0001" : "0000";
    EXPECT_EQ(act(lc + "forget/validate.html",
                  "phone=" + phone + "&password=another-one&code=" + wrong)["reason"],
              "wrong-code");
    EXPECT_EQ(act(lc + "forget/validate.html",
                  "phone=" + phone + "&password=another-one&code=" + code)["data"],
              json::object());
    EXPECT_EQ(get(lc + "myaccount.html", token)["status"], "session")
        << "a new password ends the account's sessions";
    EXPECT_EQ(act(lc + "login.html",
                  "client=00000000000000aa&phone=" + phone + "&password=" + password)["reason"],
              "wrong-password");
    EXPECT_NE(signIn(phone, "another-one"), "");
    EXPECT_EQ(act(lc + "forget/validate.html",
                  "phone=" + phone + "&password=another-one&code=" + code)["reason"],
              "code-used");
    EXPECT_EQ(metric("zvexchange_wrong_codes_total{platform=\"lc\"}"), "1");
}

TEST_F(AccountPathsTest, ARepeatedKeyIsAnsweredAsAtFirst)
{
    begin();
    const std::string send = "key=" + newKey() + "&phone=" + phone;
    const json sent = post(lc + "reg/send.html", send);
    EXPECT_EQ(sent["data"], json::object());
    EXPECT_EQ(timeless(post(lc + "reg/send.html", send)), timeless(sent));
    ASSERT_TRUE(until([&] { return texts() == 1; }));

    const std::string form = "key=" + newKey() + "&referee=" + other + "&phone=" + phone
        + "&password=" + password + "&code=" + codeOf(phone);
    const json registered = post(lc + "reg.html", form);
    EXPECT_EQ(registered["status"], "ok") << registered;
    EXPECT_EQ(timeless(post(tea + "reg.html", form)), timeless(registered))
        << "not that the phone has an account by now";

    const std::string enter = login(newKey(), "phone=" + phone + "&password=" + password);
    const json first = post(lc + "login.html", enter);
    EXPECT_EQ(timeless(post(lc + "login.html", enter)), timeless(first)) << "the same token";
    const std::string token = first["data"]["token"];

    const std::string add = "key=" + newKey() + "&collection=2100";
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(post(lc + "myaccount/append.html", add, token)["data"], json::object());
    EXPECT_EQ(post(lc + "myaccount/append.html", add + "1", token)["status"], "not-found");
    EXPECT_EQ(
        post(lc + "myaccount/append.html", add.substr(0, add.size() - 1) + "1", token)["reason"],
        "key-differs");
    EXPECT_EQ(post(lc + "myaccount/remove.html", add, token)["reason"], "key-differs");
    EXPECT_EQ(favourites(lc, token), (json{"2100"}));
    EXPECT_EQ(texts(), 1u);
    EXPECT_EQ(metric("zvexchange_sign_ins_total{platform=\"lc\"}"), "1");
}

TEST_F(AccountPathsTest, ResolvingTellsTheFirstAnswerOrBurnsTheKey)
{
    begin();
    registerAccount(phone, password);
    const std::string key = newKey();
    const json first
        = post(lc + "login.html", login(key, "phone=" + phone + "&password=" + password));
    const std::string token = first["data"]["token"];
    EXPECT_EQ(timeless(post(lc + "login.html", "resolve=1&key=" + key)), timeless(first))
        << "no other field is needed";
    EXPECT_EQ(post(lc + "reg.html", "resolve=1&key=" + key)["reason"], "key-differs");

    for (const std::string path :
         {"login.html", "reg.html", "reg/send.html", "forget/send.html", "forget/validate.html",
          "myaccount/append.html", "myaccount/remove.html"}) {
        const std::string unknown = newKey();
        const json burnt = post(lc + path, "resolve=1&key=" + unknown, token);
        EXPECT_EQ(burnt["status"], "refused") << path;
        EXPECT_EQ(burnt["reason"], "unknown-key") << path;
        EXPECT_NE(burnt["message"], "") << path;
        const std::string late = "key=" + unknown
            + "&client=00000000000000aa&collection=2100&phone=" + phone + "&password=" + password
            + "&code=1234";
        EXPECT_EQ(timeless(post(lc + path, late, token)), timeless(burnt))
            << path << ": what comes late has no effect";
    }
    EXPECT_EQ(favourites(lc, token), json::array());
    EXPECT_EQ(texts(), 1u);
    EXPECT_EQ(get(lc + "myaccount.html", token)["status"], "ok");

    const std::string add = newKey();
    ASSERT_EQ(post(lc + "myaccount/append.html", "collection=2100&key=" + add, token)["status"],
              "ok");
    EXPECT_EQ(post(lc + "myaccount/append.html", "resolve=1&key=" + add, token)["data"],
              json::object());
}

TEST_F(AccountPathsTest, RefusesWrongFieldsByName)
{
    begin();
    registerAccount(phone, password);
    const std::string token = signIn(phone, password);
    const std::string good = "&client=00000000000000aa&phone=" + phone + "&password=" + password
        + "&code=1234&collection=2100";
    const auto without = [&](const std::string &name, const std::string &value = {}) {
        const std::size_t at = good.find('&' + name + '=');
        return good.substr(0, at) + (value.empty() ? "" : '&' + name + '=' + value)
            + good.substr(std::min(good.find('&', at + 1), good.size()));
    };
    const std::string withKey = "key=" + std::string(31, '7') + '1';
    struct Row {
        std::string path;
        std::string form;
        std::string name;
    };
    std::vector<Row> table;
    for (const std::string path :
         {"login.html", "reg.html", "reg/send.html", "forget/send.html", "forget/validate.html",
          "myaccount/append.html", "myaccount/remove.html"}) {
        table.push_back({path, good, "key"});
        table.push_back({path, "key=" + std::string(32, '0') + good, "key"});
        table.push_back({path, "key=" + std::string(32, 'A') + good, "key"});
        table.push_back({path, "key=" + std::string(33, 'a') + good, "key"});
        table.push_back({path, withKey + "&resolve=2" + good, "resolve"});
        table.push_back({path, withKey + "&protocol=x" + good, "protocol"});
        table.push_back({path, withKey + "&phone=%zz", "form"});
        table.push_back({path, withKey + "&" + withKey + good, "form"});
    }
    for (const std::string path :
         {"login.html", "reg.html", "reg/send.html", "forget/send.html", "forget/validate.html"}) {
        for (const std::string bad : {"", "1390000000", "139000000011", "12900000001",
                                      "1390000000x", "+8613900000001", "1390000000%EF%BC%91"})
            table.push_back({path, withKey + without("phone", bad), "phone"});
    }
    for (const std::string path : {"login.html", "reg.html", "forget/validate.html"}) {
        for (const std::string bad : {"", "12345", "123456789012345678901", "with+blank",
                                      "with%09tab", "%E3%80%80%E3%80%80%E3%80%80123"})
            table.push_back({path, withKey + without("password", bad), "password"});
    }
    for (const std::string path : {"reg.html", "forget/validate.html"}) {
        for (const std::string bad : {"", "123", "12345", "12e4", "+123"})
            table.push_back({path, withKey + without("code", bad), "code"});
    }
    table.push_back({"reg.html", withKey + good + "&referee=139", "referee"});
    for (const std::string bad :
         {"", "aa", "00000000000000AA", "00000000000000aaa", "0x000000000000aa"})
        table.push_back({"login.html", withKey + without("client", bad), "client"});
    for (const std::string path : {"myaccount/append.html", "myaccount/remove.html"}) {
        for (const std::string bad : {"", "abc", "02100", "2100x", "+2100"})
            table.push_back({path, withKey + without("collection", bad), "collection"});
    }
    for (const Row &row : table) {
        const json answer = post(lc + row.path, row.form, token);
        EXPECT_EQ(answer["status"], "bad-request") << row.path << ' ' << row.form;
        EXPECT_EQ(answer["reason"], row.name) << row.path << ' ' << row.form;
        EXPECT_NE(answer["message"], "");
        EXPECT_FALSE(answer.contains("data"));
    }
    EXPECT_EQ(post(lc + "login.html", withKey + "&protocol=2" + good)["status"], "protocol");
    EXPECT_EQ(post(lc + "login.html", withKey + good)["status"], "ok")
        << "what was malformed did not use up the key";
}

TEST_F(AccountPathsTest, TakesNothingButForms)
{
    begin();
    for (const std::string type :
         {"", "Content-Type: application/json\r\n", "Content-Type: multipart/form-data\r\n"}) {
        RawClient client(port());
        client.send("POST " + lc + "login.html HTTP/1.1\r\nHost: localhost\r\n" + type
                    + "Content-Length: 2\r\n\r\n{}");
        const json answer = json::parse(client.answer()->body);
        EXPECT_EQ(answer["status"], "bad-request") << type;
        EXPECT_EQ(answer["reason"], "Content-Type") << type;
    }
}

TEST_F(AccountPathsTest, KnownAndUnknownPhonesAreAnsweredAlike)
{
    begin();
    registerAccount(phone, password);
    const auto bytes = [&](const std::string &path, const std::string &form) {
        RawClient client(port());
        client.post(lc + path, "key=" + newKey() + '&' + form);
        const auto answer = client.answer();
        std::string text = answer->head + answer->body;
        const std::size_t time = text.find("\"time\":");
        return text.erase(time, text.find(',', time) - time);
    };
    const std::string fields = "client=00000000000000aa&password=not-that-one&phone=";
    EXPECT_EQ(bytes("login.html", fields + phone), bytes("login.html", fields + other));
    EXPECT_EQ(bytes("reg/send.html", "phone=" + phone), bytes("reg/send.html", "phone=" + other));
    EXPECT_EQ(bytes("forget/send.html", "phone=" + phone),
              bytes("forget/send.html", "phone=" + other));
    const std::string guess = "password=not-that-one&code=0000&phone=";
    EXPECT_EQ(bytes("forget/validate.html", guess + phone),
              bytes("forget/validate.html", guess + other));
    EXPECT_EQ(bytes("reg.html", guess + phone), bytes("reg.html", guess + other));
}

TEST_F(AccountPathsTest, EveryPathThatNeedsASessionSaysSo)
{
    begin();
    registerAccount(phone, password);
    const std::string token = signIn(phone, password);
    registerAccount(phone, password, ch);
    const std::string foreign = signIn(phone, password, "00000000000000aa", ch);
    std::size_t walked = 0;
    for (const PathEntry &entry : contractPaths()) {
        const PathRoom room = roomOf(entry.kind);
        const bool needs = room == PathRoom::Trading || room == PathRoom::Records
            || room == PathRoom::Deliveries || room == PathRoom::Money
            || entry.kind == PathKind::BankCard || entry.kind == PathKind::Account
            || entry.kind == PathKind::Favourites || entry.kind == PathKind::FavouriteAdd
            || entry.kind == PathKind::FavouriteRemove;
        const std::string path = lc + std::string(entry.path);
        const auto asked = [&](const std::string &authorization) {
            RawClient client(port());
            const std::string form = "key=" + newKey() + "&collection=2100&price=1000&quantity=1";
            client.send(std::string(entry.method) + ' ' + path + "?protocol=1&collection=2100"
                        + " HTTP/1.1\r\nHost: localhost\r\n" + authorization
                        + "Content-Type: application/x-www-form-urlencoded\r\n"
                        + (entry.method == "POST" ? "Content-Length: " + std::to_string(form.size())
                                   + "\r\n\r\n" + form
                                                  : "\r\n"));
            const auto answer = client.answer();
            const json body = json::parse(answer->body);
            if (body["status"] == "session") {
                EXPECT_EQ(answer->status, 401) << path;
                EXPECT_FALSE(answer->closes()) << path;
            }
            return body["status"].get<std::string>();
        };
        for (const std::string &wrong :
             {std::string(), "Authorization: Bearer " + foreign + "\r\n",
              std::string("Authorization: Bearer \r\n"), "Authorization: " + token + "\r\n",
              "Authorization: Basic " + token + "\r\n", "Authorization: Bearer  " + token + "\r\n",
              "Authorization: Bearer " + token + "x\r\n",
              "Authorization: Bearer " + token.substr(1) + "\r\n",
              "Authorization: Bearer " + std::string(8000, 'a') + "\r\n"}) {
            // A poll is bound to the token that it carries, if it carries one.
            const bool isBound = needs || (entry.kind == PathKind::Sync && !wrong.empty());
            EXPECT_EQ(asked(wrong) == "session", isBound) << path << ' ' << wrong;
        }
        EXPECT_NE(asked("authorization: bearer " + token + "\r\n"), "session") << path;
        walked += needs ? 1 : 0;
    }
    EXPECT_GE(walked, 14u);
}

TEST_F(AccountPathsTest, ASignInElsewhereEndsTheFirst)
{
    begin();
    registerAccount(phone, password);
    registerAccount(other, password);
    const std::string first = signIn(phone, password);
    const std::string sameClient = signIn(phone, password);
    const std::string neighbour = signIn(other, password);
    EXPECT_NE(first, sameClient);
    EXPECT_EQ(metric("zvexchange_sessions_live{platform=\"lc\"}"), "3");
    EXPECT_EQ(get(lc + "myaccount.html", first)["status"], "ok")
        << "a client's earlier tokens stay good";

    const std::string second = signIn(phone, password, "00000000000000bb", tea);
    for (const std::string &ended : {first, sameClient}) {
        for (const std::string path : {"myaccount.html", "myaccount/optional.html", "cap.html",
                                       "sync.html?protocol=1&check=0"}) {
            const json answer = get(lc + path, ended);
            EXPECT_EQ(answer["status"], "elsewhere") << path;
            EXPECT_NE(answer["message"], "") << path;
        }
        EXPECT_EQ(act(lc + "myaccount/append.html", "collection=2100", ended)["status"],
                  "elsewhere");
    }
    EXPECT_EQ(get(lc + "myaccount.html", second)["status"], "ok");
    EXPECT_EQ(get(lc + "myaccount.html", neighbour)["status"], "ok");
    EXPECT_EQ(metric("zvexchange_sessions_live{platform=\"lc\"}"), "2");
    EXPECT_EQ(favourites(lc, second), json::array());
}

TEST_F(AccountPathsTest, ParkedPollsOfASessionEndWithIt)
{
    begin();
    registerAccount(phone, password);
    registerAccount(other, password);
    registerAccount(phone, password, ch);
    const std::string first = signIn(phone, password);
    const std::string neighbour = signIn(other, password);
    // The same numbers, counted by another platform.
    const std::string foreign = signIn(phone, password, "00000000000000aa", ch);
    const std::string poll = "sync.html?protocol=1&check=1&wait=25000";
    std::vector<RawClient> own;
    for (const std::string &market : {lc, lc, tea}) {
        own.emplace_back(port());
        own.back().get(market + poll, first);
    }
    std::vector<RawClient> strangers;
    for (int i = 0; i < 3; ++i)
        strangers.emplace_back(port());
    strangers[0].get(lc + poll);
    strangers[1].get(lc + poll, neighbour);
    strangers[2].get(ch + poll, foreign);
    ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "6"; }));

    const std::string second = signIn(phone, password, "00000000000000bb");
    for (RawClient &client : own) {
        const auto answer = client.answer();
        ASSERT_TRUE(answer);
        EXPECT_EQ(answer->status, 401);
        EXPECT_EQ(json::parse(answer->body)["status"], "elsewhere");
    }
    EXPECT_EQ(metric("zvexchange_polls_parked"), "3") << "nobody else is told";

    own.clear();
    own.emplace_back(port());
    own.back().get(tea + poll, second);
    ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "4"; }));
    const std::size_t before = texts();
    ASSERT_EQ(act(lc + "forget/send.html", "phone=" + phone)["status"], "ok");
    ASSERT_TRUE(until([&] { return texts() > before; }));
    ASSERT_EQ(act(lc + "forget/validate.html",
                  "phone=" + phone + "&password=another-one&code=" + codeOf(phone))["status"],
              "ok");
    EXPECT_EQ(json::parse(own[0].answer()->body)["status"], "session");

    service->settle();
    for (RawClient &client : strangers) {
        const auto answer = client.answer();
        ASSERT_TRUE(answer);
        EXPECT_EQ(json::parse(answer->body)["data"]["topics"]["check"]["version"], 2);
    }
}

TEST_F(AccountPathsTest, APollWithATokenIsAnsweredLikeOneWithout)
{
    begin();
    registerAccount(phone, password);
    const std::string token = signIn(phone, password);
    const std::string address = lc + "sync.html?protocol=1&check=0&list=0&item=0&collection=2100";
    EXPECT_EQ(get(address, token)["data"]["topics"], get(address)["data"]["topics"]);
    EXPECT_EQ(get(lc + "sync.html?protocol=1&check=1&wait=50", token)["data"]["topics"],
              json::object());
    EXPECT_EQ(get(lc + "sync.html?protocol=1&check=0", "nobody-knows-it")["status"], "session");
    EXPECT_EQ(get(lc + "sync.html?protocol=2", "nobody-knows-it")["status"], "protocol");
    RawClient leaving(port());
    leaving.get(lc + "sync.html?protocol=1&check=1&wait=25000", token);
    ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "1"; }));
    leaving.close();
    ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "0"; }));
    signIn(phone, password, "00000000000000bb");
    EXPECT_EQ(get(lc + "sync.html?protocol=1&check=0", token)["status"], "elsewhere");
}

TEST_F(AccountPathsTest, FavouritesBelongToAnAccountAndAMarket)
{
    begin();
    registerAccount(phone, password);
    registerAccount(other, password);
    const std::string mine = signIn(phone, password);
    const std::string theirs = signIn(other, password);
    const auto change = [&](const std::string &market, const std::string &what,
                            const std::string &collection, const std::string &token) {
        return act(market + "myaccount/" + what + ".html", "collection=" + collection,
                   token)["status"];
    };
    for (const std::string collection : {"2101", "2103", "2100", "2101"})
        EXPECT_EQ(change(lc, "append", collection, mine), "ok");
    EXPECT_EQ(change(tea, "append", "3100", mine), "ok");
    EXPECT_EQ(change(lc, "append", "2107", theirs), "ok");
    EXPECT_EQ(favourites(lc, mine), (json{"2103", "2100", "2101"}))
        << "one that is there goes to the end";
    EXPECT_EQ(favourites(tea, mine), (json{"3100"}));
    EXPECT_EQ(favourites(lc, theirs), (json{"2107"}));

    EXPECT_EQ(change(lc, "remove", "2100", mine), "ok");
    EXPECT_EQ(change(lc, "remove", "2100", mine), "ok") << "one that is not there is no error";
    EXPECT_EQ(favourites(lc, mine), (json{"2103", "2101"}));
    for (const std::string collection : {"3100", "1100", "-1", "0", "99999999999"}) {
        EXPECT_EQ(change(lc, "append", collection, mine), "not-found") << collection;
        EXPECT_EQ(change(lc, "remove", collection, mine), "not-found") << collection;
    }
    EXPECT_EQ(favourites(tea, mine), (json{"3100"}));
}

TEST_F(AccountPathsTest, FavouritesComeInPages)
{
    begin();
    registerAccount(phone, password);
    const std::string token = signIn(phone, password);
    for (int id = 2100; id < 2108; ++id)
        ASSERT_EQ(
            act(lc + "myaccount/append.html", "collection=" + std::to_string(id), token)["status"],
            "ok");
    EXPECT_EQ(favourites(lc, token).size(), 8u);
    EXPECT_EQ(favourites(lc, token, "?page=2&size=3"), (json{"2103", "2104", "2105"}));
    EXPECT_EQ(favourites(lc, token, "?page=3&size=3"), (json{"2106", "2107"}));
    EXPECT_EQ(favourites(lc, token, "?page=4&size=3"), json::array());
    EXPECT_EQ(favourites(lc, token, "?page=2147483647&size=100"), json::array());
    const std::pair<const char *, const char *> table[] = {
        {"page=0", "page"}, {"page=-1", "page"},  {"page=x", "page"}, {"page=2147483648", "page"},
        {"size=0", "size"}, {"size=101", "size"}, {"size=", "size"},  {"protocol=x", "protocol"},
    };
    for (const auto &[parameter, name] : table) {
        const json answer = get(lc + "myaccount/optional.html?" + parameter, token);
        EXPECT_EQ(answer["status"], "bad-request") << parameter;
        EXPECT_EQ(answer["reason"], name) << parameter;
    }
    EXPECT_EQ(get(lc + "myaccount/optional.html?protocol=2", token)["status"], "protocol");
    EXPECT_EQ(get(lc + "myaccount.html?protocol=2", token)["status"], "protocol");
}

TEST_F(AccountPathsTest, ARestartKeepsAccountsSessionsAndAnswers)
{
    begin();
    registerAccount(phone, password);
    const std::string old = signIn(phone, password, "00000000000000bb");
    const std::string token = signIn(phone, password);
    const std::string key = newKey();
    ASSERT_EQ(post(lc + "myaccount/append.html", "collection=2104&key=" + key, token)["status"],
              "ok");
    const json account = get(lc + "myaccount.html", token)["data"];
    restart();
    EXPECT_EQ(metric("zvexchange_sessions_live{platform=\"lc\"}"), "1");
    EXPECT_EQ(get(lc + "myaccount.html", token)["data"], account);
    EXPECT_EQ(get(lc + "myaccount.html", old)["status"], "elsewhere");
    EXPECT_EQ(favourites(lc, token), (json{"2104"}));
    EXPECT_EQ(post(lc + "myaccount/append.html", "resolve=1&key=" + key, token)["data"],
              json::object());
    EXPECT_NE(signIn(phone, password), "");
}

TEST_F(AccountPathsTest, LimitsCountEachAddressByItself)
{
    options.accountLimits.signInsOfPeer = 2;
    begin();
    const auto attempt = [&](const char *from) {
        RawClient client(port(), from);
        client.post(lc + "login.html",
                    "key=" + newKey() + "&client=00000000000000aa&phone=" + phone
                        + "&password=not-that-one");
        return json::parse(client.answer()->body);
    };
    for (int i = 0; i < 2; ++i)
        EXPECT_EQ(attempt("127.0.0.1")["reason"], "wrong-password");
    const json refused = attempt("127.0.0.1");
    EXPECT_EQ(refused["status"], "refused");
    EXPECT_EQ(refused["reason"], "too-often");
    const std::string message = refused["message"];
    const std::size_t seconds = message.find("秒");
    ASSERT_NE(seconds, std::string::npos) << message;
    EXPECT_GT(std::stoi(message.substr(message.find_first_of("0123456789"))), 0) << message;
    EXPECT_EQ(attempt("127.0.0.2")["reason"], "wrong-password");
    EXPECT_EQ(metric("zvexchange_limited_requests_total{platform=\"lc\"}"), "1");
    EXPECT_EQ(metric("zvexchange_wrong_passwords_total{platform=\"lc\"}"), "3");
}

} // namespace
