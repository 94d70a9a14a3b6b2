#include "exchange/service/request_head.h"

#include <gtest/gtest.h>

namespace {

using namespace zvx;

std::variant<RequestHead, HttpFault> read(const std::string &block)
{
    return readRequestHead(block, HttpLimits());
}

int statusOf(const std::string &block)
{
    const auto head = read(block);
    const auto *fault = std::get_if<HttpFault>(&head);
    return fault ? fault->status : 200;
}

std::string with(const std::string &lines)
{
    return "GET /lc/market.html HTTP/1.1\r\nHost: h\r\n" + lines + "\r\n";
}

std::string posting(const std::string &lines)
{
    return "POST /a HTTP/1.1\r\nHost: h\r\n" + lines + "\r\n";
}

TEST(RequestHead, GivesPathAndQueryApart)
{
    const auto head = std::get<RequestHead>(
        read("GET /lc/youbika/sync.html?a=1&b=?2 HTTP/1.1\r\nHost: h:80\r\n\r\n"));
    EXPECT_EQ(head.method, "GET");
    EXPECT_EQ(head.path(), "/lc/youbika/sync.html");
    EXPECT_EQ(head.query(), "a=1&b=?2");
    EXPECT_TRUE(head.keepAlive);
}

TEST(RequestHead, ReadsTheHeadersThatCount)
{
    const auto head = std::get<RequestHead>(read(posting("authorization:\tBearer x \r\n"
                                                         "Content-Length: 12\r\n"
                                                         "Expect: 100-Continue\r\n"
                                                         "Connection: TE, Close\r\n")));
    EXPECT_EQ(head.authorization, "Bearer x");
    EXPECT_EQ(head.contentLength, 12u);
    EXPECT_TRUE(head.expectsContinue);
    EXPECT_FALSE(head.keepAlive);
}

TEST(RequestHead, KeepsAnOldClientOnlyWhenItAsks)
{
    EXPECT_FALSE(std::get<RequestHead>(read("GET / HTTP/1.0\r\nHost: h\r\n\r\n")).keepAlive);
    EXPECT_TRUE(
        std::get<RequestHead>(read("GET / HTTP/1.0\r\nHost: h\r\nConnection: keep-alive\r\n\r\n"))
            .keepAlive);
}

TEST(RequestHead, RefusesRequestLinesThatAreNotOne)
{
    for (const char *line : {"",
                             "GET",
                             "GET /",
                             "GET  / HTTP/1.1",
                             "GET / HTTP/1.1 ",
                             "GET / HTTP/2.0",
                             "GET / http/1.1",
                             "GET / HTTP/1.10",
                             " GET / HTTP/1.1",
                             "G(T / HTTP/1.1",
                             "GET\t/\tHTTP/1.1",
                             "GET http://h/ HTTP/1.1",
                             "OPTIONS * HTTP/1.1",
                             "CONNECT h:1 HTTP/1.1",
                             "GET /a#b HTTP/1.1",
                             "GET /a b HTTP/1.1",
                             "GET /\x01 HTTP/1.1",
                             "GET /\xC3\xA9 HTTP/1.1",
                             "GET /%4 HTTP/1.1",
                             "GET /%zz HTTP/1.1",
                             "GET /% HTTP/1.1",
                             "GET /a%00b HTTP/1.1",
                             "GET /a?b=%00 HTTP/1.1"})
        EXPECT_EQ(statusOf(std::string(line) + "\r\nHost: h\r\n\r\n"), 400) << line;
}

TEST(RequestHead, RefusesWhatTwoReadersCouldUnderstandDifferently)
{
    EXPECT_EQ(statusOf("GET / HTTP/1.1\r\n\r\n"), 400) << "no Host";
    EXPECT_EQ(statusOf("GET / HTTP/1.0\r\n\r\n"), 400) << "no Host under 1.0";
    for (const char *lines :
         {"Host: g\r\n", "host: h\r\n", "A : b\r\n", " a: b\r\n", "\tb\r\n", "a: b\r\n c\r\n",
          "a\r\n", ": b\r\n", "a: b\nc: d\r\n", "a: b\rc\r\n", "a: \x01\r\n", "a: \x7f\r\n",
          "a\xC3: b\r\n", "Content-Length: 1\r\n", "Transfer-Encoding: chunked\r\n",
          "Authorization: a\r\nAuthorization: b\r\n", "Content-Encoding: gzip\r\n",
          "Expect: wonders\r\n"})
        EXPECT_EQ(statusOf(with(lines)), 400) << lines;
    EXPECT_EQ(statusOf("GET / HTTP/1.1\r\nHost:\r\n\r\n"), 400);
    EXPECT_EQ(statusOf("GET / HTTP/1.1\r\nHost: a b\r\n\r\n"), 400);
    EXPECT_EQ(statusOf(with("a: " + std::string(1, '\0') + "\r\n")), 400);
}

TEST(RequestHead, RefusesLengthsThatAreNotOneNumber)
{
    for (const char *lines :
         {"Content-Length: \r\n", "Content-Length: +1\r\n", "Content-Length: -1\r\n",
          "Content-Length: 0x10\r\n", "Content-Length: 1, 1\r\n", "Content-Length: 1 1\r\n",
          "Content-Length: 5\r\nContent-Length: 5\r\n",
          "Content-Length: 5\r\nTransfer-Encoding: chunked\r\n",
          "Transfer-Encoding: chunked\r\nContent-Length: 5\r\n",
          "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n",
          "Transfer-Encoding: gzip, chunked\r\n", "Transfer-Encoding: identity\r\n"})
        EXPECT_EQ(statusOf(posting(lines)), 400) << lines;
    EXPECT_EQ(statusOf("POST / HTTP/1.0\r\nHost: h\r\nTransfer-Encoding: chunked\r\n\r\n"), 400);
    EXPECT_EQ(statusOf(posting("Transfer-Encoding: Chunked\r\n")), 200);
}

TEST(RequestHead, HasBounds)
{
    const HttpLimits limits;
    const std::string longest(limits.address - 1, 'a');
    EXPECT_EQ(statusOf("GET /" + longest + " HTTP/1.1\r\nHost: h\r\n\r\n"), 200);
    EXPECT_EQ(statusOf("GET /a" + longest + " HTTP/1.1\r\nHost: h\r\n\r\n"), 413);
    EXPECT_EQ(statusOf(posting("Content-Length: " + std::to_string(limits.body) + "\r\n")), 200);
    EXPECT_EQ(statusOf(posting("Content-Length: " + std::to_string(limits.body + 1) + "\r\n")),
              413);
    EXPECT_EQ(statusOf(posting("Content-Length: 18446744073709551616\r\n")), 413);
    EXPECT_EQ(statusOf(posting("Content-Length: " + std::string(400, '9') + "\r\n")), 413);
    EXPECT_EQ(statusOf(with("a: " + std::string(limits.header, 'b') + "\r\n")), 413);
    std::string many;
    for (std::size_t i = 0; i < limits.headerLines; ++i)
        many += "a: b\r\n";
    EXPECT_EQ(statusOf(with(many)), 413);
}

TEST(HttpParameters, DecodesPairs)
{
    const auto pairs = HttpParameters::parse("a=1&b=%E9%95%BF+x&&c&d=e=f");
    ASSERT_TRUE(pairs);
    EXPECT_EQ(*pairs->find("a"), "1");
    EXPECT_EQ(*pairs->find("b"), "长 x");
    EXPECT_EQ(*pairs->find("c"), "");
    EXPECT_EQ(*pairs->find("d"), "e=f");
    EXPECT_EQ(pairs->find("e"), nullptr);
}

TEST(HttpParameters, RefusesWhatIsNotText)
{
    for (const char *text : {"a=%", "a=%4", "a=%zz", "a=%00", "a=%FF", "a=%C0%80", "a=%ED%A0%80",
                             "=b", "a=1&a=2", "a=1&%61=2", "%=1"})
        EXPECT_FALSE(HttpParameters::parse(text)) << text;
    std::string many;
    for (int i = 0; i < 65; ++i)
        many += "p" + std::to_string(i) + "=1&";
    EXPECT_FALSE(HttpParameters::parse(many));
}

} // namespace
