#pragma once

#include <QObject>
#include <QPointer>

class LoginDialog;
class QWidget;

// The one way in: a sign-in dialog of its own for each use, over the window. That the exchange has
// ended a session is the trading half's to say.
class SignIn : public QObject
{
    Q_OBJECT

public:
    // Ends with the window.
    explicit SignIn(QWidget *window);
    ~SignIn() override;

    // Opens the dialog, or raises the one that is open.
    void open();

private:
    void takeAnswer();
    void takeEndOfSession();

    QWidget *m_window;
    QPointer<LoginDialog> m_dialog;
};
