#pragma once

#include <QList>
#include <QObject>
#include <QPoint>
#include <QRect>

class QEvent;
class QMouseEvent;
class QWidget;
class WindowEdge;

// What the frame of a window does, for a window that has none: its title bar moves it, its edges
// and corners draw it to another size, and it fills its screen and comes back. The window manager
// does the work where there is one; by hand it works without.
class WindowFrame : public QObject
{
    Q_OBJECT

public:
    // Of the window. Costly to set once it has its parts.
    static constexpr Qt::WindowFlags flags
        = Qt::WindowFlags(Qt::Window | Qt::FramelessWindowHint | Qt::WindowMinMaxButtonsHint
                          | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint);

    // `window` has a layout by now, whose margins are the frame's from here on; `titleBar` lies in
    // it. Ends with the window.
    WindowFrame(QWidget *window, QWidget *titleBar);

    // Place and size of the window when it does not fill its screen.
    QRect normalGeometry() const;
    bool isMaximized() const;

    // The window may be hidden: it fills the screen when it is shown.
    void maximize();

public slots:
    void minimize();
    void toggleMaximized();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    enum class Drag { None, Pressed, Moving };

    void takeKeys();
    bool takeTitleBar(QEvent *event);
    void takePress(const QMouseEvent &event);
    bool takeMove(const QMouseEvent &event);
    void beginMove();
    void takeState(Qt::WindowStates before);
    void fitMargins();

    QWidget *m_window;
    QWidget *m_titleBar;
    QList<WindowEdge *> m_edges;
    QRect m_normal; // where the window comes back to
    bool m_isOwn = false; // the change of state that is under way
    bool m_hasKeys = false; // some window of the program, rather than another program
    Drag m_drag = Drag::None;
    QPoint m_press; // on the screen
    QPoint m_grip; // the same, from the window's top left corner
};
