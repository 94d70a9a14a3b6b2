#pragma once

#include <QApplication>
#include <QWheelEvent>
#include <QtTest/QtTest>

namespace zvtest {

// Turns the wheel over the middle of a widget as the window system does: who ignores the event
// hands it to the parent. Says whether anybody took it.
inline bool turnWheel(QWidget *widget, const QPoint &angle)
{
    const QPoint at = widget->rect().center();
    QWheelEvent event(at, widget->mapToGlobal(at), QPoint(), angle, Qt::NoButton, Qt::NoModifier,
                      Qt::NoScrollPhase, false);
    QSpontaneKeyEvent::setSpontaneous(&event);
    qApp->notify(widget, &event);
    return event.isAccepted();
}

inline bool turnWheel(QWidget *widget, int delta)
{
    return turnWheel(widget, QPoint(0, delta));
}

} // namespace zvtest
