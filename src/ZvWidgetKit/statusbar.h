#pragma once

#include "ZvWidgetKit/zvwidgetkit_export.h"

#include <QWidget>

class BreltLayoutLine;
class QLabel;
class QPushButton;
class Status_Message_ScrollArea;

// The bar at the bottom of the window: the way in or the account, the settlement date, whether the
// market is open, the messages, what hides and locks the trading side, and the server's clock. It
// shows what the cache says and has no clock of its own; what it asks for leaves as a signal or
// through the pool.
class ZVWIDGETKIT_EXPORT StatusBar : public QWidget
{
    Q_OBJECT

public:
    explicit StatusBar(QWidget *parent = nullptr);
    ~StatusBar() override;

signals:
    // True asks for the trading side to be hidden, false to be shown.
    void signal_hideTransactions_toggled(bool hidden);
    void signal_lockTransactions_clicked();

private slots:
    // Seconds since 1970, shown in local time.
    void slot_updateTheTime(int timestamp);
    void slot_marketStatusChanged(bool opened);
    void slot_myaccountChanged();
    void slot_afterLoginSucceed();
    void slot_afterLoginOtherPlace();
    void slot_hideTransactions_clicked();
    void slot_lockTransactions_clicked();

private:
    BreltLayoutLine *makeLine();
    void layOut();
    void showAsLogged(bool isLogged);
    void createConnections();
    void applyStyle();

    QPushButton *m_loginButton;

    // What only a signed-in user sees; these four always change together.
    QPushButton *m_hideButton;
    QPushButton *m_lockButton;
    BreltLayoutLine *m_loggedLine;
    QLabel *m_accountLabel;

    QLabel *m_settlementLabel;
    QLabel *m_marketStatusLabel;
    Status_Message_ScrollArea *m_messageArea;
    QLabel *m_clockLabel;
};
