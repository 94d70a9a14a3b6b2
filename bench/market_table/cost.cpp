#include "cost.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>
#include <QTimer>
#include <QWidget>

PaintCounter::PaintCounter(QWidget *widget)
{
    widget->installEventFilter(this);
}

bool PaintCounter::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Paint)
        ++m_count;
    return QObject::eventFilter(watched, event);
}

bool turnUntil(const std::function<bool()> &isDone)
{
    const QDeadlineTimer deadline(30000);
    QTimer alarm; // wakes a loop in which nothing else happens
    alarm.start(1000);
    while (!isDone()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void turnUntilQuiet()
{
    // A timer of no delay may post a paint, and that one a flush.
    for (int turn = 0; turn < 4; ++turn)
        QCoreApplication::processEvents();
}

void turnFor(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
}
