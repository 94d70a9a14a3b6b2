#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvModelKit/zvubtradeitem.h"

#include "support/testregistry.h"

#include <QSet>
#include <QThread>
#include <QtTest>

#include <limits>
#include <vector>

namespace {

ZvUBEntrustItem::Data order()
{
    ZvUBEntrustItem::Data data;
    data.orderNumber = 2147483647;
    data.direction = zvub::Sell;
    data.collectionId = "1001";
    data.code = "100001";
    data.name = "庚申猴票";
    data.key = "0123456789abcdef0123456789abcdef";
    data.price = 1234;
    data.quantity = 100;
    data.filled = 30;
    data.withdrawn = 0;
    data.amount = 37050;
    data.fee = 112;
    data.frozen = 5;
    data.state = ZvUBEntrustItem::PartlyFilled;
    data.time = 1577842200000;
    return data;
}

} // namespace

// Orders sent, orders to take back, and orders written down for later.
class OrdersTest : public QObject
{
    Q_OBJECT

private slots:
    void orderColumns();
    void orderStates_data();
    void orderStates();
    void anOrderWithoutADealHasNoAverage();
    void aDefaultOrder();
    void revokeColumns();
    void revokeNumbers();
    void ticksBelongToOneCopy();
    void revokeEqualityKnowsTheTick();
    void tradeColumns();
    void tradeStates();
    void tradePrices_data();
    void tradePrices();
    void aCopyKeepsItsKey();
    void keysOfLiveItemsDiffer();
    void keysOfManyThreadsDiffer();
};

void OrdersTest::orderColumns()
{
    QCOMPARE(ZvUBEntrustItem::headerList().size(), 16);
    const ZvUBEntrustItem item(order());
    const QStringList expected{"1001",
                               "2147483647",
                               "100001",
                               "庚申猴票",
                               "卖出",
                               "12.34",
                               "100",
                               "30",
                               "12.35",
                               "0",
                               "0123456789abcdef0123456789abcdef",
                               "1.12",
                               "部分成交",
                               "2",
                               "370.50",
                               "2020-01-01 09:30:00"};
    QCOMPARE(expected.size(), 16);
    for (int column = 0; column < expected.size(); ++column) {
        QCOMPARE(item.displayData(column), expected.at(column));
    }
    QCOMPARE(item.displayData(-1), QString());
    QCOMPARE(item.displayData(16), QString());
    QCOMPARE(item.direction(), 2);
}

void OrdersTest::orderStates_data()
{
    QTest::addColumn<int>("state");
    QTest::addColumn<QString>("text");
    QTest::addColumn<qint64>("open");
    QTest::newRow("unknown") << 0 << "--" << qint64(0);
    QTest::newRow("open") << 1 << "已申报" << qint64(70);
    QTest::newRow("partly filled") << 2 << "部分成交" << qint64(70);
    QTest::newRow("filled") << 3 << "全部成交" << qint64(0);
    QTest::newRow("withdrawn") << 4 << "已撤单" << qint64(0);
    QTest::newRow("partly withdrawn") << 5 << "部成部撤" << qint64(0);
    QTest::newRow("refused") << 6 << "废单" << qint64(0);
    QTest::newRow("of a newer server") << 99 << "--" << qint64(0);
}

void OrdersTest::orderStates()
{
    QFETCH(int, state);
    QFETCH(QString, text);
    QFETCH(qint64, open);
    ZvUBEntrustItem::Data data = order();
    data.state = state;
    const ZvUBEntrustItem item(data);
    QCOMPARE(item.displayData(12), text);
    QCOMPARE(item.displayData(13), QString::number(state));
    QCOMPARE(item.openQuantity(), open);
}

void OrdersTest::anOrderWithoutADealHasNoAverage()
{
    ZvUBEntrustItem::Data data = order();
    data.filled = data.amount = 0;
    QCOMPARE(ZvUBEntrustItem(data).displayData(8), QString("--"));
    QCOMPARE(ZvUBEntrustItem(data).displayData(14), QString("0.00"));
    data.filled = 200; // more than ordered: nothing is open rather than a negative rest
    QCOMPARE(ZvUBEntrustItem(data).openQuantity(), qint64(0));
}

void OrdersTest::aDefaultOrder()
{
    const ZvUBEntrustItem item;
    for (int column : {4, 5, 6, 8, 12, 15}) {
        QCOMPARE(item.displayData(column), QString("--"));
    }
    QCOMPARE(item.direction(), 0);
    QVERIFY(item == ZvUBEntrustItem(ZvUBEntrustItem::Data()));
    QVERIFY(item != ZvUBEntrustItem(order()));
}

void OrdersTest::revokeColumns()
{
    const QStringList headers = ZvUBRevokeItem::headerListForModelUse();
    QCOMPARE(headers.size(), 17);
    for (int column = 0; column < 16; ++column) {
        QVERIFY(!headers.at(column).isEmpty());
    }
    QVERIFY(headers.at(16).isEmpty());

    const ZvUBRevokeItem item(order());
    const QStringList expected{"",
                               "1001",
                               "2147483647",
                               "100001",
                               "庚申猴票",
                               "卖出",
                               "12.34",
                               "100",
                               "30",
                               "70",
                               "0123456789abcdef0123456789abcdef",
                               "0.05",
                               "部分成交",
                               "2",
                               "370.50",
                               "2020-01-01 09:30:00",
                               ""};
    QCOMPARE(expected.size(), 17);
    for (int column = 0; column < expected.size(); ++column) {
        QCOMPARE(item.displayDataForModelUse(column), expected.at(column));
    }
    QCOMPARE(item.displayDataForModelUse(17), QString());
}

void OrdersTest::revokeNumbers()
{
    const ZvUBRevokeItem item(order());
    QCOMPARE(item.getCollectionID(), 2147483647);
    QCOMPARE(item.getTypeID(), 2);
    ZvUBRevokeItem::Data data = order();
    data.direction = zvub::Buy;
    QCOMPARE(ZvUBRevokeItem(data).getTypeID(), 1);
    static_assert(std::is_same_v<decltype(&ZvUBRevokeItem::getCollectionID),
                                 int (ZvUBRevokeItem::*)() const>);
}

void OrdersTest::ticksBelongToOneCopy()
{
    ZvUBRevokeItem item(order());
    QVERIFY(!item.getUserChecked());
    item.setUserChecked(true);
    ZvUBRevokeItem copy = item;
    QVERIFY(copy.getUserChecked());
    copy.setUserChecked(false);
    QVERIFY(item.getUserChecked());
    // Ticking writes no text anew.
    QCOMPARE(static_cast<const void *>(&copy.data()), static_cast<const void *>(&item.data()));
}

void OrdersTest::revokeEqualityKnowsTheTick()
{
    ZvUBRevokeItem item(order());
    QVERIFY(item == ZvUBRevokeItem(order()));
    item.setUserChecked(true);
    QVERIFY(item != ZvUBRevokeItem(order()));
    QVERIFY(ZvUBRevokeItem() != ZvUBRevokeItem(order()));
}

void OrdersTest::tradeColumns()
{
    QCOMPARE(ZvUBTradeItem::dataCountForModelUse(), 8);
    QCOMPARE(ZvUBTradeItem::headerListForModelUse().size(), 8);
    ZvUBTradeItem item;
    item.code = "100001";
    item.name = "庚申猴票";
    item.direction = 1;
    item.price = 12.34F;
    item.count = 50;
    item.createTime = "09:30:01";
    const QStringList expected{"",      "100001", "庚申猴票", "买入",
                               "12.34", "50",     "09:30:01", "未发送"};
    for (int column = 0; column < expected.size(); ++column) {
        QCOMPARE(item.displayDataForModelUse(column), expected.at(column));
    }
    QCOMPARE(item.displayDataForModelUse(8), QString());
    QCOMPARE(item.displayDataForModelUse(-1), QString());
    item.direction = 2;
    QCOMPARE(item.displayDataForModelUse(3), QString("卖出"));
}

void OrdersTest::tradeStates()
{
    ZvUBTradeItem item;
    QCOMPARE(item.state, 1);
    QVERIFY(!item.checked);
    QVERIFY(item.message.isEmpty());
    item.state = 3;
    QCOMPARE(item.displayDataForModelUse(7), QString("发送失败"));
    item.message = "可用资金不足";
    QCOMPARE(item.displayDataForModelUse(7), QString("发送失败：可用资金不足"));
    item.state = 77;
    QCOMPARE(item.displayDataForModelUse(7), QString("--"));
}

void OrdersTest::tradePrices_data()
{
    QTest::addColumn<float>("price");
    QTest::addColumn<QString>("text");
    QTest::newRow("nothing") << 0.0F << "0.00";
    QTest::newRow("a fen") << 0.01F << "0.01";
    QTest::newRow("not what truncation gives") << 8.29F << "8.29";
    QTest::newRow("the highest price") << 131071.99F << "131071.99";
    QTest::newRow("negative") << -1.0F << "--";
    QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN() << "--";
    QTest::newRow("endless") << std::numeric_limits<float>::infinity() << "--";
    QTest::newRow("greatest") << std::numeric_limits<float>::max() << "--";
}

void OrdersTest::tradePrices()
{
    QFETCH(float, price);
    QFETCH(QString, text);
    ZvUBTradeItem item;
    item.price = price;
    QCOMPARE(item.displayDataForModelUse(4), text);
}

void OrdersTest::aCopyKeepsItsKey()
{
    const ZvUBTradeItem item;
    ZvUBTradeItem copy(item);
    QCOMPARE(copy.md5, item.md5);
    ZvUBTradeItem assigned;
    QVERIFY(assigned.md5 != item.md5);
    assigned = item;
    QCOMPARE(assigned.md5, item.md5);
}

void OrdersTest::keysOfLiveItemsDiffer()
{
    const QRegularExpression form("^[0-9a-f]{32}$");
    std::vector<ZvUBTradeItem> items(10000);
    QSet<QString> keys;
    for (const ZvUBTradeItem &item : items) {
        QVERIFY2(form.match(item.md5).hasMatch(), qPrintable(item.md5));
        keys.insert(item.md5);
    }
    QCOMPARE(keys.size(), 10000);
}

void OrdersTest::keysOfManyThreadsDiffer()
{
    constexpr int threads = 4;
    std::vector<QStringList> made(threads);
    std::vector<std::unique_ptr<QThread>> workers;
    for (QStringList &keys : made) {
        workers.emplace_back(QThread::create([&keys] {
            for (int count = 0; count < 1000; ++count) {
                keys.append(ZvUBTradeItem().md5);
            }
        }));
        workers.back()->start();
    }
    QSet<QString> all;
    for (int number = 0; number < threads; ++number) {
        QVERIFY(workers[static_cast<std::size_t>(number)]->wait(30000));
        for (const QString &key : made[static_cast<std::size_t>(number)]) {
            all.insert(key);
        }
    }
    QCOMPARE(all.size(), threads * 1000);
}

ZV_TEST(OrdersTest)
#include "test_orders.moc"
