#include "BreltWidgetToolKit/breltdoubleclicks.h"

#include <QGuiApplication>
#include <QStyleHints>
#include <QWindow>

namespace {

// A list that opens below the mouse does so with a press of its own field.
bool isPopup(const QObject *window)
{
    return static_cast<const QWindow *>(window)->type() == Qt::Popup;
}

} // namespace

void BreltDoubleClicks::watch()
{
    static QPointer<BreltDoubleClicks> watcher;
    if (!watcher && qApp)
        watcher = new BreltDoubleClicks;
}

BreltDoubleClicks::BreltDoubleClicks() : QObject(qApp)
{
    qApp->installEventFilter(this);
}

BreltDoubleClicks::~BreltDoubleClicks() = default;

// The mouse reaches the window first, and goes on from there to the widget below it.
bool BreltDoubleClicks::eventFilter(QObject *watched, QEvent *event)
{
    if (!watched->isWindowType())
        return false;
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        takePress(watched, *static_cast<QMouseEvent *>(event));
        return m_isEating;
    case QEvent::MouseMove:
        if (!static_cast<QMouseEvent *>(event)->buttons().testFlag(m_button))
            m_isEating = false; // the release has gone to somebody else
        return m_isEating;
    case QEvent::MouseButtonDblClick:
        return m_isEating;
    case QEvent::MouseButtonRelease: {
        const bool isEaten = m_isEating && static_cast<QMouseEvent *>(event)->button() == m_button;
        m_isEating = m_isEating && !isEaten;
        return isEaten;
    }
    default:
        return false;
    }
}

void BreltDoubleClicks::takePress(QObject *window, const QMouseEvent &press)
{
    m_isEating = isStray(window, press);
    m_window = window;
    m_button = press.button();
    m_place = press.globalPos();
    m_time = press.timestamp();
}

bool BreltDoubleClicks::isStray(QObject *window, const QMouseEvent &press) const
{
    const QStyleHints *hints = QGuiApplication::styleHints();
    return m_time != 0 && window != m_window && !isPopup(window) && press.button() == m_button
        && press.timestamp() - m_time < ulong(hints->mouseDoubleClickInterval())
        && (press.globalPos() - m_place).manhattanLength() <= 2 * hints->mouseDoubleClickDistance();
}
