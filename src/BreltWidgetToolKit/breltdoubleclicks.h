#pragma once

#include <QMouseEvent>
#include <QObject>
#include <QPointer>

// Keeps a double click in the window in which it began. Not part of the exported interface.
//
// A dialog that opens or closes with the first click leaves the second one to what stands there
// then: a box would be answered unread, or a row below it chosen and opened.
class BreltDoubleClicks : public QObject
{
    Q_OBJECT

public:
    // Watches the mouse of the application from now on. May be called again.
    static void watch();

    ~BreltDoubleClicks() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    BreltDoubleClicks();
    void takePress(QObject *window, const QMouseEvent &press);
    bool isStray(QObject *window, const QMouseEvent &press) const;

    // The last press, wherever it went.
    QPointer<QObject> m_window;
    Qt::MouseButton m_button = Qt::NoButton;
    QPoint m_place;
    ulong m_time = 0; // of the window system; 0: none was told

    bool m_isEating = false; // from a stray press to its release
};
