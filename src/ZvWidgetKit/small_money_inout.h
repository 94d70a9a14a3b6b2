#pragma once

#include "BreltWidgetToolKit/breltframlessmoveabledialog.h"

#include <QString>

#include <memory>

class QTimer;
struct CodeCountdown;

namespace Ui {
class Small_Money_InOut;
}

// Moves money between the bound bank card and the account. Moving in takes the code that the server
// sends to the account's phone, moving out the amount alone. The dialog stays open after an answer,
// and deletes itself when it is closed.
class Small_Money_InOut : public BreltFramlessMoveableDialog
{
    Q_OBJECT

public:
    explicit Small_Money_InOut(QWidget *parent);
    ~Small_Money_InOut() override;

protected:
    void showEvent(QShowEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void applyStyle();
    void createConnections();
    CodeCountdown countdown();
    double amount() const;
    QString amountAsSent();

    void switchToMoneyIn();
    void switchToMoneyOut();
    void switchTo(bool isIn);
    void requestCode();
    void submit();
    void onCodeSent(const QString &first, const QString &second);
    void onCountdownTick();
    void onMoneyInSucceeded();
    void onMoneyOutSucceeded();
    void onFailed(const QString &reason);
    void refreshAvailable();

    std::unique_ptr<Ui::Small_Money_InOut> ui;
    QString m_userPhone;
    QTimer *m_countdownTimer;
    int m_countdown; // seconds until another code can be asked for
    QString m_bankPictureUrl; // of the picture that was asked for last
    QString m_codeReplyFirst; // what came with the code and goes back with the amount
    QString m_codeReplySecond;
};
