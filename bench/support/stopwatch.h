#pragma once

#include <cstdint>
#include <ctime>

// Counts the CPU time of the calling thread and the time on the clock from its construction on.
class Stopwatch
{
public:
    Stopwatch() : m_cpu(nanoseconds(CLOCK_THREAD_CPUTIME_ID)), m_wall(nanoseconds(CLOCK_MONOTONIC))
    {
    }

    double cpu() const { return since(CLOCK_THREAD_CPUTIME_ID, m_cpu); } // milliseconds
    double wall() const { return since(CLOCK_MONOTONIC, m_wall); } // milliseconds

    static std::int64_t nanoseconds(clockid_t clock)
    {
        timespec now{};
        clock_gettime(clock, &now);
        return std::int64_t(now.tv_sec) * 1'000'000'000 + now.tv_nsec;
    }

private:
    static double since(clockid_t clock, std::int64_t start)
    {
        return static_cast<double>(nanoseconds(clock) - start) / 1e6;
    }

    std::int64_t m_cpu;
    std::int64_t m_wall;
};
