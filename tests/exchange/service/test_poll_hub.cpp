#include "exchange/service/poll_hub.h"

#include "exchange/service/session_gate.h"
#include "exchange/service/wire_answers.h"

#include <gtest/gtest.h>

#include <map>

namespace {

using namespace zvx;
using namespace std::chrono_literals;

/// Notes what became of one request.
class Sink : public HttpResponseSink
{
public:
    struct Fate {
        std::vector<std::string> answers;
        int lost = 0;
        std::function<void()> gone;
    };
    explicit Sink(std::shared_ptr<Fate> fate) : m_fate(std::move(fate)) { }
    void answer(HttpAnswer answer) override { m_fate->answers.push_back(*answer.body.front()); }
    void watch(std::function<void()> gone) override { m_fate->gone = std::move(gone); }
    void lose() override { ++m_fate->lost; }

private:
    std::shared_ptr<Fate> m_fate;
};

/// A hub over two boards that never differ, and two platforms whose sessions are a table.
class PollHubTest : public testing::Test
{
protected:
    using Fate = std::shared_ptr<Sink::Fate>;

    PollHubTest()
    {
        auto snapshot = std::make_shared<MarketSnapshot>();
        snapshot->check = {1, std::make_shared<CheckSnapshot>()};
        for (MarketBoard *board : {&stamps, &tea})
            board->publish(snapshot);
    }

    SessionState stateOf(std::string_view token)
    {
        ++lookups;
        const auto found = sessions.find(token);
        return found == sessions.end() ? SessionState() : found->second;
    }

    Fate park(MarketBoard &board, const SessionGate *gate = nullptr, std::int64_t number = 0,
              const std::string &token = {})
    {
        auto fate = std::make_shared<Sink::Fate>();
        std::optional<PollSession> session;
        if (gate)
            session = PollSession{gate, number, Secret("Bearer " + token)};
        hub.park(board, SyncQuestion(), HttpResponder(std::make_shared<Sink>(fate)),
                 PollHub::Time() + 25s, std::move(session));
        return fate;
    }
    static std::string statusOf(const Fate &fate)
    {
        if (fate->answers.size() != 1)
            return fate->answers.empty() ? "waiting" : "answered twice";
        const std::string &text = fate->answers.front();
        const std::size_t at = text.find("\"status\":\"") + 10;
        return text.substr(at, text.find('"', at) - at);
    }

    Envelope envelope{"5f0c9a41d2e37b68", [] { return 1577840400123; }};
    WireAnswers answers{envelope};
    std::map<std::string, SessionState, std::less<>> sessions;
    SessionGate lc{[this](std::string_view token) { return stateOf(token); }, answers};
    SessionGate ch{[this](std::string_view token) { return stateOf(token); }, answers};
    BuildCounters builds{};
    int lookups = 0;
    MarketBoard stamps{std::make_shared<PlatformBoard>(), builds};
    MarketBoard tea{std::make_shared<PlatformBoard>(), builds};
    PollHub hub{100, [this](MarketBoard &, const SyncQuestion &) { return answers.doneWith(); },
                [](PollHub::Time) {}};
};

TEST_F(PollHubTest, ASessionTakesItsOwnPollsAlongAndNoOthers)
{
    sessions["mine"] = {SessionState::Elsewhere, AccountId(1), 0, 7};
    const Fate mine[] = {park(stamps, &lc, 7, "mine"), park(tea, &lc, 7, "mine")};
    const Fate others[] = {park(stamps), park(stamps, &lc, 6, "b"), park(stamps, &lc, 8, "c"),
                           park(stamps, &ch, 7, "d")};
    hub.endSessions(lc, {7});
    for (const Fate &fate : mine)
        EXPECT_EQ(statusOf(fate), "elsewhere");
    for (const Fate &fate : others)
        EXPECT_EQ(statusOf(fate), "waiting");
    EXPECT_EQ(hub.parked(), 4u);
    hub.endSessions(lc, {7, 9});
    EXPECT_EQ(hub.parked(), 4u);
    hub.endAll();
    for (const Fate &fate : mine)
        EXPECT_EQ(statusOf(fate), "elsewhere") << "once";
    for (const Fate &fate : others)
        EXPECT_EQ(statusOf(fate), "ok");
    EXPECT_EQ(hub.parked(), 0u);
}

TEST_F(PollHubTest, OneSessionAmongMany)
{
    sessions["mine"] = {SessionState::Elsewhere, AccountId(1), 0, 500};
    PollHub large{2000, [this](MarketBoard &, const SyncQuestion &) { return answers.doneWith(); },
                  [](PollHub::Time) {}};
    std::vector<Fate> fates;
    for (std::int64_t number = 1; number <= 1000; ++number) {
        fates.push_back(std::make_shared<Sink::Fate>());
        large.park(number % 2 == 0 ? stamps : tea, SyncQuestion(),
                   HttpResponder(std::make_shared<Sink>(fates.back())), PollHub::Time() + 25s,
                   PollSession{&lc, number, Secret("Bearer mine")});
    }
    large.endSessions(lc, {500});
    EXPECT_EQ(lookups, 1) << "nobody else's poll is looked at";
    EXPECT_EQ(statusOf(fates[499]), "elsewhere");
    EXPECT_EQ(large.parked(), 999u);
}

TEST_F(PollHubTest, TheGateSaysWhyASessionEnded)
{
    sessions["a"] = {SessionState::Elsewhere, AccountId(1), 0, 1};
    sessions["b"] = {SessionState::Ended, AccountId(2), 0, 2};
    const Fate elsewhere = park(stamps, &lc, 1, "a");
    const Fate ended = park(stamps, &lc, 2, "b");
    const Fate unknown = park(stamps, &lc, 3, "c");
    hub.endSessions(lc, {1, 2, 3});
    EXPECT_EQ(statusOf(elsewhere), "elsewhere");
    EXPECT_EQ(statusOf(ended), "session");
    EXPECT_EQ(statusOf(unknown), "session");
}

TEST_F(PollHubTest, WhatLeavesBeforeIsForgotten)
{
    sessions["mine"] = {SessionState::Elsewhere, AccountId(1), 0, 7};
    const Fate left = park(stamps, &lc, 7, "mine");
    const Fate expired = park(stamps, &lc, 7, "mine");
    left->gone();
    EXPECT_EQ(hub.parked(), 1u);
    hub.expire(PollHub::Time() + 25s);
    EXPECT_EQ(statusOf(expired), "ok");
    hub.endSessions(lc, {7});
    EXPECT_EQ(statusOf(left), "waiting") << "nobody is there to be told";
    EXPECT_EQ(left->lost, 1) << "its right to an answer was given up";
    EXPECT_EQ(statusOf(expired), "ok");
    EXPECT_EQ(hub.parked(), 0u);
}

} // namespace
