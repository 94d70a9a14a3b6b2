#include "exchange/service/poll_hub.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <vector>

namespace {

using namespace zvx;
using namespace std::chrono_literals;

/// Counts the answers to one request.
class Sink : public HttpResponseSink
{
public:
    struct Fate {
        int answers = 0;
        std::function<void()> gone;
    };
    explicit Sink(std::shared_ptr<Fate> fate) : m_fate(std::move(fate)) { }
    void answer(HttpAnswer) override { ++m_fate->answers; }
    void watch(std::function<void()> gone) override { m_fate->gone = std::move(gone); }
    void lose() override { }

private:
    std::shared_ptr<Fate> m_fate;
};

/// A hub over one board whose `check` changes.
class PollWakingTest : public testing::Test
{
protected:
    using Fate = std::shared_ptr<Sink::Fate>;

    PollWakingTest() { change(); }

    void change()
    {
        auto snapshot = std::make_shared<MarketSnapshot>();
        snapshot->check = {++version, std::make_shared<CheckSnapshot>()};
        snapshot->list = std::make_shared<ListSnapshot>();
        board.publish(snapshot);
    }
    Fate park()
    {
        auto fate = std::make_shared<Sink::Fate>();
        SyncQuestion question;
        question.held[indexOf(Topic::Check)] = version;
        hub.park(board, question, HttpResponder(std::make_shared<Sink>(fate)),
                 PollHub::Time() + 25s);
        return fate;
    }
    std::vector<Fate> park(int count)
    {
        std::vector<Fate> fates;
        for (int i = 0; i < count; ++i)
            fates.push_back(park());
        return fates;
    }
    static long told(const std::vector<Fate> &fates)
    {
        return std::count_if(fates.begin(), fates.end(),
                             [](const Fate &fate) { return fate->answers == 1; });
    }
    /// How many calls of `expire` are asked for at once.
    long turnsAskedFor() const { return std::count(alarms.begin(), alarms.end(), PollHub::Time()); }
    void turn()
    {
        alarms.erase(std::remove(alarms.begin(), alarms.end(), PollHub::Time()), alarms.end());
        hub.expire(PollHub::Time() + 1s);
    }

    std::uint64_t version = 0;
    std::vector<PollHub::Time> alarms;
    BuildCounters builds{};
    MarketBoard board{std::make_shared<PlatformBoard>(), builds};
    PollHub hub{1000, [](MarketBoard &, const SyncQuestion &) { return HttpAnswer(); },
                [this](PollHub::Time time) { alarms.push_back(time); }};
};

TEST_F(PollWakingTest, TellsManyInTurnsAndEachOnce)
{
    const std::vector<Fate> fates = park(100);
    change();
    hub.wake(board);
    EXPECT_GT(told(fates), 0);
    EXPECT_LT(told(fates), 50) << "whoever comes with an order would wait for all of them";
    int turns = 0;
    while (turnsAskedFor() > 0) {
        EXPECT_EQ(turnsAskedFor(), 1);
        ASSERT_LT(++turns, 100);
        turn();
    }
    EXPECT_GT(turns, 1);
    EXPECT_EQ(told(fates), 100);
    EXPECT_EQ(hub.parked(), 0u);
}

TEST_F(PollWakingTest, FewNeedNoTurn)
{
    const std::vector<Fate> fates = park(10);
    change();
    hub.wake(board);
    EXPECT_EQ(told(fates), 10);
    EXPECT_EQ(turnsAskedFor(), 0);
}

TEST_F(PollWakingTest, WhatComesBetweenTurnsIsToldAsWell)
{
    const std::vector<Fate> first = park(100);
    change();
    hub.wake(board);
    const std::vector<Fate> second = park(100); // these hold the change
    change();
    hub.wake(board);
    while (turnsAskedFor() > 0)
        turn();
    EXPECT_EQ(told(first), 100);
    EXPECT_EQ(told(second), 100);
}

TEST_F(PollWakingTest, WhoHoldsTheNewestStaysAndWhoLeavesIsForgotten)
{
    const std::vector<Fate> fates = park(100);
    change();
    hub.wake(board);
    const std::vector<Fate> newest = park(5);
    std::vector<Fate> left;
    for (const Fate &fate : fates) {
        if (fate->answers == 0 && left.size() < 20) {
            fate->gone();
            left.push_back(fate);
        }
    }
    while (turnsAskedFor() > 0)
        turn();
    EXPECT_EQ(told(newest), 0);
    EXPECT_EQ(told(left), 0);
    EXPECT_EQ(told(fates), 80);
    EXPECT_EQ(hub.parked(), 5u);
}

TEST_F(PollWakingTest, TurnsDoNotDelayTheEndOfAPollsTime)
{
    park(100);
    EXPECT_EQ(alarms, std::vector<PollHub::Time>{PollHub::Time() + 25s});
    change();
    hub.wake(board);
    const Fate later = park();
    while (turnsAskedFor() > 0)
        turn();
    EXPECT_EQ(alarms.size(), 1u) << "the alarm that was asked for still stands, and is not asked "
                                    "for again with every turn";
    hub.expire(PollHub::Time() + 25s);
    EXPECT_EQ(later->answers, 1);
}

} // namespace
