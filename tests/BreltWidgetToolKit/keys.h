#pragma once

#include <QCoreApplication>
#include <QKeyEvent>
#include <QWidget>

// Sends what a held Return key sends after its first press.
inline void repeatReturn(QWidget *receiver, int times, Qt::Key key = Qt::Key_Return)
{
    for (int i = 0; i < times; ++i) {
        QKeyEvent press(QEvent::KeyPress, key, Qt::NoModifier, QStringLiteral("\r"), true);
        QCoreApplication::sendEvent(receiver, &press);
    }
}
