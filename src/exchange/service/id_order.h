#pragma once

#include "exchange/core/types.h"

#include <tuple>

namespace zvx {

/// An order of ids for maps; it means nothing else.
struct IdOrder {
    bool operator()(const ActionKey &a, const ActionKey &b) const
    {
        return std::tie(a.high, a.low) < std::tie(b.high, b.low);
    }
};

} // namespace zvx
