#pragma once

#include "ZvNetworkKit/zvclock.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QDate>
#include <QObject>

class ZvExchangeLink;

// The number of seconds that QDateTime::fromTime_t(), shown in this machine's local time, displays
// as the exchange's wall time at `utcMilliseconds`, on the business date `tradingDay` where there
// is one. It is no instant: on a machine of another time zone it differs from the instant by the
// distance of the zones. Held between 0 and what an int holds.
ZVNETWORKKIT_EXPORT int zvDisplayedSeconds(qint64 utcMilliseconds, const QDate &tradingDay);

// The exchange's clock on this machine: set by each answer to a poll, told once a second while the
// exchange answers.
class ZvExchangeTime : public QObject
{
    Q_OBJECT

public:
    explicit ZvExchangeTime(ZvExchangeLink *link);

    void setTime(qint64 utcMilliseconds);
    void setTradingDay(const QDate &day) { m_tradingDay = day; }

private:
    qint64 now() const;
    void wait();
    void tell();

    ZvExchangeLink *m_link;
    qint64 m_time = -1; // the exchange's, at `m_heard`
    qint64 m_heard = 0;
    QDate m_tradingDay;
    ZvTimer m_second;
};
