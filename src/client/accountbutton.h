#pragma once

#include <QPointer>
#include <QPushButton>
#include <QString>

class LoginDialog;
class QAction;
class QMenu;

// The account at the edge of the window. Signed out it opens the sign-in dialog; signed in it names
// the account and offers to move money, to hide and to lock the trading half, and to sign out. That
// the exchange has ended the session is the trading half's to say.
class AccountButton : public QPushButton
{
    Q_OBJECT

public:
    explicit AccountButton(QWidget *parent = nullptr);
    ~AccountButton() override;

signals:
    // The user wants to move money between bank and account.
    void transferWanted();

    // The user wants the trading half out of sight, or back.
    void hideTransactionsToggled(bool isHidden);
    void lockTransactionsWanted();

private:
    void refresh();
    void act();
    void signIn();
    void takeSignIn();
    void signOut();
    void toggleHide();
    void setHideText(bool isHidden);

    QPointer<LoginDialog> m_dialog;
    QMenu *m_menu;
    QAction *m_hideAction;
    bool m_isHidden = false; // the trading half
};
