#include "endtoend/tradingpanel.h"

#include "endtoend/marketpage.h"
#include "endtoend/programs.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QComboBox>
#include <QLabel>
#include <QTableView>
#include <QtTest/QtTest>

namespace endtoend {

namespace {

constexpr int codeColumn = 1;

void typeOver(QAbstractSpinBox *field, const QString &text)
{
    QVERIFY(field && field->isVisible());
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, text);
}

} // namespace

QWidget *TradingPanel::ofClass(const char *name) const
{
    for (QWidget *widget : m_window.findChildren<QWidget *>()) {
        if (qstrcmp(widget->metaObject()->className(), name) == 0)
            return widget;
    }
    return nullptr;
}

bool TradingPanel::choose(const QString &code) const
{
    QTableView *market = marketTable(m_window);
    const QStringList codes = textsOfColumn(m_window, codeColumn);
    const QModelIndex cell = market->model()->index(codes.indexOf(code), codeColumn);
    if (!cell.isValid())
        return false;
    market->scrollTo(cell);
    QTest::mouseClick(market->viewport(), Qt::LeftButton, Qt::NoModifier,
                      market->visualRect(cell).center());
    const auto *field = inTicket<QComboBox>("comboBox_goodsCode");
    return field && until([&] {
               return field->currentText() == code
                   && says("label_upperLimitPrice_value").toDouble() > 0;
           });
}

void TradingPanel::open(const char *button) const
{
    click("Transaction_Deal", button);
}

void TradingPanel::type(const QString &price, const QString &count) const
{
    typeOver(inTicket<QAbstractSpinBox>("doubleSpinBox_buysellPrice"), price);
    typeOver(inTicket<QAbstractSpinBox>("spinBox_buysellNumber"), count);
}

void TradingPanel::order() const
{
    click("DealWidget_BuySell", "pushButton_buysell");
}

QString TradingPanel::says(const char *label) const
{
    const auto *found = inTicket<QLabel>(label);
    return found ? found->text() : QString();
}

void TradingPanel::click(const char *pageClass, const char *button) const
{
    auto *found = in<QAbstractButton>(pageClass, button);
    QVERIFY2(found && found->isVisible(), button);
    QTest::mouseClick(found, Qt::LeftButton);
}

QTableView *TradingPanel::table(const char *viewClass) const
{
    return qobject_cast<QTableView *>(ofClass(viewClass));
}

QStringList TradingPanel::column(const char *viewClass, int column) const
{
    QStringList texts;
    const QTableView *view = table(viewClass);
    for (int row = 0; view && row < view->model()->rowCount(); ++row)
        texts << view->model()->index(row, column).data().toString();
    return texts;
}

QString paragraph(const QString &text)
{
    return QStringLiteral("<p align='center'>%1</p>").arg(text);
}

QString notice()
{
    const QStringList all = BreltGlobalFunction::getBreltGlobalFunciton()->notices();
    return all.isEmpty() ? QString() : all.last();
}

double available()
{
    return ZvServerCache::getZvServerCacheInstance()->capInfo.availableMoney();
}

} // namespace endtoend
