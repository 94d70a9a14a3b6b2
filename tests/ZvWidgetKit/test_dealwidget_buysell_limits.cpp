#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "detailfigures.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QtTest/QtTest>

using zvtest::TicketBench;

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

void choose(const QString &id)
{
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_collectionTableView_clicked(id);
}

} // namespace

// How much can be bought and sold, and all that fills price and count without the keyboard.
class DealWidgetBuySellLimitsTest : public QObject
{
    Q_OBJECT

private:
    // A quote of the second collection, with a latest price for a click.
    static void chooseSecond(TicketBench *bench, qint64 latest)
    {
        choose(QStringLiteral("1002"));
        ZvUBTopFive::Data data = zvtest::quoteData("1002");
        data.latest = latest;
        bench->storeQuote(data);
        bench->click("label_latest_value");
    }

private slots:
    void tenPiecesOrNine()
    {
        TicketBench bench;
        bench.storeMoney(10030);
        bench.clickPrice(1000);
        QCOMPARE(bench.buyable(), QStringLiteral("10"));
        bench.storeMoney(10029);
        QCOMPARE(bench.buyable(), QStringLiteral("9"));
        bench.storeMoney(-20000);
        QCOMPARE(bench.buyable(), QStringLiteral("--"));
        bench.storeMoney(-500); // less than a piece is none
        QCOMPARE(bench.buyable(), QStringLiteral("0"));
    }

    // And what is shown is what an order may be.
    void theNumberShownIsTheLimit()
    {
        TicketBench bench;
        ZvUBTopFive::Data quote = zvtest::quoteData("1001");
        quote.lowerLimit = 500;
        quote.latest = 1000;
        bench.storeMoney(10029);
        bench.storeQuote(quote);
        bench.click("label_latest_value");
        bench.typeCount("10");
        QCOMPARE(bench.order().first().title, QStringLiteral("错误提示"));
        bench.typeCount("9");
        QCOMPARE(bench.order("取消").first().title, QStringLiteral("买前信息确认"));
    }

    void theRateIsThatOfTheRowInTheList()
    {
        TicketBench bench;
        cache()->storeMyAccount(
            zvtest::accountWithRates({{"1001", 100000}, {"1002", 100000}, {"1003", 0}}));
        bench.storeMoney(10999);
        // The first row pays the usual rate, whatever the account's is.
        bench.clickPrice(1000);
        QCOMPARE(bench.buyable(), QStringLiteral("10"));
        // A tenth makes a piece cost 11.00.
        chooseSecond(&bench, 1000);
        QCOMPARE(bench.buyable(), QStringLiteral("9"));
        bench.storeMoney(11000);
        QCOMPARE(bench.buyable(), QStringLiteral("10"));
        // Typed text does not move the row: the third one would pay nothing.
        bench.type(bench.codes(), "600139");
        bench.storeMoney(10999);
        QCOMPARE(bench.buyable(), QStringLiteral("9"));
    }

    void withoutARowTheRateIsTheUsualOne()
    {
        TicketBench bench;
        cache()->storeMyAccount(zvtest::accountWithRates({{"1001", 0}, {"", 0}}));
        bench.storeBrief({});
        QCOMPARE(bench.codes()->currentIndex(), -1);
        bench.typePrice("10");
        bench.storeMoney(10030);
        QCOMPARE(bench.buyable(), QStringLiteral("10"));
        bench.storeMoney(10029);
        QCOMPARE(bench.buyable(), QStringLiteral("9"));
    }

    void withoutAFeeThePriceIsTheCost()
    {
        TicketBench bench;
        cache()->storeMyAccount(zvtest::accountWithRates({{"1002", 0}}));
        bench.storeMoney(10000);
        chooseSecond(&bench, 1000);
        QCOMPARE(bench.buyable(), QStringLiteral("10"));
        bench.storeMoney(9999);
        QCOMPARE(bench.buyable(), QStringLiteral("9"));
    }

    void withoutAPriceNothingIsKnown()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.click("pushButton_reset");
        QCOMPARE(bench.price()->value(), 0.0);
        QCOMPARE(bench.count()->value(), 0);
        QCOMPARE(bench.buyable(), QStringLiteral("--"));
        bench.typeCount("1");
        QCOMPARE(bench.order().first().text,
                 QStringLiteral("<p align='center'>请输入正确的商品价格!</p>"));
        // Where a price of 0 is allowed, it is the count.
        ZvUBTopFive::Data quote = zvtest::quoteData("1001");
        quote.lowerLimit = 0;
        bench.storeQuote(quote);
        QCOMPARE(bench.order().first().text,
                 QStringLiteral("<p align='center'>请输入正确的商品数量!</p>"));
    }

    void moreThanCanBeCounted()
    {
        TicketBench bench;
        bench.storeMoney(std::numeric_limits<qint64>::max());
        bench.clickPrice(1);
        QCOMPARE(bench.buyable(), QStringLiteral("2147483647"));
        bench.click("label_canBuySellValue");
        QCOMPARE(bench.count()->value(), 100000000);
    }

    void sellable()
    {
        TicketBench bench;
        ZvUBCapItem::Data item;
        item.collectionId = QStringLiteral("1002");
        item.code = QStringLiteral("600138");
        item.quantity = 30;
        item.sellable = 12;
        ZvUBCapInfo::Data data;
        data.items << ZvUBCapItem(item);
        cache()->storeCapInfo(ZvUBCapInfo(data));
        bench.page->setTicketMode(DealWidget_BuySell::SellMode);
        // A collection without a holding has that of an empty item.
        QCOMPARE(bench.buyable(), QStringLiteral("0"));
        choose("1002");
        QCOMPARE(bench.buyable(), QStringLiteral("12"));
        // The code is the text of the field, not a row.
        bench.type(bench.codes(), "600139");
        bench.click("pushButton_reset");
        QCOMPARE(bench.buyable(), QStringLiteral("0"));
        bench.type(bench.codes(), "600138");
        bench.click("pushButton_reset");
        QCOMPARE(bench.buyable(), QStringLiteral("12"));

        item.sellable = -1;
        data.items = {ZvUBCapItem(item)};
        cache()->storeCapInfo(ZvUBCapInfo(data));
        QCOMPARE(bench.buyable(), QStringLiteral("--"));
    }

    // The direction of prepared orders decides there, and the next look at the ticket shows it.
    void preparedOrdersWorkItOutToo()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.page->setTicketMode(DealWidget_BuySell::PreparedMode);
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
        bench.click("pushButton_out");
        QCOMPARE(bench.buyable(), QStringLiteral("0"));
        bench.click("pushButton_enter");
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
    }

    void priceButtons()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.count()->setFocus();
        bench.click("pushButton_price_add");
        QCOMPARE(bench.price()->value(), 100.01);
        QVERIFY(bench.price()->hasFocus());
        bench.count()->setFocus();
        bench.click("pushButton_price_sub");
        bench.click("pushButton_price_sub");
        QCOMPARE(bench.price()->value(), 99.99);
        QVERIFY(bench.price()->hasFocus());
        // 99.99 and its fee are 100.29.
        QCOMPARE(bench.buyable(), QStringLiteral("9971"));
    }

    void priceButtonsStayWithinTheLimits()
    {
        TicketBench bench;
        bench.typePrice("110");
        bench.click("pushButton_price_add");
        QCOMPARE(bench.price()->text(), QStringLiteral("110.00"));
        bench.typePrice("5000");
        QCOMPARE(bench.price()->value(), 5000.0); // typing may leave them
        QSignalSpy changed(bench.price(), QOverload<double>::of(&QDoubleSpinBox::valueChanged));
        bench.click("pushButton_price_sub");
        QCOMPARE(bench.price()->text(), QStringLiteral("110.00"));
        QCOMPARE(changed.count(), 1); // the step, not the way back to the limit
        bench.typePrice("90");
        bench.click("pushButton_price_sub");
        QCOMPARE(bench.price()->text(), QStringLiteral("90.00"));
        bench.typePrice("0");
        bench.click("pushButton_price_add");
        QCOMPARE(bench.price()->text(), QStringLiteral("90.00"));
        QCOMPARE(bench.buyable(), QStringLiteral("11077")); // 90.27 a piece
    }

    void countButtons()
    {
        TicketBench bench;
        bench.price()->setFocus();
        bench.click("pushButton_count_sub");
        QCOMPARE(bench.count()->value(), 0);
        QVERIFY(bench.count()->hasFocus());
        bench.price()->setFocus();
        bench.click("pushButton_count_add");
        bench.click("pushButton_count_add");
        bench.click("pushButton_count_sub");
        QCOMPARE(bench.count()->value(), 1);
        QVERIFY(bench.count()->hasFocus());
        bench.typeCount("100000000");
        bench.click("pushButton_count_add");
        QCOMPARE(bench.count()->value(), 100000000);
    }

    // They are there for a host, although no button leads to one of them.
    void theSlotsOfChanges()
    {
        TicketBench bench;
        bench.typePrice("5000");
        bench.count()->setFocus();
        QVERIFY(QMetaObject::invokeMethod(bench.page.get(), "slot_price_changed"));
        QCOMPARE(bench.price()->text(), QStringLiteral("110.00"));
        QVERIFY(bench.price()->hasFocus());
        QVERIFY(QMetaObject::invokeMethod(bench.page.get(), "slot_count_changed"));
        QVERIFY(bench.count()->hasFocus());
    }

    void typingDoesNotTouchTheLimits()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typePrice("50");
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
    }

    void clicksFillThePrice()
    {
        TicketBench bench;
        for (const char *name :
             {"label_priceLimit_value", "label_upperLimitPrice_value", "label_latest_value",
              "label_buy1_price", "label_buy2_price", "label_buy3_price", "label_buy4_price",
              "label_buy5_price", "label_sell1_price", "label_sell2_price", "label_sell3_price",
              "label_sell4_price", "label_sell5_price"}) {
            bench.click("pushButton_reset");
            bench.count()->setFocus();
            bench.click(name);
            QCOMPARE(bench.price()->text(), bench.text(name));
            QVERIFY2(bench.price()->hasFocus(), name);
            QVERIFY2(bench.buyable() != QLatin1String("--"), name);
        }
        // Any button of the mouse does it, the press alone is enough.
        bench.click("pushButton_reset");
        QTest::mousePress(bench.label("label_buy1_price"), Qt::RightButton);
        QCOMPARE(bench.price()->text(), QStringLiteral("100.01"));
    }

    void clicksFillTheCount()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        for (const char *name :
             {"label_buy1_qty", "label_buy2_qty", "label_buy3_qty", "label_buy4_qty",
              "label_buy5_qty", "label_sell1_qty", "label_sell2_qty", "label_sell3_qty",
              "label_sell4_qty", "label_sell5_qty", "label_canBuySellValue"}) {
            bench.typeCount("0");
            bench.price()->setFocus();
            bench.click(name);
            QCOMPARE(bench.count()->text(), bench.text(name));
            QVERIFY2(bench.count()->hasFocus(), name);
            QCOMPARE(bench.price()->value(), 100.0);
        }
    }

    // The price may have been typed since the last time.
    void aClickOnAQuantityWorksTheLimitOutAnew()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typePrice("50");
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
        bench.click("label_buy1_qty");
        QCOMPARE(bench.buyable(), QStringLiteral("19940")); // 50.15 a piece
    }

    void clicksOnWhatIsNotThere()
    {
        TicketBench bench;
        bench.clickPrice(10000);
        bench.typeCount("7");
        ZvUBTopFive::Data data = zvtest::quoteData("1001");
        data.buys[2] = {};
        data.sells[0].quantity = 9999999999;
        bench.storeQuote(data);
        bench.count()->setFocus();
        bench.click("label_buy3_price");
        QCOMPARE(bench.price()->value(), 100.0);
        QVERIFY(bench.count()->hasFocus());
        // A price of nothing is none, and its click ends there all the same.
        bench.label("label_buy3_price")->setText(QStringLiteral("0.00"));
        bench.click("label_buy3_price");
        QCOMPARE(bench.price()->value(), 100.0);
        QVERIFY(bench.count()->hasFocus());
        // No quantity makes the count 0, as one that is no int does.
        bench.price()->setFocus();
        bench.click("label_buy3_qty");
        QCOMPARE(bench.count()->value(), 0);
        QVERIFY(bench.count()->hasFocus());
        bench.typeCount("7");
        bench.click("label_sell1_qty");
        QCOMPARE(bench.count()->value(), 0);
    }

    // A price label takes the press for itself even where it does nothing; others let it through.
    void pressesThatAreTakenEndThere()
    {
        TicketBench bench;
        ZvUBTopFive::Data data = zvtest::quoteData("1001");
        data.buys[2] = {};
        bench.storeQuote(data);
        const auto isTaken = [&](const char *name, QEvent::Type type) {
            QWidget *widget = bench.named(name);
            QMouseEvent event(type, QPointF(2, 2), widget->mapToGlobal(QPoint(2, 2)),
                              Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
            return static_cast<QObject *>(bench.page.get())->eventFilter(widget, &event);
        };
        QVERIFY(isTaken("label_buy3_price", QEvent::MouseButtonPress));
        bench.label("label_buy3_price")->setText(QStringLiteral("0.00"));
        QVERIFY(isTaken("label_buy3_price", QEvent::MouseButtonPress));
        QCOMPARE(bench.price()->value(), 0.0);
        QVERIFY(isTaken("label_buy3_qty", QEvent::MouseButtonPress));
        QVERIFY(isTaken("label_latest_value", QEvent::MouseButtonPress));
        QVERIFY(!isTaken("label_latest_value", QEvent::MouseButtonRelease));
        QVERIFY(!isTaken("label_rate_value", QEvent::MouseButtonPress));
        QVERIFY(!isTaken("pushButton_reset", QEvent::MouseButtonPress));
    }
};

ZV_TEST(DealWidgetBuySellLimitsTest)
#include "test_dealwidget_buysell_limits.moc"
