#include "exchange/store/statelock.h"

#include "exchange/service/raw_client.h"
#include "exchange/service/temporary_folder.h"
#include "exchange/service/until.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <csignal>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

using namespace std::chrono_literals;
using nlohmann::json;
using zvxtest::fetch;
using zvxtest::RawClient;
using zvxtest::until;

/// A command line of the shell in a process group of its own, ended with the object.
class Shell
{
public:
    explicit Shell(const std::string &line)
    {
        m_child = ::fork();
        if (m_child == 0) {
            ::setpgid(0, 0);
            const int nothing = ::open("/dev/null", O_RDWR);
            ::dup2(nothing, STDIN_FILENO);
            ::execl("/bin/sh", "sh", "-c", line.c_str(), static_cast<char *>(nullptr));
            ::_exit(127);
        }
    }
    ~Shell()
    {
        if (m_child > 0) {
            ::kill(-m_child, SIGKILL);
            ::waitpid(m_child, nullptr, 0);
        }
    }
    Shell(const Shell &) = delete;

    void terminate() const { ::kill(m_child, SIGTERM); }

    /// The exit code; -1 after a signal or when it does not end within a minute.
    int wait()
    {
        int status = 0;
        if (!until([&] { return ::waitpid(m_child, &status, WNOHANG) == m_child; }, 60s))
            return -1;
        m_child = -1;
        return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    }

private:
    pid_t m_child = -1;
};

class BadLuckTest : public testing::Test
{
protected:
    std::string state() const { return (folder.path() / "state").string(); }
    std::string errorsFile() const { return (folder.path() / "errors").string(); }
    std::string serve(const std::string &robots) const
    {
        return std::string("\"" ZVX_PROGRAM "\" serve --state ") + state()
            + " --catalogue \"" ZVX_SMALL_CATALOGUE "\" --robots " + robots;
    }
    static std::string textOf(const std::string &file)
    {
        std::ifstream in(file);
        std::ostringstream text;
        text << in.rdbuf();
        return text.str();
    }
    /// The port from the lock file, for services whose output nobody can read.
    std::uint16_t port() const
    {
        std::optional<zvx::LockHolder> holder;
        until(
            [&] {
                holder = zvx::StateLock::holder(state());
                return holder && holder->port > 0;
            },
            60s);
        return holder ? static_cast<std::uint16_t>(holder->port) : 0;
    }

    zvxtest::TemporaryFolder folder;
};

TEST_F(BadLuckTest, AnOutputThatNobodyReadsDoesNotEndTheService)
{
    Shell shell("{ " + serve("0") + " 2>/dev/null; } | true");
    const std::uint16_t at = port();
    ASSERT_GT(at, 0);
    EXPECT_TRUE(until([&] { return fetch(at, "/healthz").body == "ok\n"; }));
}

TEST_F(BadLuckTest, ClosedDescriptorsDoNotLeakTheOutputIntoFiles)
{
    std::filesystem::create_directories(state());
    Shell shell("exec " + serve("0") + " <&- >&- 2>&-");
    const std::uint16_t at = port();
    ASSERT_GT(at, 0);
    ASSERT_TRUE(until([&] { return fetch(at, "/healthz").body == "ok\n"; }));
    shell.terminate();
    EXPECT_EQ(shell.wait(), 0);
    for (const auto &entry : std::filesystem::directory_iterator(state())) {
        if (!entry.is_regular_file())
            continue;
        EXPECT_EQ(textOf(entry.path().string()).find("PORT"), std::string::npos) << entry.path();
    }
    const std::string log = textOf(state() + "/zvexchange.log");
    EXPECT_EQ(log.find("serving address="), log.rfind("serving address="))
        << "the log itself took the number of the standard error output";
}

TEST_F(BadLuckTest, ADiskThatIsFullEndsTheServiceWithOneAndALine)
{
    // No file may grow over 512 KiB; the signal for that is ignored, so that writes fail as they
    // do on a full disk.
    Shell shell("trap '' XFSZ; ulimit -f 1024; exec " + serve("200") + " >/dev/null 2>"
                + errorsFile());
    EXPECT_EQ(shell.wait(), 1);
    const std::string errors = textOf(errorsFile());
    EXPECT_NE(errors.find("error market failed: "), std::string::npos) << errors;
    EXPECT_NE(errors.find("ending reason=\"fault\""), std::string::npos) << errors;

    // What was answered before is there, and a disk with room serves on.
    Shell again("exec " + serve("0") + " >/dev/null 2>" + errorsFile());
    const std::uint16_t at = port();
    ASSERT_GT(at, 0) << textOf(errorsFile());
    EXPECT_EQ(json::parse(fetch(at, "/lc/youbika/market/check.html").body)["data"]["open"], true);
    again.terminate();
    EXPECT_EQ(again.wait(), 0);
}

TEST_F(BadLuckTest, ASignalAnswersParkedPolls)
{
    Shell shell("exec " + serve("0") + " >/dev/null 2>" + errorsFile());
    const std::uint16_t at = port();
    ASSERT_GT(at, 0);
    std::vector<RawClient> clients;
    for (int i = 0; i < 20; ++i) {
        clients.emplace_back(at);
        clients.back().get("/lc/youbika/sync.html?protocol=1&check=1&wait=25000");
    }
    ASSERT_TRUE(until([&] {
        return fetch(at, "/metrics").body.find("\nzvexchange_polls_parked 20\n")
            != std::string::npos;
    }));
    shell.terminate();
    for (RawClient &client : clients) {
        const auto answer = client.answer();
        ASSERT_TRUE(answer);
        EXPECT_EQ(json::parse(answer->body)["data"]["topics"], json::object());
        EXPECT_TRUE(client.isClosed());
    }
    EXPECT_EQ(shell.wait(), 0);
}

} // namespace
