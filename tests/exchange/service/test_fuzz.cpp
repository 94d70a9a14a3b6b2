#include "exchange/service/http_server.h"
#include "exchange/service/request_head.h"

#include "exchange/service/raw_client.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

namespace {

using namespace zvx;
using namespace std::chrono_literals;

const std::vector<std::string> &corpus()
{
    static const std::vector<std::string> seeds = {
        "GET /lc/youbika/sync.html?protocol=1&check=1&wait=25000 HTTP/1.1\r\nHost: h\r\n\r\n",
        "GET /lc/market.html HTTP/1.0\r\nHost: h:80\r\nConnection: keep-alive\r\n\r\n",
        "POST /lc/youbika/login.html HTTP/1.1\r\nHost: h\r\nContent-Length: 5\r\n\r\na=1&b",
        "POST /a HTTP/1.1\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n"
        "5\r\na=1&b\r\n0\r\n\r\n",
        "POST /a HTTP/1.1\r\nHost: h\r\nExpect: 100-continue\r\nContent-Length: 0\r\n\r\n",
        "HEAD /healthz HTTP/1.1\r\nHost: [::1]:9\r\nAuthorization: Bearer x\r\n\r\n",
        "GET /a?b=%E9%95%BF+x&&c&d=e=f HTTP/1.1\r\nhost:h\r\nConnection: TE, close\r\n\r\n",
    };
    return seeds;
}

/// What hostile and broken clients are known to send between the bytes of a right request.
const std::vector<std::string> &spice()
{
    static const std::vector<std::string> pieces = {"\r\n",
                                                    "\n",
                                                    "\r",
                                                    "\r\n\r\n",
                                                    std::string(1, '\0'),
                                                    " ",
                                                    "\t",
                                                    ":",
                                                    "%",
                                                    "%00",
                                                    "%zz",
                                                    "\xC3\xA9",
                                                    "\xFF",
                                                    "Content-Length: 0\r\n",
                                                    "Content-Length: 99999999999999999999\r\n",
                                                    "Transfer-Encoding: chunked\r\n",
                                                    "Host: g\r\n",
                                                    "HTTP/1.1",
                                                    "ffffffffffffffff\r\n",
                                                    "-1",
                                                    std::string(5000, 'a'),
                                                    std::string(17'000, '/'),
                                                    "a: b\r\n c: d\r\n",
                                                    "?",
                                                    "#",
                                                    "\x7f"};
    return pieces;
}

/// Bends right requests. The same seed gives the same requests on every machine.
class Mutator
{
public:
    explicit Mutator(std::uint32_t seed) : m_random(seed) { }

    std::string next()
    {
        std::string text = any(corpus());
        for (std::size_t steps = 1 + below(6); steps > 0; --steps)
            mutate(text);
        return text;
    }

private:
    std::size_t below(std::size_t bound) { return m_random() % bound; }
    const std::string &any(const std::vector<std::string> &list)
    {
        return list[below(list.size())];
    }

    void mutate(std::string &text)
    {
        const std::size_t at = below(text.size() + 1);
        const std::size_t most = std::min<std::size_t>(text.size() - at, 24);
        switch (below(6)) {
        case 0:
            text.insert(at, any(spice()));
            break;
        case 1:
            text.erase(at, below(most + 1));
            break;
        case 2:
            if (at < text.size())
                text[at] = static_cast<char>(below(256));
            break;
        case 3:
            text.insert(at, text.substr(at, below(most + 1)));
            break;
        case 4:
            text.resize(at);
            break;
        default: {
            const std::string &other = any(corpus());
            text = text.substr(0, at) + other.substr(below(other.size()));
        }
        }
    }

    std::mt19937 m_random;
};

/// What every accepted header block must be, whatever was sent.
void expectSound(const RequestHead &head, const std::string &block, const HttpLimits &limits)
{
    ASSERT_FALSE(head.target.empty()) << block;
    EXPECT_EQ(head.target.front(), '/') << block;
    EXPECT_LE(head.target.size(), limits.address);
    EXPECT_LE(head.contentLength, limits.body);
    EXPECT_LE(block.size(), limits.header);
    EXPECT_EQ(block.find('\0'), std::string::npos);
    EXPECT_FALSE(head.chunked && head.contentLength > 0) << block;
    EXPECT_TRUE(head.method == "POST" || (!head.chunked && head.contentLength == 0)) << block;
    for (const char c : head.target)
        EXPECT_TRUE(c > 0x20 && c < 0x7F && c != '#') << block;
    for (std::size_t i = 0; i < block.size(); ++i) {
        const bool behindReturn = i > 0 && block[i - 1] == '\r';
        EXPECT_EQ(block[i] == '\n', behindReturn) << block;
    }
}

TEST(Fuzz, HeaderBlocksAreSoundOrRefused)
{
    const HttpLimits limits;
    Mutator mutator(20200101);
    int accepted = 0;
    int refused = 0;
    for (int i = 0; i < 20'000; ++i) {
        const std::string text = mutator.next();
        const std::size_t end = text.find("\r\n\r\n");
        const std::string block = text.substr(0, end == std::string::npos ? end : end + 4);
        const auto result = readRequestHead(block, limits);
        if (const auto *fault = std::get_if<HttpFault>(&result)) {
            ++refused;
            EXPECT_TRUE(fault->status == 400 || fault->status == 413) << fault->status;
            EXPECT_FALSE(fault->reason.empty());
            EXPECT_LT(fault->reason.size(), 100u) << "reasons are ours, never the client's bytes";
        } else {
            ++accepted;
            const auto &head = std::get<RequestHead>(result);
            expectSound(head, block, limits);
            if (const auto parameters = HttpParameters::parse(head.query())) {
                for (const auto &[name, value] : parameters->all()) {
                    EXPECT_FALSE(name.empty());
                    EXPECT_EQ(name.find('\0'), std::string::npos);
                    EXPECT_EQ(value.find('\0'), std::string::npos);
                }
            }
        }
    }
    EXPECT_GT(accepted, 1000) << "the mutations have to reach the deeper checks as well";
    EXPECT_GT(refused, 1000);
}

/// Counts what it is asked and answers with nothing that a client sent.
class Counting : public HttpHandler
{
public:
    void handle(HttpRequest request, HttpResponder responder) override
    {
        ++handled;
        EXPECT_EQ(request.path.substr(0, 1), "/");
        responder.answer(HttpAnswer::of(200, "fine"));
    }
    HttpAnswer refuse(const HttpFault &fault) override
    {
        ++refused;
        return HttpAnswer::of(fault.status, "refused");
    }

    std::atomic<int> handled{0};
    std::atomic<int> refused{0};
};

TEST(Fuzz, ASocketAnswersEveryRequestWholeAndStaysHealthy)
{
    Counting handler;
    HttpServer::Options options;
    HttpServer server(options, handler);
    server.start();
    Mutator mutator(7);
    int answers = 0;
    for (int i = 0; i < 400; ++i) {
        zvxtest::RawClient client(server.port());
        client.send(mutator.next());
        client.endSending();
        while (const auto answer = client.answer(5s)) {
            ++answers;
            EXPECT_TRUE(answer->status == 200 || answer->status == 400 || answer->status == 413
                        || answer->status == 100)
                << answer->head;
            // The answer to HEAD names a length and has no body; what follows cannot be told apart.
            if (answer->status >= 400)
                break;
        }
        ASSERT_TRUE(client.isClosed(5s)) << "case " << i;
    }
    EXPECT_GT(answers, 100);
    EXPECT_GT(handler.handled, 20);
    EXPECT_GT(handler.refused, 100);
    EXPECT_EQ(zvxtest::fetch(server.port(), "/fine").body, "fine");
    EXPECT_LE(server.counters().open, 2u) << "no client of before is still held";
    server.stop();
}

} // namespace
