#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "endtoend/tradingpanel.h"
#include "endtoend/wiretrader.h"
#include "support/testregistry.h"

#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDateEdit>
#include <QLabel>
#include <QProcess>
#include <QTableView>
#include <QtTest/QtTest>

using endtoend::available;
using endtoend::BoxReader;
using endtoend::notice;
using endtoend::paragraph;
using endtoend::patience;
using endtoend::TradingPanel;
using endtoend::WireTrader;

namespace {

const QString server = QStringLiteral("/ch/youbi/");
const QString collection = QStringLiteral("1100"); // closed at 10.00, and 10 % is its limit
const QString code = QStringLiteral("111001");
const QString phone = QStringLiteral("13912340001");
const QString poorerPhone = QStringLiteral("13912340002");
const QString password = QStringLiteral("qing-shi-7");
const char *const revokeTable = "DealWidget_Revoke_TableView";
const char *const dealTable = "DealWidget_Select_DealRecord_TableView";

BreltFramlessMessageBox *openBox()
{
    return qobject_cast<BreltFramlessMessageBox *>(QApplication::activeModalWidget());
}

} // namespace

// Money and pieces on their way from the window to the book and back: what a buyer at the window
// pays is what the exchange takes, to the fen. The steps build on each other, in the order in which
// they stand.
class TradingRoadTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::ChengHu);
        QVERIFY(m_exchange.start(m_state, 0, 0,
                                 {QStringLiteral("--demo"), QStringLiteral("--catalogue"),
                                  QStringLiteral(ZV_SMALL_CATALOGUE)}));
        m_owner = std::make_unique<WireTrader>(m_exchange.address(), server);
        QVERIFY(m_owner->signIn(QStringLiteral("13800000000"), QStringLiteral("demo888888")));
        WireTrader newcomer(m_exchange.address(), server);
        QVERIFY2(newcomer.moveIn(m_state, phone, password, 10030), qPrintable(newcomer.sentence()));
        QVERIFY2(newcomer.moveIn(m_state, poorerPhone, password, 10029),
                 qPrintable(newcomer.sentence()));

        m_window = std::make_unique<MainWindow>();
        m_panel = std::make_unique<TradingPanel>(*m_window);
        m_window->resize(1366, 768);
        m_window->show();
        m_window->activateWindow();
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
        signIn(poorerPhone, 100.29);
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void aHundredYuanAndTwentyNineFenBuyNine()
    {
        QVERIFY(m_panel->choose(code));
        enterTenYuan();
        QTRY_COMPARE(m_panel->says("label_canBuySellValue"), QStringLiteral("9"));
        m_panel->type(QStringLiteral("10.00"), QStringLiteral("10"));
        QCOMPARE(order(), QStringList(paragraph(QStringLiteral("请输入正确的商品数量!"))));
        QCOMPARE(m_book->openOrders().size(), 0);
        QCOMPARE(m_book->buy(collection, 1000, 10), 0);
        QCOMPARE(m_book->refusal(), QStringLiteral("money"));
        m_panel->type(QStringLiteral("10.00"), QStringLiteral("9"));
        QCOMPARE(order().size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(notice(), QStringLiteral("买入委托成功"), patience);
        QCOMPARE(m_book->openOrders().size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(available(), 10.02, patience);
        revokeTheLast();
        QTRY_COMPARE_WITH_TIMEOUT(available(), 100.29, patience);
    }

    void aHundredYuanAndThirtyFenBuyTen()
    {
        signIn(phone, 100.30);
        QVERIFY(m_panel->choose(code));
        enterTenYuan();
        QTRY_COMPARE(m_panel->says("label_canBuySellValue"), QStringLiteral("10"));
        // A click on the most that can be bought fills it in.
        QTest::mouseClick(m_panel->inTicket("label_canBuySellValue"), Qt::LeftButton);
        auto *count = m_panel->inTicket<QAbstractSpinBox>("spinBox_buysellNumber");
        QVERIFY(count->hasFocus());
        BoxReader boxes;
        QTest::keyClick(count, Qt::Key_Return);
        const QString body
            = QStringLiteral("<p align='center'>商品ID:&nbsp;&nbsp;&nbsp;&nbsp;%1</p>").arg(code)
            + paragraph(QStringLiteral("荷塘小型张"))
            + QStringLiteral("<p align='center'>价格:10&nbsp;&nbsp;&nbsp;&nbsp;数量：10</p>");
        QCOMPARE(boxes.texts(), QStringList(body));
        QTRY_COMPARE_WITH_TIMEOUT(available(), 0.0, patience);
        QCOMPARE(m_panel->says("label_availableMoneyValue"), QStringLiteral("0.00"));
        const QJsonArray orders = m_book->openOrders();
        QCOMPARE(orders.size(), 1);
        const QJsonObject order = orders.first().toObject();
        QCOMPARE(order.value("price").toInt(), 1000);
        QCOMPARE(order.value("quantity").toInt(), 10);
        QCOMPARE(order.value("frozen").toInt(), 10030);
    }

    void revokedPartlyFilledItGivesBackTheRestExactly()
    {
        QVERIFY2(m_owner->sell(collection, 1000, 4) > 0, qPrintable(m_owner->sentence()));
        QTRY_COMPARE_WITH_TIMEOUT(m_book->holding(collection), qMakePair(4, 4), patience);
        m_panel->open("pushButton_withdrawal");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(revokeTable, 8), QStringList("4"), patience);
        QCOMPARE(m_panel->column(revokeTable, 9), QStringList("6"));
        revokeTheLast();
        // 100.30 less four pieces and their fee of 0.12.
        QTRY_COMPARE_WITH_TIMEOUT(available(), 60.18, patience);
        const QJsonObject cap = m_book->cap();
        QCOMPARE(cap.value("available").toInt(), 6018);
        QCOMPARE(cap.value("frozen").toInt(), 0);
        m_panel->open("pushButton_purchase");
        QTRY_COMPARE(m_panel->says("label_remainder_value"), QStringLiteral("60.18"));
    }

    void whatIsFrozenCannotBeSoldAgain()
    {
        m_panel->open("pushButton_sell");
        QTRY_COMPARE(m_panel->says("label_canBuySellValue"), QStringLiteral("4"));
        m_panel->type(QStringLiteral("11.00"), QStringLiteral("4"));
        QCOMPARE(order().size(), 1);
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->says("label_canBuySellValue"), QStringLiteral("0"),
                                  patience);
        QCOMPARE(m_book->holding(collection), qMakePair(4, 0));
        m_panel->type(QStringLiteral("11.00"), QStringLiteral("1"));
        QCOMPARE(order(), QStringList(paragraph(QStringLiteral("请输入正确的商品数量!"))));
        QCOMPARE(m_book->openOrders().size(), 1);
        QCOMPARE(m_book->sell(collection, 1100, 1), 0);
        QCOMPARE(m_book->refusal(), QStringLiteral("holdings"));
        QVERIFY(!m_book->sentence().isEmpty());
    }

    void twoClientsCross()
    {
        QVERIFY2(m_owner->buy(collection, 1100, 4) > 0, qPrintable(m_owner->sentence()));
        // Four pieces at 11.00 less a fee of 0.13.
        QTRY_COMPARE_WITH_TIMEOUT(available(), 104.05, patience);
        QCOMPARE(m_book->holding(collection), qMakePair(0, 0));
        QCOMPARE(m_book->openOrders().size(), 0);
        // The day's sums have followed.
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->says("label_count_buy_value"), QStringLiteral("4"),
                                  patience);
        QCOMPARE(m_panel->says("label_count_sell_value"), QStringLiteral("4"));
        QCOMPARE(m_panel->says("label_poundage_buy_value"), QStringLiteral("0.12"));
        QCOMPARE(m_panel->says("label_poundage_sell_value"), QStringLiteral("0.13"));
    }

    void limitPricesAreTakenAndOneTickBeyondIsNot()
    {
        m_panel->open("pushButton_purchase");
        QCOMPARE(m_panel->says("label_priceLimit_value"), QStringLiteral("9.00"));
        QCOMPARE(m_panel->says("label_upperLimitPrice_value"), QStringLiteral("11.00"));
        for (const char *price : {"8.99", "11.01"}) {
            enter(price);
            QCOMPARE(order(), QStringList(paragraph(QStringLiteral("请输入正确的商品价格!"))));
        }
        for (const qint64 price : {899, 1101}) {
            QCOMPARE(m_book->buy(collection, price, 1), 0);
            QCOMPARE(m_book->refusal(), QStringLiteral("price-limit"));
        }
        QCOMPARE(m_book->openOrders().size(), 0);
        int placed = 0;
        for (const char *price : {"9.00", "11.00"}) {
            enter(price);
            QCOMPARE(order().size(), 1);
            ++placed;
            QTRY_COMPARE_WITH_TIMEOUT(m_book->openOrders().size(), placed, patience);
        }
        revokeAll();
    }

    void tenFastClicksPlaceOneOrder()
    {
        enter("9.50");
        {
            const BoxReader boxes;
            for (int click = 0; click < 10; ++click)
                m_panel->order();
            QCOMPARE(boxes.texts().size(), 1);
        }
        // Actions leave in the order of the clicks: whatever else was sent is before the
        // withdrawal.
        QTRY_COMPARE_WITH_TIMEOUT(m_book->openOrders().size(), 1, patience);
        const int orders = m_book->ordersOfToday().size();
        revokeAll();
        QCOMPARE(m_book->ordersOfToday().size(), orders);
    }

    void returnHeldDownPlacesOneOrder()
    {
        enter("9.50");
        auto *count = m_panel->inTicket<QAbstractSpinBox>("spinBox_buysellNumber");
        count->setFocus();
        // The key is held: its repeats go to whoever has the keys, the box among them.
        int repeats = 0;
        int boxes = 0;
        bool wasOpen = false;
        QTimer held;
        connect(&held, &QTimer::timeout, this, [&] {
            const bool isOpen = openBox();
            boxes += isOpen && !wasOpen ? 1 : 0;
            wasOpen = isOpen;
            if (repeats == 20 && isOpen) {
                // Let go at last, and pressed again: this one means it.
                QTest::keyClick(openBox(), Qt::Key_Return);
                ++repeats;
                return;
            }
            QWidget *keys = isOpen ? openBox()->focusWidget() : count;
            if (keys && repeats != 20) {
                QKeyEvent repeat(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier, "\r", true);
                QApplication::sendEvent(keys, &repeat);
                ++repeats;
            }
        });
        held.start(10);
        QTest::keyPress(count, Qt::Key_Return);
        QTRY_VERIFY(repeats > 40);
        held.stop();
        QTest::keyRelease(count, Qt::Key_Return);
        QVERIFY(!openBox());
        QCOMPARE(boxes, 1);
        QTRY_COMPARE_WITH_TIMEOUT(m_book->openOrders().size(), 1, patience);
        revokeAll();
    }

    void theDaysDealsAreFoundByTheirBounds()
    {
        m_panel->open("pushButton_select");
        QVERIFY(m_panel->table(dealTable)->isVisible());
        const char *page = "DealWidget_Select_DealRecord";
        QCOMPARE(m_panel->in<QDateEdit>(page, "dateEdit_startDate")->date(), QDate(2020, 1, 1));
        QCOMPARE(m_panel->in<QDateEdit>(page, "dateEdit_stopDate")->date(), QDate(2020, 1, 1));
        // Asked for at the sign-in, before there were any; and sales come first.
        m_panel->click(page, "pushButton_select");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(dealTable, 2),
                                  QStringList(QStringLiteral("卖出")), patience);
        QCOMPARE(m_panel->column(dealTable, 0), QStringList(code));
        QCOMPARE(m_panel->column(dealTable, 3), QStringList("11.00"));
        QCOMPARE(m_panel->column(dealTable, 4), QStringList("4"));
        QCOMPARE(m_panel->column(dealTable, 6), QStringList("0.13"));
        auto *type = m_panel->in<QComboBox>(page, "comboBox_type");
        QTest::keyClick(type, Qt::Key_Down);
        QCOMPARE(type->currentText(), QStringLiteral("买入"));
        m_panel->click(page, "pushButton_select");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(dealTable, 2),
                                  QStringList(QStringLiteral("买入")), patience);
        QTest::keyClick(type, Qt::Key_Down);
        m_panel->click(page, "pushButton_select");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(dealTable, 0).size(), 2, patience);
        // An earlier day holds none.
        m_panel->in<QDateEdit>(page, "dateEdit_startDate")->setDate(QDate(2019, 12, 30));
        m_panel->in<QDateEdit>(page, "dateEdit_stopDate")->setDate(QDate(2019, 12, 31));
        m_panel->click(page, "pushButton_select");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(dealTable, 0).size(), 0, patience);
    }

    void theDaysOrdersAreFound()
    {
        m_panel->open("pushButton_select_currentDelegate");
        const char *page = "DealWidget_Select_DelegateToday";
        const char *table = "DealWidget_Select_Delegate_today_TableView";
        auto *type = m_panel->in<QComboBox>(page, "comboBox_type");
        QTest::keyClick(type, Qt::Key_End);
        QCOMPARE(type->currentText(), QStringLiteral("全部"));
        m_panel->click(page, "pushButton_select");
        const int orders = m_book->ordersOfToday().size();
        QVERIFY(orders >= 5);
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(table, 1).size(), qMin(orders, 10), patience);
        m_panel->open("pushButton_select_historyDelegate");
        const char *pastTable = "DealWidget_Select_Delegate_history_TableView";
        m_panel->click("DealWidget_Select_DelegateRecord", "pushButton_select");
        // Sales alone, as the page begins.
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(pastTable, 4),
                                  QStringList(QStringLiteral("卖出")), patience);
    }

    void theSessionMayCloseUnderTheTicket()
    {
        m_panel->open("pushButton_purchase");
        enter("9.00");
        {
            // 11.00 was the last price, and becomes the close from which the limits are reckoned.
            const BoxReader boxes([this] { settle(); });
            m_panel->order();
            QCOMPARE(boxes.texts().size(), 1);
        }
        QTRY_VERIFY_WITH_TIMEOUT(!notice().isEmpty() && notice() != QStringLiteral("买入委托成功"),
                                 patience);
        QCOMPARE(m_book->openOrders().size(), 0);
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->says("label_priceLimit_value"), QStringLiteral("9.90"),
                                  patience);
        QTRY_COMPARE_WITH_TIMEOUT(available(), 104.05, patience);
        enter("10.00");
        {
            const BoxReader boxes([this] { settle(); });
            m_panel->order();
        }
        // A price that both sessions know goes into the new one, once.
        QTRY_COMPARE_WITH_TIMEOUT(m_book->openOrders().size(), 1, patience);
        QTRY_COMPARE_WITH_TIMEOUT(available(), 104.05 - 10.03, patience);
    }

private:
    void signIn(const QString &who, double money)
    {
        ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_loggedOtherPlace();
        QVERIFY(endtoend::signInAt(*m_window, who, password));
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        QTRY_COMPARE_WITH_TIMEOUT(available(), money, patience);
        m_book = std::make_unique<WireTrader>(m_exchange.address(), server);
        m_book->useSession(
            ZvServerAccessManager::getZvServerAccessManagerInstance()->link()->token());
    }

    // The ticket reckons anew at its price buttons.
    void enterTenYuan()
    {
        m_panel->type(QStringLiteral("9.99"), QStringLiteral("0"));
        m_panel->click("DealWidget_BuySell", "pushButton_price_add");
    }

    // Sends the ticket, and confirms what asks; gives the texts of the boxes.
    QStringList order() const
    {
        const BoxReader boxes;
        m_panel->order();
        return boxes.texts();
    }

    // One piece at a price.
    void enter(const char *price)
    {
        // What came back from the order before takes a moment.
        m_panel->type(QStringLiteral("10.00"), QStringLiteral("1"));
        m_panel->click("DealWidget_BuySell", "pushButton_price_add");
        QTRY_VERIFY_WITH_TIMEOUT(m_panel->says("label_canBuySellValue").toInt() >= 1, patience);
        m_panel->type(QLatin1String(price), QStringLiteral("1"));
    }

    void revokeTheLast()
    {
        m_panel->open("pushButton_withdrawal");
        QTRY_VERIFY_WITH_TIMEOUT(!m_panel->column(revokeTable, 2).isEmpty(), patience);
        BoxReader boxes;
        m_panel->click("DealWidget_Revoke", "pushButton_withdrawalLast");
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 2, patience);
        QCOMPARE(boxes.texts(),
                 QStringList({paragraph(QStringLiteral("确认撤掉最后一笔？")),
                              paragraph(QStringLiteral("撤单成功"))}));
        QVERIFY(m_panel->column(revokeTable, 2).isEmpty());
        m_panel->open("pushButton_purchase");
    }

    void revokeAll()
    {
        const int count = m_book->openOrders().size();
        m_panel->open("pushButton_withdrawal");
        QTRY_COMPARE_WITH_TIMEOUT(m_panel->column(revokeTable, 2).size(), count, patience);
        BoxReader boxes;
        m_panel->click("DealWidget_Revoke", "pushButton_allSelect");
        m_panel->click("DealWidget_Revoke", "pushButton_withdrawal");
        QTRY_COMPARE_WITH_TIMEOUT(boxes.texts().size(), 2, patience);
        QCOMPARE(m_book->openOrders().size(), 0);
        m_panel->open("pushButton_purchase");
    }

    void settle() const
    {
        QProcess command;
        command.start(QStringLiteral(ZV_EXCHANGE_PROGRAM),
                      {QStringLiteral("settle"), QStringLiteral("--state"), m_state.path()});
        QVERIFY(endtoend::until([&] { return command.state() == QProcess::NotRunning; }));
        QCOMPARE(command.exitCode(), 0);
    }

    endtoend::StateFolder m_state{endtoend::StateFolder::Empty};
    endtoend::Exchange m_exchange;
    std::unique_ptr<WireTrader> m_owner; // the demo account, which has pieces
    std::unique_ptr<WireTrader> m_book; // looks on with the window's own session
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TradingPanel> m_panel;
};

ZV_TEST(TradingRoadTest)
#include "test_tradingroad.moc"
