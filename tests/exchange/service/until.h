#pragma once

#include <chrono>
#include <thread>

namespace zvxtest {

/// Looks at `condition` again and again, until it holds or `bound` has passed.
template <class Condition>
bool until(const Condition &condition,
           std::chrono::milliseconds bound = std::chrono::milliseconds(20'000))
{
    const auto end = std::chrono::steady_clock::now() + bound;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= end)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

} // namespace zvxtest
