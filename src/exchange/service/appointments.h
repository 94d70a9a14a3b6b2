#pragma once

#include "exchange/service/id_order.h"
#include "exchange/store/clock.h"

#include <condition_variable>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <thread>

namespace zvx {

/**
 * Things with an id that have their time, and the thread on which they have it: the earliest
 * first, and of those that are due together the one that was made first.
 */
class Appointments
{
public:
    /// On the thread, without a lock; does not throw. The appointment is over by then, and may be
    /// made anew.
    using Work = std::function<void(ActionKey id)>;

    Appointments(std::shared_ptr<Clock> clock, Work work);
    /// Waits for the work that is being done. What is due later is not done.
    ~Appointments();
    Appointments(const Appointments &) = delete;
    Appointments &operator=(const Appointments &) = delete;

    /// From any thread. An id has one appointment: the last one that was made.
    void make(ActionKey id, SteadyMs when);
    void drop(ActionKey id);

private:
    using Times = std::multimap<SteadyMs, ActionKey>;

    void forget(ActionKey id);
    void run();

    const std::shared_ptr<Clock> m_clock;
    const Work m_work;
    std::mutex m_mutex;
    std::condition_variable m_wake;
    Times m_times;
    std::map<ActionKey, Times::iterator, IdOrder> m_of;
    bool m_ending = false;
    std::thread m_thread;
};

} // namespace zvx
