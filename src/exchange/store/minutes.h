#pragma once

#include "exchange/core/types.h"

namespace zvx {

constexpr std::int64_t kMinuteMs = 60'000;

/// The begin of the minute in which a moment lies.
constexpr TimeMs minuteOf(TimeMs at)
{
    return TimeMs(at.value() - at.value() % kMinuteMs);
}

} // namespace zvx
