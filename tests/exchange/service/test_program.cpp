#include "exchange/service/lifeline.h"

#include "exchange/service/program.h"
#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <fstream>

#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::fetch;
using zvxtest::Program;
using zvxtest::TemporaryFolder;
using zvxtest::until;

/// A process that holds a connection to the folder's socket until it is killed.
class AttachedProcess
{
public:
    explicit AttachedProcess(const std::filesystem::path &folder)
    {
        const std::string path = (folder / zvx::Lifeline::socketName).string();
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const int file = ::socket(AF_UNIX, SOCK_STREAM, 0);
        attached = ::connect(file, reinterpret_cast<sockaddr *>(&address), sizeof address) == 0;
        m_child = ::fork();
        if (m_child == 0) {
            for (;;)
                ::pause();
        }
        ::close(file);
    }
    ~AttachedProcess() { kill(); }

    void kill()
    {
        if (m_child > 0) {
            ::kill(m_child, SIGKILL);
            ::waitpid(m_child, nullptr, 0);
        }
        m_child = -1;
    }

    bool attached = false;

private:
    pid_t m_child = -1;
};

class ProgramTest : public testing::Test
{
protected:
    std::vector<std::string> serving(std::vector<std::string> more = {}) const
    {
        std::vector<std::string> all
            = {"serve", "--state", state(), "--catalogue", ZVX_SMALL_CATALOGUE, "--robots", "0"};
        all.insert(all.end(), more.begin(), more.end());
        return all;
    }
    std::string state() const { return (folder.path() / "state").string(); }

    TemporaryFolder folder;
};

TEST_F(ProgramTest, ExplainsItself)
{
    Program help({"--help"});
    EXPECT_EQ(help.wait(), 0);
    for (const char *word : {"serve", "settle", "outbox", "--version", "--help"})
        EXPECT_NE(help.output.find(word), std::string::npos) << word;
    Program serve({"serve", "--help"});
    EXPECT_EQ(serve.wait(), 0);
    for (const char *word : {"--state", "--listen", "--robots", "--attached", "PORT", "SIGTERM"})
        EXPECT_NE(serve.output.find(word), std::string::npos) << word;
    Program version({"--version"});
    EXPECT_EQ(version.wait(), 0);
    EXPECT_EQ(version.output, "zvexchange 0.1.0\n");
}

TEST_F(ProgramTest, EndsWithTwoAndASentenceWhenItCannotBeUsed)
{
    std::ofstream(folder.path() / "file") << "x";
    const std::string file = (folder.path() / "file").string();
    std::ofstream(folder.path() / "broken.json") << "{";
    const std::vector<std::vector<std::string>> table = {
        {},
        {"serve"},
        {"fly"},
        {"serve", "--state", state(), "--listen", "here"},
        {"serve", "--state", state(), "--listen", "127.0.0.1:99999"},
        {"serve", "--state", state(), "--listen", "localhost:0"},
        {"serve", "--state", state(), "--attached", "--until-stdin-closes"},
        {"serve", "--state", state(), "--catalogue", "/nowhere"},
        {"serve", "--state", state(), "--catalogue", (folder.path() / "broken.json").string()},
        {"serve", "--state", file},
        {"serve", "--state", state(), "--host", "http://exchange.example.org"},
        {"serve", "--state", state(), "--host", "exchange.example.org:80"},
        {"serve", "--state", state(), "--public-url", "exchange.example.org"},
        {"serve", "--state", state(), "--public-url", "https://exchange.example.org/path"},
        {"serve", "--state", state(), "--demo", "--listen", "0.0.0.0:0"},
        {"settle", "--state", (folder.path() / "nothing").string()},
        {"outbox", "--state", (folder.path() / "nothing").string()},
    };
    for (const auto &arguments : table) {
        std::filesystem::remove_all(state());
        Program program(arguments);
        EXPECT_EQ(program.wait(), 2) << testing::PrintToString(arguments);
        EXPECT_NE(program.errors.find("zvexchange: "), std::string::npos) << program.errors;
        EXPECT_EQ(program.output, "");
    }
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "state" / "catalogue.json"));
}

TEST_F(ProgramTest, SaysWhichOptionHasNoNumber)
{
    struct Case {
        const char *option;
        const char *value;
        const char *range;
    };
    const std::vector<Case> table = {
        {"--robots", "nan", "0 to 200"},
        {"--robots", "-nan", "0 to 200"},
        {"--robots", "inf", "0 to 200"},
        {"--robots", "-1", "0 to 200"},
        {"--robots", "200.01", "0 to 200"},
        {"--robots", "many", "0 to 200"},
        {"--robots", "", "0 to 200"},
        {"--robots", "6 or so", "0 to 200"},
        {"--robots", "0x10", "0 to 200"},
        {"--robots", "1e999", "0 to 200"},
        {"--prepare-delay", "nan", "0 to 2678400"},
        {"--prepare-delay", "-1", "0 to 2678400"},
        {"--ship-delay", "soon", "0 to 2678400"},
        {"--ship-delay", "2678401", "0 to 2678400"},
        {"--ship-delay", "inf", "0 to 2678400"},
        {"--seed", "-1", "0 to 9223372036854775807"},
        {"--seed", "1.5", "0 to 9223372036854775807"},
        {"--seed", "99999999999999999999", "0 to 9223372036854775807"},
        {"--bank-delay", "-1", "0 to 86400000"},
        {"--bank-delay", "0.5", "0 to 86400000"},
        {"--transfer-limit", "0", "1 to 100000000000"},
        {"--transfer-limit", "010", "1 to 100000000000"},
        {"--day-limit", "1e6", "1 to 100000000000"},
        {"--day-limit", "100000000001", "1 to 100000000000"},
    };
    for (const Case &each : table) {
        // Joined, since a value that begins with a dash would be taken for an option.
        const std::string option = std::string(each.option) + '=' + each.value;
        Program program({"serve", "--state", state(), option});
        EXPECT_EQ(program.wait(), 2) << option;
        EXPECT_NE(program.errors.find("zvexchange: " + std::string(each.option)), std::string::npos)
            << option << ": " << program.errors;
        EXPECT_NE(program.errors.find(each.range), std::string::npos) << program.errors;
        EXPECT_EQ(program.output, "");
    }
    EXPECT_FALSE(std::filesystem::exists(state()));
}

TEST_F(ProgramTest, ServesUntilItIsToldToEndAndKeepsItsState)
{
    json list;
    for (int run = 0; run < 2; ++run) {
        Program program(serving(), Program::Nothing);
        const std::uint16_t port = program.port();
        EXPECT_EQ(program.output, "PORT " + std::to_string(port) + "\n");
        EXPECT_EQ(fetch(port, "/healthz").body, "ok\n");
        const json data = json::parse(fetch(port, "/lc/youbika/market/list.html").body)["data"];
        if (run == 0)
            list = data;
        EXPECT_EQ(data, list);
        program.signal(run == 0 ? SIGTERM : SIGINT);
        EXPECT_EQ(program.wait(), 0) << program.errors;
        EXPECT_NE(program.errors.find("stopped"), std::string::npos);
        EXPECT_THROW(zvxtest::RawClient{port}, std::runtime_error);
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "state" / "zvexchange.log"));
    EXPECT_FALSE(std::filesystem::exists(folder.path() / "state" / zvx::Lifeline::socketName));
}

TEST_F(ProgramTest, AKillLosesNothingAndLeavesTheFolderUsable)
{
    {
        Program program(serving(), Program::Nothing);
        program.port();
        Program settle({"settle", "--state", state()});
        EXPECT_EQ(settle.wait(), 0) << settle.errors;
        program.signal(SIGKILL);
        EXPECT_EQ(program.wait(), -1);
    }
    Program again(serving(), Program::Nothing);
    const std::uint16_t port = again.port();
    EXPECT_EQ(json::parse(fetch(port, "/lc/youbika/market/check.html").body)["data"]["session"], 2);
    again.signal(SIGTERM);
    EXPECT_EQ(again.wait(), 0);
}

TEST_F(ProgramTest, ASecondServiceNamesTheFirst)
{
    Program first(serving(), Program::Nothing);
    const std::string port = std::to_string(first.port());
    Program second(serving(), Program::Nothing);
    EXPECT_EQ(second.wait(), 2);
    EXPECT_NE(second.errors.find("port " + port), std::string::npos) << second.errors;
    EXPECT_EQ(second.output, "");
    EXPECT_TRUE(first.isRunning());
}

TEST_F(ProgramTest, AnswersToTheNamesThatItIsGiven)
{
    Program program(serving({"--host", "one.example", "--host", "two.example"}), Program::Nothing);
    const std::uint16_t port = program.port();
    const auto statusOf = [&](const std::string &host) {
        zvxtest::RawClient client(port);
        client.send("GET /healthz HTTP/1.1\r\nHost: " + host + "\r\n\r\n");
        const auto answer = client.answer();
        return answer ? answer->status : 0;
    };
    EXPECT_EQ(statusOf("one.example"), 200);
    EXPECT_EQ(statusOf("two.example:80"), 200);
    EXPECT_EQ(statusOf("three.example"), 400);
    ASSERT_TRUE(until([&] {
        return !program.isRunning() || program.errors.find("Host names") != std::string::npos;
    }));
    EXPECT_NE(
        program.errors.find("request refused status=400 reason=\"Host names another machine\""),
        std::string::npos);
    EXPECT_EQ(program.errors.find("three"), std::string::npos) << "nothing that a client sent";
}

TEST_F(ProgramTest, EndsWithItsStandardInput)
{
    Program program(serving({"--until-stdin-closes"}));
    program.port();
    EXPECT_TRUE(program.isRunning());
    program.closeInput();
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(ProgramTest, AttachedItLivesAsLongAsAnyClient)
{
    Program program(serving({"--attached"}));
    const std::uint16_t port = program.port();
    AttachedProcess first(state());
    AttachedProcess second(state());
    ASSERT_TRUE(first.attached);
    ASSERT_TRUE(second.attached);
    program.closeInput();
    first.kill();
    // Longer than the two seconds that nobody may be attached.
    EXPECT_FALSE(until([&] { return !program.isRunning(); }, 2500ms));
    EXPECT_EQ(fetch(port, "/healthz").status, 200);
    second.kill();
    EXPECT_EQ(program.wait(), 0) << program.errors;
    EXPECT_NE(program.errors.find("nobody attached"), std::string::npos);
}

TEST_F(ProgramTest, AttachedItEndsWithAKilledStarter)
{
    Program program(serving({"--attached"}));
    program.port();
    // The system closes the pipe of a process that is killed, which is all that a service sees.
    program.closeInput();
    EXPECT_EQ(program.wait(), 0);
}

TEST_F(ProgramTest, SettlesThroughTheRunningServiceAndAlone)
{
    const auto session = [](std::uint16_t port) {
        return json::parse(fetch(port, "/ch/youbi/market/check.html").body)["data"]["session"];
    };
    {
        Program program(serving(), Program::Nothing);
        const std::uint16_t port = program.port();
        Program settle({"settle", "--state", state()});
        EXPECT_EQ(settle.wait(), 0) << settle.errors;
        EXPECT_TRUE(until([&] { return session(port) == 2; }));
        EXPECT_EQ(zvx::Lifeline::send(state(), "dance"), "unknown command");
        program.signal(SIGTERM);
        EXPECT_EQ(program.wait(), 0);
    }
    Program alone({"settle", "--state", state()});
    EXPECT_EQ(alone.wait(), 0) << alone.errors;
    Program program(serving(), Program::Nothing);
    EXPECT_EQ(session(program.port()), 3);
}

TEST_F(ProgramTest, TheOutboxSaysThatItIsEmpty)
{
    Program program(serving(), Program::Nothing);
    program.port();
    Program outbox({"outbox", "--state", state()});
    EXPECT_EQ(outbox.wait(), 0);
    EXPECT_EQ(outbox.output, "no text messages have been sent\n");
}

TEST_F(ProgramTest, WorksInAFolderWithALongName)
{
    const auto deep = folder.path() / std::string(120, 'x') / "state";
    Program program(
        {"serve", "--state", deep.string(), "--catalogue", ZVX_SMALL_CATALOGUE, "--robots", "0"},
        Program::Nothing);
    program.port();
    Program settle({"settle", "--state", deep.string()});
    EXPECT_EQ(settle.wait(), 0) << settle.errors;
    program.signal(SIGTERM);
    EXPECT_EQ(program.wait(), 0);
}

} // namespace
