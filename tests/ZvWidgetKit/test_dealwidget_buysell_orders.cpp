#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "detailfigures.h"
#include "moneybench.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QElapsedTimer>
#include <QtTest/QtTest>

using zvtest::confirmation;
using zvtest::ShownBox;
using zvtest::TicketBench;

namespace {

const QString stopped = QStringLiteral("拦截了");
const QString cancel = QStringLiteral("取消");

QString buyCall(const QString &arguments)
{
    return QStringLiteral("ZvServerActionResult::sendRequest_trade_buy(%1)").arg(arguments);
}

QString sellCall(const QString &arguments)
{
    return QStringLiteral("ZvServerActionResult::sendRequest_trade_sell(%1)").arg(arguments);
}

// Thirty pieces of the first collection.
void storeHolding(qint64 sellable)
{
    ZvUBCapItem::Data item;
    item.collectionId = QStringLiteral("1001");
    item.code = QStringLiteral("600137");
    item.quantity = 30;
    item.sellable = sellable;
    ZvUBCapInfo::Data data;
    data.availableMoney = 100000000;
    data.items << ZvUBCapItem(item);
    ZvServerCache::getZvServerCacheInstance()->storeCapInfo(ZvUBCapInfo(data));
}

} // namespace

// Orders that leave at once: the checks in their order, the question, the throttle, the answers.
class DealWidgetBuySellOrdersTest : public QObject
{
    Q_OBJECT

private slots:
    void checks_data()
    {
        QTest::addColumn<QString>("code");
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("price");
        QTest::addColumn<QString>("count");
        QTest::addColumn<QString>("fault");
        // One fault after the other, the last of them alone at the end.
        QTest::newRow("all") << "60013"
                             << "猴"
                             << "0"
                             << "0"
                             << "请输入正确的商品代码!";
        QTest::newRow("name") << "600137"
                              << "猴"
                              << "0"
                              << "0"
                              << "请输入正确的商品名称!";
        QTest::newRow("price") << "600137"
                               << "庚申猴票"
                               << "0"
                               << "0"
                               << "请输入正确的商品价格!";
        QTest::newRow("below") << "600137"
                               << "庚申猴票"
                               << "89.99"
                               << "0"
                               << "请输入正确的商品价格!";
        QTest::newRow("above") << "600137"
                               << "庚申猴票"
                               << "110.01"
                               << "1"
                               << "请输入正确的商品价格!";
        QTest::newRow("no count") << "600137"
                                  << "庚申猴票"
                                  << "110"
                                  << "0"
                                  << "请输入正确的商品数量!";
        QTest::newRow("too many") << "600137"
                                  << "庚申猴票"
                                  << "90"
                                  << "9971"
                                  << "请输入正确的商品数量!";
    }

    void checks()
    {
        QFETCH(QString, code);
        QFETCH(QString, name);
        QFETCH(QString, price);
        QFETCH(QString, count);
        QFETCH(QString, fault);
        TicketBench bench;
        bench.clickPrice(10000); // 9970 pieces at most; typing does not work that out anew
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
        bench.type(bench.codes(), code);
        bench.type(bench.names(), name);
        bench.enter(price, count);
        for (const char *way : {"button", "price", "count"}) {
            const auto boxes = zvtest::boxesIn([&] {
                if (way == QLatin1String("button"))
                    bench.click("pushButton_buysell");
                else if (way == QLatin1String("price"))
                    QTest::keyClick(bench.price(), Qt::Key_Return);
                else
                    QTest::keyClick(bench.count(), Qt::Key_Enter);
            });
            QCOMPARE(boxes.size(), 1);
            const ShownBox &box = boxes.first();
            QCOMPARE(box.text, "<p align='center'>" + fault + "</p>");
            QCOMPARE(box.buttons, QStringList{"确认"});
            QCOMPARE(box.title, QStringLiteral("错误提示"));
            QCOMPARE(box.titleHeight, 40);
            QVERIFY(!box.hasParent);
        }
        QCOMPARE(bench.calls(), QStringList());
    }

    void asksBeforeItBuys()
    {
        for (const char *way : {"button", "price", "count"}) {
            TicketBench bench;
            bench.clickPrice(10002);
            bench.typeCount("10");
            const auto boxes = zvtest::boxesIn([&] {
                if (way == QLatin1String("button"))
                    bench.click("pushButton_buysell");
                else if (way == QLatin1String("price"))
                    QTest::keyClick(bench.price(), Qt::Key_Return);
                else
                    QTest::keyClick(bench.count(), Qt::Key_Enter);
            });
            QCOMPARE(boxes.size(), 1);
            const ShownBox &box = boxes.first();
            QCOMPARE(box.text, confirmation("600137", "庚申猴票", "100.02", "10"));
            QCOMPARE(box.buttons, (QStringList{"确认", "取消"}));
            QCOMPARE(box.title, QStringLiteral("买前信息确认"));
            QCOMPARE(box.titleHeight, 40);
            QVERIFY(!box.hasParent);
            QCOMPARE(bench.calls(), QStringList{buyCall("\"1001\", 100.02, 10")});
            // The ticket keeps what it shows.
            QCOMPARE(bench.price()->value(), 100.02);
            QCOMPARE(bench.count()->value(), 10);
        }
    }

    void asksBeforeItSells()
    {
        TicketBench bench;
        storeHolding(7);
        bench.page->setTicketMode(DealWidget_BuySell::SellMode);
        bench.enter("99.98", "8");
        auto boxes = bench.order();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, QStringLiteral("<p align='center'>请输入正确的商品数量!</p>"));
        bench.typeCount("7");
        boxes = bench.order();
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, confirmation("600137", "庚申猴票", "99.98", "7"));
        QCOMPARE(boxes.first().buttons, (QStringList{"确认", "取消"}));
        QCOMPARE(boxes.first().title, QStringLiteral("卖前信息确认"));
        QCOMPARE(bench.calls(), QStringList{sellCall("\"1001\", 99.98, 7")});
    }

    // The limits are compared as they are kept, not as they are typed: as a double, 11.03 is more.
    void theLimitsThemselvesAreAllowed()
    {
        TicketBench bench;
        ZvUBTopFive::Data quote = zvtest::quoteData("1001");
        quote.lowerLimit = 903;
        quote.upperLimit = 1103;
        quote.latest = 1000;
        bench.storeQuote(quote);
        bench.click("label_latest_value");
        for (const char *price : {"11.03", "9.03"}) {
            bench.enter(price, "1");
            const auto boxes = bench.order(cancel);
            QCOMPARE(boxes.size(), 1);
            QCOMPARE(boxes.first().title, QStringLiteral("买前信息确认"));
        }
        for (const char *price : {"11.04", "9.02"}) {
            bench.enter(price, "1");
            const auto boxes = bench.order();
            QCOMPARE(boxes.size(), 1);
            QCOMPARE(boxes.first().title, QStringLiteral("错误提示"));
        }
    }

    void theLargestCountIsAllowed()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.click("label_canBuySellValue");
        QCOMPARE(bench.count()->value(), 9970);
        QCOMPARE(bench.order().first().title, QStringLiteral("买前信息确认"));
        QCOMPARE(bench.calls(), QStringList{buyCall("\"1001\", 100, 9970")});
    }

    void largePricesAreShownWithSixDigits()
    {
        TicketBench bench;
        bench.storeMoney(900000000000);
        ZvUBTopFive::Data quote = zvtest::quoteData("1001");
        quote.upperLimit = 200000000;
        quote.latest = 123456700;
        bench.storeQuote(quote);
        bench.click("label_latest_value");
        bench.typeCount("12");
        QCOMPARE(bench.order(cancel).first().text,
                 confirmation("600137", "庚申猴票", "1.23457e+06", "12"));
    }

    // What a field shows is what is ordered, not what it still knows of an earlier time.
    void aFieldThatWasEmptiedShowsItsNumberAgain()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.enter("100", "3");
        bench.typePrice("");
        const auto boxes = zvtest::boxesIn(
            [&] { bench.click("pushButton_buysell"); },
            [&] { QCOMPARE(bench.price()->text(), QStringLiteral("100.00")); }, cancel);
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text, confirmation("600137", "庚申猴票", "100", "3"));
    }

    void aRejectedOrderStays()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("1");
        QCOMPARE(bench.order(cancel).size(), 1);
        QCOMPARE(bench.calls(), QStringList{"rejected"});
        // Nothing is held back.
        QCOMPARE(bench.order(cancel).size(), 1);
        QCOMPARE(bench.calls(), QStringList{"rejected"});

        storeHolding(7);
        bench.page->setTicketMode(DealWidget_BuySell::SellMode);
        QCOMPARE(bench.order(cancel).size(), 1);
        QCOMPARE(bench.calls(), QStringList());
    }

    void aBoxThatIsClosedRejects_data()
    {
        QTest::addColumn<bool>("byItsCross");
        QTest::newRow("escape") << false;
        QTest::newRow("cross") << true;
    }

    void aBoxThatIsClosedRejects()
    {
        QFETCH(bool, byItsCross);
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("1");
        const auto close = [&] {
            return bench.order(QStringLiteral("确认"), [&] { zvtest::closeBox(byItsCross); })
                .size();
        };
        QCOMPARE(close(), 1);
        QCOMPARE(bench.calls(), QStringList{"rejected"});
        // Nothing is held back.
        QCOMPARE(close(), 1);
        QCOMPARE(bench.calls(), QStringList{"rejected"});

        storeHolding(7);
        bench.page->setTicketMode(DealWidget_BuySell::SellMode);
        QCOMPARE(close(), 1);
        QCOMPARE(close(), 1);
        QCOMPARE(bench.calls(), QStringList());
    }

    void aSecondOrderIsDroppedForASecond_data()
    {
        QTest::addColumn<bool>("sells");
        QTest::newRow("buy") << false;
        QTest::newRow("sell") << true;
    }

    void aSecondOrderIsDroppedForASecond()
    {
        QFETCH(bool, sells);
        TicketBench bench;
        storeHolding(7);
        bench.page->setTicketMode(sells);
        bench.clickPrice(10000);
        bench.typeCount("1");
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(bench.order().size(), 1);
        // A machine that is held up itself may be too late for a try within the second.
        const auto isDropped = [&] {
            bench.calls();
            const bool drops = bench.order().isEmpty() && bench.calls() == QStringList{stopped};
            return drops || clock.elapsed() >= 900;
        };
        QVERIFY(isDropped());
        // It is the first of all checks: a wrong order is dropped as silently.
        bench.typeCount("0");
        QVERIFY(isDropped());
        bench.typeCount("1");
        // The other direction is held back by the same order.
        bench.page->setTicketMode(!sells);
        QVERIFY(isDropped());
        bench.page->setTicketMode(sells);
        QTRY_COMPARE_WITH_TIMEOUT(bench.order(cancel).size(), 1, 5000);
        QVERIFY2(clock.elapsed() >= 990, qPrintable(QString::number(clock.elapsed())));
        QCOMPARE(zvtest::notices(), QStringList());
    }

    // Each order starts a second of its own, and whichever ends first frees the ticket.
    void anEarlierOrderFreesALaterOne()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("1");
        QElapsedTimer clock;
        clock.start();
        QCOMPARE(bench.order().size(), 1);
        const qint64 firstIsOut = clock.elapsed();
        emit zvtest::actions()->signal_trade_buy_succeed();
        QTest::qWait(600);
        QCOMPARE(bench.order().size(), 1);
        const bool isInTime = clock.elapsed() < 950; // or else the first second is over already
        qint64 triedAt = 0;
        const auto isFree = [&] {
            triedAt = clock.elapsed();
            QCoreApplication::processEvents(); // what is due by now has come
            return !bench.order(cancel).isEmpty();
        };
        while (!isFree()) {
            QVERIFY2(!isInTime || triedAt < firstIsOut + 1010,
                     qPrintable(QString::number(triedAt)));
            QVERIFY2(triedAt < 5000, qPrintable(QString::number(triedAt)));
            QTest::qWait(10);
        }
        QVERIFY2(clock.elapsed() >= 990, qPrintable(QString::number(clock.elapsed())));
    }

    void anAnswerEndsTheWait_data()
    {
        QTest::addColumn<QString>("answer");
        for (const char *answer : {"buy succeeds", "buy fails", "sell succeeds", "sell fails"})
            QTest::newRow(answer) << answer;
    }

    void anAnswerEndsTheWait()
    {
        QFETCH(QString, answer);
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("1");
        QCOMPARE(bench.order().size(), 1);
        QCOMPARE(bench.order().size(), 0);
        ZvServerActionResult *actions = zvtest::actions();
        if (answer == "buy succeeds")
            emit actions->signal_trade_buy_succeed();
        else if (answer == "buy fails")
            emit actions->signal_trade_buy_failed(QString());
        else if (answer == "sell succeeds")
            emit actions->signal_trade_sell_succeed();
        else
            emit actions->signal_trade_sell_failed(QString());
        QCOMPARE(bench.order(cancel).size(), 1);
    }

    void preparedOrdersAreNotHeldBack()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("1");
        QCOMPARE(bench.order().size(), 1);
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        QCOMPARE(bench.order().size(), 0);
        QCOMPARE(bench.order().size(), 0);
        QCOMPARE(bench.prepared()->model()->rowCount(), 2);
    }

    void lockAndUnlock()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("1");
        QVERIFY(QMetaObject::invokeMethod(bench.page.get(), "lockBuysellLimit"));
        QCOMPARE(bench.order().size(), 0);
        QVERIFY(QMetaObject::invokeMethod(bench.page.get(), "unlockBuysellLimit"));
        QCOMPARE(bench.order(cancel).size(), 1);
    }

    // Answers go on coming while the box asks. The order is the one that was asked about, and its
    // collection that of the code in the newest list.
    void theOrderIsTheOneThatWasAskedAbout()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("5");
        const auto boxes = bench.order(QStringLiteral("确认"), [&] {
            bench.storeBrief({{"2002", "700001", "别的"}, {"2001", "600137", "庚申猴票"}});
            ZvUBTopFive::Data quote = zvtest::quoteData("2002");
            quote.lowerLimit = quote.upperLimit = 1;
            bench.storeQuote(quote);
            bench.storeMoney(0);
            bench.page->setTicketMode(DealWidget_BuySell::SellMode);
        });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(bench.calls(), QStringList{buyCall("\"2001\", 100, 5")});
    }

    void thePageMayGoWhileTheBoxAsks()
    {
        for (const int mode : {0, 1}) {
            TicketBench bench;
            storeHolding(7);
            bench.page->setTicketMode(mode);
            bench.clickPrice(10000);
            bench.typeCount("5");
            bench.calls();
            QCOMPARE(bench.order(QStringLiteral("确认"), [&] { bench.page.reset(); }).size(), 1);
            QCOMPARE(bench.calls(), QStringList());
        }
        TicketBench bench; // a wrong order, too
        QCOMPARE(bench.order(QStringLiteral("确认"), [&] { bench.page.reset(); }).size(), 1);
    }

    void answersAreTold()
    {
        TicketBench bench;
        ZvServerActionResult *actions = zvtest::actions();
        emit actions->signal_trade_buy_succeed();
        emit actions->signal_trade_sell_succeed();
        QCOMPARE(zvtest::notices(), (QStringList{"买入委托成功", "卖出委托成功"}));
        zvtest::dropNotices();
        emit actions->signal_trade_buy_failed(QStringLiteral("资金不足"));
        emit actions->signal_trade_sell_failed(QStringLiteral("持仓不足"));
        emit actions->signal_trade_buy_failed(QString());
        emit actions->signal_trade_sell_failed(QString());
        QCOMPARE(zvtest::notices(),
                 (QStringList{"资金不足", "持仓不足", "买入委托失败", "卖出委托失败"}));
    }

    // From the button to the exchange and back.
    void theExchangeAnswers()
    {
        TicketBench bench;
        bench.clickPrice(10002);
        bench.typeCount("10");
        QCOMPARE(bench.order().size(), 1);
        bench.settle();
        QCOMPARE(bench.exchange()->openCount(zvPath_trade_buy), 1);
        const ZvRequest request = bench.exchange()->lastRequest(zvPath_trade_buy);
        QVERIFY(!request.path.isEmpty());
        bench.exchange()->answer(
            zvPath_trade_buy, ZvScriptedTransport::refusal("refused", QStringLiteral("资金不足")));
        bench.settle();
        QTRY_COMPARE(zvtest::notices(), QStringList{"资金不足"});
        QCOMPARE(bench.order(cancel).size(), 1);
    }

    void aPriceAmongTheLevelsAsksForThemAnew_data()
    {
        QTest::addColumn<bool>("sells");
        QTest::addColumn<QString>("price");
        QTest::addColumn<bool>("flushes");
        // The levels: 99.97 is the fifth buy, 100.07 the fifth sell.
        QTest::newRow("buy at the fifth level") << false << "99.97" << true;
        QTest::newRow("buy above it") << false << "105" << true;
        QTest::newRow("buy below it") << false << "99.96" << false;
        QTest::newRow("sell at the fifth level") << true << "100.07" << true;
        QTest::newRow("sell below it") << true << "95" << true;
        QTest::newRow("sell above it") << true << "100.08" << false;
    }

    void aPriceAmongTheLevelsAsksForThemAnew()
    {
        QFETCH(bool, sells);
        QFETCH(QString, price);
        QFETCH(bool, flushes);
        TicketBench bench;
        storeHolding(7);
        bench.page->setTicketMode(sells);
        bench.clickPrice(10000);
        ZvServerActionResult *actions = zvtest::actions();
        const auto answer = [&] {
            if (sells)
                emit actions->signal_trade_sell_succeed();
            else
                emit actions->signal_trade_buy_succeed();
        };
        // Whatever the order before it was.
        bench.enter(flushes ? (sells ? "109" : "91") : "100", "1");
        QCOMPARE(bench.order().size(), 1);
        emit actions->signal_trade_buy_failed(QString());
        bench.enter(price, "1");
        QCOMPARE(bench.order().size(), 1);
        bench.calls();
        QElapsedTimer clock;
        clock.start();
        answer();
        QStringList calls;
        const auto count = [&] {
            calls += bench.calls();
            return calls.size();
        };
        if (flushes) {
            QTRY_COMPARE(count(), 1);
            QVERIFY2(clock.elapsed() >= 690, qPrintable(QString::number(clock.elapsed())));
            QCOMPARE(calls, QStringList{"ZvServerEngine::flushCurrentTop5()"});
        } else {
            QTest::qWait(900);
            QCOMPARE(count(), 0);
        }
    }

    // Nothing is known of an order that this page did not send.
    void anAnswerBeforeAnyOrderAsksForThemToo()
    {
        TicketBench bench;
        emit zvtest::actions()->signal_trade_sell_succeed();
        QStringList calls;
        const auto said = [&] {
            calls += bench.calls();
            return calls.join(' ');
        };
        QTRY_COMPARE(said(), QStringLiteral("ZvServerEngine::flushCurrentTop5()"));
    }

    void aFailureAsksForNothing()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("1");
        QCOMPARE(bench.order().size(), 1);
        bench.calls();
        emit zvtest::actions()->signal_trade_buy_failed(QStringLiteral("资金不足"));
        QTest::qWait(900);
        QCOMPARE(bench.calls(), QStringList());
    }

    void aPageThatGoesAsksForNothing()
    {
        TicketBench bench;
        emit zvtest::actions()->signal_trade_buy_succeed();
        bench.page.reset();
        bench.calls();
        QTest::qWait(900);
        QCOMPARE(bench.calls(), QStringList());
    }
};

ZV_TEST(DealWidgetBuySellOrdersTest)
#include "test_dealwidget_buysell_orders.moc"
