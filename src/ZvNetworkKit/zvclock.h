#pragma once

#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QElapsedTimer>
#include <QObject>
#include <QPointer>

#include <functional>
#include <utility>

// A running single-shot timer; letting go of it stops it. It may be let go of while it fires, and
// after its clock has gone.
class ZVNETWORKKIT_EXPORT ZvTimer
{
public:
    ZvTimer() = default;
    explicit ZvTimer(QObject *timer) : m_timer(timer) { }
    ZvTimer(ZvTimer &&other) noexcept { swap(other); }
    ZvTimer &operator=(ZvTimer &&other) noexcept
    {
        ZvTimer taken(std::move(other));
        swap(taken);
        return *this;
    }
    ~ZvTimer() { reset(); }
    Q_DISABLE_COPY(ZvTimer)

    void reset();
    explicit operator bool() const { return !m_timer.isNull(); }

private:
    void swap(ZvTimer &other) noexcept { std::swap(m_timer, other.m_timer); }

    QPointer<QObject> m_timer;
};

// Where the kit takes its time from: deadlines, polls, back-off and the exchange's clock. Tests put
// a clock in its place that moves when they say so.
class ZVNETWORKKIT_EXPORT ZvClock : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    // Milliseconds of a clock that never goes back; its zero means nothing.
    virtual qint64 now() const = 0;

    // Calls `action` once, `delay` milliseconds from now or at the next turn of the event loop,
    // whichever is later.
    virtual ZvTimer after(qint64 delay, std::function<void()> action) = 0;
};

// The machine's monotonic clock.
class ZVNETWORKKIT_EXPORT ZvSystemClock : public ZvClock
{
    Q_OBJECT

public:
    explicit ZvSystemClock(QObject *parent = nullptr);

    qint64 now() const override;
    ZvTimer after(qint64 delay, std::function<void()> action) override;

private:
    QElapsedTimer m_elapsed;
};

// A clock for tests: it stands still until it is moved.
class ZVNETWORKKIT_EXPORT ZvManualClock : public ZvClock
{
    Q_OBJECT

public:
    explicit ZvManualClock(QObject *parent = nullptr);
    ~ZvManualClock() override;

    qint64 now() const override { return m_now; }
    ZvTimer after(qint64 delay, std::function<void()> action) override;

    // Moves on by `milliseconds` and fires what becomes due, in the order of time.
    void advance(qint64 milliseconds);

    // How long from now until the next timer fires; -1 without one.
    qint64 untilNext() const;

private:
    class Alarm;

    qint64 m_now = 1000000;
    qint64 m_order = 0;
};
