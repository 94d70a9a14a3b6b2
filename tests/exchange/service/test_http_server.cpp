#include "exchange/service/http_server.h"

#include "exchange/service/raw_client.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>

#include <mutex>
#include <thread>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using zvxtest::RawClient;
using zvxtest::until;

/// Answers each path with its name and body; what begins with /park waits until it is released.
class Echo : public HttpHandler
{
public:
    void handle(HttpRequest request, HttpResponder responder) override
    {
        if (request.path == "/drop")
            return;
        if (request.path == "/peer") {
            responder.answer(HttpAnswer::of(200, request.peer));
            return;
        }
        if (request.path == "/page") {
            HttpAnswer page = HttpAnswer::of(200, "<p>");
            page.contentSecurity = "default-src 'none'";
            responder.answer(std::move(page));
            return;
        }
        if (request.path.rfind("/park", 0) != 0) {
            responder.answer(HttpAnswer::of(200, request.method + request.path + request.body));
            return;
        }
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_parked.push_back(std::make_unique<HttpResponder>(std::move(responder)));
        if (request.path == "/park/watch")
            m_parked.back()->watch([this] { ++gone; });
        ++parked;
    }

    HttpAnswer refuse(const HttpFault &fault) override
    {
        ++refused;
        return HttpAnswer::of(fault.status, fault.reason);
    }

    void release()
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        for (auto &responder : m_parked)
            responder->answer(HttpAnswer::of(200, "released"));
        m_parked.clear();
    }

    std::atomic<int> parked{0};
    std::atomic<int> gone{0};
    std::atomic<int> refused{0};

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<HttpResponder>> m_parked;
};

class HttpServerTest : public testing::Test
{
protected:
    void begin(const HttpLimits &limits = {})
    {
        HttpServer::Options options;
        options.limits = limits;
        server = std::make_unique<HttpServer>(options, echo);
        server->start();
    }
    RawClient client() const { return RawClient(server->port()); }
    /// Status of the one answer to these bytes, after which the connection must end.
    int refusalOf(const std::string &bytes) const
    {
        RawClient one = client();
        one.send(bytes);
        const auto answer = one.answer();
        EXPECT_TRUE(one.isClosed()) << bytes;
        return answer ? answer->status : 0;
    }
    void expectHealthy() const
    {
        EXPECT_EQ(zvxtest::fetch(server->port(), "/fine").body, "GET/fine");
    }

    Echo echo;
    std::unique_ptr<HttpServer> server;
};

TEST_F(HttpServerTest, AnswersOneRequestAfterTheOtherOnOneConnection)
{
    begin();
    RawClient one = client();
    for (int i = 0; i < 3; ++i) {
        one.get("/a" + std::to_string(i));
        EXPECT_EQ(one.answer()->body, "GET/a" + std::to_string(i));
    }
    EXPECT_EQ(server->counters().connections, 1u);
    EXPECT_EQ(server->counters().requests, 3u);
}

TEST_F(HttpServerTest, KeepsPipelinedRequestsInOrderBehindAParkedOne)
{
    begin();
    RawClient one = client();
    one.send("GET /park HTTP/1.1\r\nHost: h\r\n\r\n"
             "POST /b HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\n\r\nxyz"
             "GET /c HTTP/1.1\r\nHost: h\r\n\r\n");
    ASSERT_TRUE(until([&] { return echo.parked == 1; }));
    EXPECT_EQ(server->counters().requests, 1u);
    echo.release();
    EXPECT_EQ(one.answer()->body, "released");
    EXPECT_EQ(one.answer()->body, "POST/bxyz");
    EXPECT_EQ(one.answer()->body, "GET/c");
}

TEST_F(HttpServerTest, KeepsARequestThatComesBehindOneThatWasTakenMeanwhile)
{
    begin();
    RawClient one = client();
    // The next request is there before the first is answered, and the one after it comes when both
    // were taken.
    for (int round = 0; round < 20; ++round) {
        const int before = echo.parked;
        one.send("GET /park HTTP/1.1\r\nHost: h\r\n\r\n");
        ASSERT_TRUE(until([&] { return echo.parked == before + 1; }));
        one.send("POST /park HTTP/1.1\r\nHost: h\r\nContent-Length: 2\r\n\r\nhi");
        ASSERT_EQ(zvxtest::fetch(server->port(), "/fine").status, 200); // and it is read by now
        echo.release();
        ASSERT_EQ(one.answer()->body, "released");
        ASSERT_TRUE(until([&] { return echo.parked == before + 2; }));
        one.send("POST /b HTTP/1.1\r\nHost: h\r\nContent-Length: 3\r\n\r\nxyz");
        echo.release();
        ASSERT_EQ(one.answer()->body, "released");
        ASSERT_EQ(one.answer()->body, "POST/bxyz");
    }
}

TEST_F(HttpServerTest, ReadsARequestThatComesByteByByte)
{
    begin();
    RawClient one = client();
    for (const char c : std::string("POST /b HTTP/1.1\r\nHost: h\r\nContent-Length: 2\r\n\r\nhi"))
        one.send(std::string(1, c));
    EXPECT_EQ(one.answer()->body, "POST/bhi");
}

TEST_F(HttpServerTest, ReadsChunkedBodiesWithinTheBound)
{
    begin();
    const std::string head = "POST /b HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n";
    RawClient one = client();
    one.send(head + "3\r\nabc\r\n2;x=y\r\nde\r\n0\r\n\r\nGET /next HTTP/1.1\r\nHost: h\r\n\r\n");
    EXPECT_EQ(one.answer()->body, "POST/babcde");
    EXPECT_EQ(one.answer()->body, "GET/next");
    EXPECT_EQ(refusalOf(head + "zz\r\n"), 400);
    EXPECT_EQ(refusalOf(head + "FFFFFFFFFFFFFFFFF\r\n"), 400);
    EXPECT_EQ(refusalOf(head + "20000\r\n" + std::string(0x20000, 'a')), 413);
    expectHealthy();
}

TEST_F(HttpServerTest, RefusesMalformedRequestsAndStaysHealthy)
{
    begin();
    const std::string ok = "GET / HTTP/1.1\r\nHost: h\r\n";
    for (const std::string &bytes : {
             std::string("\r\n\r\n"),
             std::string("\r\nGET / HTTP/1.1\r\nHost: h\r\n\r\n"),
             std::string("hello\n"),
             std::string("\x16\x03\x01\x02\x00\x01", 6),
             std::string("GET / HTTP/1.1\nHost: h\n\n"),
             std::string("GET / HTTP/1.1\r\n\r\n"),
             std::string("GET / HTTP/1.0\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n"),
             std::string("GET http://h/ HTTP/1.1\r\nHost: h\r\n\r\n"),
             std::string("GET /?a=%zz HTTP/1.1\r\nHost: h\r\n\r\n"),
             std::string("GET /?a=1&a=2 HTTP/1.1\r\nHost: h\r\n\r\n"),
             std::string("PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n"),
             ok + "Host: h\r\n\r\n",
             ok + "A : b\r\n\r\n",
             ok + "A: b\r\n c\r\n\r\n",
             ok + "Content-Length: 5\r\n\r\nabcde",
             ok + std::string("A: \0b\r\n\r\n", 9),
         })
        EXPECT_EQ(refusalOf(bytes), 400) << bytes;
    EXPECT_EQ(echo.refused, 16);
    EXPECT_EQ(server->counters().requests, 1u) << "only the repeated parameter got so far";
    expectHealthy();
}

TEST_F(HttpServerTest, NeverReadsASmuggledRequest)
{
    begin();
    EXPECT_EQ(refusalOf("POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 4\r\n"
                        "Transfer-Encoding: chunked\r\n\r\n0\r\n\r\n"
                        "GET /evil HTTP/1.1\r\nHost: h\r\n\r\n"),
              400);
    EXPECT_EQ(refusalOf("POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 0\r\nContent-Length: 40\r\n"
                        "\r\nGET /evil HTTP/1.1\r\nHost: h\r\n\r\n"),
              400);
    EXPECT_EQ(server->counters().requests, 0u);
    expectHealthy();
}

TEST_F(HttpServerTest, RefusesWhatIsTooLarge)
{
    begin();
    EXPECT_EQ(refusalOf("GET /" + std::string(5000, 'a') + " HTTP/1.1\r\nHost: h\r\n\r\n"), 413);
    EXPECT_EQ(refusalOf("GET / HTTP/1.1\r\nHost: h\r\nA: " + std::string(17'000, 'a') + "\r\n\r\n"),
              413);
    EXPECT_EQ(refusalOf("GET /" + std::string(40'000, 'a')), 413) << "a header without an end";
    EXPECT_EQ(refusalOf("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 65537\r\n\r\n"
                        + std::string(65'537, 'a')),
              413);
    expectHealthy();
}

TEST_F(HttpServerTest, CutsSlowAndIdleClients)
{
    HttpLimits limits;
    limits.request = 300ms;
    limits.idle = 300ms;
    begin(limits);
    RawClient silent = client();
    RawClient slowHead = client();
    slowHead.send("GET / HT");
    RawClient slowBody = client();
    slowBody.send("POST / HTTP/1.1\r\nHost: h\r\nContent-Length: 5\r\n\r\nab");
    RawClient idle = client();
    idle.get("/a");
    EXPECT_EQ(idle.answer()->status, 200);
    for (RawClient *each : {&silent, &slowHead, &slowBody, &idle})
        EXPECT_TRUE(each->isClosed());
    EXPECT_EQ(server->counters().cutByDeadline, 3u);
    EXPECT_TRUE(until([&] { return server->counters().open == 0; }));
    expectHealthy();
}

TEST_F(HttpServerTest, CutsAClientThatTricklesBytes)
{
    HttpLimits limits;
    limits.request = 300ms;
    begin(limits);
    RawClient slow = client();
    slow.send("GET / HTTP/1.1\r\nHost: h\r\nA: ");
    // Each byte comes well within the bound; the request as a whole does not.
    EXPECT_TRUE(until([&] {
        slow.send("a");
        return slow.isClosed(20ms);
    }));
    expectHealthy();
}

TEST_F(HttpServerTest, CutsAClientThatDoesNotReadItsAnswers)
{
    HttpLimits limits;
    limits.answer = 300ms;
    begin(limits);
    RawClient deaf = client();
    const std::string request
        = "POST /a HTTP/1.1\r\nHost: h\r\nContent-Length: 60000\r\n\r\n" + std::string(60'000, 'x');
    std::thread sending([&] {
        for (int i = 0; i < 400; ++i)
            deaf.send(request);
    });
    EXPECT_TRUE(
        until([&] { return server->counters().connections == 1 && server->counters().open == 0; }));
    sending.join();
    expectHealthy();
}

TEST_F(HttpServerTest, AnswersAClientThatEndedItsSendingSide)
{
    begin();
    RawClient one = client();
    one.get("/park");
    one.endSending();
    ASSERT_TRUE(until([&] { return echo.parked == 1; }));
    echo.release();
    EXPECT_EQ(one.answer()->body, "released");
    EXPECT_TRUE(one.isClosed());
}

TEST_F(HttpServerTest, TellsTheWatcherWhenItsClientLeaves)
{
    begin();
    RawClient one = client();
    one.get("/park/watch");
    ASSERT_TRUE(until([&] { return echo.parked == 1; }));
    one.close();
    EXPECT_TRUE(until([&] { return echo.gone == 1; }));
    EXPECT_TRUE(until([&] { return server->counters().open == 0; }));
    echo.release();
    expectHealthy();
}

TEST_F(HttpServerTest, AnswersForAHandlerThatForgets)
{
    begin();
    RawClient one = client();
    one.get("/drop");
    EXPECT_EQ(one.answer()->status, 500);
    EXPECT_TRUE(one.isClosed());
}

TEST_F(HttpServerTest, TurnsAwayOneConnectionTooMany)
{
    HttpLimits limits;
    limits.connections = 2;
    begin(limits);
    RawClient first = client();
    RawClient second = client();
    first.get("/a");
    second.get("/a");
    EXPECT_EQ(first.answer()->status, 200);
    EXPECT_EQ(second.answer()->status, 200);
    RawClient third = client();
    EXPECT_EQ(third.answer()->status, 503);
    EXPECT_TRUE(third.isClosed());
    EXPECT_EQ(server->counters().turnedAway, 1u);
    first.close();
    EXPECT_TRUE(until([&] { return zvxtest::fetch(server->port(), "/b").status == 200; }));
}

TEST_F(HttpServerTest, SendsNoBodyBehindTheAnswerToHead)
{
    begin();
    RawClient one = client();
    one.send("HEAD /abc HTTP/1.1\r\nHost: h\r\n\r\n"
             "GET /last HTTP/1.1\r\nHost: h\r\nConnection: close\r\n\r\n");
    const std::string all = one.rest();
    EXPECT_EQ(all.find("HEAD/abc"), std::string::npos);
    EXPECT_NE(all.find("\r\nContent-Length: 8\r\n"), std::string::npos);
    EXPECT_NE(all.find("GET/last"), std::string::npos);
}

TEST_F(HttpServerTest, InvitesTheBodyOfAClientThatWaitsToBeAsked)
{
    begin();
    RawClient one = client();
    one.send("POST /b HTTP/1.1\r\nHost: h\r\nContent-Length: 2\r\nExpect: 100-continue\r\n\r\n");
    EXPECT_EQ(one.answer()->status, 100);
    one.send("hi");
    EXPECT_EQ(one.answer()->body, "POST/bhi");
}

TEST_F(HttpServerTest, StopsWhileClientsAreConnected)
{
    begin();
    RawClient idle = client();
    idle.get("/a");
    EXPECT_EQ(idle.answer()->status, 200);
    RawClient half = client();
    half.send("GET /");
    server->stop();
    EXPECT_TRUE(idle.isClosed());
    EXPECT_TRUE(half.isClosed());
    server->stop();
}

TEST_F(HttpServerTest, SaysInOneSentenceWhyItCannotListen)
{
    begin();
    HttpServer::Options taken;
    taken.port = server->port();
    EXPECT_THROW(HttpServer(taken, echo), std::runtime_error);
    HttpServer::Options name;
    name.address = "localhost";
    EXPECT_THROW(HttpServer(name, echo), std::runtime_error);
}

TEST_F(HttpServerTest, RefusesAHostThatIsNotItsOwn)
{
    HttpServer::Options options;
    options.hosts = HostNames({"exchange.example.org"});
    server = std::make_unique<HttpServer>(options, echo);
    server->start();
    const auto statusOf = [&](const std::string &host) {
        RawClient one = client();
        one.send("GET /a HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
        const auto answer = one.answer();
        return answer ? answer->status : 0;
    };
    for (const char *host : {"127.0.0.1", "[::1]:9", "localhost:1", "exchange.example.org"})
        EXPECT_EQ(statusOf(host), 200) << host;
    EXPECT_EQ(echo.refused, 0);
    for (const char *host : {"evil.example", "127.0.0.1.evil.example:80", "h"})
        EXPECT_EQ(statusOf(host), 400) << host;
    EXPECT_EQ(echo.refused, 3) << "one line each for the log";
    EXPECT_EQ(refusalOf("POST /a HTTP/1.1\r\nHost: evil.example\r\nContent-Length: 3\r\n\r\nabc"),
              400);
}

TEST_F(HttpServerTest, KnowsWhoAsks)
{
    begin();
    EXPECT_EQ(zvxtest::fetch(server->port(), "/peer").body, "127.0.0.1");
    RawClient other(server->port(), "127.0.0.9");
    other.get("/peer");
    EXPECT_EQ(other.answer()->body, "127.0.0.9");
    server.reset();
    // A socket of the other family, which takes both.
    HttpServer::Options options;
    options.address = "::";
    try {
        server = std::make_unique<HttpServer>(options, echo);
    } catch (const std::runtime_error &) {
        GTEST_SKIP() << "this machine has no IPv6";
    }
    server->start();
    EXPECT_EQ(zvxtest::fetch(server->port(), "/peer").body, "127.0.0.1");
}

TEST_F(HttpServerTest, APageCarriesItsRules)
{
    begin();
    const std::string head = zvxtest::fetch(server->port(), "/page").head;
    EXPECT_NE(head.find("\r\nContent-Security-Policy: default-src 'none'\r\n"), std::string::npos);
    EXPECT_NE(head.find("\r\nReferrer-Policy: no-referrer\r\n"), std::string::npos);
    EXPECT_EQ(zvxtest::fetch(server->port(), "/fine").head.find("Content-Security"),
              std::string::npos);
}

} // namespace
