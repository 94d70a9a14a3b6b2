#include "ZvChartKit/barseries.h"
#include "ZvChartKit/chartsamples.h"
#include "support/testregistry.h"

#include <limits>

using chartsamples::bar;
using zvplot::BarSeries;

class BarSeriesTest : public QObject
{
    Q_OBJECT

private slots:
    void barsAreTakenOverFromAPlaceOn()
    {
        QVector<ZvUBBar> bars{bar("2019-12-30", 1, 2, 0.5, 1.5), bar("2019-12-31", 2, 3, 1, 2.5)};
        BarSeries series;
        series.update(bars, 0);
        QCOMPARE(series.size(), 2);
        QCOMPARE(series.at(0).day, 20191230);
        QCOMPARE(series.at(1).close, 2.5);

        bars[0].close = 9; // before the place from which on something has changed
        bars[1].close = 2.75;
        bars.append(bar("2020-01-01", 3, 4, 3, 3.5));
        series.update(bars, 1);
        QCOMPARE(series.size(), 3);
        QCOMPARE(series.at(0).close, 1.5);
        QCOMPARE(series.at(1).close, 2.75);
        QCOMPARE(series.at(2).day, 20200101);

        bars.resize(1);
        series.update(bars, 0);
        QCOMPARE(series.size(), 1);
        QCOMPARE(series.at(0).close, 9.0);
    }

    void aPlaceOutsideIsHeldWithin()
    {
        BarSeries series;
        series.update({bar("2019-12-30", 1, 2, 0.5, 1.5)}, 7);
        QCOMPARE(series.at(0).close, 1.5);
        series.update({bar("2019-12-30", 1, 2, 0.5, 1.75)}, -3);
        QCOMPARE(series.at(0).close, 1.75);
    }

    void unsoundFiguresAreMadeSound()
    {
        const double none = std::numeric_limits<double>::quiet_NaN();
        const double endless = std::numeric_limits<double>::infinity();
        BarSeries series;
        series.update({bar("2019-12-31", 5, 1, 9, 6, -4), bar("soon", none, endless, -endless, 1)},
                      0);
        QCOMPARE(series.at(0).high, 6.0);
        QCOMPARE(series.at(0).low, 5.0);
        QCOMPARE(series.at(0).volume, 0.0);
        QCOMPARE(series.at(1).day, 0);
        QCOMPARE(series.at(1).open, 0.0);
        QCOMPARE(series.at(1).high, 1.0);
        QCOMPARE(series.at(1).low, 0.0);
    }

    void directions()
    {
        BarSeries series;
        series.update({bar("2019-12-25", 1, 1, 1, 1), bar("2019-12-26", 1, 3, 1, 2),
                       bar("2019-12-27", 3, 3, 2, 2.5), bar("2019-12-30", 2, 2, 2, 2),
                       bar("2019-12-31", 2, 2, 2, 2)},
                      0);
        QCOMPARE(series.directionOf(0), 1); // alone and level
        QCOMPARE(series.directionOf(1), 1);
        QCOMPARE(series.directionOf(2), -1);
        QCOMPARE(series.directionOf(3), -1); // level, below the close before
        QCOMPARE(series.directionOf(4), 1); // level, at the close before
        QCOMPARE(series.referenceOf(0), 1.0);
        QCOMPARE(series.referenceOf(2), 2.0);
    }

    void daysAreFound()
    {
        BarSeries series;
        series.update(chartsamples::kLine(10).bars, 0);
        QCOMPARE(series.barOfDay(series.at(4).day), 4);
        QCOMPARE(series.barOfDay(series.at(9).day + 1), 10);
        QCOMPARE(series.barOfDay(0), 0);
    }
};

ZV_TEST(BarSeriesTest)
#include "test_barseries.moc"
