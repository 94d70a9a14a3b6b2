#include "exchange/service/appointments.h"

#include "exchange/service/until.h"

#include <gtest/gtest.h>

#include <mutex>
#include <optional>
#include <string>

namespace {

using namespace zvx;
using zvxtest::until;

class AppointmentsTest : public testing::Test
{
protected:
    AppointmentsTest()
    {
        appointments.emplace(clock, [this](ActionKey id) {
            std::string text = std::to_string(id.low) + ' ';
            if (repeats && id.low == 1)
                appointments->make(id, clock->steady() + 10);
            const std::lock_guard<std::mutex> lock(m_mutex);
            m_kept += text;
        });
    }

    void make(std::uint64_t id, SteadyMs in) { appointments->make({0, id}, clock->steady() + in); }
    std::string kept() const
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_kept;
    }
    void expect(const std::string &wanted)
    {
        EXPECT_TRUE(until([&] { return kept() == wanted; })) << kept() << "instead of " << wanted;
    }

    std::shared_ptr<ManualClock> clock = std::make_shared<ManualClock>(TimeMs(1'577'851'200'000));
    bool repeats = false; ///< the first id makes another appointment whenever it has one
    mutable std::mutex m_mutex;
    std::string m_kept;
    std::optional<Appointments> appointments;
};

TEST_F(AppointmentsTest, ComeInTheOrderOfTheirTimes)
{
    make(3, 30);
    make(2, 20);
    make(9, 20);
    make(1, 10);
    make(4, 40);
    clock->advance(9);
    EXPECT_EQ(kept(), "");
    clock->advance(1);
    expect("1 ");
    clock->advance(25);
    expect("1 2 9 3 ");
    clock->advance(5);
    expect("1 2 9 3 4 ");
    make(5, 0);
    expect("1 2 9 3 4 5 ");
}

TEST_F(AppointmentsTest, TheLastOneOfAnIdCounts)
{
    make(1, 10);
    make(2, 20);
    make(1, 30);
    make(3, 15);
    appointments->drop({0, 3});
    appointments->drop({0, 4});
    clock->advance(20);
    expect("2 ");
    clock->advance(10);
    expect("2 1 ");
    clock->advance(1'000);
    EXPECT_EQ(kept(), "2 1 ");
}

TEST_F(AppointmentsTest, MayBeMadeAgainFromTheWork)
{
    repeats = true;
    make(1, 0);
    expect("1 ");
    clock->advance(10);
    expect("1 1 ");
    clock->advance(9);
    EXPECT_EQ(kept(), "1 1 ");
}

TEST_F(AppointmentsTest, WhatIsNotDueIsNotDone)
{
    make(1, 10);
    appointments.reset();
    EXPECT_EQ(kept(), "");
}

} // namespace
