#include "ZvNetworkKit/zvclock.h"

#include <QTimer>

#include <algorithm>
#include <limits>
#include <tuple>

void ZvTimer::reset()
{
    if (!m_timer)
        return;
    // The timer may be the one that is firing now, so it goes when its own call has returned.
    m_timer->setProperty("ended", true);
    if (auto *running = qobject_cast<QTimer *>(m_timer))
        running->stop();
    m_timer->deleteLater();
    m_timer.clear();
}

ZvSystemClock::ZvSystemClock(QObject *parent) : ZvClock(parent)
{
    m_elapsed.start();
}

qint64 ZvSystemClock::now() const
{
    return m_elapsed.elapsed();
}

ZvTimer ZvSystemClock::after(qint64 delay, std::function<void()> action)
{
    auto *timer = new QTimer(this);
    timer->setSingleShot(true);
    timer->setTimerType(delay < 2000 ? Qt::PreciseTimer : Qt::CoarseTimer);
    QObject::connect(timer, &QTimer::timeout, timer, std::move(action));
    const qint64 longest = std::numeric_limits<int>::max();
    timer->start(static_cast<int>(std::clamp(delay, qint64(0), longest)));
    return ZvTimer(timer);
}

class ZvManualClock::Alarm : public QObject
{
public:
    using QObject::QObject;

    bool isWaiting() const { return !fired && !property("ended").toBool(); }

    qint64 due = 0;
    qint64 order = 0;
    bool fired = false;
    std::function<void()> action;
};

ZvManualClock::ZvManualClock(QObject *parent) : ZvClock(parent) { }

ZvManualClock::~ZvManualClock() = default;

ZvTimer ZvManualClock::after(qint64 delay, std::function<void()> action)
{
    auto *alarm = new Alarm(this);
    alarm->due = m_now + std::max(delay, qint64(0));
    alarm->order = ++m_order;
    alarm->action = std::move(action);
    return ZvTimer(alarm);
}

void ZvManualClock::advance(qint64 milliseconds)
{
    const qint64 target = m_now + milliseconds;
    for (;;) {
        Alarm *next = nullptr;
        for (QObject *child : children()) {
            auto *alarm = static_cast<Alarm *>(child);
            if (!alarm->isWaiting() || alarm->due > target)
                continue;
            if (!next || std::tie(alarm->due, alarm->order) < std::tie(next->due, next->order))
                next = alarm;
        }
        if (!next)
            break;
        m_now = std::max(m_now, next->due);
        next->fired = true;
        next->action();
    }
    m_now = target;
}

qint64 ZvManualClock::untilNext() const
{
    qint64 nearest = -1;
    for (QObject *child : children()) {
        const auto *alarm = static_cast<const Alarm *>(child);
        if (alarm->isWaiting() && (nearest < 0 || alarm->due - m_now < nearest))
            nearest = alarm->due - m_now;
    }
    return nearest;
}
