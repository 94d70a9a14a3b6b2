#include "ZvChartKit/valueaxis.h"
#include "support/testregistry.h"

#include <cmath>
#include <limits>

using zvplot::ValueAxis;

class ValueAxisTest : public QObject
{
    Q_OBJECT

private slots:
    void heightsOfValues()
    {
        const ValueAxis axis(10, 20, 100, 300);
        QCOMPARE(axis.y(10), 300.0);
        QCOMPARE(axis.y(20), 100.0);
        QCOMPARE(axis.row(15), 200);
        QCOMPARE(axis.row(20), 100);
        QVERIFY(std::abs(axis.valueAt(100) - 19.975) < 1e-9);
        for (int row = 100; row < 300; ++row)
            QCOMPARE(axis.row(axis.valueAt(row)), row);
    }

    void extremesStayWithinAnInt()
    {
        const ValueAxis axis(10, 20, 100, 300);
        QVERIFY(std::abs(axis.row(1e300)) < 100000);
        QVERIFY(std::abs(axis.row(-1e300)) < 100000);
        QVERIFY(std::isnan(axis.y(std::nan(""))));
        QVERIFY(std::abs(axis.row(std::nan(""))) < 100000);
        const ValueAxis huge(-1e15, 1e15, 0, 100);
        QCOMPARE(huge.row(0), 50);
        QVERIFY(huge.ticks(20, 0.01).size() <= 6);
    }

    void aRangeWithoutHeightGetsRoom()
    {
        const ValueAxis level = ValueAxis::padded(50, 50, 0.05, 0.05, 0, 100);
        QCOMPARE(level.low(), 49.5);
        QCOMPARE(level.high(), 50.5);
        QCOMPARE(level.row(50), 50);
        const ValueAxis zero = ValueAxis::padded(0, 0, 0.05, 0.05, 0, 100);
        QCOMPARE(zero.row(0), 50);
        const ValueAxis usual = ValueAxis::padded(100, 200, 0.1, 0.05, 0, 100);
        QCOMPARE(usual.low(), 90.0);
        QCOMPARE(usual.high(), 210.0);
    }

    void ticksAreRoundAndFarEnoughApart_data()
    {
        QTest::addColumn<double>("low");
        QTest::addColumn<double>("high");
        QTest::newRow("usual") << 96.3 << 108.9;
        QTest::newRow("narrow") << 10.00 << 10.04;
        QTest::newRow("around zero") << -0.7 << 0.4;
        QTest::newRow("large") << 120000.0 << 131071.99;
    }
    void ticksAreRoundAndFarEnoughApart()
    {
        QFETCH(double, low);
        QFETCH(double, high);
        const ValueAxis axis(low, high, 0, 400);
        const std::vector<double> ticks = axis.ticks(40, 0.01);
        QVERIFY(ticks.size() >= 3);
        QVERIFY(ticks.size() <= 11);
        for (std::size_t i = 0; i < ticks.size(); ++i) {
            QVERIFY(ticks[i] >= low - 1e-9 && ticks[i] <= high);
            const double fen = ticks[i] * 100;
            QVERIFY(std::abs(fen - std::round(fen)) < 1e-6);
            if (i > 0)
                QVERIFY(axis.y(ticks[i - 1]) - axis.y(ticks[i]) >= 40 - 1e-6);
        }
    }

    void noRoomNoTicks()
    {
        QVERIFY(ValueAxis(1, 2, 0, 10).ticks(40, 0.01).empty());
        QVERIFY(ValueAxis(1, 2, 0, 0).ticks(40, 0.01).empty());
        QVERIFY(ValueAxis().ticks(0, 0.01).empty());
        QCOMPARE(ValueAxis(3, 4, 5, 5).valueAt(5), 3.0);
    }
};

ZV_TEST(ValueAxisTest)
#include "test_valueaxis.moc"
