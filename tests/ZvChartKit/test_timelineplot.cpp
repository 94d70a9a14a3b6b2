#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/plotbench.h"
#include "ZvChartKit/timelineplot.h"
#include "support/testregistry.h"

#include <limits>

using namespace zvplot;
using namespace chartsamples;

namespace {

constexpr QRgb red = 0xffea3835;
constexpr QRgb green = 0xff4bff57;
constexpr QRgb white = 0xffdfe6f2; // the price
constexpr QRgb middleLine = 0xff8b93a1;

QString textOf(const AxisLabel &label)
{
    return label.text.view().toString();
}

} // namespace

class TimeLinePlotTest : public QObject
{
    Q_OBJECT

private slots:
    void thePreviousCloseIsTheMiddleLine()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(timeLine(200));
        const QImage &picture = plot.picture();
        const QRect pane = plot.panes().price;
        const int right = pane.right() - 2; // where no price stands yet
        const RowSpan middle = rowsOf(picture, right, middleLine, pane);
        QCOMPARE(middle.first, middle.last);
        QVERIFY(qAbs(middle.first - (pane.top() + pane.height() / 2)) <= 1);
        QCOMPARE(textOf(plot.leftLabel(middle.first)), QStringLiteral("100.00"));
        QCOMPARE(textOf(plot.rightLabel(middle.first)).remove(QRegExp("[+-]")),
                 QStringLiteral("0.00%"));
        // As much above the middle as below it.
        const QString top = textOf(plot.rightLabel(pane.top()));
        const QString bottom = textOf(plot.rightLabel(pane.bottom()));
        QVERIFY(top.startsWith(QLatin1Char('+')));
        QVERIFY(bottom.startsWith(QLatin1Char('-')));
        QVERIFY(qAbs(top.mid(1, top.size() - 2).toDouble()
                     - bottom.mid(1, bottom.size() - 2).toDouble())
                < 0.015);
    }

    void theWholeSessionStandsFromTheFirstMinute()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(timeLine(1));
        const QRect pane = plot.panes().price;
        QCOMPARE(plot.lastPlace(), 0);
        QVERIFY(plot.middleOf(0) < pane.left() + 5);
        QVERIFY(plot.middleOf(239) > pane.right() - 5);
        QCOMPARE(plot.placeAt(pane.right()), 0); // the nearest with figures
        plot.load(timeLine(240));
        QCOMPARE(plot.placeAt(pane.right()), 239);
        QCOMPARE(plot.placeAt(-500), 0);
    }

    void theBreakIsJoined()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(timeLine(240));
        QCOMPARE(plot.timeLabel(119).text.view().toString(), QStringLiteral("11:29"));
        QCOMPARE(plot.timeLabel(120).text.view().toString(), QStringLiteral("13:00"));
        QVERIFY(plot.middleOf(120) - plot.middleOf(119) <= plot.panes().price.width() / 240 + 1);
    }

    void aMinuteWithoutADealKeepsThePrice()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBTimeLine line = timeLine(100);
        line.minutes[40].price = 101.25;
        line.minutes.remove(41, 30);
        plot.load(line);
        QCOMPARE(plot.priceRow(55), plot.priceRow(40));
        QCOMPARE(plot.priceRow(70), plot.priceRow(40));
        const ValueBox box = plot.valueBox(55);
        QCOMPARE(int(box.count), plot.valueBoxRows());
        QCOMPARE(box.rows[0].value.view().toString(), QStringLiteral("10:25"));
        QCOMPARE(box.rows[1].value.view().toString(), QStringLiteral("101.25"));
        QCOMPARE(box.rows[5].value.view().toString(), QStringLiteral("0"));
        // No line is thicker or blurred where the price is level.
        const QImage &picture = plot.picture();
        const RowSpan level = rowsOf(picture, plot.middleOf(60), white, plot.panes().price);
        QCOMPARE(level.first, plot.priceRow(40));
        QCOMPARE(level.last, plot.priceRow(40));
    }

    void nothingStandsBeforeTheFirstDeal()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBTimeLine line = timeLine(100);
        line.minutes.remove(0, 60);
        plot.load(line);
        QCOMPARE(plot.firstPlace(), 60);
        QCOMPARE(plot.placeAt(plot.panes().price.left()), 60);
        const QRect before(plot.panes().price.left(), plot.panes().price.top(),
                           plot.middleOf(58) - plot.panes().price.left(),
                           plot.panes().price.height());
        QCOMPARE(countOf(plot.picture(), white, before), 0);
    }

    void aNewPriceChangesOnlyItsStrip_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<double>("scale");
        QTest::newRow("wide") << 900 << 1.0;
        QTest::newRow("folded") << 260 << 1.0; // fewer columns than minutes
        QTest::newRow("doubled") << 900 << 2.0;
    }
    void aNewPriceChangesOnlyItsStrip()
    {
        QFETCH(int, width);
        QFETCH(double, scale);
        PlotBench bench(QSize(width, 500), scale);
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBTimeLine line = timeLine(150);
        plot.load(line);
        QImage before = plot.picture().copy();
        int strips = 0;
        for (const double by : {0.02, -0.05, 0.1, -0.01}) {
            line.minutes.last().price += by;
            line.minutes.last().average += by / 100;
            line.minutes.last().volume += 1;
            const ChartPlot::Change change = plot.grow(line, 149);
            TimeLinePlot anew;
            anew.setFrame(bench.frame);
            anew.load(line);
            const QImage after = plot.picture().copy();
            QCOMPARE(after, anew.picture());
            if (!change.isEverything) {
                ++strips;
                QVERIFY(areEqualBut(after, before, change.strip));
            }
            before = after;
        }
        QVERIFY(strips >= 3);
    }

    void newMinutesAppear()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(timeLine(10));
        for (int minutes = 11; minutes <= 240; ++minutes) {
            plot.grow(timeLine(minutes), minutes - 2);
            QCOMPARE(plot.lastPlace(), minutes - 1);
        }
        TimeLinePlot anew;
        anew.setFrame(bench.frame);
        anew.load(timeLine(240));
        QCOMPARE(plot.picture(), anew.picture());
    }

    void volumesAreRedAndGreen()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(timeLine(240));
        const QImage usual = plot.picture().copy();
        const QRect pane = plot.panes().volume;
        QVERIFY(countOf(usual, red, pane) > 100);
        QVERIFY(countOf(usual, green, pane) > 100);
        bench.colours.setRedUp(false);
        plot.setFrame(bench.frame);
        QCOMPARE(countOf(plot.picture(), red, pane), countOf(usual, green, pane));
    }

    void anOpenMarketGrows()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBTimeLine line = timeLine(50);
        line.spans = {{morning, 0}};
        plot.load(line);
        QCOMPARE(plot.axis().places(), 60);
        const int x = plot.middleOf(49);
        ZvUBTimeLine longer = timeLine(100);
        longer.spans = line.spans;
        plot.grow(longer, 49);
        QCOMPARE(plot.axis().places(), 120);
        QVERIFY(plot.middleOf(49) < x);
    }

    void withoutAPreviousClose()
    {
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBTimeLine line = timeLine(30);
        line.previousClose = 0;
        plot.load(line);
        plot.picture();
        QVERIFY(textOf(plot.rightLabel(plot.panes().price.top() + 5)).isEmpty());
        QCOMPARE(plot.valueBox(3).rows[4].value.view().toString(), QStringLiteral("--"));
        QCOMPARE(plot.priceLegend(-1).count, std::size_t(3));
    }

    void unusualFiguresAreDrawn_data()
    {
        QTest::addColumn<double>("price");
        QTest::addColumn<double>("previousClose");
        QTest::addColumn<int>("minutes");
        const double endless = std::numeric_limits<double>::infinity();
        QTest::newRow("none") << 1.0 << 100.0 << 0;
        QTest::newRow("nothing at all") << 1.0 << 0.0 << 0;
        QTest::newRow("one") << 100.0 << 100.0 << 1;
        QTest::newRow("equal") << 100.0 << 100.0 << 200;
        QTest::newRow("one fen") << 0.01 << 0.01 << 20;
        QTest::newRow("huge") << 1e300 << 1.0 << 20;
        QTest::newRow("no number") << endless << endless << 20;
        QTest::newRow("from end to end") << -1.7e308 << 1.7e308 << 20;
        QTest::newRow("huge figures of the wire") << 9e16 << 0.01 << 20;
    }
    void unusualFiguresAreDrawn()
    {
        QFETCH(double, price);
        QFETCH(double, previousClose);
        QFETCH(int, minutes);
        ZvUBTimeLine line = timeLine(minutes);
        line.previousClose = previousClose;
        for (ZvUBMinute &dealt : line.minutes) {
            dealt.price = dealt.average = price;
            dealt.volume = 0;
        }
        for (const QSize &size : {QSize(900, 600), QSize(150, 90), QSize(40, 40), QSize(1, 1),
                                  QSize(0, 0), QSize(2000, 3), QSize(3, 2000)}) {
            PlotBench bench(size);
            TimeLinePlot plot;
            plot.setFrame(bench.frame);
            plot.load(line);
            QCOMPARE(plot.picture().size(), size);
            plot.grow(line, minutes - 1);
            plot.picture();
            plot.placeAt(10);
        }
    }
};

ZV_TEST(TimeLinePlotTest)
#include "test_timelineplot.moc"
