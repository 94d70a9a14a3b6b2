#pragma once

#include "exchange/store/clock.h"

// The machine's clock, on which it is always the same morning, so that two stores get equal rows.
class SteadyWall : public zvx::SystemClock
{
public:
    static constexpr zvx::TimeMs morning{1'577'840'400'000};

    zvx::TimeMs wall() const override { return morning; }
};
