#include "exchange/service/account_fixture.h"
#include "exchange/service/until.h"

#include <fstream>

namespace {

using nlohmann::json;
using zvxtest::until;

class ApplicationPathsTest : public zvxtest::AccountTest
{
protected:
    ApplicationPathsTest() { options.messagesEvery = std::chrono::milliseconds(10); }

    void write(const json &markets)
    {
        std::ofstream(folder.path() / "applications.json")
            << json{{"format", 1}, {"markets", markets}};
    }
    static json issue(int collection, const std::string &from, const std::string &to)
    {
        return {{"collection", collection},
                {"code", std::to_string(collection)},
                {"name", "春晓"},
                {"price", 1000},
                {"quantity", 200},
                {"from", from},
                {"to", to}};
    }
    static json application(int number, const std::string &phone, const std::string &time)
    {
        return {{"number", number},   {"phone", phone},   {"time", time},
                {"collection", 2900}, {"code", "291001"}, {"name", "春晓"},
                {"price", 1000},      {"quantity", 100},  {"state", "pending"}};
    }
    std::string collections(const std::string &rest = {}) const
    {
        std::string found;
        const json answer = get(lc + "hold/list.html" + rest);
        EXPECT_EQ(answer["status"], "ok") << answer;
        for (const json &one : answer["data"]["collections"])
            found += one["collection"].get<std::string>() + " ";
        return found;
    }
    std::string numbers(const std::string &token, const std::string &rest = {}) const
    {
        std::string found;
        const json answer = get(lc + "hold/list.html?mine=1" + rest, token);
        EXPECT_EQ(answer["status"], "ok") << answer;
        for (const json &one : answer["data"]["applications"])
            found += std::to_string(one["number"].get<int>()) + " ";
        return found;
    }

    const std::string phone = "13800000001";
    const std::string other = "13800000002";
};

TEST_F(ApplicationPathsTest, TellsWhatCanBeAppliedForToday)
{
    begin();
    EXPECT_EQ(get(lc + "hold/list.html")["data"], (json{{"collections", json::array()}}));
    write(
        {{lc,
          {{"open",
            {issue(2900, "2020-01-01", "2020-01-01"), issue(2901, "2019-12-01", "2019-12-31"),
             issue(2902, "2020-01-02", "2020-01-09"), issue(2903, "2019-12-01", "2020-01-09")}}}}});
    ASSERT_TRUE(until([&] { return collections() == "2900 2903 "; }));
    EXPECT_EQ(get(lc + "hold/list.html?page=1&size=1")["data"]["collections"],
              json::array({{{"collection", "2900"},
                            {"code", "2900"},
                            {"name", "春晓"},
                            {"price", 1000},
                            {"quantity", 200},
                            {"from", "2020-01-01"},
                            {"to", "2020-01-01"}}}));
    EXPECT_EQ(collections("?page=2&size=1"), "2903 ");
    EXPECT_EQ(collections("?page=3&size=1"), "");
    EXPECT_EQ(collections("?page=2147483647&size=200"), "");
    EXPECT_EQ(get(tea + "hold/list.html")["data"]["collections"], json::array())
        << "another market of the same platform";
    std::filesystem::remove(folder.path() / "applications.json");
    EXPECT_TRUE(until([&] { return collections().empty(); }));
}

TEST_F(ApplicationPathsTest, TellsAnAccountItsOwn)
{
    write({{lc,
            {{"applications",
              {application(1, phone, "2019-12-30 10:00:00"),
               application(2, other, "2019-12-31 10:00:00"),
               application(3, phone, "2019-12-31 23:59:59"),
               application(4, phone, "2020-01-01 00:00:00")}}}}});
    begin();
    registerAccount(phone, "secret1");
    registerAccount(other, "secret2");
    const std::string token = signIn(phone, "secret1");
    const json answer = get(lc + "hold/list.html?mine=1&size=1", token);
    EXPECT_EQ(answer["data"],
              (json{{"applications",
                     json::array({{{"number", 4},
                                   {"time", 1'577'808'000'000},
                                   {"collection", "2900"},
                                   {"code", "291001"},
                                   {"name", "春晓"},
                                   {"price", 1000},
                                   {"quantity", 100},
                                   {"granted", nullptr},
                                   {"state", 0}}})}}));
    EXPECT_EQ(numbers(token), "4 3 1 ");
    EXPECT_EQ(numbers(token, "&start=&stop="), "4 3 1 ");
    EXPECT_EQ(numbers(token, "&start=2019/12/31"), "4 3 ");
    EXPECT_EQ(numbers(token, "&stop=2019/12/31"), "3 1 ") << "a day of UTC+8";
    EXPECT_EQ(numbers(token, "&start=2019/12/31&stop=2019/12/31"), "3 ");
    EXPECT_EQ(numbers(token, "&start=2020/01/01&stop=2019/12/31"), "");
    EXPECT_EQ(numbers(token, "&page=2&size=2"), "1 ");
    EXPECT_EQ(numbers(token, "&page=2147483647&size=200"), "");
    EXPECT_EQ(numbers(signIn(other, "secret2")), "2 ");
}

TEST_F(ApplicationPathsTest, FindsAnAccountByItsNumber)
{
    begin();
    registerAccount(phone, "secret1");
    const std::string token = signIn(phone, "secret1");
    const std::string number = get(lc + "myaccount.html", token)["data"]["account"];
    json entry = application(9, phone, "2020-01-01 10:00:00");
    entry.erase("phone");
    entry["account"] = number;
    entry["state"] = "granted";
    entry["granted"] = 30;
    write({{lc, {{"applications", {entry}}}}});
    ASSERT_TRUE(until([&] { return numbers(token) == "9 "; }));
    const json told = get(lc + "hold/list.html?mine=1", token)["data"]["applications"][0];
    EXPECT_EQ(told["granted"], 30);
    EXPECT_EQ(told["state"], 1);
    EXPECT_FALSE(told.contains("phone"));
}

TEST_F(ApplicationPathsTest, OnesOwnNeedASession)
{
    begin();
    registerAccount(phone, "secret1");
    const std::string token = signIn(phone, "secret1");
    EXPECT_EQ(get(lc + "hold/list.html?mine=1")["status"], "session");
    EXPECT_EQ(get(lc + "hold/list.html?mine=0")["status"], "session")
        << "the token is looked at before all else";
    EXPECT_EQ(get(lc + "hold/list.html?mine=1&page=x")["status"], "session");
    EXPECT_EQ(get(ch + "hold/list.html?mine=1", token)["status"], "session")
        << "a token of another platform";
    EXPECT_EQ(get(lc + "hold/list.html")["status"], "ok");
    signIn(phone, "secret1", "00000000000000bb");
    EXPECT_EQ(get(lc + "hold/list.html?mine=1", token)["status"], "elsewhere");
}

TEST_F(ApplicationPathsTest, RefusesWrongParametersByName)
{
    begin();
    registerAccount(phone, "secret1");
    const std::string token = signIn(phone, "secret1");
    const std::pair<const char *, const char *> table[] = {
        {"?page=0", "page"},
        {"?page=-1", "page"},
        {"?page=2147483648", "page"},
        {"?size=0", "size"},
        {"?size=201", "size"},
        {"?size=ten", "size"},
        {"?mine=0", "mine"},
        {"?mine=", "mine"},
        {"?mine=yes", "mine"},
        {"?mine=1&page=0", "page"},
        {"?mine=1&size=201", "size"},
        {"?mine=1&start=2020-01-01", "start"},
        {"?mine=1&stop=2020/02/30", "stop"},
        {"?mine=1&stop=2020/1/1", "stop"},
        {"?protocol=one", "protocol"},
    };
    for (const auto &[rest, name] : table) {
        const json answer = get(lc + "hold/list.html" + rest, token);
        EXPECT_EQ(answer["status"], "bad-request") << rest;
        EXPECT_EQ(answer["message"], "参数 " + std::string(name) + " 不正确。") << rest;
    }
    EXPECT_EQ(get(lc + "hold/list.html?protocol=2")["status"], "protocol");
    EXPECT_EQ(get(lc + "hold/list.html?mine=1&protocol=2", token)["status"], "protocol");
}

TEST_F(ApplicationPathsTest, AFileThatIsNotRightIsLoggedAndChangesNothing)
{
    write({{lc, {{"open", {issue(2900, "2020-01-01", "2020-01-01")}}}}});
    {
        zvx::ServiceLog file(folder.path());
        zvx::Service serving(options, file);
        const auto told = [&] {
            return json::parse(
                zvxtest::fetch(serving.port(), lc + "hold/list.html").body)["data"]["collections"];
        };
        EXPECT_EQ(told().size(), 1u) << "read before the first question";
        std::ofstream(folder.path() / "applications.json") << "{\"format\": 1, \"mar";
        const auto logged = [&] {
            file.flush();
            std::ifstream in(folder.path() / "zvexchange.log");
            return std::string(std::istreambuf_iterator<char>(in), {});
        };
        EXPECT_TRUE(until([&] {
            return logged().find("applications.json is not used: ") != std::string::npos;
        })) << logged();
        EXPECT_EQ(told().size(), 1u);
    }
}

} // namespace
