#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/collection_detailwidget.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "dealrows.h"
#include "detailfigures.h"
#include "pictures.h"
#include "support/testregistry.h"

#include <QtTest/QtTest>

namespace {

const QString current = QStringLiteral("1001");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

void fill(const ZvUBTopFive::Data &quote, const ZvUBProItem::Data &day)
{
    cache()->storeProItem(current, ZvUBProItem(day));
    cache()->storeTopFive(current, ZvUBTopFive(quote));
    cache()->storeLatestDealList(current, zvtest::deals(60));
}

} // namespace

// What panel and page of deals look like, after they were looked at.
class DetailPicturesTest : public QObject
{
    Q_OBJECT

private:
    // Lays a widget out and holds it to its pictures.
    static void hold(QWidget *widget, const QString &name, bool isKept)
    {
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(widget, name, isKept);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

private slots:
    void initTestCase()
    {
        zvtest::wearTheClientsLook();
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setTransport(
            std::make_unique<ZvScriptedTransport>());
        ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(current);
        ZvUBBriefItem::Data item;
        item.collectionId = current;
        item.code = QStringLiteral("600137");
        item.name = QStringLiteral("庚申猴票");
        ZvUBBriefInfo::Data data;
        data.items << ZvUBBriefItem(item);
        cache()->storeBriefInfo(ZvUBBriefInfo(data));
        QCoreApplication::processEvents();
    }

    void panel_data()
    {
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("mainHeight");
        QTest::addColumn<QString>("figures");
        QTest::newRow("low_empty") << 640 << 768 << "none";
        QTest::newRow("low") << 640 << 768 << "usual";
        // Beside the chart of a window of 768 pixels, and of one of 900.
        QTest::newRow("lowest") << 393 << 768 << "usual";
        QTest::newRow("lowest_levels") << 455 << 900 << "longest";
        QTest::newRow("high") << 950 << 1080 << "usual";
        QTest::newRow("high_long") << 950 << 1080 << "longest";
    }

    void panel()
    {
        QFETCH(int, height);
        QFETCH(int, mainHeight);
        QFETCH(QString, figures);
        Collection_DetailWidget panel;
        panel.resize(325, height);
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_adjustSize(
            QSize(1366, mainHeight));
        panel.show();
        QVERIFY(QTest::qWaitForWindowExposed(&panel));
        QVERIFY(QMetaObject::invokeMethod(&panel, "slot_adjustDealLatestLimit"));
        if (figures == QLatin1String("usual")) {
            fill(zvtest::quoteData(current), zvtest::dayData(current));
        } else if (figures == QLatin1String("longest")) {
            ZvUBTopFive::Data quote = zvtest::longestQuoteData(current);
            quote.name = QStringLiteral("庚申年生肖猴票整版八十枚带边纸厂铭纪念版");
            quote.code = QStringLiteral("88888888");
            fill(quote, zvtest::longestDayData(current));
        }
        hold(&panel, QStringLiteral("detailpanel_") + QTest::currentDataTag(), true);
    }

    void page_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("count");
        QTest::newRow("1366x768") << QSize(1366, 768) << 100;
        QTest::newRow("1366x768_empty") << QSize(1366, 768) << 0;
        QTest::newRow("1920x1080") << QSize(1920, 1080) << 246;
        QTest::newRow("3400x900") << QSize(3400, 900) << 363;
        QTest::newRow("250x600") << QSize(250, 600) << 30;
    }

    void page()
    {
        QFETCH(QSize, size);
        QFETCH(int, count);
        Market_DetailWidget page;
        page.resize(size);
        page.show();
        QVERIFY(QTest::qWaitForWindowExposed(&page));
        cache()->storeMarketDetail(zvtest::deals(count));
        hold(&page, QStringLiteral("detailpage_") + QTest::currentDataTag(), size.width() == 1366);
    }
};

ZV_TEST(DetailPicturesTest)
#include "test_detailpictures.moc"
