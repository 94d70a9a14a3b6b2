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
#include <set>
#include <sstream>

#include <sys/resource.h>

namespace {

using namespace zvx;
using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::fetch;
using zvxtest::RawClient;
using zvxtest::until;

const std::string prefix = "/lc/youbika/";

class ContractTest : public testing::Test
{
protected:
    ContractTest()
    {
        std::ifstream in(ZVX_SMALL_CATALOGUE);
        std::ostringstream text;
        text << in.rdbuf();
        options.folder = folder.path();
        options.firstCatalogue = text.str();
        options.robotOrdersPerSecond = 0;
        options.passwordHasher = std::make_shared<ArgonHasher>(ArgonCost::least());
    }

    void begin() { service = std::make_unique<Service>(options, log); }
    std::size_t parked() const
    {
        const std::string text = fetch(service->port(), "/metrics").body;
        const std::string name = "\nzvexchange_polls_parked ";
        return std::stoul(text.substr(text.find(name) + name.size()));
    }

    zvxtest::TemporaryFolder folder;
    ServiceOptions options;
    ServiceLog log{true};
    std::unique_ptr<Service> service;
};

TEST_F(ContractTest, AThousandParkedPollsAreEachToldOnce)
{
    rlimit limit{};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    const rlimit before = limit;
    limit.rlim_cur = std::min<rlim_t>(limit.rlim_max, 4096);
    ::setrlimit(RLIMIT_NOFILE, &limit);
    if (limit.rlim_cur < 2500)
        GTEST_SKIP() << "this machine allows too few descriptors";
    begin();
    constexpr std::size_t count = 1000;
    std::vector<RawClient> clients;
    for (std::size_t i = 0; i < count; ++i) {
        clients.emplace_back(service->port());
        clients.back().get(prefix + "sync.html?protocol=1&check=1&wait=25000");
    }
    ASSERT_TRUE(until([&] { return parked() == count; }));
    service->settle();
    std::set<std::string> bodies;
    for (RawClient &client : clients) {
        const auto answer = client.answer();
        ASSERT_TRUE(answer);
        bodies.insert(json::parse(answer->body)["data"].dump());
    }
    EXPECT_EQ(bodies.size(), 1u) << "all are told the same";
    EXPECT_EQ(parked(), 0u);
    // The next bytes on a connection are the answer to its next request, not a second one to this.
    for (std::size_t i = 0; i < count; i += 50) {
        clients[i].get("/healthz");
        EXPECT_EQ(clients[i].answer()->body, "ok\n");
    }
    clients.clear();
    service->stop();
    ::setrlimit(RLIMIT_NOFILE, &before);
}

TEST_F(ContractTest, ALimitOfZeroGivesNoDeals)
{
    begin();
    const json answer = json::parse(
        fetch(service->port(), prefix + "market/latest-list.html?collection=2100&limit=0").body);
    EXPECT_EQ(answer["data"]["deals"], json::array());
    EXPECT_EQ(answer["data"]["id"], "2100");
}

TEST_F(ContractTest, TheBootIsKnownBeyondTheEnd)
{
    begin();
    const std::string boot = service->boot();
    service->stop();
    EXPECT_EQ(service->boot(), boot);
}

TEST_F(ContractTest, SecretsNeverReachTheLog)
{
    service.reset();
    ServiceLog file(folder.path());
    Service serving(options, file);
    for (const char *request :
         {"POST /lc/youbika/login.html HTTP/1.1\r\nHost: localhost\r\nContent-Length: 22\r\n\r\n"
          "password=tiger-in-body",
          "GET /lc/youbika/cap.html?token=tiger-in-address HTTP/1.1\r\nHost: localhost\r\n\r\n",
          "GET /lc/youbika/cap.html HTTP/1.1\r\nHost: localhost\r\nAuthorization: Bearer tiger\r\n"
          "Authorization: Bearer tiger\r\n\r\n",
          "GET /tiger#tiger HTTP/1.1\r\nHost: localhost\r\n\r\n"}) {
        RawClient client(serving.port());
        client.send(request);
        EXPECT_TRUE(client.answer());
    }
    serving.stop();
    file.flush();
    std::ifstream in(folder.path() / "zvexchange.log");
    std::ostringstream text;
    text << in.rdbuf();
    EXPECT_NE(text.str().find("request refused status=400"), std::string::npos);
    EXPECT_EQ(text.str().find("tiger"), std::string::npos) << text.str();
}

TEST_F(ContractTest, TheLogIsBoundedInSize)
{
    {
        ServiceLog file(folder.path());
        const std::string line(4000, 'x');
        for (int i = 0; i < 6000; ++i)
            file.info(line);
    }
    std::uintmax_t all = 0;
    for (const auto &each : std::filesystem::directory_iterator(folder.path())) {
        if (each.path().filename().string().rfind("zvexchange", 0) == 0)
            all += each.file_size();
    }
    EXPECT_GT(all, 8u << 20);
    EXPECT_LE(all, 17u << 20) << "four files of four MiB";
}

} // namespace
