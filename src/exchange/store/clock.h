#pragma once

#include "exchange/core/types.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <vector>

namespace zvx {

/// Milliseconds of a clock that only goes forward; the zero is arbitrary.
using SteadyMs = std::int64_t;

/// Time as the writer sees it: a wall clock for labels, a steady one for cadence, and a way to
/// wait.
class Clock
{
public:
    virtual ~Clock() = default;

    /// The wall clock. It may jump.
    virtual TimeMs wall() const = 0;

    virtual SteadyMs steady() const = 0;

    /// Waits until `condition` is notified or `until` is reached, whichever is first; without
    /// `until` for the notification alone. May return early, so callers look again.
    virtual void wait(std::condition_variable &condition, std::unique_lock<std::mutex> &lock,
                      std::optional<SteadyMs> until)
        = 0;
};

/// The machine's clocks.
class SystemClock : public Clock
{
public:
    TimeMs wall() const override;
    SteadyMs steady() const override;
    void wait(std::condition_variable &condition, std::unique_lock<std::mutex> &lock,
              std::optional<SteadyMs> until) override;
};

/// A clock that stands still until somebody moves it, for tests and simulations.
class ManualClock : public Clock
{
public:
    explicit ManualClock(TimeMs wall);

    /// Moves both clocks forward by `milliseconds`, which is not negative, and wakes who waits.
    /// Whoever waits on this clock has to outlive the call.
    void advance(std::int64_t milliseconds);

    TimeMs wall() const override;
    SteadyMs steady() const override;
    void wait(std::condition_variable &condition, std::unique_lock<std::mutex> &lock,
              std::optional<SteadyMs> until) override;

private:
    struct Waiter {
        std::condition_variable *condition;
        std::mutex *mutex;
    };
    mutable std::mutex m_mutex;
    TimeMs m_wall;
    SteadyMs m_steady = 0;
    std::vector<Waiter> m_waiters;
};

} // namespace zvx
