#include "client/keysinsight.h"

#include <QApplication>
#include <QEvent>
#include <QStackedWidget>
#include <QWidget>

KeysInSight::KeysInSight(QWidget *window) : QObject(window), m_window(window)
{
    qApp->installEventFilter(this); // other parts come and go
    for (const QStackedWidget *pages : window->findChildren<QStackedWidget *>())
        connect(pages, &QStackedWidget::currentChanged, this,
                [this, pages] { leaveTurned(pages); });
}

// Of pages, the front one may get the keys after the other has been hidden.
bool KeysInSight::eventFilter(QObject *object, QEvent *event)
{
    if (event->type() == QEvent::HideToParent && object->isWidgetType()) {
        const auto *hidden = static_cast<QWidget *>(object);
        if (hidden != m_window && hidden->window() == m_window
            && !qobject_cast<QStackedWidget *>(hidden->parentWidget()))
            leave(hidden);
    }
    return false;
}

void KeysInSight::leaveTurned(const QStackedWidget *pages)
{
    for (int i = 0; i < pages->count(); ++i) {
        if (i != pages->currentIndex())
            leave(pages->widget(i));
    }
}

// Each part around the hidden one keeps in mind who would get the keys in it; who has them may be
// another. What is hidden keeps in mind its own, for the time when it is back.
void KeysInSight::leave(const QWidget *hidden)
{
    QList<QWidget *> kept{QApplication::focusWidget()};
    for (const QWidget *around = hidden; around != m_window;) {
        around = around->parentWidget();
        kept << around->focusWidget();
    }
    bool hadKeys = false;
    for (QWidget *widget : qAsConst(kept)) {
        if (!widget || (widget != hidden && !hidden->isAncestorOf(widget)))
            continue;
        hadKeys = hadKeys || widget == m_window->focusWidget();
        widget->clearFocus();
    }
    if (hadKeys && !m_window->focusWidget())
        emit lost();
}
