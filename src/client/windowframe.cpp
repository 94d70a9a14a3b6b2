#include "client/windowframe.h"

#include "client/screenareas.h"
#include "client/windowedge.h"

#include <QApplication>
#include <QLayout>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QWindow>

WindowFrame::WindowFrame(QWidget *window, QWidget *titleBar)
    : QObject(window), m_window(window), m_titleBar(titleBar)
{
    if (window->windowFlags() != flags)
        window->setWindowFlags(flags);
    for (const Qt::Edge side : {Qt::TopEdge, Qt::BottomEdge, Qt::LeftEdge, Qt::RightEdge})
        m_edges << new WindowEdge(side, window);
    fitMargins();
    window->installEventFilter(this);
    titleBar->installEventFilter(this);
    connect(qApp, &QGuiApplication::focusWindowChanged, this,
            [this](const QWindow *focus) { m_hasKeys = focus != nullptr; });
}

bool WindowFrame::isMaximized() const
{
    return m_window->isMaximized();
}

QRect WindowFrame::normalGeometry() const
{
    return isMaximized() && m_normal.isValid() ? m_normal : m_window->geometry();
}

void WindowFrame::maximize()
{
    if (isMaximized())
        return;
    m_normal = m_window->geometry();
    // Where no window manager is there to do it, nobody else gives the window its size.
    const QScopedValueRollback<bool> rollback(m_isOwn, true);
    m_window->setGeometry(m_window->screen()->availableGeometry());
    m_window->setWindowState(m_window->windowState() | Qt::WindowMaximized);
}

void WindowFrame::minimize()
{
    m_window->showMinimized();
}

void WindowFrame::toggleMaximized()
{
    if (isMaximized())
        m_window->setWindowState(m_window->windowState() & ~Qt::WindowMaximized);
    else
        maximize();
}

bool WindowFrame::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == m_titleBar)
        return takeTitleBar(event);
    switch (event->type()) {
    case QEvent::Resize:
        for (WindowEdge *edge : qAsConst(m_edges))
            edge->place();
        break;
    case QEvent::WindowStateChange:
        takeState(static_cast<QWindowStateChangeEvent *>(event)->oldState());
        break;
    case QEvent::Hide:
    case QEvent::WindowBlocked:
        m_drag = Drag::None;
        break;
    case QEvent::WindowUnblocked:
        // The dialog that goes may have the keys, and without a window manager nobody gives them
        // back. A box over the dialog may have had them, and be gone already.
        if (m_hasKeys)
            QMetaObject::invokeMethod(this, &WindowFrame::takeKeys, Qt::QueuedConnection);
        break;
    default:
        break;
    }
    return false;
}

void WindowFrame::takeKeys()
{
    if (m_window->isVisible() && !m_window->isActiveWindow() && !QApplication::activeModalWidget())
        m_window->activateWindow();
}

bool WindowFrame::takeTitleBar(QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        takePress(*static_cast<QMouseEvent *>(event));
        return false;
    case QEvent::MouseMove:
        return takeMove(*static_cast<QMouseEvent *>(event));
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
        m_drag = Drag::None;
        return false;
    default:
        return false;
    }
}

void WindowFrame::takePress(const QMouseEvent &event)
{
    m_drag = event.button() == Qt::LeftButton ? Drag::Pressed : Drag::None;
    m_press = event.globalPos();
    m_grip = m_press - m_window->pos();
}

// A hand that shakes in a double click moves nothing.
bool WindowFrame::takeMove(const QMouseEvent &event)
{
    if (!(event.buttons() & Qt::LeftButton))
        m_drag = Drag::None; // the release has gone elsewhere
    if (m_drag == Drag::Pressed
        && (event.globalPos() - m_press).manhattanLength() >= QApplication::startDragDistance())
        beginMove();
    if (m_drag == Drag::Moving) {
        const QRect wanted(event.globalPos() - m_grip, m_window->size());
        m_window->move(screenareas::reachable(wanted, screenareas::all()));
    }
    return m_drag != Drag::None;
}

// A window that fills the screen comes off it at its own size, under the pointer.
void WindowFrame::beginMove()
{
    if (isMaximized()) {
        m_grip.rx() = m_grip.x() * m_normal.width() / qMax(1, m_window->width());
        m_normal.moveTopLeft(m_press - m_grip);
        toggleMaximized();
    }
    QWindow *handle = m_window->windowHandle();
    m_drag = handle && handle->startSystemMove() ? Drag::None : Drag::Moving;
}

void WindowFrame::takeState(Qt::WindowStates before)
{
    const bool was = before & Qt::WindowMaximized;
    if (!was && isMaximized() && !m_isOwn)
        m_normal = m_window->normalGeometry(); // by the keys of the window manager
    else if (was && !isMaximized() && m_normal.isValid())
        m_window->setGeometry(m_normal);
    fitMargins();
}

// The edges are there where the window can be drawn by them.
void WindowFrame::fitMargins()
{
    const bool fills = m_window->isMaximized() || m_window->isFullScreen();
    const int margin = fills ? 0 : WindowEdge::thickness;
    m_window->layout()->setContentsMargins(margin, margin, margin, margin);
    for (WindowEdge *edge : qAsConst(m_edges))
        edge->setHidden(fills);
}
