#pragma once

#include <QPointer>
#include <QPushButton>
#include <QString>

class LoginDialog;
class QMenu;

// The account at the edge of the window. Signed out it opens the sign-in dialog; signed in it names
// the account and offers to move money and to sign out. When the exchange ends the session, it
// signs out and says why.
class AccountButton : public QPushButton
{
    Q_OBJECT

public:
    explicit AccountButton(QWidget *parent = nullptr);
    ~AccountButton() override;

signals:
    // The user wants to move money between bank and account.
    void transferWanted();

private:
    void refresh();
    void act();
    void signIn();
    void takeSignIn();
    void signOut();
    void takeSessionEnd(QString message);

    QPointer<LoginDialog> m_dialog;
    QMenu *m_menu;
    bool m_isTelling = false;
};
