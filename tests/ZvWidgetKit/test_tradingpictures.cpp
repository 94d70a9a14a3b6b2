#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "orderrows.h"
#include "pictures.h"
#include "recordrows.h"
#include "support/testregistry.h"
#include "transactionbench.h"

#include <QtTest/QtTest>

namespace {

constexpr int Rows = 12;
constexpr int UsualWidth = 1366; // of the window whose pictures are kept

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvUBCapInfo money(const QList<ZvUBCapItem> &items, bool isLongest)
{
    ZvUBCapInfo::Data data;
    data.items = items;
    data.availableMoney = isLongest ? 900000000000000000 : 123456789;
    data.heldMarketValue = isLongest ? 900000000000000000 : 7654321;
    data.profit = isLongest ? -900000000000000000 : 4321;
    data.totalAssets = isLongest ? 900000000000000000 : 131111110;
    return ZvUBCapInfo(data);
}

QList<ZvUBRevokeItem> orders()
{
    QList<ZvUBRevokeItem> made;
    for (int number = Rows; number > 0; --number)
        made << zvtest::openOrder(number);
    return made;
}

QList<ZvUBDeliveryRecordItem> applications()
{
    QList<ZvUBDeliveryRecordItem> made;
    for (int number = Rows; number > 0; --number) {
        ZvUBDeliveryRecordItem::Data data = zvtest::deliveryData(number);
        data.state = number % 6;
        made << ZvUBDeliveryRecordItem(data);
    }
    return made;
}

void fill()
{
    cache()->storeCapInfo(money(zvtest::rowsOf(zvtest::holding, Rows), false));
    cache()->storeGatherInfo(
        ZvUBGatherInfo(ZvUBGatherInfo::sumOf(zvtest::rowsOf(zvtest::daySum, Rows))));
    cache()->storeRevokeList(orders());
    cache()->storeDealRecordList(zvtest::rowsOf(zvtest::dealRecord, Rows));
    cache()->storeDelegateToday(zvtest::rowsOf(zvtest::order, Rows));
    cache()->storeDelegateRecord(zvtest::rowsOf(zvtest::order, Rows));
    cache()->storeApplyList(zvtest::rowsOf(zvtest::application, Rows));
    cache()->storeMoneyFlowList(zvtest::rowsOf(zvtest::moneyFlow, Rows));
    cache()->storeDeliveryRecordList(applications());
}

void fillLongest()
{
    cache()->storeCapInfo(money({zvtest::longestHolding(), zvtest::holding(1)}, true));
    cache()->storeGatherInfo(ZvUBGatherInfo(ZvUBGatherInfo::sumOf({zvtest::longestDaySum()})));
    cache()->storeRevokeList(
        {zvtest::longestOpenOrder(2, true), zvtest::longestOpenOrder(1, false)});
    cache()->storeDealRecordList({zvtest::longestDealRecord()});
    cache()->storeDelegateToday({zvtest::longestOrder()});
    cache()->storeDelegateRecord({zvtest::longestOrder()});
    cache()->storeApplyList({zvtest::longestApplication()});
    cache()->storeMoneyFlowList({zvtest::longestMoneyFlow()});
    cache()->storeDeliveryRecordList(
        {zvtest::longestDelivery(2, 0), zvtest::longestDelivery(1, 1)});
}

void empty()
{
    cache()->storeCapInfo(ZvUBCapInfo());
    cache()->storeGatherInfo(ZvUBGatherInfo());
    cache()->storeRevokeList({});
    cache()->storeDealRecordList({});
    cache()->storeDelegateToday({});
    cache()->storeDelegateRecord({});
    cache()->storeApplyList({});
    cache()->storeMoneyFlowList({});
    cache()->storeDeliveryRecordList({});
}

} // namespace

// What the trading half looks like on each of its pages, after it was looked at.
class TradingPicturesTest : public QObject
{
    Q_OBJECT

private:
    static void addRows()
    {
        QTest::addColumn<int>("platform");
        QTest::addColumn<QSize>("window");
        QTest::addColumn<QSize>("size");
        QTest::addColumn<QStringList>("buttons");
        QTest::addColumn<QString>("figures");
        const char *platforms[] = {"ch", "lc"};
        // Of the window, and what it leaves to the trading half.
        const struct {
            const char *name;
            QSize window;
            QSize size;
        } sizes[] = {{"low", QSize(1280, 720), QSize(1280, 226)},
                     {"usual", QSize(UsualWidth, 768), QSize(UsualWidth, 226)},
                     {"high", QSize(1920, 1080), QSize(1920, 307)}};
        const QString query = QStringLiteral("pushButton_select");
        const struct {
            const char *name;
            QStringList buttons;
        } pages[] = {{"buy", {"pushButton_purchase"}},
                     {"daysums", {"pushButton_sell", "pushButton_dealData"}},
                     {"orders", {"pushButton_withdrawal"}},
                     {"delivery", {"pushButton_deliveryHandling"}},
                     {"deals", {query, "pushButton_select_historyDeal"}},
                     {"ordersoftheday", {query, "pushButton_select_currentDelegate"}},
                     {"ordersofthepast", {query, "pushButton_select_historyDelegate"}},
                     {"applications", {query, "pushButton_select_purchaseApplyRecord"}},
                     {"deliveries", {query, "pushButton_select_deliveryRecord"}},
                     {"moneyflow", {query, "pushButton_select_inputOutputRecord"}},
                     {"prepared", {"pushButton_prePay"}}}; // its rows stand with the ticket's
        for (int platform = 1; platform <= 2; ++platform) {
            for (const auto &size : sizes) {
                for (const auto &page : pages) {
                    QStringList states{"empty", "full", "longest"};
                    if (page.buttons.contains(QStringLiteral("pushButton_prePay")))
                        states = QStringList{"empty"};
                    for (const QString &figures : qAsConst(states))
                        QTest::addRow("%s_%s_%s_%s", page.name, qPrintable(figures),
                                      platforms[platform - 1], size.name)
                            << platform << size.window << size.size << page.buttons << figures;
                }
            }
        }
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }
    void init() { empty(); }
    void cleanupTestCase() { empty(); }

    void page_data() { addRows(); }
    void page()
    {
        QFETCH(int, platform);
        QFETCH(QSize, window);
        QFETCH(QSize, size);
        QFETCH(QStringList, buttons);
        QFETCH(QString, figures);
        zvtest::TransactionBench bench(platform, size);
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_adjustSize(window);
        bench.trading->resize(size);
        for (const QString &button : buttons)
            bench.click(button);
        // A page takes an empty answer for one only where it has asked.
        bench.kit()->settle();
        if (figures == QLatin1String("empty"))
            empty();
        else if (figures == QLatin1String("full"))
            fill();
        else
            fillLongest();
        // Neither the mouse nor the focus is in the picture.
        QTest::mouseMove(bench.trading.get(), QPoint(size.width() - 60, size.height() - 3));
        bench.trading->setFocus();
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(
            bench.trading.get(), QStringLiteral("trading_") + QTest::currentDataTag(),
            size.width() == UsualWidth && platform == 1);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

ZV_TEST(TradingPicturesTest)
#include "test_tradingpictures.moc"
