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

#include <limits>

namespace {

constexpr QSize PageSize(1366, 320);

const QString longName = QStringLiteral("庚申年生肖猴票整版八十枚带边纸厂铭纪念版");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

// An order of the longest figures that the exchange deals in.
ZvUBRevokeItem extremeOrder(int number, bool isTicked)
{
    ZvUBRevokeItem::Data data = zvtest::openOrder(number).data();
    data.orderNumber = std::numeric_limits<int>::max() - number;
    data.code = QStringLiteral("88888888");
    data.name = longName;
    data.price = 13107199;
    data.quantity = std::numeric_limits<int>::max();
    data.filled = 1234567890;
    data.amount = 899999999999999999;
    data.frozen = 899999999999999999;
    ZvUBRevokeItem item(data);
    item.setUserChecked(isTicked);
    return item;
}

ZvUBDeliveryRecordItem extremeDelivery(int number, int state)
{
    ZvUBDeliveryRecordItem::Data data = zvtest::deliveryData(number);
    data.orderNumber = QStringLiteral("T2020010199999999%1").arg(number);
    data.code = QStringLiteral("88888888");
    data.name = longName;
    data.quantity = std::numeric_limits<int>::max();
    data.fee = 899999999999999999;
    data.address = QStringLiteral("内蒙古自治区呼伦贝尔市鄂伦春自治旗大杨树镇向阳路一百二十八号");
    data.consignee = QStringLiteral("阿卜杜热西提·买买提");
    data.phone = QStringLiteral("008613912345678");
    data.state = state;
    return ZvUBDeliveryRecordItem(data);
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
                                       : extremeOrder(number, number % 3 == 0));
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
                                        : extremeDelivery(number, number % 6));
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
            const ZvUBTradeItem refused = preparedOrder(longName, 2, 131071.98F, 2147483647);
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
