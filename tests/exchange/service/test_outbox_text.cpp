#include "exchange/service/outbox_text.h"

#include "exchange/accounts/outbox.h"
#include "exchange/store/clock.h"

#include "exchange/service/temporary_folder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <fstream>
#include <future>
#include <thread>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

namespace {

using namespace zvx;

class OutboxTextTest : public testing::Test
{
protected:
    zvxtest::TemporaryFolder folder;
    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>(TimeMs(1'577'840'400'123));
};

TEST_F(OutboxTextTest, IsEmptyWithoutMessages)
{
    EXPECT_EQ(outboxText(folder.path()), "");
}

TEST_F(OutboxTextTest, ShowsBothFilesTheOldestFirst)
{
    Outbox outbox(folder.path(), clock, 100);
    for (const char *text : {"one", "two", "three"})
        outbox.send("13900000001", text);
    ASSERT_TRUE(std::filesystem::exists(folder.path() / Outbox::kOldFileName));
    EXPECT_EQ(outboxText(folder.path()),
              "2020-01-01T01:00:00.123Z\t13900000001\tone\n"
              "2020-01-01T01:00:00.123Z\t13900000001\ttwo\n"
              "2020-01-01T01:00:00.123Z\t13900000001\tthree\n");
}

TEST_F(OutboxTextTest, WaitsForAnOutboxThatIsBeingTurnedOver)
{
    const auto newest = folder.path() / Outbox::kFileName;
    std::ofstream(newest) << "one\n";
    const int file = ::open(newest.c_str(), O_RDWR | O_CLOEXEC);
    ASSERT_EQ(::flock(file, LOCK_EX), 0);
    auto text = std::async(std::launch::async, [&] { return outboxText(folder.path()); });
    EXPECT_EQ(text.wait_for(std::chrono::milliseconds(200)), std::future_status::timeout);
    std::filesystem::rename(newest, folder.path() / Outbox::kOldFileName);
    std::ofstream(newest) << "two\n";
    ::close(file);
    EXPECT_EQ(text.get(), "one\ntwo\n");
}

TEST_F(OutboxTextTest, LosesNothingWhileTheOutboxIsTurnedOver)
{
    std::atomic<bool> stop{false};
    std::atomic<int> sent{0};
    std::thread writer([&] {
        // Room for some ten lines, so that the file is turned over all the time.
        Outbox outbox(folder.path(), clock, 500);
        while (!stop)
            outbox.send("13900000001", std::to_string(++sent));
    });
    int before = 0;
    for (int i = 0; i < 300; ++i) {
        const std::string text = outboxText(folder.path());
        const auto lines = std::count(text.begin(), text.end(), '\n');
        int number = 0;
        for (std::size_t at = 0; at < text.size(); at = text.find('\n', at) + 1) {
            const int next = std::stoi(text.substr(text.rfind('\t', text.find('\n', at)) + 1));
            EXPECT_TRUE(number == 0 || next == number + 1) << "a hole behind " << number;
            number = next;
        }
        EXPECT_GE(number, before);
        // One file is full where there are two.
        EXPECT_TRUE(lines >= 10 || number < 20) << lines << " lines up to " << number;
        before = number;
    }
    stop = true;
    writer.join();
}

TEST_F(OutboxTextTest, SaysWhenItCannotRead)
{
    std::filesystem::create_directory(folder.path() / Outbox::kFileName);
    EXPECT_THROW(outboxText(folder.path()), std::runtime_error);
}

} // namespace
