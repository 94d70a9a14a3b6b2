#include "ZvNetworkKit/zvexchangetime.h"

#include "ZvModelKit/zvubvalues.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QDateTime>

#include <algorithm>
#include <limits>

int zvDisplayedSeconds(qint64 utcMilliseconds, const QDate &tradingDay)
{
    const QDateTime wall = zvub::exchangeTime(std::max<qint64>(0, utcMilliseconds));
    const QDate date = tradingDay.isValid() ? tradingDay : wall.date();
    const qint64 seconds = QDateTime(date, wall.time(), Qt::LocalTime).toSecsSinceEpoch();
    const qint64 most = std::numeric_limits<int>::max();
    return static_cast<int>(std::clamp<qint64>(seconds, 0, most));
}

ZvExchangeTime::ZvExchangeTime(ZvExchangeLink *link) : m_link(link)
{
    connect(link, &ZvExchangeLink::connectionChanged, this, [this](bool connected) {
        if (connected && m_time >= 0)
            tell();
        else
            m_second.reset();
    });
}

void ZvExchangeTime::setTime(qint64 utcMilliseconds)
{
    m_time = utcMilliseconds;
    m_heard = m_link->clock()->now();
    if (!m_second && m_link->isConnected())
        tell();
}

qint64 ZvExchangeTime::now() const
{
    return m_time + m_link->clock()->now() - m_heard;
}

void ZvExchangeTime::wait()
{
    m_second = m_link->clock()->after(1000 - now() % 1000, [this] { tell(); });
}

void ZvExchangeTime::tell()
{
    wait();
    ZvServerCache::getZvServerCacheInstance()->storeGlobalTime(
        zvDisplayedSeconds(now(), m_tradingDay));
}
