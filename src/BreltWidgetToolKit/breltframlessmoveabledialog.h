#pragma once

#include "BreltWidgetToolKit/breltwidgettoolkit_export.h"

#include <QDialog>
#include <QPoint>

/// A dialog without a window frame that the user drags by the band along its top edge.
///
/// A drag starts with the left button on the band itself or on something passive in it, such as a
/// caption; buttons and fields in the band keep the mouse for themselves, disabled ones too.
/// However it is dragged or placed, a part of the band stays on a screen, so that it can be caught
/// again. Unless it was placed before, it comes up in the middle of its owner.
class BRELTWIDGETTOOLKIT_EXPORT BreltFramlessMoveableDialog : public QDialog
{
    Q_OBJECT

public:
    /// The band is 40 pixels high until setTitleHeight() says otherwise.
    explicit BreltFramlessMoveableDialog(QWidget *parent = nullptr);
    ~BreltFramlessMoveableDialog() override;

    /// Sets the height of the band in device-independent pixels; 0 or less leaves no band, and the
    /// dialog stays where it is. Takes effect with the next press of the mouse.
    void setTitleHeight(int height);

    /// The height of the band in device-independent pixels, never negative.
    int titleHeight() const;

protected:
    // Dialogs of this kind replace showEvent() without calling it here: the show is seen in
    // event(), and the dialog finds its place there.
    bool event(QEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    bool isOnBand(const QPoint &position) const;
    void moveToTheMiddle();
    QPoint reachable(const QPoint &topLeft) const;

    int m_titleHeight = 40;
    bool m_dragging = false;
    QPoint m_grip; // from the dialog's top left corner to the cursor
};
