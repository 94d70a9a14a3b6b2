#pragma once

#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <QString>
#include <QWidget>

class QLabel;
class QPushButton;

// The title bar of a frameless window: a title, the way in to the sign-in dialog, and the three
// buttons of a window. It changes no window itself: each click leaves as a signal, and the host
// does what it says. Presses on its free space are left to the window, which may be dragged by
// them.
class ZVWIDGETKIT_EXPORT TitleBar : public QWidget
{
    Q_OBJECT

public:
    explicit TitleBar(QWidget *parent = nullptr);
    ~TitleBar() override;

    // Shown to the letter, in the middle of the room that the buttons leave.
    void setTitle(QString title);

signals:
    void signal_minimizeClicked();
    void signal_normalClicked();
    void signal_exitClicked();
    void signal_loginClicked();
    void signal_doubleClicked();

public slots:
    // The login button works in both states; only its text says which one it is.
    void slot_updateTitleWhenLoggedIn();
    void slot_updateTitleWhenLoggedOut();

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void layOut();
    void nameButtons();
    void applyStyle();
    void createConnections();

    QLabel *m_titleLabel;
    QPushButton *m_loginButton;
    QPushButton *m_minimizeButton;
    QPushButton *m_normalButton;
    QPushButton *m_exitButton;
};
