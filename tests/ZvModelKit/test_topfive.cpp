#include "ZvModelKit/zvubtopfive.h"

#include "support/testregistry.h"

#include <QtTest>

#include <limits>

namespace {

ZvUBTopFive::Data quote()
{
    ZvUBTopFive::Data data;
    data.collectionId = "1001";
    data.code = "100001";
    data.name = "庚申猴票";
    for (int level = 0; level < 5; ++level) {
        data.sells[static_cast<std::size_t>(level)] = {1010 + level, 10 + level};
        data.buys[static_cast<std::size_t>(level)] = {1009 - level, 20 + level};
    }
    data.latest = 1010;
    data.previousClose = 1000;
    data.lowerLimit = 900;
    data.upperLimit = 1100;
    return data;
}

} // namespace

// The quote of a collection.
class TopFiveTest : public QObject
{
    Q_OBJECT

private slots:
    void properties();
    void propertiesOutside_data();
    void propertiesOutside();
    void figuresArePlainNumbers();
    void emptyLevelsAreDashes();
    void aDefaultQuoteHasNoValues();
    void withoutADealThereIsNoChange();
    void aFallIsNegative();
    void pricesOfTheFifthLevel();
    void anEmptyFifthLevelIsSeenAtAnyPrice();
    void numbersForWidgets();
    void copiesShareAndCompareEqual();
};

void TopFiveTest::properties()
{
    const QStringList expected{
        "庚申猴票", "100001", "1001", "10.14", "14",    "10.13", "13",    "10.12", "12",  "10.11",
        "11",       "10.10",  "10",   "10.09", "20",    "10.08", "21",    "10.07", "22",  "10.06",
        "23",       "10.05",  "24",   "10.00", "10.10", "0.10",  "1.00%", "11.00", "9.00"};
    QCOMPARE(expected.size(), 29);
    const ZvUBTopFive item(quote());
    for (int property = 0; property < expected.size(); ++property) {
        QCOMPARE(item.getPropertyString(property), expected.at(property));
    }
}

void TopFiveTest::propertiesOutside_data()
{
    QTest::addColumn<int>("property");
    QTest::newRow("negative") << -1;
    QTest::newRow("behind the last") << 29;
    QTest::newRow("greatest") << std::numeric_limits<int>::max();
}

void TopFiveTest::propertiesOutside()
{
    QFETCH(int, property);
    QCOMPARE(ZvUBTopFive(quote()).getPropertyString(property), QString());
}

void TopFiveTest::figuresArePlainNumbers()
{
    ZvUBTopFive::Data data = quote();
    data.latest = 12345678;
    data.sells[0] = {12345678, 12345678901};
    const ZvUBTopFive item(data);
    for (int property = 3; property <= 28; ++property) {
        QString text = item.getPropertyString(property);
        QCOMPARE(text.endsWith('%'), property == 26);
        text.remove('%');
        bool isNumber = false;
        text.toDouble(&isNumber);
        QVERIFY2(isNumber, qPrintable(text));
        QVERIFY(!text.contains(','));
        QVERIFY(!text.contains('e'));
        QVERIFY(!text.contains('+'));
    }
    QCOMPARE(item.getPropertyString(12), QString("12345678901"));
}

void TopFiveTest::emptyLevelsAreDashes()
{
    ZvUBTopFive::Data data = quote();
    data.sells[4] = {};
    data.buys[3] = {};
    const ZvUBTopFive item(data);
    for (int property : {3, 4, 19, 20}) {
        QCOMPARE(item.getPropertyString(property), QString("--"));
    }
    QCOMPARE(item.getPropertyString(5), QString("10.13"));
    QCOMPARE(item.getPropertyString(21), QString("10.05"));
}

void TopFiveTest::aDefaultQuoteHasNoValues()
{
    const ZvUBTopFive item;
    for (int property = 0; property < 3; ++property) {
        QCOMPARE(item.getPropertyString(property), QString());
    }
    for (int property = 3; property <= 28; ++property) {
        QCOMPARE(item.getPropertyString(property), QString("--"));
    }
    QCOMPARE(item.lowerLimitPrice(), 0.0);
    QCOMPARE(item.upperLimitPrice(), 0.0);
    QCOMPARE(item.referencePrice(), 0.0);
    QCOMPARE(item.latestPrice(), 0.0);
    QCOMPARE(item.change(), 0.0);
    QCOMPARE(item.changeRate(), 0.0);
}

void TopFiveTest::withoutADealThereIsNoChange()
{
    ZvUBTopFive::Data data = quote();
    data.latest = zvub::noValue;
    const ZvUBTopFive item(data);
    for (int property : {24, 25, 26}) {
        QCOMPARE(item.getPropertyString(property), QString("--"));
    }
    data.latest = 1000;
    data.previousClose = 0;
    QCOMPARE(ZvUBTopFive(data).getPropertyString(26), QString("--"));
}

void TopFiveTest::aFallIsNegative()
{
    ZvUBTopFive::Data data = quote();
    data.latest = 995;
    const ZvUBTopFive item(data);
    QCOMPARE(item.getPropertyString(25), QString("-0.05"));
    QCOMPARE(item.getPropertyString(26), QString("-0.50%"));
    QCOMPARE(item.change(), -0.05);
    QCOMPARE(item.changeRate(), -0.5);
}

void TopFiveTest::pricesOfTheFifthLevel()
{
    const ZvUBTopFive item(quote());
    QCOMPARE(item.getBuy5Price(), 10.05F);
    QCOMPARE(item.getSell5Price(), 10.14F);
    // The ticket compares them with a price of its own, which is a float too.
    QVERIFY(float(10.05) >= item.getBuy5Price());
    QVERIFY(item.getSell5Price() >= float(10.14));
}

void TopFiveTest::anEmptyFifthLevelIsSeenAtAnyPrice()
{
    ZvUBTopFive::Data data = quote();
    data.sells[4] = {};
    data.buys[4] = {};
    for (const ZvUBTopFive &item : {ZvUBTopFive(data), ZvUBTopFive()}) {
        QVERIFY(0.01F >= item.getBuy5Price());
        QVERIFY(item.getSell5Price() >= 100000000.0F);
    }
}

void TopFiveTest::numbersForWidgets()
{
    const ZvUBTopFive item(quote());
    QCOMPARE(item.sellPrices(), QList<double>({10.10, 10.11, 10.12, 10.13, 10.14}));
    QCOMPARE(item.buyPrices(), QList<double>({10.09, 10.08, 10.07, 10.06, 10.05}));
    QCOMPARE(item.latestPrice(), 10.1);
    QCOMPARE(item.lowerLimitPrice(), 9.0);
    QCOMPARE(item.upperLimitPrice(), 11.0);
    QCOMPARE(item.referencePrice(), 10.0);
    ZvUBTopFive::Data data = quote();
    data.buys[2] = {};
    QCOMPARE(ZvUBTopFive(data).buyPrices().at(2), 0.0);
}

void TopFiveTest::copiesShareAndCompareEqual()
{
    const ZvUBTopFive item(quote());
    const ZvUBTopFive copy = item;
    QCOMPARE(static_cast<const void *>(&copy.data()), static_cast<const void *>(&item.data()));
    QVERIFY(ZvUBTopFive(quote()) == item);
    ZvUBTopFive::Data data = quote();
    data.buys[4].quantity += 1;
    QVERIFY(ZvUBTopFive(data) != item);
}

ZV_TEST(TopFiveTest)
#include "test_topfive.moc"
