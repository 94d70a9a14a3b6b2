#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "detailfigures.h"
#include "pictures.h"
#include "support/testregistry.h"
#include "ticketbench.h"

#include <QtTest/QtTest>

using zvtest::TicketBench;

namespace {

const QString longName = QStringLiteral("庚申年生肖猴票整版八十枚带边纸厂铭纪念版");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvUBCapInfo holdings(int count, bool longest)
{
    ZvUBCapInfo::Data data;
    data.availableMoney = longest ? 900000000000000000 : 123456789;
    data.heldMarketValue = longest ? 900000000000000000 : 7654321;
    data.profit = longest ? -900000000000000000 : 4321;
    data.totalAssets = longest ? 900000000000000000 : 131111110;
    for (int row = 0; row < count; ++row) {
        ZvUBCapItem::Data item;
        item.collectionId = QString::number(1001 + row);
        item.code = QString::number(600137 + row);
        item.name = longest ? longName : QStringLiteral("藏品%1").arg(row);
        item.quantity = longest ? 9999999999 : 30 + row;
        item.sellable = longest ? 9999999999 : 12 + row;
        item.cost = longest ? 900000000000000000 : 300000 + row * 777;
        item.latest = longest ? 13107199 : 10000 + (row % 3 - 1) * 120;
        data.items << ZvUBCapItem(item);
    }
    return ZvUBCapInfo(data);
}

ZvUBGatherInfo deals(int count, bool longest)
{
    QList<ZvUBGatherItem> items;
    for (int row = 0; row < count; ++row) {
        ZvUBGatherItem::Data item;
        item.collectionId = QString::number(1001 + row);
        item.code = QString::number(600137 + row);
        item.name = longest ? longName : QStringLiteral("藏品%1").arg(row);
        item.buyQuantity = longest ? 9999999999 : 30 + row;
        item.buyAmount = longest ? 900000000000000000 : 300000 + row * 777;
        item.buyFee = longest ? 900000000000000000 : 900 + row;
        item.sellQuantity = longest ? 1 : 31 - row;
        item.sellAmount = longest ? 13107199 : 310000;
        item.sellFee = longest ? 900000000000000000 : 930;
        item.sellProfit = longest ? -900000000000000000 : 4000 - row * 2100;
        items << ZvUBGatherItem(item);
    }
    return ZvUBGatherInfo(ZvUBGatherInfo::sumOf(items));
}

} // namespace

// What the page of orders looks like, after it was looked at.
class TicketPicturesTest : public QObject
{
    Q_OBJECT

private:
    // Lays the page out and holds it to its pictures, without mouse and text cursor in them.
    static void hold(TicketBench *bench, const QString &name, bool isKept)
    {
        QTest::mouseMove(bench->page.get(), QPoint(1000, 150));
        bench->page->setFocus();
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(bench->page.get(), name, isKept);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

    static void resize(TicketBench *bench, int height, int mainHeight, int width = 1242)
    {
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_adjustSize(
            QSize(width + 124, mainHeight));
        QCoreApplication::processEvents();
        bench->page->resize(width, height);
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void page_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::addColumn<int>("mode");
        QTest::addColumn<int>("height");
        QTest::addColumn<int>("mainHeight");
        QTest::addColumn<QString>("figures");
        const auto ch = ZvServerConfig::ChengHu;
        const auto lc = ZvServerConfig::LanChuan;
        QTest::newRow("buy_low_ch") << ch << 0 << 226 << 768 << "usual";
        QTest::newRow("buy_high_ch") << ch << 0 << 307 << 1080 << "usual";
        QTest::newRow("sell_low_ch") << ch << 1 << 226 << 768 << "usual";
        QTest::newRow("sell_higher_lc") << lc << 1 << 480 << 1080 << "usual";
        QTest::newRow("buy_low_lc") << lc << 0 << 226 << 768 << "usual";
        QTest::newRow("empty_low_ch") << ch << 0 << 226 << 768 << "none";
        QTest::newRow("longest_low_ch") << ch << 0 << 226 << 768 << "longest";
        QTest::newRow("longest_high_lc") << lc << 1 << 307 << 1080 << "longest";
        QTest::newRow("deals_low_ch") << ch << 0 << 226 << 768 << "deals";
        QTest::newRow("deals_longest_high_lc") << lc << 0 << 307 << 1080 << "deals longest";
        QTest::newRow("prepared_low_ch") << ch << 2 << 226 << 768 << "usual";
        QTest::newRow("prepared_high_lc") << lc << 2 << 307 << 1080 << "usual";
    }

    void page()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        QFETCH(int, mode);
        QFETCH(int, height);
        QFETCH(int, mainHeight);
        QFETCH(QString, figures);
        TicketBench bench(platform);
        bench.page->setTicketMode(mode);
        resize(&bench, height, mainHeight);
        const bool longest = figures.contains(QLatin1String("longest"));
        if (figures == QLatin1String("none")) {
            bench.storeBrief({});
            ZvUBTopFive::Data nothing;
            nothing.collectionId = QString();
            bench.storeQuote(nothing);
            bench.storeMoney(0);
            cache()->storeGatherInfo(ZvUBGatherInfo());
        } else {
            if (longest)
                bench.storeBrief({{"1001", "88888888", longName}});
            cache()->storeCapInfo(holdings(longest ? 3 : 12, longest));
            cache()->storeGatherInfo(deals(longest ? 3 : 12, longest));
            bench.storeQuote(longest ? zvtest::longestQuoteData("1001")
                                     : zvtest::quoteData("1001"));
            bench.click("label_latest_value");
            bench.typeCount(longest ? "100000000" : "25");
        }
        if (figures.startsWith(QLatin1String("deals")))
            bench.click("pushButton_dealData");
        if (mode == DealWidget_BuySell::PreparedMode) {
            bench.order();
            bench.click("pushButton_out");
            bench.order();
            auto *model = bench.prepared()->model();
            QVERIFY(model->setData(model->index(1, 0), Qt::Checked, Qt::CheckStateRole));
            // The clock is not to be in the picture.
            bench.prepared()->setColumnHidden(6, true);
        }
        hold(&bench, QStringLiteral("ticket_") + QTest::currentDataTag(),
             platform == ZvServerConfig::ChengHu || height == 480);
    }

    // Beside the column of buttons in a wide window.
    void wide()
    {
        TicketBench bench;
        resize(&bench, 307, 1080, 1796);
        cache()->storeCapInfo(holdings(12, false));
        bench.click("label_latest_value");
        hold(&bench, QStringLiteral("ticket_wide"), false);
    }
};

ZV_TEST(TicketPicturesTest)
#include "test_ticketpictures.moc"
