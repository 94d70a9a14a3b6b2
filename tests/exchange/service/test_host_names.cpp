#include "exchange/service/host_names.h"

#include <gtest/gtest.h>

namespace {

using namespace zvx;

TEST(HostNames, AreNumericAddressesAndLocalhost)
{
    const HostNames hosts;
    for (const char *host :
         {"127.0.0.1", "127.0.0.1:8080", "10.1.2.3:1", "0.0.0.0", "[::1]", "[::1]:8080",
          "[2001:db8::7]:65535", "[::ffff:127.0.0.1]", "localhost", "localhost:80", "LOCALHOST"})
        EXPECT_TRUE(hosts.accept(host)) << host;
    for (const char *host : {"",
                             ":",
                             ":80",
                             "evil.example",
                             "evil.example:80",
                             "127.0.0.1.evil.example",
                             "localhost.evil.example",
                             "localhost.",
                             "xlocalhost",
                             "127.0.0.1x",
                             "127.0.0",
                             "127.0.0.256",
                             "0127.0.0.1",
                             "2130706433",
                             "0x7f000001",
                             "127.0.0.1:",
                             "127.0.0.1:x",
                             "127.0.0.1:123456",
                             "127.0.0.1:80:80",
                             "[::1",
                             "::1",
                             "[::1]80",
                             "[::1]:",
                             "[::1]x:80",
                             "[]",
                             "[localhost]",
                             "[127.0.0.1]",
                             "localhost:-1",
                             "h"})
        EXPECT_FALSE(hosts.accept(host)) << host;
}

TEST(HostNames, AreTheOnesThatWereGiven)
{
    const HostNames hosts({"Exchange.Example.ORG", "intern"});
    for (const char *host : {"exchange.example.org", "EXCHANGE.example.org:443", "intern:8080",
                             "localhost", "127.0.0.1"})
        EXPECT_TRUE(hosts.accept(host)) << host;
    for (const char *host : {"example.org", "exchange.example.org.evil.example", "www.intern",
                             "exchange.example.org."})
        EXPECT_FALSE(hosts.accept(host)) << host;
}

TEST(HostNames, TellANameFromAnAddressOfAPage)
{
    for (const char *name : {"a", "exchange.example.org", "my-host", "x1.y2", "under_score"})
        EXPECT_TRUE(HostNames::isName(name)) << name;
    for (const std::string &name :
         {std::string(), std::string("http://a"), std::string("a:80"), std::string("a b"),
          std::string(".a"), std::string("a."), std::string("a..b"), std::string("ä"),
          std::string(64, 'a'), std::string("*.a"), std::string(100, 'a') + ".b"})
        EXPECT_FALSE(HostNames::isName(name)) << name;
    std::string longest;
    while (longest.size() < 250)
        longest += "abcd.";
    EXPECT_TRUE(HostNames::isName(longest + "xyz"));
    EXPECT_FALSE(HostNames::isName(longest + "wxyz"));
}

TEST(HostNames, LoopbackAddressesReachNoFurtherThanThisMachine)
{
    for (const char *address : {"127.0.0.1", "127.255.0.9", "::1", "::ffff:127.0.0.1"})
        EXPECT_TRUE(isLoopback(address)) << address;
    for (const char *address : {"0.0.0.0", "::", "10.0.0.1", "128.0.0.1", "::2", "fe80::1",
                                "::ffff:10.0.0.1", "localhost", ""})
        EXPECT_FALSE(isLoopback(address)) << address;
}

} // namespace
