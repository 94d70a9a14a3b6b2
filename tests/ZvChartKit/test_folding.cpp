#include "ZvChartKit/barwindow.h"
#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/folding.h"
#include "support/testregistry.h"

#include <cmath>

using namespace zvplot;

class FoldingTest : public QObject
{
    Q_OBJECT

private:
    static BarWindow foldedWindow(int bars, int levels)
    {
        BarWindow window;
        window.setWidth(1000);
        window.setUsualStep(8);
        window.reset(bars);
        window.zoom(-levels, bars - 1);
        return window;
    }

private slots:
    void everyColumnGoesAsFarAsItsBars_data()
    {
        QTest::addColumn<int>("levels");
        for (const int levels : {0, 8, 10, 13, 16})
            QTest::newRow(qPrintable(QString::number(levels))) << levels;
    }
    void everyColumnGoesAsFarAsItsBars()
    {
        QFETCH(int, levels);
        const ZvUBKLine line = chartsamples::kLine(20000, 3);
        BarSeries series;
        series.update(line.bars, 0);
        const BarWindow window = foldedWindow(series.size(), levels);
        int bars = 0;
        for (int column = window.columnOf(0); column <= window.columnOf(series.size() - 1);
             ++column) {
            const BarColumn folded = foldedBars(series, window, column);
            double high = -1e300;
            double low = 1e300;
            double most = -1;
            double first = 0;
            double last = 0;
            bool isFirst = true;
            for (int bar = 0; bar < window.barsPerColumn(); ++bar) {
                const int at = window.firstBarOf(column) + bar;
                if (at >= series.size() || window.columnOf(at) != column)
                    break;
                const ZvUBBar &raw = line.bars.at(at);
                first = isFirst ? raw.open : first;
                isFirst = false;
                last = raw.close;
                high = std::max(high, raw.high);
                low = std::min(low, raw.low);
                most = std::max(most, double(raw.volume));
                ++bars;
            }
            QCOMPARE(folded.open, first);
            QCOMPARE(folded.close, last);
            QCOMPARE(folded.high, high);
            QCOMPARE(folded.low, low);
            QCOMPARE(folded.volume, most);
        }
        QCOMPARE(bars, series.size());
    }

    void theLargestVolumeKeepsItsDirection()
    {
        BarSeries series;
        series.update({chartsamples::bar("2019-12-25", 1, 2, 1, 2, 10),
                       chartsamples::bar("2019-12-26", 2, 2, 1, 1, 500),
                       chartsamples::bar("2019-12-27", 1, 9, 1, 9, 20)},
                      0);
        BarWindow window;
        window.setWidth(1);
        window.setUsualStep(1);
        window.reset(3);
        window.zoom(-2, 2); // three bars a column
        QCOMPARE(window.barsPerColumn(), 3);
        const BarColumn folded = foldedBars(series, window, window.columnOf(0));
        QCOMPARE(folded.volume, 500.0);
        QCOMPARE(folded.volumeDirection, -1);
        QCOMPARE(folded.direction, 1);
    }

    void curvesKeepWhereTheyComeInAndGoOut()
    {
        BarWindow window;
        window.setWidth(1);
        window.setUsualStep(1);
        window.reset(4);
        window.zoom(-3, 3);
        QCOMPARE(window.barsPerColumn(), 4);
        const double none = std::nan("");
        const CurvePoint point = foldedCurve({none, 5, 2, 3}, window, 0);
        QCOMPARE(point.first, 5.0);
        QCOMPARE(point.last, 3.0);
        QCOMPARE(point.low, 2.0);
        QCOMPARE(point.high, 5.0);
        const CurvePoint empty = foldedCurve({none, none, none, none}, window, 0);
        QVERIFY(std::isnan(empty.first) && std::isnan(empty.last));

        ValueRange range;
        range.take(empty);
        QVERIFY(range.isEmpty);
        range.take(point);
        QCOMPARE(range.low, 2.0);
        QCOMPARE(range.high, 5.0);
    }
};

ZV_TEST(FoldingTest)
#include "test_folding.moc"
