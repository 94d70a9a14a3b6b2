#include "ZvModelKit/zvubapplyitem.h"
#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"

#include "support/testregistry.h"

#include <QtTest>

#include <limits>

namespace {

constexpr qint64 opening = 1577842200000; // 2020-01-01 09:30 on the exchange
constexpr qint64 greatest = std::numeric_limits<qint64>::max();

ZvUBDealItem::Data deal()
{
    ZvUBDealItem::Data data;
    data.sequence = 7;
    data.time = opening + 1000;
    data.price = 1234;
    data.quantity = 20;
    data.direction = zvub::Buy;
    data.previousClose = 1200;
    return data;
}

ZvUBDeliveryRecordItem::Data delivery()
{
    ZvUBDeliveryRecordItem::Data data;
    data.deliveryId = "88";
    data.orderNumber = "TH20200101000088";
    data.collectionId = "1001";
    data.code = "100001";
    data.name = "庚申猴票";
    data.quantity = 3;
    data.fee = 1500;
    data.time = opening;
    data.consignee = "张三";
    data.phone = "13800000000";
    data.address = "上海市";
    data.state = ZvUBDeliveryRecordItem::Reviewing;
    return data;
}

// Compares all texts of an item with `expected`, and that none stands before or behind them.
template <typename Item>
void compareTexts(const Item &item, QString (Item::*text)(int) const, const QStringList &expected)
{
    for (int column = 0; column < expected.size(); ++column) {
        QCOMPARE((item.*text)(column), expected.at(column));
    }
    QCOMPARE((item.*text)(-1), QString());
    QCOMPARE((item.*text)(expected.size()), QString());
}

} // namespace

// What has happened: deals, applications, deliveries and movements of money.
class RecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void dealColumns();
    void dealPriceColours_data();
    void dealPriceColours();
    void dealSideColours_data();
    void dealSideColours();
    void aDealWithoutFigures();
    void dealRecordColumns();
    void aDealRecordsAmountStaysAtTheEnd();
    void applicationColumns();
    void applicationStates();
    void deliveryColumns();
    void deliveryStates();
    void deliveryFieldsForACancellation();
    void moneyFlowColumns();
    void moneyOut();
    void equality();
};

void RecordsTest::dealColumns()
{
    QCOMPARE(ZvUBDealItem::dataCountForModelUse(), 4);
    QCOMPARE(ZvUBDealItem::headerListForModelUse().size(), 4);
    compareTexts(ZvUBDealItem(deal()), &ZvUBDealItem::displayDataForModelUse,
                 {"09:30:01", "12.34", "20", "买入"});
}

void RecordsTest::dealPriceColours_data()
{
    QTest::addColumn<qint64>("price");
    QTest::addColumn<qint64>("previousClose");
    QTest::addColumn<int>("color");
    QTest::newRow("above") << qint64(1201) << qint64(1200) << int(Qt::red);
    QTest::newRow("below") << qint64(1199) << qint64(1200) << int(Qt::green);
    QTest::newRow("equal") << qint64(1200) << qint64(1200) << int(Qt::white);
    QTest::newRow("nothing to compare with") << qint64(1200) << zvub::noValue << int(Qt::white);
    QTest::newRow("no price") << zvub::noValue << qint64(1200) << int(Qt::white);
}

void RecordsTest::dealPriceColours()
{
    QFETCH(qint64, price);
    QFETCH(qint64, previousClose);
    QFETCH(int, color);
    ZvUBDealItem::Data data = deal();
    data.price = price;
    data.previousClose = previousClose;
    QCOMPARE(ZvUBDealItem(data).displayColorIdForModelUse(1), color);
}

void RecordsTest::dealSideColours_data()
{
    QTest::addColumn<int>("direction");
    QTest::addColumn<int>("color");
    QTest::newRow("buyer") << 1 << int(Qt::red);
    QTest::newRow("seller") << 2 << int(Qt::green);
    QTest::newRow("neither") << 0 << int(Qt::white);
}

void RecordsTest::dealSideColours()
{
    QFETCH(int, direction);
    QFETCH(int, color);
    ZvUBDealItem::Data data = deal();
    data.direction = direction;
    const ZvUBDealItem item(data);
    QCOMPARE(item.displayColorIdForModelUse(2), color);
    QCOMPARE(item.displayColorIdForModelUse(3), color);
    for (int column : {0, -1, 4}) {
        QCOMPARE(item.displayColorIdForModelUse(column), int(Qt::white));
    }
}

void RecordsTest::aDealWithoutFigures()
{
    compareTexts(ZvUBDealItem(), &ZvUBDealItem::displayDataForModelUse, {"--", "--", "--", "--"});
}

void RecordsTest::dealRecordColumns()
{
    QCOMPARE(ZvUBDealRecordItem::headerListForModelUse().size(), 9);
    ZvUBDealRecordItem::Data data;
    data.direction = 1;
    data.code = "100001";
    data.name = "庚申猴票";
    data.price = 1234;
    data.quantity = 20;
    data.fee = 74;
    data.time = opening;
    data.number = 4711;
    const ZvUBDealRecordItem item(data);
    compareTexts(item, &ZvUBDealRecordItem::displayDataForModelUse,
                 {"100001", "庚申猴票", "买入", "12.34", "20", "246.80", "0.74",
                  "2020-01-01 09:30:00", "4711"});
    QCOMPARE(item.direction(), 1);
    compareTexts(ZvUBDealRecordItem(), &ZvUBDealRecordItem::displayDataForModelUse,
                 {"", "", "--", "--", "--", "--", "--", "--", "--"});
}

void RecordsTest::aDealRecordsAmountStaysAtTheEnd()
{
    ZvUBDealRecordItem::Data data;
    data.price = data.quantity = data.number = greatest;
    data.time = greatest;
    const ZvUBDealRecordItem item(data);
    QCOMPARE(item.displayDataForModelUse(5), QString("92233720368547758.07"));
    QCOMPARE(item.displayDataForModelUse(4), QString("9223372036854775807"));
    QCOMPARE(item.displayDataForModelUse(7), QString("--"));
}

void RecordsTest::applicationColumns()
{
    QCOMPARE(ZvUBApplyItem::headerListForModelUse().size(), 9);
    ZvUBApplyItem::Data data;
    data.code = "100001";
    data.name = "庚申猴票";
    data.price = 1000;
    data.quantity = 10;
    data.time = opening;
    data.number = 12;
    compareTexts(ZvUBApplyItem(data), &ZvUBApplyItem::displayDataForModelUse,
                 {"100001", "庚申猴票", "10.00", "10", "100.00", "--", "待抽签",
                  "2020-01-01 09:30:00", "12"});
    data.allotted = 0;
    data.state = ZvUBApplyItem::Missed;
    QCOMPARE(ZvUBApplyItem(data).displayDataForModelUse(5), QString("0"));
    QCOMPARE(ZvUBApplyItem(data).displayDataForModelUse(6), QString("未中签"));
}

void RecordsTest::applicationStates()
{
    const QStringList names{"待抽签", "已中签", "未中签", "已撤销", "--"};
    for (int state = 0; state < names.size(); ++state) {
        QCOMPARE(ZvUBApplyItem::stateText(state), names.at(state));
    }
}

void RecordsTest::deliveryColumns()
{
    const QStringList headers = ZvUBDeliveryRecordItem::headerList();
    QCOMPARE(headers.size(), 14);
    QVERIFY(!headers.at(13).isEmpty());
    compareTexts(ZvUBDeliveryRecordItem(delivery()), &ZvUBDeliveryRecordItem::displayData,
                 {"88", "TH20200101000088", "100001", "庚申猴票", "3", "15.00", "上海市", "张三",
                  "13800000000", "1001", "2", "待审核", "2020-01-01 09:30:00", ""});
}

void RecordsTest::deliveryStates()
{
    const QStringList names{"--", "已取消", "待审核", "备货中", "已发货", "已拒绝", "--"};
    for (int state = 0; state < names.size(); ++state) {
        QCOMPARE(ZvUBDeliveryRecordItem::stateText(state), names.at(state));
    }
    // 2 and nothing else can be cancelled, so a default row must not be 2.
    QCOMPARE(int(ZvUBDeliveryRecordItem::Reviewing), 2);
    QVERIFY(ZvUBDeliveryRecordItem().state() != 2);
}

void RecordsTest::deliveryFieldsForACancellation()
{
    const ZvUBDeliveryRecordItem item(delivery());
    QCOMPARE(item.state(), 2);
    QCOMPARE(item.orderNumber(), QString("TH20200101000088"));
    QCOMPARE(item.collectionName(), QString("庚申猴票"));
    QCOMPARE(item.quantity(), QString("3"));
    QCOMPARE(item.deliveryId(), QString("88"));
    QCOMPARE(ZvUBDeliveryRecordItem().deliveryId(), QString());
}

void RecordsTest::moneyFlowColumns()
{
    QCOMPARE(ZvUBMoneyFlowItem::headerListForModelUse().size(), 6);
    ZvUBMoneyFlowItem::Data data;
    data.number = 31;
    data.moneyIn = 1;
    data.amount = 1234567;
    data.time = opening;
    data.note = "工商银行 尾号1234";
    data.state = ZvUBMoneyFlowItem::Pending;
    const ZvUBMoneyFlowItem item(data);
    compareTexts(item, &ZvUBMoneyFlowItem::displayDataForModelUse,
                 {"31", "12345.67", "2020-01-01 09:30:00", "入金", "工商银行 尾号1234", "处理中"});
    QVERIFY(item.moneyIn() != 0);
}

void RecordsTest::moneyOut()
{
    ZvUBMoneyFlowItem::Data data;
    data.moneyIn = 0;
    data.state = ZvUBMoneyFlowItem::Failed;
    const ZvUBMoneyFlowItem item(data);
    QCOMPARE(item.moneyIn(), 0);
    QCOMPARE(item.displayDataForModelUse(3), QString("出金"));
    QCOMPARE(item.displayDataForModelUse(5), QString("失败"));
    QCOMPARE(ZvUBMoneyFlowItem::stateText(1), QString("成功"));
    QCOMPARE(ZvUBMoneyFlowItem::stateText(9), QString("--"));
}

void RecordsTest::equality()
{
    QVERIFY(ZvUBDealItem(deal()) == ZvUBDealItem(deal()));
    ZvUBDealItem::Data other = deal();
    other.sequence += 1;
    QVERIFY(ZvUBDealItem(other) != ZvUBDealItem(deal()));
    QVERIFY(ZvUBDeliveryRecordItem(delivery()) == ZvUBDeliveryRecordItem(delivery()));
    QVERIFY(ZvUBDeliveryRecordItem(delivery()) != ZvUBDeliveryRecordItem());
    QVERIFY(ZvUBDealRecordItem() == ZvUBDealRecordItem());
    QVERIFY(ZvUBApplyItem() == ZvUBApplyItem(ZvUBApplyItem::Data()));
    QVERIFY(ZvUBMoneyFlowItem() == ZvUBMoneyFlowItem(ZvUBMoneyFlowItem::Data()));
}

ZV_TEST(RecordsTest)
#include "test_records.moc"
