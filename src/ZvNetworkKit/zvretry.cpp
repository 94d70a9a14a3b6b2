#include "ZvNetworkKit/zvretry.h"

#include "ZvNetworkKit/zvexchangelink.h"

#include <algorithm>

ZvRetry::ZvRetry(ZvExchangeLink *link, std::function<void()> again)
    : m_link(link), m_again(std::move(again))
{
    connect(link, &ZvExchangeLink::connectionChanged, this, [this](bool connected) {
        if (connected && isWaiting())
            bring();
    });
}

void ZvRetry::later()
{
    const int doublings = std::min(m_failures, 5);
    ++m_failures;
    m_pause = m_link->clock()->after(std::min(longestPause, shortestPause << doublings),
                                     [this] { bring(); });
}

void ZvRetry::reset()
{
    m_failures = 0;
    m_pause.reset();
}

void ZvRetry::bring()
{
    m_pause.reset();
    m_again();
}
