#pragma once

#include "served.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

// A thousand clients that always have a poll parked: told of a change, they ask again for what
// comes after it.
class Crowd
{
public:
    static constexpr std::size_t size = 1000;

    // The clients watch the market and one of the first so many collections.
    Crowd(Served &served, std::size_t collections);

    // Parks a poll of each client and waits until all of them are parked.
    void park();

    // Waits until every parked poll is answered, without asking again, and says how many
    // milliseconds lay between the first and the last answer.
    double awaitAllTold();
    // Goes on for a while: who is told asks again.
    void goOn(std::chrono::milliseconds time);

    // Closes all connections; nobody polls any more.
    void leave() { m_fleet.reset(); }

    std::size_t bytesTold() const { return m_bytes; } // of the last answer
    std::size_t answers() const { return m_answers; }
    const PollState &client(std::size_t number) const { return m_states[number]; }

private:
    void take(std::size_t client, const HttpFleet::Answer &answer);
    void ask(std::size_t client);

    Served &m_served;
    std::unique_ptr<HttpFleet> m_fleet;
    std::vector<PollState> m_states;
    bool m_asksAgain = false;
    std::size_t m_open = 0;
    std::size_t m_answers = 0;
    std::size_t m_bytes = 0;
    std::int64_t m_first = 0;
    std::int64_t m_last = 0;
};
