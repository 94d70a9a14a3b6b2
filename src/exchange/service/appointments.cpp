#include "exchange/service/appointments.h"

#include <optional>
#include <utility>

namespace zvx {

Appointments::Appointments(std::shared_ptr<Clock> clock, Work work)
    : m_clock(std::move(clock)), m_work(std::move(work)), m_thread([this] { run(); })
{
}

Appointments::~Appointments()
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_ending = true;
    }
    m_wake.notify_all();
    m_thread.join();
}

void Appointments::make(ActionKey id, SteadyMs when)
{
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        forget(id);
        m_of[id] = m_times.emplace(when, id);
    }
    m_wake.notify_all();
}

void Appointments::drop(ActionKey id)
{
    const std::lock_guard<std::mutex> lock(m_mutex);
    forget(id);
}

void Appointments::forget(ActionKey id)
{
    const auto found = m_of.find(id);
    if (found == m_of.end())
        return;
    m_times.erase(found->second);
    m_of.erase(found);
}

void Appointments::run()
{
    std::unique_lock<std::mutex> lock(m_mutex);
    while (!m_ending) {
        if (m_times.empty() || m_times.begin()->first > m_clock->steady()) {
            const auto first
                = m_times.empty() ? std::nullopt : std::make_optional(m_times.begin()->first);
            m_clock->wait(m_wake, lock, first);
            continue;
        }
        const ActionKey id = m_times.begin()->second;
        forget(id);
        lock.unlock();
        m_work(id);
        lock.lock();
    }
}

} // namespace zvx
