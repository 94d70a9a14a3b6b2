#include "exchange/accounts/password_hasher.h"
#include "exchange/service/protocol.h"
#include "exchange/service/service.h"
#include "exchange/service/service_log.h"

#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <sstream>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::fetch;
using zvxtest::RawAnswer;
using zvxtest::RawClient;
using zvxtest::until;

std::string smallCatalogue()
{
    std::ifstream in(ZVX_SMALL_CATALOGUE);
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

class ServiceTest : public testing::Test
{
protected:
    ServiceTest()
    {
        options.folder = folder.path();
        options.firstCatalogue = smallCatalogue();
        options.robotOrdersPerSecond = 0;
        options.messagesEvery = 20ms;
        options.passwordHasher = std::make_shared<ArgonHasher>(ArgonCost::least());
    }

    void begin() { service = std::make_unique<Service>(options, log); }
    std::uint16_t port() const { return service->port(); }

    json ask(const std::string &address, int status = 200) const
    {
        const RawAnswer answer = fetch(port(), address);
        EXPECT_EQ(answer.status, status) << address;
        EXPECT_NE(answer.head.find("application/json; charset=utf-8"), std::string::npos);
        const json body = json::parse(answer.body);
        EXPECT_EQ(body["protocol"], 1);
        EXPECT_EQ(body["boot"], service->boot());
        EXPECT_GT(body["time"], 1'577'000'000'000);
        return body;
    }
    json market(const std::string &rest, int status = 200) const
    {
        return ask(prefix + rest, status);
    }
    json topics(const std::string &parameters) const
    {
        return market("sync.html?protocol=1&" + parameters)["data"]["topics"];
    }
    std::string metric(const std::string &name) const
    {
        const std::string text = fetch(port(), "/metrics").body;
        const std::size_t at = text.find('\n' + name + ' ');
        return at == std::string::npos
            ? ""
            : text.substr(at + name.size() + 2, text.find('\n', at + 1) - at - name.size() - 2);
    }

    const std::string prefix = "/lc/youbika/";
    zvxtest::TemporaryFolder folder;
    ServiceOptions options;
    ServiceLog log{true};
    std::unique_ptr<Service> service;
};

TEST_F(ServiceTest, AnswersEveryQueryOfTheMarket)
{
    begin();
    EXPECT_EQ(market("market.html")["data"]["servers"][0],
              (json{{"name", "邮币"}, {"prefix", "/lc/youbika/"}}));
    EXPECT_EQ(ask("/lc/market.html")["data"], market("market.html")["data"]);
    EXPECT_EQ(ask("/ch/market.html")["data"]["servers"][0]["prefix"], "/ch/youbi/");
    EXPECT_EQ(market("message.html")["data"]["messages"].size(), 1u);
    EXPECT_EQ(market("market/check.html")["data"],
              (json{{"open", true}, {"tradingDay", "2020-01-01"}, {"session", 1}}));
    EXPECT_EQ(market("update.html?version=0.0.9")["data"],
              (json{{"version", "0.1.0"}, {"minimum", "0.1.0"}, {"protocol", 1}, {"text", ""}}));

    const json brief = market("market/collection.html")["data"]["collections"];
    ASSERT_EQ(brief.size(), 8u);
    EXPECT_EQ(brief[2],
              (json{{"id", "2102"},
                    {"code", "211003"},
                    {"name", "乐山采茶版"},
                    {"initials", {"lsccb", "ysccb"}}}));
    EXPECT_EQ(market("collection/type.html")["data"]["types"][1],
              (json{{"id", 2}, {"name", "电话卡"}}));

    const json rows = market("market/list.html")["data"]["rows"];
    ASSERT_EQ(rows.size(), 8u);
    EXPECT_EQ(rows[0],
              (json{{"id", "2100"},
                    {"code", "211001"},
                    {"name", "青石桥大版"},
                    {"type", 1},
                    {"listed", 10000},
                    {"introduction", "intro/2100.html"},
                    {"latest", nullptr},
                    {"previousClose", 1000},
                    {"open", nullptr},
                    {"high", nullptr},
                    {"low", nullptr},
                    {"bid", nullptr},
                    {"ask", nullptr},
                    {"bidQuantity", 0},
                    {"askQuantity", 0},
                    {"volume", 0},
                    {"amount", 0}}));
    for (std::size_t i = 0; i < rows.size(); ++i)
        EXPECT_EQ(rows[i]["id"], brief[i]["id"]) << "one order for both lists";

    const json composite = market("market/composite.html")["data"];
    EXPECT_EQ(composite["id"], "-1");
    EXPECT_TRUE(composite["bid"].is_null());
    EXPECT_EQ(composite.size(), rows[0].size());

    EXPECT_EQ(market("collection/item.html?collection=2100")["data"],
              (json{{"id", "2100"},
                    {"latest", nullptr},
                    {"previousClose", 1000},
                    {"open", nullptr},
                    {"high", nullptr},
                    {"low", nullptr},
                    {"volume", 0},
                    {"amount", 0},
                    {"listed", 10000},
                    {"outer", 0},
                    {"inner", 0},
                    {"buyQuantity", 0},
                    {"sellQuantity", 0}}));
    EXPECT_EQ(market("collection/trade.html?collection=2100")["data"],
              (json{{"id", "2100"},
                    {"code", "211001"},
                    {"name", "青石桥大版"},
                    {"latest", nullptr},
                    {"previousClose", 1000},
                    {"lowerLimit", 900},
                    {"upperLimit", 1100},
                    {"sells", json::array()},
                    {"buys", json::array()}}));
    EXPECT_EQ(market("market/latest-list.html?collection=2100&limit=0")["data"],
              (json{{"id", "2100"}, {"deals", json::array()}}));
    for (const char *path : {"market/list.html", "market/check.html", "update.html"})
        EXPECT_GE(market(path)["version"], 1) << path;
}

/// What a path says to a request without a session and, where it acts, without a form.
std::string expected(const PathEntry &entry)
{
    const PathRoom room = roomOf(entry.kind);
    if (room == PathRoom::Polls || room == PathRoom::Market || room == PathRoom::Charts
        || room == PathRoom::Applications)
        return "ok";
    if (entry.kind == PathKind::QrCode)
        return "not-found"; // it asks for a code instead
    const bool isOpen = entry.kind == PathKind::SignIn || entry.kind == PathKind::Register
        || entry.kind == PathKind::RegisterCode || entry.kind == PathKind::Reset
        || entry.kind == PathKind::ResetCode;
    return isOpen ? "bad-request" : "session";
}

TEST_F(ServiceTest, KnowsEveryPathOfTheContract)
{
    begin();
    for (const PathEntry &entry : contractPaths()) {
        RawClient client(port());
        const std::string path = prefix + std::string(entry.path) + "?protocol=1&collection=2100";
        const std::string method(entry.method);
        client.send(method + ' ' + path + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
        const auto answer = client.answer();
        EXPECT_EQ(json::parse(answer->body)["status"], expected(entry)) << path;

        client.send((method == "GET" ? "POST " : "GET ") + path
                    + " HTTP/1.1\r\nHost: localhost\r\n\r\n");
        const auto refused = client.answer();
        EXPECT_EQ(refused->status, 405) << path;
        EXPECT_EQ(json::parse(refused->body)["status"], "method");
        EXPECT_NE(refused->head.find("\r\nAllow: " + method + "\r\n"), std::string::npos);
    }
}

TEST_F(ServiceTest, SaysWhatIsNotThere)
{
    begin();
    for (const char *path :
         {"/", "/lc", "/lc/", "/lc/youbika", "/lc/youbika/", "/lc/youbika/market",
          "/lc/youbika//market.html", "/lc/other/market.html", "/xx/market.html",
          "/lc/message.html", "/lc/youbika/MARKET.html", "/lc/youbika/market/../market.html",
          "/lc/youbika/market%2Ehtml", "/healthz/", "//healthz",
          "/lc/youbika/collection/item.html?collection=1100",
          "/lc/youbika/collection/item.html?collection=-1",
          "/lc/youbika/collection/trade.html?collection=9223372036854775807"})
        EXPECT_EQ(ask(path, 404)["status"], "not-found") << path;
}

TEST_F(ServiceTest, RefusesWrongParametersByName)
{
    begin();
    const std::pair<const char *, const char *> table[] = {
        {"sync.html", "protocol"},
        {"sync.html?protocol=x", "protocol"},
        {"sync.html?protocol=1&wait=25001", "wait"},
        {"sync.html?protocol=1&wait=-1", "wait"},
        {"sync.html?protocol=1&list=1.5", "list"},
        {"sync.html?protocol=1&check=01", "check"},
        {"sync.html?protocol=1&limit=201", "limit"},
        {"sync.html?protocol=1&collection=abc", "collection"},
        {"sync.html?protocol=1&collection=", "collection"},
        {"collection/item.html", "collection"},
        {"collection/trade.html?collection=2100x", "collection"},
        {"market/latest-list.html?collection=2100&limit=999", "limit"},
        {"market/list.html?protocol=one", "protocol"},
    };
    for (const auto &[path, name] : table) {
        const json answer = market(path, 400);
        EXPECT_EQ(answer["status"], "bad-request") << path;
        EXPECT_NE(answer["message"].get<std::string>().find(name), std::string::npos) << path;
        EXPECT_FALSE(answer.contains("data"));
    }
    EXPECT_EQ(market("sync.html?protocol=2", 400)["status"], "protocol");
    EXPECT_EQ(market("market/list.html?protocol=2", 400)["status"], "protocol");
    EXPECT_EQ(market("update.html?protocol=2")["status"], "ok") << "who is too old has to learn it";
}

TEST_F(ServiceTest, SyncComparesVersionsOfOneBoot)
{
    begin();
    const std::string boot = "boot=" + service->boot();
    EXPECT_EQ(topics("check=0")["check"]["version"], 1);
    EXPECT_EQ(topics("check=1&" + boot), json::object());
    EXPECT_EQ(topics("check=1"), json::object());
    EXPECT_EQ(topics("check=1&boot=0000000000000000")["check"]["version"], 1);
    EXPECT_EQ(topics("check=7&" + boot)["check"]["version"], 1);
    EXPECT_EQ(topics("nothing=0"), json::object());
    EXPECT_EQ(topics("brief=0&type=0&list=0")["brief"], (json{{"version", 1}, {"gap", true}}));

    const json one = topics("item=0&trade=0&latest=0&collection=2100");
    EXPECT_EQ(one["item"]["data"], market("collection/item.html?collection=2100")["data"]);
    EXPECT_EQ(one["trade"]["data"], market("collection/trade.html?collection=2100")["data"]);
    EXPECT_EQ(one["latest"]["data"], market("market/latest-list.html?collection=2100")["data"]);
    EXPECT_EQ(topics("item=0&trade=0"), json::object()) << "no collection, nothing watched";
    for (const char *unknown : {"1100", "-1", "99999999999"})
        EXPECT_EQ(topics("item=0&collection=" + std::string(unknown)),
                  (json{{"item", {{"version", 0}, {"unknown", true}}}}));
}

TEST_F(ServiceTest, SyncWaitsNoLongerThanAsked)
{
    begin();
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(topics("check=1&wait=150"), json::object());
    EXPECT_GE(std::chrono::steady_clock::now() - start, 150ms);
}

TEST_F(ServiceTest, APublicationTellsHundredsOfParkedPollsWithOneBuild)
{
    begin();
    std::vector<RawClient> clients;
    for (int i = 0; i < 300; ++i) {
        clients.emplace_back(port());
        clients.back().get(prefix + "sync.html?protocol=1&check=1&wait=25000");
    }
    RawClient other(port());
    other.get("/ch/youbi/sync.html?protocol=1&message=1&wait=25000");
    ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "301"; }));
    service->settle();
    for (RawClient &client : clients) {
        const auto answer = client.answer();
        ASSERT_TRUE(answer);
        EXPECT_EQ(
            json::parse(answer->body)["data"]["topics"],
            (json{{"check",
                   {{"version", 2},
                    {"data", {{"open", true}, {"tradingDay", "2020-01-01"}, {"session", 2}}}}}}));
    }
    EXPECT_EQ(metric("zvexchange_builds_total{topic=\"check\"}"), "1");
    EXPECT_EQ(metric("zvexchange_polls_parked"), "1")
        << "the other market's poll watches something else";

    std::ofstream(folder.path() / "messages.json") << R"({"ch": [{"text": "收市"}]})";
    const auto told = other.answer();
    ASSERT_TRUE(told);
    EXPECT_EQ(json::parse(told->body)["data"]["topics"]["message"]["data"]["messages"][0]["text"],
              "收市");
}

TEST_F(ServiceTest, AClientThatLeavesTakesItsPollAlong)
{
    begin();
    {
        RawClient client(port());
        client.get(prefix + "sync.html?protocol=1&check=1&wait=25000");
        ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "1"; }));
    }
    EXPECT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "0"; }));
}

TEST_F(ServiceTest, OnePollTooManyIsToldToComeBack)
{
    options.parkedPolls = 2;
    begin();
    std::vector<RawClient> clients;
    for (int i = 0; i < 2; ++i) {
        clients.emplace_back(port());
        clients.back().get(prefix + "sync.html?protocol=1&check=1&wait=25000");
    }
    ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "2"; }));
    EXPECT_EQ(market("sync.html?protocol=1&check=1&wait=25000", 503)["status"], "busy");
    EXPECT_EQ(topics("check=0&wait=25000").size(), 1u) << "what differs needs no place to wait";
}

TEST_F(ServiceTest, ChangesOfTheListAddUpToTheWholeList)
{
    options.robotOrdersPerSecond = 200;
    begin();
    json whole;
    json rows;
    std::int64_t version = 0;
    int steps = 0;
    std::size_t cells = 0;
    int equal = 0;
    ASSERT_TRUE(until([&] {
        whole = market("market/list.html");
        rows = whole["data"]["rows"];
        version = whole["version"];
        return whole["data"]["rows"][1]["bid"].is_number();
    }));
    while (steps < 6) {
        const json list = topics("wait=25000&list=" + std::to_string(version))["list"];
        if (list.contains("gap"))
            continue;
        ASSERT_EQ(list["base"], version);
        for (const json &change : list["changes"]) {
            for (const auto &[name, value] : change[1].items()) {
                EXPECT_NE(rows[change[0].get<std::size_t>()][name], value) << "only what differs";
                rows[change[0].get<std::size_t>()][name] = value;
                ++cells;
            }
        }
        version = list["version"];
        ++steps;
        whole = market("market/list.html");
        if (whole["version"] == version) {
            EXPECT_EQ(whole["data"]["rows"], rows);
            ++equal;
        }
    }
    EXPECT_GT(cells, 0u);
    EXPECT_GT(equal, 0);
    EXPECT_EQ(metric("zvexchange_commands_turned_away_total{market=\"/lc/youbika/\"}"), "0");
}

TEST_F(ServiceTest, ARestartKeepsTheMarketAndNamesANewBoot)
{
    options.robotOrdersPerSecond = 200;
    begin();
    const auto traded = [&] {
        const json list = market("market/list.html")["data"];
        for (const json &row : list["rows"]) {
            if (row["latest"].is_number())
                return true;
        }
        return false;
    };
    ASSERT_TRUE(until(traded));
    service->settle();
    const auto listVersion
        = [&] { return market("market/list.html")["version"].get<std::int64_t>(); };
    // The first list after the settlement may still be on its way.
    const std::int64_t settled = listVersion();
    ASSERT_TRUE(until([&] { return listVersion() >= settled + 2 && traded(); }));
    const std::string boot = service->boot();
    service->stop();
    service.reset();

    options.robotOrdersPerSecond = 0;
    begin();
    const json before = market("market/list.html")["data"];
    const json deals = market("market/latest-list.html?collection=2101&limit=200")["data"];
    EXPECT_NE(service->boot(), boot);
    EXPECT_TRUE(traded());
    EXPECT_EQ(market("market/check.html")["data"]["session"], 2);
    service.reset();
    begin();
    EXPECT_EQ(market("market/list.html")["data"], before);
    EXPECT_EQ(market("market/latest-list.html?collection=2101&limit=200")["data"], deals);
}

TEST_F(ServiceTest, TheEndAnswersParkedPolls)
{
    begin();
    RawClient client(port());
    client.get(prefix + "sync.html?protocol=1&check=1&wait=25000");
    ASSERT_TRUE(until([&] { return metric("zvexchange_polls_parked") == "1"; }));
    service->stop();
    const auto answer = client.answer();
    ASSERT_TRUE(answer);
    EXPECT_EQ(json::parse(answer->body)["data"]["topics"], json::object());
    EXPECT_TRUE(client.isClosed());
    service->stop();
}

TEST_F(ServiceTest, RefusalsOfTheParserWearTheEnvelope)
{
    begin();
    const auto refusal = [&](const std::string &bytes) {
        RawClient client(port());
        client.send(bytes);
        return json::parse(client.answer()->body);
    };
    EXPECT_EQ(refusal("nonsense\r\n\r\n")["status"], "bad-request");
    EXPECT_EQ(refusal("GET /" + std::string(5000, 'a')
                      + " HTTP/1.1\r\nHost: localhost\r\n\r\n")["status"],
              "too-large");
    EXPECT_EQ(fetch(port(), "/healthz").body, "ok\n");
    EXPECT_EQ(metric("zvexchange_requests_refused_total"), "2");
}

TEST_F(ServiceTest, AnswersToItsOwnNamesAlone)
{
    options.hostNames = {"exchange.example.org"};
    begin();
    const auto statusOf = [&](const std::string &host) {
        RawClient client(port());
        client.send("GET " + prefix + "market/list.html HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
        return json::parse(client.answer()->body)["status"];
    };
    for (const char *host : {"127.0.0.1", "localhost:1", "exchange.example.org:443"})
        EXPECT_EQ(statusOf(host), "ok") << host;
    EXPECT_EQ(metric("zvexchange_requests_refused_total"), "0");
    for (const char *host : {"evil.example", "www.exchange.example.org", "h"})
        EXPECT_EQ(statusOf(host), "bad-request") << host;
    EXPECT_EQ(metric("zvexchange_requests_refused_total"), "3");
}

TEST_F(ServiceTest, KeepsASecondServiceOutOfTheFolder)
{
    begin();
    EXPECT_THROW(Service(options, log), std::exception);
    EXPECT_EQ(fetch(port(), "/healthz").status, 200);
}

} // namespace
