#pragma once

#include <QPoint>
#include <QRect>
#include <QWidget>

// One of the four edges of a frameless window, by which the mouse draws it larger or smaller; near
// its ends it is a corner. It lies in the margin that the window's layout leaves free, beside the
// controls and never over them.
class WindowEdge : public QWidget
{
    Q_OBJECT

public:
    static constexpr int thickness = 4; // device-independent pixels
    static constexpr int cornerLength = 18;

    // `side` is one of the four edges.
    WindowEdge(Qt::Edge side, QWidget *window);

    // Takes its place along the window as it is now.
    void place();

protected:
    void enterEvent(QEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    Qt::Edges edgesAt(const QPoint &position) const;
    void showCursor(const QPoint &position);
    QRect drawnTo(const QPoint &pointer) const;

    Qt::Edge m_side;
    Qt::Edges m_drawn; // by hand, while the mouse is down
    QPoint m_grip; // where the mouse went down, on the screen
    QRect m_before; // the window then
};
