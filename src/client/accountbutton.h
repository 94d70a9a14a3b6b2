#pragma once

#include <QPushButton>

class QMenu;

// The account at the edge of the window, while one is signed in: it names the account and offers to
// move money and to sign out. The title bar and the status bar offer the rest.
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
    void openMenu();
    void signOut();

    QMenu *m_menu;
};
