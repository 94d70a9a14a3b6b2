#pragma once

#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubmyacount.h"
#include "ZvNetworkKit/kitbench.h"
#include "ZvWidgetKit/small_money_inout.h"

#include <QDoubleSpinBox>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QStringList>
#include <QToolButton>

class ZvServerActionResult;

namespace zvtest {

ZvServerActionResult *actions();

ZvUBMyAcount accountWithPhone(const QString &phone);
ZvUBCapInfo availableMoney(qint64 fen);

// The texts of the passing notices, and an end to those that stand.
QStringList notices();
void dropNotices();

// The dialog for money in and out on a scripted exchange, as the market page shows it: the account
// has a phone, 1,234,567.89 yuan and a bank card. What is left under way ends with the bench.
class MoneyBench
{
public:
    MoneyBench();
    ~MoneyBench();

    ZvScriptedTransport *exchange() const { return m_kit.exchange; }
    void settle() { m_kit.settle(); }

    // By object name; a name that is not there ends the test program.
    QPushButton *button(const QString &name) const { return named<QPushButton>(name); }
    QToolButton *tool(const QString &name) const { return named<QToolButton>(name); }
    QLabel *label(const QString &name) const { return named<QLabel>(name); }
    QWidget *widget(const QString &name) const { return named<QWidget>(name); }
    QDoubleSpinBox *amount() const
    {
        return named<QDoubleSpinBox>(QStringLiteral("doubleSpinBox_moneyValue"));
    }
    QLineEdit *code() const
    {
        return named<QLineEdit>(QStringLiteral("lineEdit_validateCode_value"));
    }
    QPushButton *codeButton() const { return button(QStringLiteral("pushButton_getValidataCode")); }

    // Clicks with the mouse: a button of either kind.
    void click(const QString &name);

    // Types with the keyboard over what the field shows.
    void typeAmount(const QString &text);
    void typeCode(const QString &text);

    // The error lines that show something, as "name: text".
    QStringList prompts() const;

    QPointer<Small_Money_InOut> dialog; // deleted with the bench, unless it has ended before

private:
    template <typename Widget>
    Widget *named(const QString &name) const
    {
        auto *found = dialog->findChild<Widget *>(name);
        if (!found)
            qFatal("the dialog has no %s", qPrintable(name));
        return found;
    }

    KitBench m_kit;
};

} // namespace zvtest
