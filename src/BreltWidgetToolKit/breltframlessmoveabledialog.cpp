#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"

#include "BreltWidgetToolKit/breltinputwatch.h"

#include <QAbstractButton>
#include <QAbstractSlider>
#include <QGuiApplication>
#include <QMouseEvent>
#include <QScreen>
#include <QWindow>

namespace {

// How much of the band stays on a screen, and how high it counts where there is none.
const int c_visibleWidth = 80;
const int c_visibleHeight = 20;

// A widget that does something with the mouse, or would if it were enabled.
bool isControl(const QWidget *widget)
{
    return qobject_cast<const QAbstractButton *>(widget)
        || qobject_cast<const QAbstractSlider *>(widget)
        || (widget->focusPolicy() & Qt::ClickFocus);
}

// The usable area of the screen that shows most of `frame`, or of the first screen.
QRect areaFor(const QRect &frame)
{
    const QScreen *best = QGuiApplication::primaryScreen();
    qint64 most = 0;
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (const QScreen *screen : screens) {
        const QRect shared = screen->availableGeometry() & frame;
        const qint64 pixels = qint64(shared.width()) * shared.height();
        if (!shared.isEmpty() && pixels > most) {
            most = pixels;
            best = screen;
        }
    }
    return best ? best->availableGeometry() : QRect();
}

} // namespace

BreltFramlessMoveableDialog::BreltFramlessMoveableDialog(QWidget *parent)
    : QDialog(parent, Qt::Dialog | Qt::FramelessWindowHint)
{
    brelt::watchInput();
}

BreltFramlessMoveableDialog::~BreltFramlessMoveableDialog() = default;

void BreltFramlessMoveableDialog::setTitleHeight(int height)
{
    m_titleHeight = qMax(0, height);
}

int BreltFramlessMoveableDialog::titleHeight() const
{
    return m_titleHeight;
}

bool BreltFramlessMoveableDialog::event(QEvent *event)
{
    const QEvent::Type type = event->type();
    const bool handled = QDialog::event(event);
    if (type == QEvent::Show && !event->spontaneous() && isWindow()
        && !testAttribute(Qt::WA_Moved)) {
        moveToTheMiddle();
        setAttribute(Qt::WA_Moved, false); // nobody has chosen this place
    }
    if (type == QEvent::Show) {
        const QPoint place = reachable(pos());
        if (place != pos())
            move(place);
    } else if (type == QEvent::Hide || type == QEvent::WindowBlocked) {
        m_dragging = false;
    }
    return handled;
}

// Over the owner's window as far as the screen has room, or on the screen. QDialog would leave room
// for a title and borders, and stand too high and too far to the left without them.
void BreltFramlessMoveableDialog::moveToTheMiddle()
{
    const QRect around
        = parentWidget() ? parentWidget()->window()->geometry() : areaFor(geometry());
    const QRect area = areaFor(around);
    QRect place(QPoint(), size());
    place.moveCenter(around.center());
    // The upper left corner has the title, and comes first.
    place.moveBottomRight({qMin(place.right(), area.right()), qMin(place.bottom(), area.bottom())});
    place.moveTopLeft({qMax(place.left(), area.left()), qMax(place.top(), area.top())});
    move(place.topLeft());
}

void BreltFramlessMoveableDialog::mousePressEvent(QMouseEvent *event)
{
    m_dragging = false; // the last release may have gone to somebody else
    if (event->button() != Qt::LeftButton || !isOnBand(event->pos())) {
        QDialog::mousePressEvent(event);
        return;
    }
    event->accept();

    // Wayland lets no client place its own windows: there the compositor moves it.
    if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")) && windowHandle()
        && windowHandle()->startSystemMove())
        return;

    m_dragging = true;
    m_grip = event->globalPos() - pos();
}

void BreltFramlessMoveableDialog::mouseMoveEvent(QMouseEvent *event)
{
    if (!m_dragging) {
        QDialog::mouseMoveEvent(event);
        return;
    }
    event->accept();
    if (!(event->buttons() & Qt::LeftButton)) {
        m_dragging = false;
        return;
    }
    move(reachable(event->globalPos() - m_grip));
}

void BreltFramlessMoveableDialog::mouseReleaseEvent(QMouseEvent *event)
{
    if (m_dragging && event->button() == Qt::LeftButton) {
        m_dragging = false;
        event->accept();
        return;
    }
    QDialog::mouseReleaseEvent(event);
}

bool BreltFramlessMoveableDialog::isOnBand(const QPoint &position) const
{
    if (!rect().contains(position) || position.y() >= m_titleHeight || isMaximized()
        || isFullScreen())
        return false;
    for (const QWidget *widget = childAt(position); widget && widget != this;
         widget = widget->parentWidget()) {
        if (isControl(widget))
            return false;
    }
    return true;
}

QPoint BreltFramlessMoveableDialog::reachable(const QPoint &topLeft) const
{
    const QRect area = areaFor(QRect(topLeft, size()));
    if (area.isEmpty())
        return topLeft;
    const int visibleWidth = qMin(width(), c_visibleWidth);
    const int visibleHeight = m_titleHeight > 0 ? m_titleHeight : c_visibleHeight;
    const int left = area.x() - width() + visibleWidth;
    const int right = qMax(left, area.x() + area.width() - visibleWidth);
    const int bottom = qMax(area.y(), area.y() + area.height() - visibleHeight);
    return QPoint(qBound(left, topLeft.x(), right), qBound(area.y(), topLeft.y(), bottom));
}
