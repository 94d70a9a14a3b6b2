#pragma once

#include <QApplication>
#include <QList>
#include <QWidget>

namespace zvtest {

// The windows of a class that are on the screen.
template <typename Window>
QList<Window *> shownWindows()
{
    QList<Window *> found;
    const QWidgetList all = QApplication::topLevelWidgets();
    for (QWidget *widget : all) {
        auto *window = qobject_cast<Window *>(widget);
        if (window && window->isVisible())
            found << window;
    }
    return found;
}

// One of them; null where there is none.
template <typename Window>
Window *shownWindow()
{
    return shownWindows<Window>().value(0);
}

} // namespace zvtest
