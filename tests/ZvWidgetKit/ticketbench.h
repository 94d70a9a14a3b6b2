#pragma once

#include "BreltWidgetToolKit/breltcombobox.h"
#include "BreltWidgetToolKit/breltdoublespinbox.h"
#include "BreltWidgetToolKit/breltspinbox.h"
#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvModelKit/zvubmyacount.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_buysell.h"
#include "messageboxes.h"
#include "pagelog.h"

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableView>

#include <functional>
#include <memory>

namespace zvtest {

// An entry of a server's list.
struct Collection {
    QString id;
    QString code;
    QString name;
};

ZvUBBriefInfo briefInfo(const QList<Collection> &collections);

// 1001, 1002 and 1003 with the codes 600137 to 600139, in this order.
QList<Collection> threeCollections();

// Runs `action` once, inside the first debug line of the kit that has `part` in it.
class OnTrace
{
public:
    OnTrace(const QString &part, std::function<void()> action);
    ~OnTrace();
    OnTrace(const OnTrace &) = delete;
    OnTrace &operator=(const OnTrace &) = delete;
};

// The order ticket on a scripted exchange, as the trading half shows it: the list of three
// collections, of which the first is on the ticket, a quote of it around 100.00 with limits of
// 90.00 and 110.00, and 1,000,000.00 yuan. What is left under way ends with the bench.
class TicketBench
{
public:
    explicit TicketBench(ZvServerConfig::Platform platform = ZvServerConfig::ChengHu);
    ~TicketBench();

    ZvScriptedTransport *exchange() const { return m_kit.exchange; }
    void settle() { m_kit.settle(); }

    // By object name; a name that is not there ends the test program.
    template <typename Widget = QWidget>
    Widget *named(const QString &name) const
    {
        auto *found = page->findChild<Widget *>(name);
        if (!found)
            qFatal("the ticket has no %s", qPrintable(name));
        return found;
    }
    QLabel *label(const QString &name) const { return named<QLabel>(name); }
    QPushButton *button(const QString &name) const { return named<QPushButton>(name); }
    QString text(const QString &name) const { return label(name)->text(); }
    QString sheet(const QString &name) const { return label(name)->styleSheet(); }
    BreltComboBox *codes() const { return named<BreltComboBox>("comboBox_goodsCode"); }
    BreltComboBox *names() const { return named<BreltComboBox>("comboBox_goodsName"); }
    BreltDoubleSpinBox *price() const
    {
        return named<BreltDoubleSpinBox>("doubleSpinBox_buysellPrice");
    }
    BreltSpinBox *count() const { return named<BreltSpinBox>("spinBox_buysellNumber"); }
    QString buyable() const { return text("label_canBuySellValue"); }
    QTableView *prepared() const;

    // Clicks what is on the screen with the mouse.
    void click(const QString &name);

    // Types over what the field shows.
    void typePrice(const QString &text);
    void typeCount(const QString &text);
    void type(QComboBox *combo, const QString &text);

    // Fills the price by a click on the latest price, which is this one; the quote's other figures
    // are the usual ones.
    void clickPrice(qint64 fen);

    // What the ticket shows of an order at a price of the quote, by mouse and keyboard.
    void enter(const QString &price, const QString &count);

    // Presses Return in the field of the count. The answer is for the boxes that open.
    QList<ShownBox> order(const QString &answer = QStringLiteral("确认"),
                          const std::function<void()> &meanwhile = {});

    // The kit's calls and the page's debug lines since the start or the last call.
    QStringList calls() { return m_log.take(); }

    void storeQuote(const ZvUBTopFive::Data &data);
    void storeMoney(qint64 fen);
    void storeBrief(const QList<Collection> &collections);

    std::unique_ptr<DealWidget_BuySell> page;

private:
    KitBench m_kit;
    PageLog m_log;
};

// Rates of fees by collection, in millionths.
ZvUBMyAcount accountWithRates(const QHash<QString, qint64> &rates);

// The text of the box that asks before an order leaves.
QString confirmation(const QString &code, const QString &name, const QString &price,
                     const QString &count);

} // namespace zvtest
