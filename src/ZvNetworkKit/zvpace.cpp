#include "ZvNetworkKit/zvpace.h"

#include "ZvNetworkKit/zvexchangelink.h"

#include <utility>

ZvPace::ZvPace(ZvExchangeLink *link, int distance, std::function<bool()> ask)
    : m_link(link), m_shortest(distance), m_ask(std::move(ask)),
      m_retry(link, [this] { this->ask(); })
{
}

void ZvPace::begin()
{
    if (m_isQueued)
        return;
    m_isQueued = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isQueued = false;
            ask();
        },
        Qt::QueuedConnection);
}

void ZvPace::follow()
{
    if (m_isQueued || m_retry.isWaiting())
        return; // asked for anyway, sooner or later
    m_isDue = true;
    askIfDue();
}

void ZvPace::end()
{
    m_isAsked = false;
    m_retry.reset();
    askIfDue();
}

void ZvPace::fail()
{
    m_isAsked = false;
    m_isDue = false;
    m_retry.later();
}

void ZvPace::drop()
{
    m_isAsked = false;
    m_isDue = false;
    m_retry.reset();
}

void ZvPace::ask()
{
    if (m_isAsked || !m_link)
        return;
    m_retry.stop();
    m_isDue = false;
    m_isAsked = m_ask();
    if (!m_isAsked)
        return;
    m_distance = m_link->clock()->after(m_shortest, [this] {
        m_distance.reset();
        askIfDue();
    });
}

void ZvPace::askIfDue()
{
    if (m_isDue && !m_distance)
        ask();
}
