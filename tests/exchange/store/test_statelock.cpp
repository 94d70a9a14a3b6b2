#include "exchange/store/exchange.h"
#include "exchange/store/statelock.h"
#include "exchange/store/support.h"

#include <gtest/gtest.h>

#include <chrono>
#include <csignal>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

namespace zvx {
namespace {

using test::TempFolder;

TEST(StateLock, TellsWhoHoldsTheFolder)
{
    const TempFolder folder;
    EXPECT_FALSE(StateLock::holder(folder.path()));
    {
        StateLock lock(folder.path());
        const std::optional<LockHolder> before = StateLock::holder(folder.path());
        ASSERT_TRUE(before);
        EXPECT_EQ(before->pid, ::getpid());
        EXPECT_EQ(before->port, 0);
        lock.announcePort(40123);
        EXPECT_EQ(StateLock::holder(folder.path())->port, 40123);
        EXPECT_EQ(test::readFile(folder / "zvexchange.lock"),
                  "pid " + std::to_string(::getpid()) + "\nport 40123\n");
        lock.announcePort(7);
        EXPECT_EQ(test::readFile(folder / "zvexchange.lock"),
                  "pid " + std::to_string(::getpid()) + "\nport 7\n");
    }
    EXPECT_FALSE(StateLock::holder(folder.path()));
}

TEST(StateLock, RefusesASecondServiceInWords)
{
    const TempFolder folder;
    StateLock first(folder.path());
    first.announcePort(40123);
    try {
        StateLock second(folder.path());
        FAIL();
    } catch (const FolderError &error) {
        const std::string what = error.what();
        EXPECT_NE(what.find(folder.path().string()), std::string::npos) << what;
        EXPECT_NE(what.find("process " + std::to_string(::getpid())), std::string::npos) << what;
        EXPECT_NE(what.find("port 40123"), std::string::npos) << what;
    }
    EXPECT_EQ(StateLock::holder(folder.path())->port, 40123);
}

TEST(StateLock, EndsWithAKilledProcess)
{
    const TempFolder folder;
    int ready[2];
    ASSERT_EQ(::pipe(ready), 0);
    const pid_t child = ::fork();
    if (child == 0) {
        StateLock lock(folder.path());
        const char byte = 'x';
        if (::write(ready[1], &byte, 1) != 1)
            ::_exit(1);
        for (;;)
            ::pause();
    }
    char byte = 0;
    ASSERT_EQ(::read(ready[0], &byte, 1), 1);
    ASSERT_TRUE(StateLock::holder(folder.path()));
    EXPECT_EQ(StateLock::holder(folder.path())->pid, child);
    EXPECT_THROW(StateLock(folder.path()), FolderError);
    ::kill(child, SIGKILL);
    ::waitpid(child, nullptr, 0);
    EXPECT_FALSE(StateLock::holder(folder.path()));
    EXPECT_NO_THROW(StateLock(folder.path()));
    ::close(ready[0]);
    ::close(ready[1]);
}

TEST(StateLock, ANameThatAKilledServiceLeftDoesNotKeepTheNextOneOut)
{
    const TempFolder folder;
    test::writeFile(folder / StateLock::kFileName, "pid 4711\nport 40123\n");
    // Somebody asks for the holder at the very moment in which a service starts.
    const int asking = ::open((folder / StateLock::kFileName).c_str(), O_RDONLY | O_CLOEXEC);
    ASSERT_EQ(::flock(asking, LOCK_SH | LOCK_NB), 0);
    // Long enough for the first attempt to find the name, far shorter than all attempts.
    std::thread leaving([asking] {
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ::close(asking);
    });
    EXPECT_NO_THROW(StateLock(folder.path()));
    leaving.join();
}

TEST(StateLock, SaysWhyAFolderCannotBeUsed)
{
    EXPECT_THROW(StateLock("/nowhere/at/all"), FolderError);
}

} // namespace
} // namespace zvx
