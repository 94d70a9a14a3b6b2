#include "randomevents/heldclock.h"

#include <atomic>
#include <ctime>

#include <sys/syscall.h>
#include <sys/time.h>
#include <unistd.h>

namespace {

constexpr qint64 nanosecondsOfSecond = 1'000'000'000;
constexpr qint64 nanosecondsOfMillisecond = 1'000'000;
constexpr qint64 nanosecondsOfMicrosecond = 1'000;
constexpr qint64 begin = 1'772'416'800; // of each life: 2026-03-02 10:00 in Shanghai

std::atomic<qint64> held{0}; // nanoseconds; 0 while nobody holds the clock
qint64 first = 0;

} // namespace

// Stands in front of the C library's own, for the libraries as well.
extern "C" __attribute__((visibility("default"))) int clock_gettime(clockid_t clock,
                                                                    timespec *time) noexcept
{
    const qint64 now = held;
    if (now == 0 || clock != CLOCK_MONOTONIC)
        return static_cast<int>(::syscall(SYS_clock_gettime, clock, time));
    time->tv_sec = static_cast<time_t>(now / nanosecondsOfSecond);
    time->tv_nsec = static_cast<long>(now % nanosecondsOfSecond);
    return 0;
}

// Where Qt takes the date from: calendars and the days that pages ask for are the same in each
// life.
extern "C" __attribute__((visibility("default"))) int gettimeofday(timeval *time,
                                                                   void *zone) noexcept
{
    const qint64 now = held;
    if (now == 0)
        return static_cast<int>(::syscall(SYS_gettimeofday, time, zone));
    const qint64 passed = now - first;
    time->tv_sec = static_cast<time_t>(begin + passed / nanosecondsOfSecond);
    time->tv_usec
        = static_cast<suseconds_t>(passed % nanosecondsOfSecond / nanosecondsOfMicrosecond);
    return 0;
}

namespace randomevents {

HeldClock::HeldClock()
{
    // The same in each life: what is left of a second decides what Qt rounds.
    first = 1'000'000 * nanosecondsOfSecond;
    held = first;
}

HeldClock::~HeldClock()
{
    held = 0;
}

void HeldClock::pass(qint64 milliseconds)
{
    held += milliseconds * nanosecondsOfMillisecond;
}

qint64 HeldClock::passed() const
{
    return (held - first) / nanosecondsOfMillisecond;
}

} // namespace randomevents
