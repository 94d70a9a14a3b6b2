#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/dealwidget_buysell_captableview.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtableview.h"
#include "detailfigures.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QToolTip>
#include <QtTest/QtTest>

using zvtest::TicketBench;

namespace {

const QString yellow
    = "QLabel{color:#f4f401;border-color:#16181c; border-width:1px; border-style:soli;}"
      "QLabel:hover{border-color:#e73f1e; border-width:1px; border-style:solid;}";
const QString white
    = "QLabel{color:#ffffff;border-color:#16181c; border-width:1px; border-style:soli;}"
      "QLabel:hover{border-color:#e73f1e; border-width:1px; border-style:solid;}";
const QString green
    = "QLabel{color:#4bff57;border-color:#16181c; border-width:1px; border-style:soli;}"
      "QLabel:hover{border-color:#e73f1e; border-width:1px; border-style:solid;}";
const QString red
    = "QLabel{color:#ea3835;border-color:#16181c; border-width:1px; border-style:soli;}"
      "QLabel:hover{border-color:#e73f1e; border-width:1px; border-style:solid;}";

struct Shown {
    const char *label;
    int property;
};

constexpr Shown quoteLabels[] = {
    {"label_rate_value", 26},       {"label_latest_value", 24},
    {"label_priceLimit_value", 28}, {"label_upperLimitPrice_value", 27},
    {"label_buy1_price", 13},       {"label_buy1_qty", 14},
    {"label_buy2_price", 15},       {"label_buy2_qty", 16},
    {"label_buy3_price", 17},       {"label_buy3_qty", 18},
    {"label_buy4_price", 19},       {"label_buy4_qty", 20},
    {"label_buy5_price", 21},       {"label_buy5_qty", 22},
    {"label_sell1_price", 11},      {"label_sell1_qty", 12},
    {"label_sell2_price", 9},       {"label_sell2_qty", 10},
    {"label_sell3_price", 7},       {"label_sell3_qty", 8},
    {"label_sell4_price", 5},       {"label_sell4_qty", 6},
    {"label_sell5_price", 3},       {"label_sell5_qty", 4},
};

QStringList levelLabels(const QString &what)
{
    QStringList names;
    for (const char *side : {"sell", "buy"}) {
        for (int level = 1; level <= 5; ++level)
            names << QStringLiteral("label_%1%2_%3").arg(side).arg(level).arg(what);
    }
    return names;
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

QStringList shownIn(const TicketBench &bench, const QStringList &names)
{
    QStringList texts;
    for (const QString &name : names)
        texts << bench.text(name);
    return texts;
}

} // namespace

// What the page draws of the cache: the levels, their colours, the sums and the tables.
class DealWidgetBuySellQuoteTest : public QObject
{
    Q_OBJECT

private:
    // The colour of one price, the other levels being empty.
    static QString colourOf(TicketBench *bench, qint64 price, qint64 reference)
    {
        ZvUBTopFive::Data data;
        data.collectionId = QStringLiteral("1001");
        data.previousClose = reference;
        data.sells[4].price = data.buys[2].price = data.latest = price;
        bench->storeQuote(data);
        const QSet<QString> sheets{bench->sheet("label_sell5_price"),
                                   bench->sheet("label_buy3_price"),
                                   bench->sheet("label_latest_value")};
        return sheets.size() == 1 ? *sheets.begin() : QStringLiteral("they differ");
    }

private slots:
    void theQuoteLabelByLabel()
    {
        const TicketBench bench;
        const ZvUBTopFive quote(zvtest::quoteData("1001"));
        for (const Shown &shown : quoteLabels)
            QCOMPARE(bench.text(shown.label), quote.getPropertyString(shown.property));
        QCOMPARE(bench.text("label_sell5_price"), QStringLiteral("100.07"));
        QCOMPARE(bench.text("label_sell5_qty"), QStringLiteral("35"));
        QCOMPARE(bench.text("label_buy1_price"), QStringLiteral("100.01"));
        QCOMPARE(bench.text("label_buy5_qty"), QStringLiteral("55"));
        QCOMPARE(bench.text("label_priceLimit_value"), QStringLiteral("90.00"));
        QCOMPARE(bench.text("label_upperLimitPrice_value"), QStringLiteral("110.00"));
        QCOMPARE(bench.text("label_rate_value"), QStringLiteral("0.02%"));
    }

    void theQuoteOfTheOtherSignal()
    {
        const TicketBench bench;
        ZvUBTopFive::Data data = zvtest::quoteData("1001");
        data.sells[0].quantity = 4711;
        cache()->storeFlushedTopFive("1001", ZvUBTopFive(data));
        QCOMPARE(bench.text("label_sell1_qty"), QStringLiteral("4711"));
    }

    // Not even its limits are taken, which the next order would show.
    void theQuoteOfAnotherCollectionChangesNothing()
    {
        TicketBench bench;
        bench.clickPrice(10002);
        bench.typeCount("1");
        ZvUBTopFive::Data data = zvtest::quoteData("1002");
        data.sells[0] = {1, 2};
        data.lowerLimit = data.upperLimit = 500;
        for (const char *id : {"1002", "-1", "", "x"}) {
            data.collectionId = id;
            bench.storeQuote(data);
        }
        cache()->storeFlushedTopFive("1002", ZvUBTopFive(data));
        QCOMPARE(bench.text("label_sell1_price"), QStringLiteral("100.03"));
        QCOMPARE(bench.text("label_upperLimitPrice_value"), QStringLiteral("110.00"));
        QCOMPARE(bench.order("取消").first().title, QStringLiteral("买前信息确认"));
    }

    // What the account may buy is worked out with each quote.
    void theQuoteIsFollowedByWhatCanBeBought()
    {
        TicketBench bench;
        bench.typePrice("100");
        QCOMPARE(bench.buyable(), QStringLiteral("--"));
        bench.storeQuote(zvtest::quoteData("1001"));
        QCOMPARE(bench.buyable(), QStringLiteral("9970"));
    }

    void allIsWhiteAtFirst()
    {
        const KitBench kit;
        const DealWidget_BuySell page;
        const QStringList names = levelLabels("price") + levelLabels("qty")
            + QStringList{"label_latest_value", "label_rate_value"};
        for (const QString &name : names)
            QCOMPARE(page.findChild<QLabel *>(name)->styleSheet(), white);
    }

    void coloursOfPrices()
    {
        TicketBench bench;
        QCOMPARE(colourOf(&bench, 10001, 10000), red);
        QCOMPARE(colourOf(&bench, 9999, 10000), green);
        QCOMPARE(colourOf(&bench, 10000, 10000), white);
        QCOMPARE(colourOf(&bench, 10003, 10003), white); // equal as floats, not as decimals
        QCOMPARE(colourOf(&bench, -1, 10000), white);
        QCOMPARE(colourOf(&bench, 0, 10000), green);
        QCOMPARE(colourOf(&bench, 1, 0), red);
        QCOMPARE(colourOf(&bench, 13107199, 13107198), red);
    }

    void everyLevelHasItsColour()
    {
        TicketBench bench;
        ZvUBTopFive::Data data = zvtest::quoteData("1001");
        data.buys[0].price = 10000;
        data.buys[4] = {};
        data.sells[2].quantity = 0;
        bench.storeQuote(data);
        QStringList prices;
        for (const QString &name : levelLabels("price"))
            prices << bench.sheet(name);
        QCOMPARE(prices, (QStringList{red, red, red, red, red, white, white, green, green, white}));
        QStringList quantities;
        for (const QString &name : levelLabels("qty"))
            quantities << bench.sheet(name);
        QCOMPARE(quantities,
                 (QStringList{yellow, yellow, yellow, yellow, yellow, yellow, yellow, yellow,
                              yellow, white}));
    }

    void colourOfTheChange()
    {
        TicketBench bench;
        ZvUBTopFive::Data data = zvtest::quoteData("1001");
        const auto colour = [&](qint64 latest) {
            data.latest = latest;
            bench.storeQuote(data);
            return bench.sheet("label_rate_value");
        };
        QCOMPARE(colour(10001), red);
        QCOMPARE(bench.text("label_rate_value"), QStringLiteral("0.01%"));
        QCOMPARE(colour(9000), green);
        QCOMPARE(colour(10000), white);
        QCOMPARE(bench.text("label_rate_value"), QStringLiteral("0.00%"));
        QCOMPARE(colour(-1), white);
        QCOMPARE(bench.text("label_rate_value"), QStringLiteral("--"));
    }

    // Colours stay while a quote does, and follow the next one.
    void coloursFollow()
    {
        TicketBench bench;
        QCOMPARE(colourOf(&bench, 10001, 10000), red);
        QCOMPARE(colourOf(&bench, 10001, 10002), green);
        QCOMPARE(colourOf(&bench, 10001, 10001), white);
    }

    void holdings_data()
    {
        QTest::addColumn<qint64>("profit");
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("sheet");
        QTest::newRow("won") << qint64(1) << "0.01"
                             << "QLabel{color:red;border-style:soli;}";
        QTest::newRow("lost") << qint64(-123456789) << "-1234567.89"
                              << "QLabel{color:#04ff05;border-style:soli;}";
        QTest::newRow("even") << qint64(0) << "0.00"
                              << "QLabel{color:white;border-style:soli;}";
    }

    void holdings()
    {
        QFETCH(qint64, profit);
        QFETCH(QString, text);
        QFETCH(QString, sheet);
        const TicketBench bench;
        ZvUBCapInfo::Data data;
        data.heldMarketValue = 12345678901;
        data.profit = profit;
        data.availableMoney = 50;
        data.frozenMoney = 777;
        data.totalAssets = 900000000000000000;
        data.items << ZvUBCapItem(ZvUBCapItem::Data()) << ZvUBCapItem(ZvUBCapItem::Data());
        cache()->storeCapInfo(ZvUBCapInfo(data));
        QCOMPARE(
            shownIn(bench,
                    {"label_ticketTypeCount_cap_value", "label_cap_value", "label_profit_value",
                     "label_remainder_value", "label_assets_value", "label_availableMoneyValue"}),
            (QStringList{"2", "123456789.01", text, "0.50", "9000000000000000.00", "0.50"}));
        QCOMPARE(bench.sheet("label_profit_value"), sheet);
        const auto *table = bench.page->findChild<DealWidget_BuySell_CapTableView *>();
        QCOMPARE(table->model()->rowCount(), 2);
    }

    void deals_data()
    {
        QTest::addColumn<int>("bought");
        QTest::addColumn<int>("sold");
        QTest::addColumn<qint64>("profit");
        QTest::addColumn<QString>("changeSheet");
        QTest::addColumn<QString>("profitSheet");
        const QString up = "QLabel{color:#e73c3c;border-style:soli;}";
        const QString down = "QLabel{color:#38b041;border-style:soli;}";
        const QString even = "QLabel{color:#ffffff;border-style:soli;}";
        QTest::newRow("more") << 7 << 3 << qint64(-1) << up << down;
        QTest::newRow("less") << 3 << 7 << qint64(1) << down << up;
        QTest::newRow("even") << 5 << 5 << qint64(0) << even << even;
        // Half a yuan is a profit here; the table cuts it to none.
        QTest::newRow("small") << 5 << 5 << qint64(50) << even << up;
    }

    void deals()
    {
        QFETCH(int, bought);
        QFETCH(int, sold);
        QFETCH(qint64, profit);
        const TicketBench bench;
        ZvUBGatherItem::Data item;
        item.collectionId = QStringLiteral("1001");
        item.buyQuantity = bought;
        item.buyFee = 1503;
        item.sellQuantity = sold;
        item.sellFee = 1299;
        item.sellProfit = profit;
        cache()->storeGatherInfo(ZvUBGatherInfo(ZvUBGatherInfo::sumOf({ZvUBGatherItem(item)})));
        QCOMPARE(shownIn(bench,
                         {"label_ticketTypeCount_deal_value", "label_count_buy_value",
                          "label_poundage_buy_value", "label_count_sell_value",
                          "label_poundage_sell_value", "label_count_total_value",
                          "label_poundage_total_value", "label_deal_CountChange_value",
                          "label_deal_profit_value"}),
                 (QStringList{"1", QString::number(bought), "15.03", QString::number(sold), "12.99",
                              "10", "28.02", QString::number(bought - sold),
                              QString::number(double(profit) / 100, 'f', 2)}));
        QTEST(bench.sheet("label_deal_CountChange_value"), "changeSheet");
        QTEST(bench.sheet("label_deal_profit_value"), "profitSheet");
        const auto *table = bench.page->findChild<DealWidget_BuySell_DealTableView *>();
        QCOMPARE(table->model()->rowCount(), 1);
    }

    // Where a sum does not fit beside the others it ends in "…", and a tool tip has all of it.
    void sumsThatAreTooLongAreNotCutSilently()
    {
        TicketBench bench;
        ZvUBGatherInfo::Data data;
        data.kindCount = data.buyQuantity = data.sellQuantity = data.totalQuantity
            = std::numeric_limits<qint64>::max();
        data.buyFee = data.sellFee = data.totalFee = data.sellProfit = 900000000000000000;
        data.positionChange = -data.buyQuantity;
        cache()->storeGatherInfo(ZvUBGatherInfo(data));
        bench.click("pushButton_dealData");
        QCoreApplication::processEvents();
        QCOMPARE(bench.page->width(), 1242);
        QCOMPARE(bench.text("label_deal_CountChange_value"), QStringLiteral("-2147483648"));
        const QLabel *cut = bench.label("label_poundage_total_value");
        QCOMPARE(cut->text(), QStringLiteral("9000000000000000.00"));
        QVERIFY(cut->width() < cut->fontMetrics().horizontalAdvance(cut->text()));
        const QWidget *row = bench.named("widget_top_dealData");
        for (const QLabel *each : row->findChildren<QLabel *>()) {
            QVERIFY2(row->rect().contains(each->geometry()), qPrintable(each->objectName()));
            QVERIFY2(each->width() > 20, qPrintable(each->objectName()));
            if (!each->objectName().endsWith("_value"))
                QVERIFY2(each->width() >= each->fontMetrics().horizontalAdvance(each->text()),
                         qPrintable(each->objectName()));
        }
        QHelpEvent help(QEvent::ToolTip, QPoint(2, 2), cut->mapToGlobal(QPoint(2, 2)));
        QCoreApplication::sendEvent(const_cast<QLabel *>(cut), &help);
        QCOMPARE(QToolTip::text(), cut->text());
        QToolTip::hideText();
    }
};

ZV_TEST(DealWidgetBuySellQuoteTest)
#include "test_dealwidget_buysell_quote.moc"
