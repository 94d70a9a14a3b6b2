#include "crowd.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <stdexcept>
#include <thread>

namespace {

using Steady = std::chrono::steady_clock;

} // namespace

Crowd::Crowd(Served &served, std::size_t collections)
    : m_served(served),
      m_fleet(std::make_unique<HttpFleet>(served.port(), size, HttpFleet::WithStamps))
{
    std::vector<PollState> kinds;
    for (std::size_t i = 0; i < collections; ++i)
        kinds.push_back(caughtUp(served.port(), PollState(i)));
    for (std::size_t i = 0; i < size; ++i)
        m_states.push_back(kinds[i % collections]);
    m_fleet->answered
        = [this](std::size_t client, const HttpFleet::Answer &answer) { take(client, answer); };
}

void Crowd::park()
{
    for (std::size_t i = 0; i < size; ++i)
        ask(i);
    // Whoever was told of something that changed before asks again.
    m_asksAgain = true;
    auto look = Steady::now();
    m_fleet->turnUntil([&] {
        if (Steady::now() < look)
            return false;
        look = Steady::now() + std::chrono::milliseconds(20);
        return m_served.metric("zvexchange_polls_parked") >= size;
    });
    m_asksAgain = false;
    m_first = 0;
    m_last = 0;
}

double Crowd::awaitAllTold()
{
    m_fleet->turnUntil([this] { return m_open < size; });
    // Whoever reads now would take the machine from who sends; the stamps wait.
    std::this_thread::sleep_for(std::chrono::milliseconds(150));
    m_fleet->turnUntil([this] { return m_open == 0; });
    return static_cast<double>(m_last - m_first) / 1e6;
}

void Crowd::goOn(std::chrono::milliseconds time)
{
    m_asksAgain = true;
    const auto end = Steady::now() + time;
    m_fleet->turnUntil([&] { return Steady::now() >= end; }, time + std::chrono::seconds(10));
    m_asksAgain = false;
}

void Crowd::ask(std::size_t client)
{
    ++m_open;
    m_fleet->send(client, m_states[client].request(25'000));
}

void Crowd::take(std::size_t client, const HttpFleet::Answer &answer)
{
    if (answer.status != 200)
        throw std::runtime_error("a poll was answered with " + std::to_string(answer.status));
    m_states[client].take(nlohmann::json::parse(answer.body));
    m_first = m_first == 0 ? answer.arrived : std::min(m_first, answer.arrived);
    m_last = std::max(m_last, answer.arrived);
    m_bytes = answer.bytes;
    --m_open;
    ++m_answers;
    if (m_asksAgain)
        ask(client);
}
