#include "exchange/accounts/desk_bench.h"
#include "exchange/accounts/outbox.h"

#include <csignal>
#include <filesystem>
#include <set>
#include <sstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <system_error>
#include <thread>

namespace zvx {
namespace {

using test::readFile;
using test::TempFolder;
namespace fs = std::filesystem;

int modeOf(const fs::path &file)
{
    return static_cast<int>(fs::status(file).permissions());
}

std::shared_ptr<Clock> morning()
{
    return std::make_shared<ManualClock>(TimeMs(test::kMorning.value() + 7));
}

TEST(Outboxes, WriteALineForEachMessage)
{
    const TempFolder folder;
    const mode_t before = ::umask(0);
    Outbox outbox(folder.path(), morning());
    outbox.send("13900000001", "【岚川】验证码1234");
    outbox.send("13900000002", "two\nlines\tand more");
    ::umask(before);
    EXPECT_EQ(readFile(folder / "outbox.txt"),
              "2020-01-01T01:00:00.007Z\t13900000001\t【岚川】验证码1234\n"
              "2020-01-01T01:00:00.007Z\t13900000002\ttwo lines and more\n");
    EXPECT_EQ(modeOf(folder / "outbox.txt"), 0600);
}

TEST(Outboxes, TakeAFileThatOthersCouldReadForTheirOwn)
{
    const TempFolder folder;
    test::writeFile(folder / "outbox.txt", "before\n");
    fs::permissions(folder / "outbox.txt", fs::perms(0644));
    Outbox(folder.path(), morning()).send("13900000001", "text");
    EXPECT_EQ(modeOf(folder / "outbox.txt"), 0600);
    EXPECT_EQ(readFile(folder / "outbox.txt"),
              "before\n2020-01-01T01:00:00.007Z\t13900000001\ttext\n");
}

TEST(Outboxes, KeepOneFullFileBesideTheNewOne)
{
    const TempFolder folder;
    const std::string text(100, 'x');
    const std::size_t line = 24 + 1 + 11 + 1 + 100 + 1;
    Outbox outbox(folder.path(), morning(), static_cast<std::int64_t>(3 * line));
    for (int i = 0; i < 7; ++i)
        outbox.send("1390000000" + std::to_string(i), text);
    EXPECT_EQ(readFile(folder / "outbox.txt").size(), line);
    const std::string old = readFile(folder / "outbox.1.txt");
    EXPECT_EQ(old.size(), 3 * line);
    EXPECT_NE(old.find("13900000003"), std::string::npos);
    EXPECT_EQ(old.find("13900000002"), std::string::npos);
    EXPECT_EQ(modeOf(folder / "outbox.1.txt"), 0600);
    // A message of its own that is longer than a file still has its place.
    outbox.send("13900000009", std::string(1'000, 'y'));
    EXPECT_GT(readFile(folder / "outbox.txt").size(), 1'000u);
}

TEST(Outboxes, OfSeveralDesksLoseNothingInOneFolder)
{
    const TempFolder folder;
    constexpr int kDesks = 4;
    constexpr int kMessages = 40;
    // Four files' worth in two files is what the rotation keeps: count all lines that it saw by
    // making the bound wide enough for one change of files.
    std::vector<std::thread> desks;
    for (int desk = 0; desk < kDesks; ++desk) {
        desks.emplace_back([&, desk] {
            Outbox outbox(folder.path(), morning(), 6'000);
            for (int i = 0; i < kMessages; ++i)
                outbox.send("13900000000",
                            "message " + std::to_string(desk) + "-" + std::to_string(i) + ".");
        });
    }
    for (std::thread &desk : desks)
        desk.join();
    const std::string all = readFile(folder / "outbox.1.txt") + readFile(folder / "outbox.txt");
    std::istringstream stream(all);
    std::set<std::string> lines;
    for (std::string line; std::getline(stream, line);) {
        EXPECT_EQ(line.rfind("2020-01-01T01:00:00.007Z\t13900000000\tmessage ", 0), 0u) << line;
        EXPECT_TRUE(lines.insert(line).second) << line;
    }
    EXPECT_EQ(lines.size(), static_cast<std::size_t>(kDesks * kMessages));
}

TEST(Outboxes, SayWhyAMessageIsNotThereAndNotWhatItWas)
{
    const TempFolder folder;
    const auto failure = [](Outbox &outbox) {
        try {
            outbox.send("13900000001", "code 4711");
        } catch (const std::system_error &error) {
            EXPECT_EQ(std::string(error.what()).find("4711"), std::string::npos);
            return error.code().value();
        }
        return 0;
    };
    Outbox nowhere(folder / "missing", morning());
    EXPECT_EQ(failure(nowhere), ENOENT);
    // Somebody who may write into the folder must not have codes written anywhere else.
    test::writeFile(folder / "target", "");
    fs::create_symlink(folder / "target", folder / "outbox.txt");
    Outbox linked(folder.path(), morning());
    EXPECT_EQ(failure(linked), ELOOP);
    EXPECT_EQ(readFile(folder / "target"), "");
}

TEST(Outboxes, LeaveNoHalfALineOnAFullDisk)
{
    const TempFolder folder;
    Outbox outbox(folder.path(), morning());
    outbox.send("13900000001", "first");
    const std::string before = readFile(folder / "outbox.txt");
    rlimit old{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &old), 0);
    const auto ignored = std::signal(SIGXFSZ, SIG_IGN);
    rlimit small = old;
    small.rlim_cur = before.size() + 10;
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &small), 0);
    EXPECT_THROW(outbox.send("13900000002", "second"), std::system_error);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &old), 0);
    std::signal(SIGXFSZ, ignored);
    EXPECT_EQ(readFile(folder / "outbox.txt"), before);
    outbox.send("13900000003", "third");
    EXPECT_NE(readFile(folder / "outbox.txt").find("third"), std::string::npos);
}

} // namespace
} // namespace zvx
