#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubgatherinfo.h"
#include "ZvModelKit/zvubmyacount.h"

#include "support/testregistry.h"

#include <QtTest>

#include <limits>

namespace {

constexpr qint64 greatest = std::numeric_limits<qint64>::max();

ZvUBCapItem::Data holding()
{
    ZvUBCapItem::Data data;
    data.collectionId = "1001";
    data.code = "100001";
    data.name = "庚申猴票";
    data.quantity = 300;
    data.sellable = 200;
    data.cost = 300100;
    data.latest = 1100;
    return data;
}

ZvUBGatherItem::Data gathered()
{
    ZvUBGatherItem::Data data;
    data.collectionId = "1001";
    data.code = "100001";
    data.name = "庚申猴票";
    data.buyQuantity = 300;
    data.buyAmount = 300100;
    data.buyFee = 900;
    data.sellQuantity = 500;
    data.sellAmount = 550000;
    data.sellFee = 1650;
    data.sellProfit = -50;
    return data;
}

} // namespace

// What the account holds, has dealt and pays.
class AccountTest : public QObject
{
    Q_OBJECT

private slots:
    void holdingColumns();
    void holdingHeadersLeaveRoomForAPagesColumn();
    void aHoldingWithoutAPrice();
    void aHoldingThatCostNothing();
    void signsOfProfit_data();
    void signsOfProfit();
    void aDefaultHoldingIsEmpty();
    void extremeHoldings();
    void moneyInYuan();
    void holdingsByCode();
    void gatherColumns();
    void gatherWithoutOneSide();
    void gatherNumbers();
    void gatherSums();
    void gatherSumsAreCapped();
    void accountTexts();
    void poundage_data();
    void poundage();
    void equality();
};

void AccountTest::holdingColumns()
{
    const ZvUBCapItem item(holding());
    const QStringList expected{"100001",  "庚申猴票", "300",  "200",  "100",     "10.00",  "11.00",
                               "3300.00", "299.00",   "9.96", "1001", "3001.00", "3001.00"};
    for (int column = 0; column < expected.size(); ++column) {
        QCOMPARE(item.displayDataForModelUse(column), expected.at(column));
    }
    QCOMPARE(item.displayDataForModelUse(13), QString());
    QCOMPARE(item.displayDataForModelUse(-1), QString());
    QCOMPARE(item.collectionId(), QString("1001"));
    QCOMPARE(item.quantity(), 300);
    QCOMPARE(item.sellableQuantity(), 200);
    QCOMPARE(item.marketValue(), qint64(330000));
    QCOMPARE(item.getProfit(), 299.0);
    QCOMPARE(item.getProfit_rate(), 9.96);
    // The delivery page reads column 3 back as a number.
    QCOMPARE(QVariant(item.displayDataForModelUse(3)).toInt(), 200);
}

void AccountTest::holdingHeadersLeaveRoomForAPagesColumn()
{
    QStringList headers = ZvUBCapItem::headerListForModelUse();
    QCOMPARE(headers.size(), 12);
    const QString last = headers.last();
    headers.insert(headers.size() - 1, "操作");
    QCOMPARE(headers.size(), 13);
    QCOMPARE(headers.at(11), QString("操作"));
    // The header that moved from 11 to 12 stands over the same figure on both pages.
    QCOMPARE(headers.at(12), last);
    const ZvUBCapItem item(holding());
    QCOMPARE(item.displayDataForModelUse(12), item.displayDataForModelUse(11));
    QVERIFY(!item.displayDataForModelUse(12).isEmpty());
}

void AccountTest::aHoldingWithoutAPrice()
{
    ZvUBCapItem::Data data = holding();
    data.latest = zvub::noValue;
    const ZvUBCapItem item(data);
    for (int column : {6, 8, 9}) {
        QCOMPARE(item.displayDataForModelUse(column), QString("--"));
    }
    QCOMPARE(item.displayDataForModelUse(7), QString("3001.00"));
    QCOMPARE(item.getProfit(), 0.0);
    QCOMPARE(item.getProfit_rate(), 0.0);
}

void AccountTest::aHoldingThatCostNothing()
{
    ZvUBCapItem::Data data = holding();
    data.cost = 0;
    const ZvUBCapItem item(data);
    QCOMPARE(item.displayDataForModelUse(5), QString("0.00"));
    QCOMPARE(item.displayDataForModelUse(8), QString("3300.00"));
    QCOMPARE(item.displayDataForModelUse(9), QString("--"));
    QCOMPARE(item.getProfit_rate(), 0.0);
}

void AccountTest::signsOfProfit_data()
{
    QTest::addColumn<qint64>("cost");
    QTest::addColumn<double>("profit");
    QTest::addColumn<QString>("text");
    QTest::newRow("won a fen") << qint64(329999) << 0.01 << "0.01";
    QTest::newRow("even") << qint64(330000) << 0.0 << "0.00";
    QTest::newRow("lost a fen") << qint64(330001) << -0.01 << "-0.01";
}

void AccountTest::signsOfProfit()
{
    QFETCH(qint64, cost);
    QFETCH(double, profit);
    QFETCH(QString, text);
    ZvUBCapItem::Data data = holding();
    data.cost = cost;
    QCOMPARE(ZvUBCapItem(data).getProfit(), profit);
    QCOMPARE(ZvUBCapItem(data).displayDataForModelUse(8), text);
}

void AccountTest::aDefaultHoldingIsEmpty()
{
    const ZvUBCapItem item;
    QCOMPARE(item.quantity(), 0);
    QCOMPARE(item.sellableQuantity(), 0);
    QCOMPARE(item.displayDataForModelUse(2), QString("0"));
    QCOMPARE(item.displayDataForModelUse(3), QString("0"));
    QCOMPARE(item.displayDataForModelUse(5), QString("--"));
    QCOMPARE(item.displayDataForModelUse(12), QString("0.00"));
    QCOMPARE(item.getProfit(), 0.0);
}

void AccountTest::extremeHoldings()
{
    ZvUBCapItem::Data data = holding();
    data.quantity = data.sellable = data.latest = greatest;
    data.cost = std::numeric_limits<qint64>::min();
    const ZvUBCapItem item(data);
    QCOMPARE(item.quantity(), std::numeric_limits<int>::max());
    QCOMPARE(item.sellableQuantity(), std::numeric_limits<int>::max());
    QCOMPARE(item.displayDataForModelUse(3), QString("9223372036854775807"));
    QCOMPARE(item.displayDataForModelUse(7), QString("92233720368547758.07"));
    QCOMPARE(item.displayDataForModelUse(8), QString("92233720368547758.07"));
    QCOMPARE(item.displayDataForModelUse(9), QString("--"));
}

void AccountTest::moneyInYuan()
{
    const ZvUBCapInfo info(ZvUBCapInfo::Data{330000, -2900, 10030, 4, 340034, {}});
    QCOMPARE(info.heldMarketValue(), 3300.0);
    QCOMPARE(info.profit(), -29.0);
    QCOMPARE(info.availableMoney(), 100.30);
    QCOMPARE(info.frozenMoney(), 0.04);
    QCOMPARE(info.totalAssets(), 3400.34);
    QVERIFY(info.items().isEmpty());
    QCOMPARE(ZvUBCapInfo().availableMoney(), 0.0);
}

void AccountTest::holdingsByCode()
{
    ZvUBCapItem::Data other = holding();
    other.code = "100002";
    other.sellable = 7;
    ZvUBCapItem::Data twin = holding();
    twin.sellable = 1;
    ZvUBCapInfo::Data data;
    data.items = {ZvUBCapItem(holding()), ZvUBCapItem(other), ZvUBCapItem(twin)};
    const ZvUBCapInfo info(data);
    QCOMPARE(info.items().size(), 3);
    QCOMPARE(info.getCapItem("100002").sellableQuantity(), 7);
    QCOMPARE(info.getCapItem("100001").sellableQuantity(), 200);
    for (const QString &code : {QString(), QString("100003"), QString("1001")}) {
        QCOMPARE(info.getCapItem(code).sellableQuantity(), 0);
        QCOMPARE(info.getCapItem(code).quantity(), 0);
    }
    QCOMPARE(ZvUBCapInfo().getCapItem("100001").quantity(), 0);
}

void AccountTest::gatherColumns()
{
    QCOMPARE(ZvUBGatherItem::dataCountForModelUse(), 13);
    QCOMPARE(ZvUBGatherItem::headerListForModelUse().size(), 13);
    const ZvUBGatherItem item(gathered());
    const QStringList expected{"100001", "庚申猴票", "300",   "10.00", "9.00",  "500", "11.00",
                               "16.50",  "800",      "25.50", "-200",  "-0.50", "1001"};
    for (int column = 0; column < expected.size(); ++column) {
        QCOMPARE(item.displayDataForModelUse(column), expected.at(column));
    }
    QCOMPARE(item.displayDataForModelUse(13), QString());
}

void AccountTest::gatherWithoutOneSide()
{
    ZvUBGatherItem::Data data = gathered();
    data.sellQuantity = data.sellAmount = data.sellFee = data.sellProfit = 0;
    const ZvUBGatherItem item(data);
    QCOMPARE(item.displayDataForModelUse(6), QString("--"));
    QCOMPARE(item.displayDataForModelUse(5), QString("0"));
    QCOMPARE(item.positionChange(), 300);
    QCOMPARE(ZvUBGatherItem().displayDataForModelUse(3), QString("--"));
}

void AccountTest::gatherNumbers()
{
    const ZvUBGatherItem item(gathered());
    QCOMPARE(item.collectionId(), QString("1001"));
    QCOMPARE(item.positionChange(), -200);
    // The table cuts the profit to an int, so half a yuan lost stays white there.
    QCOMPARE(item.sellProfit(), -0.5);
}

void AccountTest::gatherSums()
{
    const ZvUBGatherInfo info(
        ZvUBGatherInfo::sumOf({ZvUBGatherItem(gathered()), ZvUBGatherItem(gathered())}));
    QCOMPARE(info.items().size(), 2);
    QCOMPARE(info.kindCount(), 2);
    QCOMPARE(info.buyCount(), 600);
    QCOMPARE(info.buyFee(), 18.0);
    QCOMPARE(info.sellCount(), 1000);
    QCOMPARE(info.sellFee(), 33.0);
    QCOMPARE(info.totalCount(), 1600);
    QCOMPARE(info.totalFee(), 51.0);
    QCOMPARE(info.positionChange(), -400);
    QCOMPARE(info.sellProfit(), -1.0);

    const ZvUBGatherInfo none;
    QCOMPARE(none.kindCount(), 0);
    QCOMPARE(none.totalFee(), 0.0);
}

void AccountTest::gatherSumsAreCapped()
{
    ZvUBGatherItem::Data data = gathered();
    data.buyQuantity = greatest;
    data.sellQuantity = 0;
    const ZvUBGatherInfo info(ZvUBGatherInfo::sumOf({ZvUBGatherItem(data), ZvUBGatherItem(data)}));
    QCOMPARE(info.data().buyQuantity, greatest);
    QCOMPARE(info.buyCount(), std::numeric_limits<int>::max());
    QCOMPARE(info.totalCount(), std::numeric_limits<int>::max());
    QCOMPARE(info.positionChange(), std::numeric_limits<int>::max());
    data.buyQuantity = 0;
    data.sellQuantity = greatest;
    QCOMPARE(ZvUBGatherItem(data).positionChange(), std::numeric_limits<int>::min());
}

void AccountTest::accountTexts()
{
    ZvUBMyAcount::Data data;
    data.accountNumber = "000000001234";
    data.phone = "13800000000";
    data.name = "张三";
    const ZvUBMyAcount account(data);
    QCOMPARE(account.accountNumber(), QString("000000001234"));
    QCOMPARE(account.phone(), QString("13800000000"));
    QCOMPARE(account.name(), QString("张三"));
    QCOMPARE(ZvUBMyAcount().accountNumber(), QString());
    QCOMPARE(ZvUBMyAcount().phone(), QString());
}

void AccountTest::poundage_data()
{
    QTest::addColumn<qint64>("ofAccount");
    QTest::addColumn<QString>("collectionId");
    QTest::addColumn<double>("rate");
    QTest::newRow("of the collection") << qint64(2000) << "1001" << 0.001;
    QTest::newRow("free of charge") << qint64(2000) << "1002" << 0.0;
    QTest::newRow("unknown collection") << qint64(2000) << "9999" << 0.002;
    QTest::newRow("no collection") << qint64(2000) << "" << 0.002;
    QTest::newRow("none set for the collection") << qint64(2000) << "1003" << 0.002;
    QTest::newRow("none set at all") << qint64(-1) << "1003" << 0.003;
}

void AccountTest::poundage()
{
    QFETCH(qint64, ofAccount);
    QFETCH(QString, collectionId);
    QFETCH(double, rate);
    ZvUBMyAcount::Data data;
    data.poundage = ofAccount;
    data.poundageOf = {{"1001", 1000}, {"1002", 0}, {"1003", -1}};
    // Exactly: the ticket asks whether 1 + rate is 1, and rounds a product of it to the cent.
    QVERIFY(ZvUBMyAcount(data).getPoundageRage(collectionId) == rate);
    QVERIFY(ZvUBMyAcount().getPoundageRage(collectionId) == 0.003);
}

void AccountTest::equality()
{
    QVERIFY(ZvUBCapItem(holding()) == ZvUBCapItem(holding()));
    ZvUBCapItem::Data other = holding();
    other.sellable -= 1;
    QVERIFY(ZvUBCapItem(other) != ZvUBCapItem(holding()));
    ZvUBCapInfo::Data one;
    one.items = {ZvUBCapItem(holding())};
    ZvUBCapInfo::Data two;
    two.items = {ZvUBCapItem(other)};
    QVERIFY(ZvUBCapInfo(one) == ZvUBCapInfo(one));
    QVERIFY(ZvUBCapInfo(one) != ZvUBCapInfo(two));
    QVERIFY(ZvUBGatherInfo() == ZvUBGatherInfo(ZvUBGatherInfo::Data()));
    QVERIFY(ZvUBGatherInfo() != ZvUBGatherInfo(ZvUBGatherInfo::sumOf({ZvUBGatherItem()})));
    ZvUBMyAcount::Data account;
    account.poundageOf.insert("1", 5);
    QVERIFY(ZvUBMyAcount(account) != ZvUBMyAcount());
    QVERIFY(ZvUBMyAcount(account) == ZvUBMyAcount(account));
}

ZV_TEST(AccountTest)
#include "test_account.moc"
