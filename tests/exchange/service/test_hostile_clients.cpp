#include "exchange/service/service.h"
#include "exchange/service/service_log.h"

#include "exchange/service/raw_client.h"
#include "exchange/service/recording_server.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using zvxtest::RawClient;
using zvxtest::RecordingServer;
using zvxtest::until;
using Steady = std::chrono::steady_clock;

// Clients that take their time.

TEST(HostileClients, HaveTenSecondsAndNoMore)
{
    EXPECT_EQ(HttpLimits().request, 10s);
    EXPECT_EQ(HttpLimits().answer, 10s);
    EXPECT_LE(HttpLimits().linger, 10s);
    EXPECT_EQ(ServiceOptions().limits.request, 10s) << "what is served is what was promised";
    EXPECT_EQ(ServiceOptions().limits.answer, 10s);
}

TEST(HostileClients, AreCutAtTheBoundHoweverTheyKeepBusy)
{
    HttpLimits limits;
    limits.request = 500ms;
    limits.idle = 60s; // whoever is cut is not cut for being idle
    RecordingServer server(limits);
    const std::string head = "POST /a HTTP/1.1\r\nHost: h\r\n";
    const std::vector<std::pair<std::string, std::string>> manners = {
        {"", ""}, // says nothing at all
        {"GET / HTTP/1.1\r\nHost: h\r\nA: ", "a"},
        {"", "G"}, // a method that never ends
        {head + "Content-Length: 60000\r\n\r\n", ""}, // a body that never comes
        {head + "Content-Length: 60000\r\n\r\n", "a"},
        {head + "Content-Length: 2\r\nExpect: 100-continue\r\n\r\n", ""},
        {head + "Transfer-Encoding: chunked\r\n\r\n", "1\r\na\r\n"},
        {head + "Transfer-Encoding: chunked\r\n\r\n1;", "x"},
        {head + "Transfer-Encoding: chunked\r\n\r\n0\r\n", "A: b\r\n"},
        {"GET /first HTTP/1.1\r\nHost: h\r\n\r\nGET /second", ""},
    };
    std::vector<RawClient> clients;
    std::vector<Steady::time_point> begins;
    for (const auto &manner : manners) {
        clients.emplace_back(server.server().port());
        begins.push_back(Steady::now());
        clients.back().send(manner.first);
    }
    std::vector<bool> isCut(clients.size());
    EXPECT_TRUE(until([&] {
        for (std::size_t i = 0; i < clients.size(); ++i) {
            if (isCut[i])
                continue;
            SCOPED_TRACE(manners[i].first + " and again " + manners[i].second);
            clients[i].send(manners[i].second);
            isCut[i] = clients[i].isClosed(1ms);
            const auto time = Steady::now() - begins[i];
            EXPECT_TRUE(!isCut[i] || time >= 400ms) << "before its time was over";
            EXPECT_TRUE(isCut[i] || time < 5s) << "each byte seems to buy it more time";
        }
        return std::count(isCut.begin(), isCut.end(), true) == std::ptrdiff_t(clients.size());
    }));
    EXPECT_EQ(server.server().counters().cutByDeadline, clients.size());
    EXPECT_EQ(server.talk({"GET /fine HTTP/1.1\r\nHost: h\r\n\r\n"}).answers,
              std::vector<int>{200});
    EXPECT_TRUE(until([&] { return server.server().counters().open == 0; }));
}

TEST(HostileClients, ThatAreRefusedAndGoOnSendingAreCutAsWell)
{
    HttpLimits limits;
    limits.linger = 300ms;
    RecordingServer server(limits);
    RawClient client(server.server().port());
    client.send("GET / HTTP/1.1\r\nHost:\r\n\r\n");
    const auto begin = Steady::now();
    EXPECT_EQ(client.answer()->status, 400);
    EXPECT_TRUE(until([&] {
        client.send("more");
        return server.server().counters().open == 0;
    }));
    EXPECT_LT(Steady::now() - begin, 5s);
}

TEST(HostileClients, ThatEndInTheMiddleAreClosedAtOnce)
{
    RecordingServer server; // with the usual bounds: nobody waits for them here
    const std::string head = "POST /a HTTP/1.1\r\nHost: h\r\n";
    const auto begin = Steady::now();
    for (const std::string &part :
         {std::string(), std::string("GET / HT"), head, head + "Content-Length: 5\r\n\r\nab",
          head + "Transfer-Encoding: chunked\r\n\r\n5\r\nab"}) {
        const auto talk = server.talk({part});
        EXPECT_TRUE(talk.closed) << part;
        EXPECT_TRUE(talk.answers.empty()) << part;
        EXPECT_TRUE(talk.handled.empty()) << part;
    }
    EXPECT_LT(Steady::now() - begin, 5s);
    EXPECT_EQ(server.server().counters().cutByDeadline, 0u);
}

TEST(HostileClients, ThatReadLateGetEveryAnswerWhole)
{
    constexpr int count = 10'000; // answers to fill every buffer on the way
    RecordingServer server;
    // Of a size that the last free place of a buffer takes in parts.
    const std::string body(3'001, 'b');
    server.setBody(body);
    RawClient late(server.server().port());
    std::thread sending([&] {
        std::string many;
        for (int i = 0; i < 100; ++i)
            many += "GET /a HTTP/1.1\r\nHost: h\r\n\r\n";
        for (int i = 0; i < count / 100; ++i)
            late.send(many);
    });
    // Nobody reads until the server cannot write any more.
    std::uint64_t before = 0;
    EXPECT_TRUE(until([&] {
        const std::uint64_t now = server.server().counters().requests;
        const bool stands = now > 500 && now == before;
        before = now;
        std::this_thread::sleep_for(20ms);
        return stands;
    }));
    EXPECT_LT(before, static_cast<std::uint64_t>(count)) << "nothing was in its way";
    for (int i = 0; i < count; ++i) {
        const auto answer = late.answer();
        ASSERT_TRUE(answer) << i;
        ASSERT_EQ(answer->status, 200) << answer->head;
        ASSERT_EQ(answer->body, body) << i;
    }
    sending.join();
}

TEST(HostileClients, ThatNeverReadSmallAnswersAreCut)
{
    HttpLimits limits;
    limits.answer = 300ms;
    RecordingServer server(limits);
    RawClient deaf(server.server().port());
    std::thread sending([&] {
        std::string many;
        for (int i = 0; i < 1000; ++i)
            many += "GET /a HTTP/1.1\r\nHost: h\r\n\r\n";
        for (int i = 0; i < 300; ++i)
            deaf.send(many);
    });
    EXPECT_TRUE(until([&] {
        return server.server().counters().connections == 1 && server.server().counters().open == 0;
    }));
    sending.join();
    EXPECT_EQ(zvxtest::fetch(server.server().port(), "/fine").status, 200);
}

TEST(HostileClients, InACrowdKeepNobodyElseWaiting)
{
    RecordingServer server;
    std::vector<RawClient> crowd;
    for (int i = 0; i < 200; ++i) {
        crowd.emplace_back(server.server().port());
        crowd.back().send(i % 2 == 0 ? "GET / HTTP/1.1\r\nHo"
                                     : "POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 9\r\n\r\na");
    }
    ASSERT_TRUE(until([&] { return server.server().counters().open >= 200; }));
    const auto begin = Steady::now();
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(zvxtest::fetch(server.server().port(), "/fine").status, 200);
    EXPECT_LT(Steady::now() - begin, 5s);
}

// What the operator reads of them.

class RefusalsInTheLog : public testing::Test
{
protected:
    RefusalsInTheLog() : log(folder.path())
    {
        std::ifstream in(ZVX_SMALL_CATALOGUE);
        std::ostringstream text;
        text << in.rdbuf();
        ServiceOptions options;
        options.folder = folder.path();
        options.firstCatalogue = text.str();
        options.robotOrdersPerSecond = 0;
        service = std::make_unique<Service>(options, log);
    }

    /// Sends the bytes and expects one refusal and the end of the connection.
    void expectRefused(const std::string &bytes, int status) const
    {
        RawClient client(service->port());
        client.send(bytes);
        const auto answer = client.answer();
        ASSERT_TRUE(answer) << bytes.substr(0, 200);
        EXPECT_EQ(answer->status, status) << bytes.substr(0, 200);
        EXPECT_TRUE(answer->closes());
        EXPECT_TRUE(client.isClosed());
    }

    std::vector<std::string> lines(const std::string &with)
    {
        log.flush();
        std::ifstream in(folder.path() / "zvexchange.log");
        std::vector<std::string> found;
        for (std::string line; std::getline(in, line);) {
            if (line.find(with) != std::string::npos)
                found.push_back(line);
        }
        return found;
    }

    zvxtest::TemporaryFolder folder;
    ServiceLog log;
    std::unique_ptr<Service> service;
};

TEST_F(RefusalsInTheLog, HaveOneLineEach)
{
    const std::string head = "POST /lc/youbika/login.html HTTP/1.1\r\nHost: 127.0.0.1\r\n";
    const std::string evil = "GET /metrics HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n";
    const std::vector<std::pair<std::string, int>> requests = {
        {head + "Content-Length: 4\r\nTransfer-Encoding: chunked\r\n\r\n0\r\n\r\n" + evil, 400},
        {head + "Transfer-Encoding: chunked\r\nContent-Length: 4\r\n\r\n0\r\n\r\n" + evil, 400},
        {head + "Content-Length: 0\r\nContent-Length: 47\r\n\r\n" + evil, 400},
        {head + "Transfer-Encoding: chunked\r\n\r\nzz\r\n" + evil, 400},
        {"GET / HTTP/1.1\r\nHost: 127.0.0.1\nA: b\r\n\r\n" + evil, 400},
        {"GET /?a=%zz HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", 400},
        {"GET /?a=1&a=2 HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n" + evil, 400},
        {"GET /" + std::string(5000, 'a') + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n", 413},
        {"GET / HTTP/1.1\r\nA: " + std::string(17'000, 'a') + "\r\n\r\n", 413},
        {head + "Content-Length: 65537\r\n\r\n" + std::string(65'537, 'a'), 413},
        {head + "Content-Length: 99999999999999999999\r\n\r\n" + evil, 413},
    };
    int ofBadRequests = 0;
    for (const auto &[bytes, status] : requests) {
        expectRefused(bytes, status);
        ofBadRequests += status == 400;
    }
    const auto all = static_cast<int>(requests.size());
    EXPECT_EQ(static_cast<int>(lines("request refused").size()), all);
    EXPECT_EQ(static_cast<int>(lines(" warning request refused status=400 reason=\"").size()),
              ofBadRequests);
    const std::string metrics = zvxtest::fetch(service->port(), "/metrics").body;
    EXPECT_NE(metrics.find("\nzvexchange_requests_refused_total " + std::to_string(all) + "\n"),
              std::string::npos)
        << metrics;
}

TEST_F(RefusalsInTheLog, AreBoundedInAFloodAndCountedAll)
{
    const std::string wrong = "GET / HTTP/1.1\r\n\r\n";
    const auto begin = Steady::now();
    std::size_t sent = 0;
    for (; sent < 150; ++sent)
        expectRefused(wrong, 400);
    const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(Steady::now() - begin);
    EXPECT_LE(static_cast<int>(lines("request refused").size()), 20 * (seconds.count() + 1));

    // The first refusal of a new second says how many had no line before.
    const auto accounted = [this] {
        std::size_t count = lines("request refused").size();
        for (const std::string &line : lines("requests refused without a line"))
            count += std::stoul(line.substr(line.find("count=") + 6));
        return count;
    };
    EXPECT_TRUE(until([&] {
        expectRefused(wrong, 400);
        ++sent;
        return accounted() == sent;
    })) << accounted()
        << " of " << sent;
    EXPECT_FALSE(lines("requests refused without a line").empty())
        << "150 requests were no flood on this machine";
}

} // namespace
