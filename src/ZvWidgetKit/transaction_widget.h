#pragma once

#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <QSize>
#include <QString>
#include <QWidget>

class QStackedWidget;
class Transaction_Deal;
class Transaction_Lock;

// The trading half of the main window: the panel in which a user trades, and the page that locks
// it. It says which of the two is in front, and follows sign-ins, a sign-in of the account from
// elsewhere, and a change of server.
//
// The panel is in front from the beginning, signed in or not.
class ZVWIDGETKIT_EXPORT Transaction_Widget : public QWidget
{
    Q_OBJECT

public:
    explicit Transaction_Widget(QWidget *parent = nullptr);
    ~Transaction_Widget() override;

public slots:
    // Locks the panel until the user signs in again.
    void slot_showTransctionLock();

    // Any sign-in, the one that unlocks too: the panel starts anew on its buy page.
    void slot_after_login_succeed();
    void slot_after_login_failed(QString msg);

    // The lists are asked for anew; the user stays on the page.
    void slot_after_serverChanged();

    // Stops the signed-in polling, tells the user, and then the pool.
    void slot_login_LoggedOtherPlace(QString msg);

    // `mainSize` is that of the host's main frame.
    void slot_adjustSize(QSize mainSize);

private:
    void applyStyle();
    void createConnections();

    QStackedWidget *m_transactionStack;
    Transaction_Deal *m_transactionDeal;
    Transaction_Lock *m_transactionLock;
    bool m_isTelling = false; // of the end of a session
};
