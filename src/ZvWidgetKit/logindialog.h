#pragma once

#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"
#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <QString>

#include <memory>

class QPushButton;
class QTimer;
struct CodeCountdown;

namespace Ui {
class LoginDialog;
}

// The modal sign-in window: sign in with phone and password, open a new user, set a new password.
// What can be checked without the server is told below the fields, and the server's answers in
// message boxes. A sign-in starts the engine's logged polling, is told through the pool, and closes
// the window.
//
// Nothing is kept between two windows. The host runs it with exec(), or shows it; either way it may
// set Qt::WA_DeleteOnClose.
class ZVWIDGETKIT_EXPORT LoginDialog : public BreltFramlessMoveableDialog
{
    Q_OBJECT

public:
    explicit LoginDialog(QWidget *parent = nullptr);
    ~LoginDialog() override;

public slots:
    // The server's answers, and the two countdowns of the code buttons. A failure's text is shown
    // as it came.
    void slot_login_succeed();
    void slot_login_failed(QString msg);
    void slot_register_sendCode_succeed();
    void slot_register_sendCode_failed(QString reason);
    void slot_register_sendCode_timeout();
    void slot_register_succeed();
    void slot_register_failed(QString reason);
    void slot_changePasswd_sendCode_succeed();
    void slot_changePasswd_sendCode_failed(QString reason);
    void slot_changePasswd_sendCode_timeout();
    void slot_changePasswd_succeed();
    void slot_changePasswd_failed(QString reason);

private slots:
    void changeToPage_login();
    void changeToPage_register();
    void changeToPage_updatePasswd();
    void closeClicked();
    void buttonClicked_login();
    void buttonClicked_register();
    void buttonClicked_register_code();
    void buttonClicked_changePasswd();
    void buttonClicked_changePasswd_code();
    void registIconClicked();

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void createConnections();
    void applyStyle();
    void setValidators();
    void changeToPage(QWidget *page, const QString &title, QPushButton *mainButton);
    CodeCountdown registerCountdown();
    CodeCountdown changePasswdCountdown();
    void startCountdown(const CodeCountdown &countdown);
    void continueCountdown(const CodeCountdown &countdown);

    std::unique_ptr<Ui::LoginDialog> ui;
    bool m_registIconChecked; // the tick box of the agreement
    QTimer *m_registerCodeTimer;
    int m_registerCodeSeconds;
    QTimer *m_changePasswdCodeTimer;
    int m_changePasswdCodeSeconds;
    QString m_styleTotalDialog;
    QString m_styleContactUrl; // the agreement sentence, no style
    QString m_styleRegistIconOn;
    QString m_styleRegistIconOff;
    QString m_styleBigButton;
    QString m_styleJumpButton;
    QString m_styleCodeButton;
    QString m_styleDisabledButton;
};
