#include "ZvModelKit/zvubproitem.h"

#include "support/testregistry.h"

#include <QtTest>

#include <limits>

namespace {

ZvUBProItem::Data day()
{
    ZvUBProItem::Data data;
    data.collectionId = "1001";
    data.open = 1000;
    data.high = 1100;
    data.low = 990;
    data.volume = 300;
    data.amount = 310001;
    data.listed = 10000;
    data.outer = 200;
    data.inner = 100;
    data.buyQuantity = 30;
    data.sellQuantity = 90;
    return data;
}

} // namespace

// The day's figures of a collection.
class ProItemTest : public QObject
{
    Q_OBJECT

private slots:
    void properties();
    void beforeTheFirstDeal();
    void aDefaultItem();
    void theCompositeHasNoAverage();
    void balanceOfOrders_data();
    void balanceOfOrders();
    void extremeFigures();
    void equality();
};

void ProItemTest::properties()
{
    const QStringList expected{"10.33",   "3.00%", "10.00",   "300", "11.00",
                               "-50.00%", "9.90",  "3100.01", "200", "100"};
    const ZvUBProItem item(day());
    for (int property = 0; property < expected.size(); ++property) {
        QCOMPARE(item.getPropertyString(property), expected.at(property));
    }
    for (int property : {-1, 10, std::numeric_limits<int>::min()}) {
        QCOMPARE(item.getPropertyString(property), QString());
    }
}

void ProItemTest::beforeTheFirstDeal()
{
    ZvUBProItem::Data data;
    data.collectionId = "1001";
    data.listed = 10000;
    const ZvUBProItem item(data);
    const QStringList expected{"--", "0.00%", "--", "0", "--", "--", "--", "0.00", "0", "0"};
    for (int property = 0; property < expected.size(); ++property) {
        QCOMPARE(item.getPropertyString(property), expected.at(property));
    }
}

void ProItemTest::aDefaultItem()
{
    const ZvUBProItem item;
    for (int property : {0, 1, 2, 4, 5, 6}) {
        QCOMPARE(item.getPropertyString(property), QString("--"));
    }
}

void ProItemTest::theCompositeHasNoAverage()
{
    ZvUBProItem::Data data = day();
    data.collectionId = "-1";
    QCOMPARE(ZvUBProItem(data).getPropertyString(0), QString("--"));
    QCOMPARE(ZvUBProItem(data).getPropertyString(1), QString("3.00%"));
}

void ProItemTest::balanceOfOrders_data()
{
    QTest::addColumn<qint64>("buys");
    QTest::addColumn<qint64>("sells");
    QTest::addColumn<QString>("text");
    QTest::newRow("nobody waits") << qint64(0) << qint64(0) << "--";
    QTest::newRow("buyers only") << qint64(5) << qint64(0) << "100.00%";
    QTest::newRow("sellers only") << qint64(0) << qint64(5) << "-100.00%";
    QTest::newRow("balanced") << qint64(7) << qint64(7) << "0.00%";
    QTest::newRow("unknown") << zvub::noValue << qint64(7) << "--";
}

void ProItemTest::balanceOfOrders()
{
    QFETCH(qint64, buys);
    QFETCH(qint64, sells);
    QFETCH(QString, text);
    ZvUBProItem::Data data = day();
    data.buyQuantity = buys;
    data.sellQuantity = sells;
    QCOMPARE(ZvUBProItem(data).getPropertyString(5), text);
}

void ProItemTest::extremeFigures()
{
    constexpr qint64 greatest = std::numeric_limits<qint64>::max();
    ZvUBProItem::Data data = day();
    data.volume = data.amount = data.listed = data.outer = greatest;
    data.buyQuantity = data.sellQuantity = greatest;
    const ZvUBProItem item(data);
    QCOMPARE(item.getPropertyString(0), QString("0.01"));
    QCOMPARE(item.getPropertyString(1), QString("100.00%"));
    QCOMPARE(item.getPropertyString(3), QString("9223372036854775807"));
    QCOMPARE(item.getPropertyString(5), QString("0.00%"));
    QCOMPARE(item.getPropertyString(7), QString("92233.72万亿"));
    data.amount = data.volume = -1;
    QCOMPARE(ZvUBProItem(data).getPropertyString(7), QString("--"));
    QCOMPARE(ZvUBProItem(data).getPropertyString(3), QString("--"));
}

void ProItemTest::equality()
{
    QVERIFY(ZvUBProItem(day()) == ZvUBProItem(day()));
    ZvUBProItem::Data data = day();
    data.inner += 1;
    QVERIFY(ZvUBProItem(data) != ZvUBProItem(day()));
}

ZV_TEST(ProItemTest)
#include "test_proitem.moc"
