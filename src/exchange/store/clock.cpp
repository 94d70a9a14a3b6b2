#include "exchange/store/clock.h"

#include <algorithm>
#include <chrono>

namespace zvx {

TimeMs SystemClock::wall() const
{
    using namespace std::chrono;
    return TimeMs(duration_cast<milliseconds>(system_clock::now().time_since_epoch()).count());
}

SteadyMs SystemClock::steady() const
{
    using namespace std::chrono;
    return duration_cast<milliseconds>(steady_clock::now().time_since_epoch()).count();
}

void SystemClock::wait(std::condition_variable &condition, std::unique_lock<std::mutex> &lock,
                       std::optional<SteadyMs> until)
{
    if (until)
        condition.wait_until(
            lock, std::chrono::steady_clock::time_point(std::chrono::milliseconds(*until)));
    else
        condition.wait(lock);
}

ManualClock::ManualClock(TimeMs wall) : m_wall(wall) { }

void ManualClock::advance(std::int64_t milliseconds)
{
    std::vector<Waiter> waiters;
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        m_wall = TimeMs(m_wall.value() + milliseconds);
        m_steady += milliseconds;
        waiters = m_waiters;
    }
    // A waiter looks at the time under its own mutex: taking that once makes sure that it either
    // saw the new time or sleeps already and hears the call.
    for (const Waiter &waiter : waiters) {
        {
            std::lock_guard<std::mutex> guard(*waiter.mutex);
        }
        waiter.condition->notify_all();
    }
}

TimeMs ManualClock::wall() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_wall;
}

SteadyMs ManualClock::steady() const
{
    std::lock_guard<std::mutex> guard(m_mutex);
    return m_steady;
}

void ManualClock::wait(std::condition_variable &condition, std::unique_lock<std::mutex> &lock,
                       std::optional<SteadyMs> until)
{
    {
        std::lock_guard<std::mutex> guard(m_mutex);
        if (until && m_steady >= *until)
            return;
        m_waiters.push_back({&condition, lock.mutex()});
    }
    condition.wait(lock);
    std::lock_guard<std::mutex> guard(m_mutex);
    const auto own = [&](const Waiter &waiter) { return waiter.condition == &condition; };
    m_waiters.erase(std::find_if(m_waiters.begin(), m_waiters.end(), own));
}

} // namespace zvx
