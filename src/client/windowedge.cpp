#include "client/windowedge.h"

#include <QCursor>
#include <QMouseEvent>
#include <QPainter>
#include <QWindow>

namespace {

const QColor body(0x1a, 0x1d, 0x22);
const QColor line(0x3a, 0x3f, 0x49);

bool isUpright(Qt::Edge side)
{
    return side == Qt::LeftEdge || side == Qt::RightEdge;
}

Qt::CursorShape shapeOf(Qt::Edges edges)
{
    if (edges == Qt::Edges(Qt::TopEdge | Qt::LeftEdge)
        || edges == Qt::Edges(Qt::BottomEdge | Qt::RightEdge))
        return Qt::SizeFDiagCursor;
    if (edges == Qt::Edges(Qt::TopEdge | Qt::RightEdge)
        || edges == Qt::Edges(Qt::BottomEdge | Qt::LeftEdge))
        return Qt::SizeBDiagCursor;
    return edges & (Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

} // namespace

WindowEdge::WindowEdge(Qt::Edge side, QWidget *window) : QWidget(window), m_side(side)
{
    setAttribute(Qt::WA_OpaquePaintEvent);
    setAttribute(Qt::WA_NoMousePropagation);
    setMouseTracking(true);
    place();
}

// The upper and the lower edge have the four corners.
void WindowEdge::place()
{
    const QSize window = parentWidget()->size();
    const int length = window.height() - 2 * thickness;
    switch (m_side) {
    case Qt::TopEdge:
        setGeometry(0, 0, window.width(), thickness);
        break;
    case Qt::BottomEdge:
        setGeometry(0, window.height() - thickness, window.width(), thickness);
        break;
    case Qt::LeftEdge:
        setGeometry(0, thickness, thickness, length);
        break;
    case Qt::RightEdge:
        setGeometry(window.width() - thickness, thickness, thickness, length);
        break;
    }
    raise();
}

Qt::Edges WindowEdge::edgesAt(const QPoint &position) const
{
    const QPoint place = mapToParent(position);
    const QSize window = parentWidget()->size();
    Qt::Edges edges = m_side;
    if (isUpright(m_side)) {
        if (place.y() < cornerLength)
            edges |= Qt::TopEdge;
        else if (place.y() >= window.height() - cornerLength)
            edges |= Qt::BottomEdge;
    } else {
        if (place.x() < cornerLength)
            edges |= Qt::LeftEdge;
        else if (place.x() >= window.width() - cornerLength)
            edges |= Qt::RightEdge;
    }
    return edges;
}

void WindowEdge::showCursor(const QPoint &position)
{
    const Qt::CursorShape shape = shapeOf(edgesAt(position));
    if (!testAttribute(Qt::WA_SetCursor) || cursor().shape() != shape)
        setCursor(shape);
}

void WindowEdge::enterEvent(QEvent *event)
{
    showCursor(mapFromGlobal(QCursor::pos()));
    QWidget::enterEvent(event);
}

void WindowEdge::hideEvent(QHideEvent *event)
{
    m_drawn = Qt::Edges();
    QWidget::hideEvent(event);
}

void WindowEdge::mousePressEvent(QMouseEvent *event)
{
    m_drawn = Qt::Edges();
    if (event->button() != Qt::LeftButton)
        return;
    const Qt::Edges edges = edgesAt(event->pos());
    QWindow *handle = window()->windowHandle();
    if (handle && handle->startSystemResize(edges))
        return;
    m_drawn = edges;
    m_grip = event->globalPos();
    m_before = window()->geometry();
}

void WindowEdge::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton))
        m_drawn = Qt::Edges(); // the release has gone elsewhere
    if (m_drawn)
        window()->setGeometry(drawnTo(event->globalPos()));
    else
        showCursor(event->pos());
}

void WindowEdge::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_drawn = Qt::Edges();
}

// The edge across stays where it is, also where the window gets no smaller.
QRect WindowEdge::drawnTo(const QPoint &pointer) const
{
    const QPoint by = pointer - m_grip;
    const QSize least = window()->minimumSize();
    QRect place = m_before;
    if (m_drawn & Qt::LeftEdge)
        place.setLeft(qMin(place.left() + by.x(), place.right() + 1 - least.width()));
    else if (m_drawn & Qt::RightEdge)
        place.setRight(qMax(place.right() + by.x(), place.left() - 1 + least.width()));
    if (m_drawn & Qt::TopEdge)
        place.setTop(qMin(place.top() + by.y(), place.bottom() + 1 - least.height()));
    else if (m_drawn & Qt::BottomEdge)
        place.setBottom(qMax(place.bottom() + by.y(), place.top() - 1 + least.height()));
    return place;
}

void WindowEdge::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), body);
    // One line around the window, the outermost.
    const QRect outline = QRect(mapFromParent(QPoint()), parentWidget()->size());
    painter.fillRect(QRect(outline.topLeft(), QSize(outline.width(), 1)), line);
    painter.fillRect(QRect(outline.bottomLeft(), QSize(outline.width(), 1)), line);
    painter.fillRect(QRect(outline.topLeft(), QSize(1, outline.height())), line);
    painter.fillRect(QRect(outline.topRight(), QSize(1, outline.height())), line);
}
