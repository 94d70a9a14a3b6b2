#include "ZvChartKit/charttext.h"
#include "support/testregistry.h"

#include <cmath>
#include <limits>

using zvplot::ChartText;

class ChartTextTest : public QObject
{
    Q_OBJECT

private:
    static QString text(const ChartText &made) { return made.view().toString(); }

private slots:
    void fixedNumbersRoundToTheNearest_data()
    {
        QTest::addColumn<double>("value");
        QTest::addColumn<int>("decimals");
        QTest::addColumn<QString>("expected");
        QTest::newRow("whole") << 12.0 << 2 << "12.00";
        QTest::newRow("small") << 0.05 << 2 << "0.05";
        QTest::newRow("rounded up") << 1.006 << 2 << "1.01";
        QTest::newRow("carried") << 9.999 << 2 << "10.00";
        QTest::newRow("negative") << -3.14159 << 3 << "-3.142";
        QTest::newRow("no negative zero") << -0.001 << 2 << "0.00";
        QTest::newRow("without decimals") << 2.5 << 0 << "3";
        QTest::newRow("price of the contract's end") << 131071.99 << 2 << "131071.99";
        QTest::newRow("nothing") << std::numeric_limits<double>::quiet_NaN() << 2 << "--";
        QTest::newRow("no end") << std::numeric_limits<double>::infinity() << 2 << "--";
    }
    void fixedNumbersRoundToTheNearest()
    {
        QFETCH(double, value);
        QFETCH(int, decimals);
        QFETCH(QString, expected);
        QCOMPARE(text(ChartText().addFixed(value, decimals)), expected);
    }

    void pricesAreShortenedFromAHundredMillionOn()
    {
        QCOMPARE(text(ChartText().addPrice(99999999.99)), QStringLiteral("99999999.99"));
        QCOMPARE(text(ChartText().addPrice(1e8)), QStringLiteral("1.00亿"));
        QCOMPARE(text(ChartText().addPrice(-2.5e13)), QStringLiteral("-25.00万亿"));
    }

    void changesAndSharesSayTheirSign()
    {
        QCOMPARE(text(ChartText().addChange(1.5)), QStringLiteral("+1.50"));
        QCOMPARE(text(ChartText().addChange(-1.5)), QStringLiteral("-1.50"));
        QCOMPARE(text(ChartText().addChange(0)), QStringLiteral("0.00"));
        QCOMPARE(text(ChartText().addPercent(0.0123)), QStringLiteral("+1.23%"));
        QCOMPARE(text(ChartText().addPercent(-0.1)), QStringLiteral("-10.00%"));
        QCOMPARE(text(ChartText().addPercent(0.00001)), QStringLiteral("0.00%"));
        QCOMPARE(text(ChartText().addPercent(std::nan(""))), QStringLiteral("--"));
    }

    void quantitiesAreShortened()
    {
        QCOMPARE(text(ChartText().addQuantity(0)), QStringLiteral("0"));
        QCOMPARE(text(ChartText().addQuantity(99999)), QStringLiteral("99999"));
        QCOMPARE(text(ChartText().addQuantity(100000)), QStringLiteral("10.00万"));
        QCOMPARE(text(ChartText().addQuantity(99999949.0)), QStringLiteral("9999.99万"));
        QCOMPARE(text(ChartText().addQuantity(99999951.0)), QStringLiteral("1.00亿"));
        QCOMPARE(text(ChartText().addQuantity(9.2e18)), QStringLiteral("9200000.00万亿"));
        QCOMPARE(text(ChartText().addQuantity(std::nan(""))), QStringLiteral("--"));
        QCOMPARE(text(ChartText().addAmount(1234.5)), QStringLiteral("1234.50"));
        QCOMPARE(text(ChartText().addAmount(1234567)), QStringLiteral("123.46万"));
    }

    void daysAndClocks()
    {
        QCOMPARE(text(ChartText().addDay(20191231)), QStringLiteral("2019-12-31"));
        QCOMPARE(text(ChartText().addMonth(20160104)), QStringLiteral("2016-01"));
        QCOMPARE(text(ChartText().addDay(0)), QStringLiteral("--"));
        QCOMPARE(text(ChartText().addClock(0)), QStringLiteral("08:00"));
        QCOMPARE(text(ChartText().addClock(1577928600000)), QStringLiteral("09:30"));
        QCOMPARE(text(ChartText().addClock(16 * 3600 * 1000LL - 1)), QStringLiteral("23:59"));
        QCOMPARE(text(ChartText().addClock(16 * 3600 * 1000LL)), QStringLiteral("00:00"));
    }

    void whatDoesNotFitIsLeftOut()
    {
        ChartText made;
        for (int i = 0; i < 30; ++i)
            made.add(u"成交");
        QCOMPARE(made.size(), 40);
        made.addPrice(12.34);
        QCOMPARE(made.size(), 40);
    }
};

ZV_TEST(ChartTextTest)
#include "test_charttext.moc"
