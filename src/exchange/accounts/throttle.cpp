#include "exchange/accounts/throttle.h"

#include <algorithm>

namespace zvx {
namespace {

/// Looking through all buckets for full ones costs time, so it is not done more often.
constexpr std::int64_t kBetweenSweeps = 1'000;

} // namespace

Throttle::Throttle(int capacity, std::int64_t every, std::size_t bound)
    : m_every(every), m_depth(capacity * every), m_bound(bound), m_swept(-kBetweenSweeps)
{
}

std::int64_t Throttle::wait(const std::string &name, SteadyMs now) const
{
    const auto found = m_fullAt.find(name);
    if (found == m_fullAt.end())
        return 0;
    return std::max<std::int64_t>(found->second + m_every - m_depth - now, 0);
}

bool Throttle::room(const std::string &name, SteadyMs now)
{
    if (m_fullAt.size() < m_bound || m_fullAt.count(name) > 0)
        return true;
    if (now - m_swept >= kBetweenSweeps) {
        m_swept = now;
        for (auto bucket = m_fullAt.begin(); bucket != m_fullAt.end();)
            bucket = bucket->second <= now ? m_fullAt.erase(bucket) : std::next(bucket);
    }
    return m_fullAt.size() < m_bound;
}

void Throttle::take(const std::string &name, SteadyMs now)
{
    SteadyMs &fullAt = m_fullAt[name];
    fullAt = std::max(fullAt, now) + m_every;
}

void Throttle::giveBack(const std::string &name)
{
    const auto found = m_fullAt.find(name);
    if (found != m_fullAt.end())
        found->second -= m_every;
}

void Throttle::refill(const std::string &name)
{
    m_fullAt.erase(name);
}

} // namespace zvx
