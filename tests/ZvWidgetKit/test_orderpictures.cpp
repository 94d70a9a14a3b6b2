#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/dealwidget_prepay_tablemodel.h"
#include "ZvWidgetKit/dealwidget_prepay_tableview.h"
#include "ZvWidgetKit/dealwidget_revoke.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord.h"
#include "orderrows.h"
#include "pictures.h"
#include "support/testregistry.h"
#include "tablepagebench.h"

#include <QtTest/QtTest>

namespace {

constexpr QSize PageSize(1366, 320);

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvUBTradeItem preparedOrder(const QString &name, int direction, float price, int count)
{
    ZvUBTradeItem item;
    item.code = QStringLiteral("600137");
    item.name = name;
    item.direction = direction;
    item.price = price;
    item.count = count;
    item.createTime = QStringLiteral("09:30:01");
    return item;
}

} // namespace

// What the tables with ticks and buttons look like, after they were looked at.
class OrderPicturesTest : public QObject
{
    Q_OBJECT

private:
    static void hold(QWidget *widget, const QString &name)
    {
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();
        const QString difference = zvtest::differenceFromPictures(widget, name);
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void init()
    {
        cache()->storeRevokeList({});
        cache()->storeDeliveryRecordList({});
    }

    void openOrders_data()
    {
        QTest::addColumn<QString>("rows");
        QTest::newRow("empty") << "none";
        QTest::newRow("full") << "usual";
        QTest::newRow("long") << "longest";
    }

    void openOrders()
    {
        QFETCH(QString, rows);
        zvtest::TablePageBench<DealWidget_Revoke> bench;
        bench.show(PageSize);
        QList<ZvUBRevokeItem> orders;
        for (int number = 12; rows != "none" && number > 0; --number)
            orders << (rows == "usual" ? zvtest::openOrder(number)
                                       : zvtest::longestOpenOrder(number, number % 3 == 0));
        cache()->storeRevokeList(orders);
        if (rows == "usual")
            bench.click("pushButton_allSelect");
        QTest::mouseMove(bench.page->windowHandle(), QPoint(1300, 10));
        bench.page->setFocus();
        hold(bench.page.get(), QStringLiteral("openorders_") + QTest::currentDataTag());
    }

    void deliveries_data()
    {
        QTest::addColumn<QString>("rows");
        QTest::newRow("empty") << "none";
        QTest::newRow("full") << "usual";
        QTest::newRow("long") << "longest";
        QTest::newRow("hovered") << "usual";
    }

    void deliveries()
    {
        QFETCH(QString, rows);
        zvtest::TablePageBench<DealWidget_Select_DeliveryRecord> bench;
        bench.show(PageSize);
        QList<ZvUBDeliveryRecordItem> records;
        for (int number = 8; rows != "none" && number > 0; --number) {
            ZvUBDeliveryRecordItem::Data data = zvtest::deliveryData(number);
            data.state = number % 6;
            records << (rows == "usual" ? ZvUBDeliveryRecordItem(data)
                                        : zvtest::longestDelivery(number, number % 6));
        }
        cache()->storeDeliveryRecordList(records);
        // The column of the buttons lies beyond the right edge until it is scrolled to.
        bench.table()->scrollTo(bench.model()->index(0, 13));
        QPoint mouse(1300, 10);
        if (QTest::currentDataTag() == QLatin1String("hovered")) {
            const QRect cell = bench.table()->visualRect(bench.model()->index(0, 13));
            mouse = bench.table()->viewport()->mapTo(bench.page.get(), cell.center());
        }
        QTest::mouseMove(bench.page->windowHandle(), mouse);
        bench.page->setFocus();
        hold(bench.page.get(), QStringLiteral("deliveries_") + QTest::currentDataTag());
    }

    void preparedOrders_data()
    {
        QTest::addColumn<bool>("isFull");
        QTest::newRow("empty") << false;
        QTest::newRow("full") << true;
    }

    void preparedOrders()
    {
        QFETCH(bool, isFull);
        DealWidget_PrePay_TableModel model;
        DealWidget_PrePay_TableView view;
        view.setModel(&model);
        view.setupView();
        view.resize(960, 200);
        if (isFull) {
            model.addTradeItem(preparedOrder(QStringLiteral("庚申猴票"), 1, 10.5F, 10));
            const ZvUBTradeItem refused
                = preparedOrder(QStringLiteral("庚申年生肖猴票整版八十枚带边纸厂铭纪念版"), 2,
                                131071.98F, 2147483647);
            model.addTradeItem(refused);
            const ZvUBTradeItem second = preparedOrder(QStringLiteral("藏品"), 2, 0.01F, 1);
            model.addTradeItem(second);
            model.setData(model.index(1, 0), 2, Qt::CheckStateRole);
            model.markFailed(refused.md5, QStringLiteral("可用资金不足，需要 281,474,976.71 元"));
            model.markFailed(second.md5, QString());
        }
        view.show();
        QVERIFY(QTest::qWaitForWindowExposed(&view));
        hold(&view, QStringLiteral("preparedorders_") + QTest::currentDataTag());
    }
};

ZV_TEST(OrderPicturesTest)
#include "test_orderpictures.moc"
