#include "ZvChartKit/chartanswers.h"
#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/zv_collectioncharts.h"
#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/collection_detailwidget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "collectionwalk.h"
#include "dealrows.h"
#include "detailfigures.h"
#include "marketbench.h"
#include "marketrows.h"
#include "pictures.h"
#include "support/testregistry.h"

#include <QTimer>
#include <QtTest/QtTest>

namespace {

// The first row of the table, which a new list makes the current collection.
const QString current = QStringLiteral("1001");
const QString longName
    = QStringLiteral("一九八〇年庚申年生肖猴票整版八十枚原胶全品带边纸厂铭纪念版");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

// The longest texts and the largest figures that a market may bring.
ZvUBObject longestRow(int number)
{
    ZvUBObject::Data data = zvtest::collectionData(number);
    data.code = QStringLiteral("88888888");
    data.name = longName;
    data.latest = data.open = data.high = data.bid = data.ask = 13107199;
    data.low = data.previousClose = 1;
    data.bidQuantity = data.askQuantity = 9999999999;
    data.volume = 99999999999;
    data.amount = 900000000000000000;
    data.listed = 1000000000;
    return ZvUBObject(data);
}

QList<ZvUBObject> longestRows()
{
    QList<ZvUBObject> rows;
    for (int number = 1001; number <= 1008; ++number)
        rows << longestRow(number);
    return rows;
}

ZvUBBriefInfo longestBrief()
{
    ZvUBBriefItem::Data item;
    item.collectionId = current;
    item.code = QStringLiteral("88888888");
    item.name = longName;
    ZvUBBriefInfo::Data data;
    data.items << ZvUBBriefItem(item);
    return ZvUBBriefInfo(data);
}

QList<ZvUBDealItem> longestDeals(int count)
{
    QList<ZvUBDealItem> deals;
    for (int number = 1; number <= count; ++number) {
        ZvUBDealItem::Data data = zvtest::deal(number).data();
        data.price = 13107199;
        data.quantity = 9999999999;
        deals << ZvUBDealItem(data);
    }
    return deals;
}

} // namespace

// What the market half looks like on each of its pages, after it was looked at.
class MarketPicturesTest : public QObject
{
    Q_OBJECT

private:
    static void fill(const QString &figures)
    {
        const bool isLongest = figures == QLatin1String("longest");
        cache()->storeMarketInfo({{QStringLiteral("邮币卡"), QStringLiteral("/lc/youbika/")},
                                  {QStringLiteral("艺术品"), QStringLiteral("/lc/yishupin/")}});
        cache()->storeCollectionTypeList(
            {{QStringLiteral("邮票"), 1}, {QStringLiteral("钱币"), 2}});
        if (isLongest)
            cache()->storeBriefInfo(longestBrief());
        cache()->storeComposite(zvtest::composite());
        cache()->storeMarketList(isLongest ? longestRows() : zvtest::collections(40));
        ZvUBTopFive::Data quote
            = isLongest ? zvtest::longestQuoteData(current) : zvtest::quoteData(current);
        if (isLongest) {
            quote.name = longName;
            quote.code = QStringLiteral("88888888");
        }
        cache()->storeTopFive(current, ZvUBTopFive(quote));
        cache()->storeProItem(
            current,
            ZvUBProItem(isLongest ? zvtest::longestDayData(current) : zvtest::dayData(current)));
    }

    // The panel beside the chart knows only after a while how many deals it has room for.
    static void fillDeals(const zvtest::MarketBench &bench, const QString &figures)
    {
        QVERIFY(QMetaObject::invokeMethod(bench.market->findChild<Collection_DetailWidget *>(),
                                          "slot_adjustDealLatestLimit"));
        cache()->storeLatestDealList(
            current, figures == QLatin1String("longest") ? longestDeals(60) : zvtest::deals(60));
    }

    // What the chart gets when it asks, which it does when it comes to the front.
    static void prepareCharts(ZvScriptedTransport *exchange, const QString &figures)
    {
        const int minutes = figures == QLatin1String("empty") ? 0 : 171;
        const int bars = figures == QLatin1String("empty") ? 0 : 300;
        const QByteArray line = chartsamples::answerOf(chartsamples::timeLine(minutes, 1, current));
        const QByteArray days = chartsamples::answerOf(chartsamples::kLine(bars, 1, current));
        exchange->always(zvPath_market_jit, [line](const ZvRequest &) { return line; });
        exchange->always(zvPath_market_day, [days](const ZvRequest &) { return days; });
    }

    // The exchange has been away for a minute and more.
    static void loseExchange(zvtest::MarketBench *bench)
    {
        bench->exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        bench->kit()->settle();
        bench->kit()->clock.advance(65000);
        // The age is looked at once a second.
        QVERIFY(QMetaObject::invokeMethod(
            bench->market->findChild<Zv_CollectionCharts *>()->findChild<QTimer *>(
                QString(), Qt::FindDirectChildrenOnly),
            "timeout"));
    }

    static void addRows()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::addColumn<QSize>("window");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QString>("page");
        QTest::addColumn<QString>("figures");
        const struct {
            const char *name;
            ZvServerConfig::Platform platform;
        } platforms[] = {{"ch", ZvServerConfig::ChengHu}, {"lc", ZvServerConfig::LanChuan}};
        // Of the window, and what it leaves to the market half.
        const struct {
            const char *name;
            QSize window;
            QSize size;
        } sizes[] = {{"low", QSize(1280, 720), QSize(1280, 391)},
                     {"usual", QSize(1366, 768), QSize(1366, 439)},
                     {"high", QSize(1920, 1080), QSize(1920, 670)}};
        const struct {
            const char *page;
            QStringList figures;
        } pages[] = {{"table", {"empty", "full", "longest"}},
                     {"timeline", {"empty", "full", "longest", "stale"}},
                     {"kline", {"empty", "full", "stale"}},
                     {"deals", {"empty", "full", "longest"}}};
        for (const auto &platform : platforms) {
            for (const auto &size : sizes) {
                for (const auto &page : pages) {
                    for (const QString &figures : page.figures)
                        QTest::addRow("%s_%s_%s_%s", page.page, qPrintable(figures), platform.name,
                                      size.name)
                            << platform.platform << size.window << size.size << page.page
                            << figures;
                }
            }
        }
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void cleanup()
    {
        cache()->storeMarketInfo({});
        cache()->storeMarketDetail({});
    }

    void page_data() { addRows(); }
    void page()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        QFETCH(QSize, window);
        QFETCH(QSize, size);
        QFETCH(QString, page);
        QFETCH(QString, figures);
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(platform);
        zvtest::MarketBench bench;
        prepareCharts(bench.exchange(), figures);
        bench.kit()->startOn(QStringLiteral("/pictures/%1/").arg(QTest::currentDataTag()));
        zvtest::storeCollections({current, "1002", "1003"});
        zvtest::choose(current);
        if (figures == QLatin1String("empty"))
            cache()->storeMarketList(QList<ZvUBObject>());
        else
            fill(figures);
        bench.call("showButtonsNeedLog");
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_adjustSize(window);
        bench.market->resize(size);
        if (page != QLatin1String("table"))
            bench.call("slot_changeToPage_TimeChart");
        if (page == QLatin1String("kline"))
            bench.call("slot_changeToPage_KLine_day");
        if (page == QLatin1String("deals"))
            bench.call("slot_changeToPage_marketDetail");
        bench.kit()->settle();
        if (page == QLatin1String("deals") && figures != QLatin1String("empty"))
            cache()->storeMarketDetail(figures == QLatin1String("longest") ? longestDeals(200)
                                                                           : zvtest::deals(200));
        const bool isChart = page == QLatin1String("timeline") || page == QLatin1String("kline");
        if (isChart && figures != QLatin1String("empty"))
            fillDeals(bench, figures);
        if (figures == QLatin1String("stale"))
            loseExchange(&bench);
        // Neither the mouse nor the focus is in the picture.
        QTest::mouseMove(bench.market.get(), QPoint(700, 5));
        bench.market->setFocus();
        bench.kit()->settle();
        // The chart draws for the screen's own scale; its pictures at others are held by the chart.
        const QString name = QStringLiteral("market_") + QTest::currentDataTag();
        const bool isKept = size.width() == 1366;
        const QString difference = isChart
            ? zvtest::differenceAtScaleOne(bench.market.get(), name, isKept)
            : zvtest::differenceFromPictures(bench.market.get(), name, isKept);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

ZV_TEST(MarketPicturesTest)
#include "test_marketpictures.moc"
