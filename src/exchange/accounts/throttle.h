#pragma once

#include "exchange/store/clock.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <unordered_map>

namespace zvx {

/**
 * A bucket of tokens for each name: full at first, one taken for each attempt, one back every so
 * many milliseconds.
 *
 * A bucket that is full again is forgotten, so memory goes with what is tried, not with what was;
 * beyond `bound` names a new one finds no room, and must not be tried. One thread at a time.
 */
class Throttle
{
public:
    Throttle(int capacity, std::int64_t every, std::size_t bound);

    /// Milliseconds until a token is there; 0 where one is.
    std::int64_t wait(const std::string &name, SteadyMs now) const;
    /// Whether the name can be counted.
    bool room(const std::string &name, SteadyMs now);

    /// Takes a token; wait() is 0 and room() is true.
    void take(const std::string &name, SteadyMs now);
    /// Undoes a take().
    void giveBack(const std::string &name);
    void refill(const std::string &name);

private:
    std::int64_t m_every;
    std::int64_t m_depth; ///< ms from empty to full
    std::size_t m_bound;
    SteadyMs m_swept = 0;
    std::unordered_map<std::string, SteadyMs> m_fullAt; ///< when each bucket is full again
};

} // namespace zvx
