#pragma once

#include "exchange/core/market.h"
#include "exchange/store/projector.h"
#include "exchange/store/store.h"

#include <vector>

// Makes what a market's writer stores, from a market of its own: for baselines that commit the same
// rows and do nothing else.
class RowMaker
{
public:
    RowMaker();
    // Goes on where a store ends.
    explicit RowMaker(zvx::Store &store);

    // The rows of these commands in one commit.
    zvx::Batch make(const std::vector<zvx::Command> &commands, zvx::TimeMs now);

    const zvx::Market &market() const { return m_market; }

private:
    zvx::Market m_market;
    zvx::Projector m_projector;
    std::int64_t m_last = 0;
    std::vector<zvx::Event> m_happened;
};
