#include "exchange/service/public_address.h"

#include "exchange/service/http_message.h"

#include <gtest/gtest.h>

namespace {

using namespace zvx;

TEST(PublicAddress, IsWhatTheOperatorSays)
{
    HttpRequest request;
    request.host = "127.0.0.1:8080";
    EXPECT_EQ(PublicAddress().baseFor(request), "http://127.0.0.1:8080");
    EXPECT_EQ(PublicAddress().host(), "");
    const PublicAddress address("https://exchange.example.org/");
    EXPECT_EQ(address.baseFor(request), "https://exchange.example.org");
    EXPECT_EQ(address.host(), "exchange.example.org");
    EXPECT_EQ(PublicAddress("http://192.0.2.7:8080").host(), "192.0.2.7");
    EXPECT_EQ(PublicAddress("http://[2001:db8::7]:8080").host(), "2001:db8::7");
    EXPECT_EQ(PublicAddress("http://[2001:db8::7]:8080").baseFor(request),
              "http://[2001:db8::7]:8080");
}

TEST(PublicAddress, KnowsAUrl)
{
    for (const char *good :
         {"http://a", "https://exchange.example.org", "https://exchange.example.org/",
          "https://exchange.example.org:8443", "http://192.0.2.7", "http://192.0.2.7:65535/",
          "http://[::1]", "http://[2001:db8::7]:80/"})
        EXPECT_TRUE(PublicAddress::isUrl(good)) << good;
    for (const char *bad : {"",
                            "/",
                            "http://",
                            "https:///",
                            "exchange.example.org",
                            "ftp://a",
                            "HTTP://a",
                            "http:/a",
                            "http://a b",
                            "http://a/b",
                            "http://a//",
                            "http://a?b",
                            "http://a#b",
                            "http://u@a",
                            "http://a:",
                            "http://a:0",
                            "http://a:65536",
                            "http://a:80:80",
                            "http://a:x",
                            "http://[",
                            "http://[]",
                            "http://[::1",
                            "http://[::g]",
                            "http://[::1]x",
                            "http://[a]",
                            "http://岚川",
                            "http://<a>",
                            "http://a\n"})
        EXPECT_FALSE(PublicAddress::isUrl(bad)) << bad;
}

} // namespace
