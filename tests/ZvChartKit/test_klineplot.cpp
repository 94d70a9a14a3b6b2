#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/klineplot.h"
#include "ZvChartKit/plotbench.h"
#include "support/testregistry.h"

#include <limits>

Q_DECLARE_METATYPE(ZvUBBar)

using namespace zvplot;
using chartsamples::bar;

namespace {

constexpr QRgb red = 0xffea3835;
constexpr QRgb green = 0xff4bff57;

ZvUBKLine lineOf(const QVector<ZvUBBar> &bars)
{
    ZvUBKLine line;
    line.collectionId = QStringLiteral("1001");
    line.bars = bars;
    return line;
}

QString textsOf(const Legend &legend)
{
    QStringList texts;
    for (std::size_t i = 0; i < legend.count; ++i)
        texts.append(legend.entries[i].text.view().toString());
    return texts.join(QLatin1Char('|'));
}

} // namespace

class KLinePlotTest : public QObject
{
    Q_OBJECT

private slots:
    void candlesStandFromLowToHigh()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(
            lineOf({bar("2019-12-30", 10, 14, 9, 13, 10), bar("2019-12-31", 13, 13.5, 8, 11)}),
            KLinePlot::Period::Day);
        const QImage &picture = plot.picture();
        const QRect pane = plot.panes().price;
        const int rise = plot.middleOf(0);
        const int fall = plot.middleOf(1);
        // The prices 14 and 8 with a twentieth of their distance free on either side.
        const auto rowOf = [&pane](double price) {
            return pane.top() + int((14.3 - price) / 6.6 * pane.height());
        };
        int wick = -1;
        for (int x = rise - 2; x <= rise + 2 && wick < 0; ++x) {
            if (rowsOf(picture, x, red, pane).first == rowOf(14))
                wick = x;
        }
        QVERIFY(wick >= 0);
        QCOMPARE(rowsOf(picture, wick, red, pane).last, rowOf(9));
        int down = -1;
        for (int x = fall - 2; x <= fall + 2 && down < 0; ++x) {
            if (rowsOf(picture, x, green, pane).first == rowOf(13.5))
                down = x;
        }
        QVERIFY(down >= 0);
        QCOMPARE(rowsOf(picture, down, green, pane).last, rowOf(8));
        // Beside the wick stands the body.
        QCOMPARE(rowsOf(picture, down + 1, green, pane).first, rowOf(13));
        QCOMPARE(rowsOf(picture, down + 1, green, pane).last, rowOf(11));
        // A rise is hollow.
        QCOMPARE(picture.pixel(wick + 1, (rowOf(13) + rowOf(10)) / 2), 0xff16181cu);
        QCOMPARE(picture.pixel(wick + 1, rowOf(13)), red);
    }

    void oneSettingTurnsEverySeriesAround()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(chartsamples::kLine(300), KLinePlot::Period::Day);
        const QImage usual = plot.picture().copy();
        bench.colours.setRedUp(false);
        plot.setFrame(bench.frame);
        const QImage turned = plot.picture().copy();
        for (const QRect &pane :
             {plot.panes().price, plot.panes().volume, plot.panes().indicator}) {
            QVERIFY(countOf(usual, red, pane) > 20);
            QVERIFY(countOf(usual, green, pane) > 20);
            QCOMPARE(countOf(turned, red, pane), countOf(usual, green, pane));
            QCOMPARE(countOf(turned, green, pane), countOf(usual, red, pane));
        }
        bench.colours.setRedUp(true);
        plot.setFrame(bench.frame);
        QCOMPARE(plot.picture(), usual);
    }

    // A new price repaints its strip alone, and the picture is the one of a plot that draws all.
    void aNewPriceChangesOnlyItsStrip_data()
    {
        QTest::addColumn<int>("study");
        QTest::addColumn<int>("zoom");
        QTest::addColumn<double>("scale");
        QTest::newRow("macd") << 0 << 0 << 1.0;
        QTest::newRow("kdj") << 1 << 0 << 1.0;
        QTest::newRow("rsi, wide") << 2 << 6 << 1.0;
        QTest::newRow("folded") << 0 << -9 << 1.0;
        QTest::newRow("narrow") << 1 << -6 << 1.5;
        QTest::newRow("doubled") << 0 << 0 << 2.0;
    }
    void aNewPriceChangesOnlyItsStrip()
    {
        QFETCH(int, study);
        QFETCH(int, zoom);
        QFETCH(double, scale);
        PlotBench bench(QSize(900, 600), scale);
        ZvUBKLine line = chartsamples::kLine(3000, 9);
        const auto setUp = [&](KLinePlot &plot) {
            plot.setFrame(bench.frame);
            plot.load(line, KLinePlot::Period::Day);
            plot.setStudy(static_cast<KLinePlot::Study>(study));
            plot.zoom(zoom, plot.lastPlace());
        };
        KLinePlot plot;
        setUp(plot);
        QImage before = plot.picture().copy();
        ZvUBBar &last = line.bars.last();
        int strips = 0;
        for (const double by : {0.01, -0.02, 0.05, 0.0, -0.01, 0.03, 0.25, -0.4}) {
            last.close += by;
            last.high = std::max(last.high, last.close);
            last.low = std::min(last.low, last.close);
            last.volume += 1;
            const ChartPlot::Change change = plot.grow(line, line.bars.size() - 1);
            const QImage after = plot.picture().copy();
            KLinePlot anew;
            setUp(anew);
            QVERIFY2(after == anew.picture(), qPrintable(QString::number(by)));
            if (!change.isEverything) {
                ++strips;
                QVERIFY(change.strip.width() < 120);
                QVERIFY(areEqualBut(after, before, change.strip));
            }
            before = after;
        }
        QVERIFY(strips >= 5);
    }

    void aNewHighMovesTheAxis()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBKLine line = chartsamples::kLine(100);
        plot.load(line, KLinePlot::Period::Day);
        plot.picture();
        const int row = plot.priceRow(50);
        line.bars.last().high = line.bars.last().close = 500;
        QVERIFY(plot.grow(line, 99).isEverything);
        plot.picture();
        QVERIFY(plot.priceRow(50) > row);
        QVERIFY(plot.priceRow(99) >= plot.panes().price.top());
    }

    void aPriceOutOfViewChangesNoPicture()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBKLine line = chartsamples::kLine(1000);
        plot.load(line, KLinePlot::Period::Day);
        plot.panBy(300);
        const QImage before = plot.picture().copy();
        line.bars.last().close += 1;
        line.bars.last().high += 1;
        const ChartPlot::Change change = plot.grow(line, 999);
        QVERIFY(!change.isEverything);
        QVERIFY(change.strip.isEmpty());
        QCOMPARE(plot.picture(), before);
        plot.showLast();
        KLinePlot anew;
        anew.setFrame(bench.frame);
        anew.load(line, KLinePlot::Period::Day);
        QCOMPARE(plot.picture(), anew.picture());
    }

    // Folded or not, the axis knows the extremes of all bars in view.
    void theAxisHoldsEveryBarInView()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBKLine line = chartsamples::kLine(20000, 4);
        line.bars[15000].high = 9000;
        line.bars[17000].low = 0.5;
        plot.load(line, KLinePlot::Period::Day);
        plot.zoom(-40, plot.lastPlace());
        QVERIFY(plot.window().barsPerColumn() > 8);
        const QRect pane = plot.panes().price;
        const QImage &picture = plot.picture();
        int top = pane.bottom();
        const int x = plot.middleOf(15000);
        for (int y = pane.bottom(); y >= pane.top(); --y) {
            if (picture.pixel(x, y) == red || picture.pixel(x, y) == green)
                top = y;
        }
        // All of the range but the twentieth that is left free.
        QVERIFY(top - pane.top() <= pane.height() / 20 + 1);
        QVERIFY(top - pane.top() >= pane.height() / 25);
    }

    void legendsTellThePlace()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        QVector<ZvUBBar> bars;
        for (int i = 1; i <= 10; ++i)
            bars.append(bar("2019-12-31", i, i, i, i, i * 10));
        plot.load(lineOf(bars), KLinePlot::Period::Week);
        QCOMPARE(textsOf(plot.priceLegend(-1)),
                 QStringLiteral("周K|MA5 8.00|MA10 5.50|MA20 --|MA30 --"));
        QCOMPARE(textsOf(plot.priceLegend(4)),
                 QStringLiteral("周K|MA5 3.00|MA10 --|MA20 --|MA30 --"));
        QCOMPARE(textsOf(plot.volumeLegend(4)), QStringLiteral("成交量 50|MA5 30|MA10 --"));
        QVERIFY(textsOf(plot.indicatorLegend(-1)).startsWith(QLatin1String("DIF ")));
        plot.setStudy(KLinePlot::Study::Kdj);
        QVERIFY(textsOf(plot.indicatorLegend(-1)).startsWith(QLatin1String("K ")));
        plot.setStudy(KLinePlot::Study::Rsi);
        QCOMPARE(textsOf(plot.indicatorLegend(-1)),
                 QStringLiteral("RSI6 100.00|RSI12 100.00|RSI24 100.00"));
    }

    void theValueBoxTellsTheBar()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        plot.load(lineOf({bar("2019-12-30", 10, 14, 9, 10), bar("2019-12-31", 10, 13.5, 8, 11, 5)}),
                  KLinePlot::Period::Day);
        const ValueBox box = plot.valueBox(1);
        QCOMPARE(int(box.count), plot.valueBoxRows());
        QStringList rows;
        for (std::size_t i = 0; i < box.count; ++i)
            rows.append(box.rows[i].name.toString() + box.rows[i].value.view().toString());
        QCOMPARE(rows.join(QLatin1Char('|')),
                 QStringLiteral("日期2019-12-31|开盘10.00|最高13.50|最低8.00|收盘11.00|"
                                "涨跌+1.00|涨幅+10.00%|成交量5|成交额55.00"));
        QCOMPARE(int(box.rows[2].ink), int(Ink::Up));
        QCOMPARE(int(box.rows[3].ink), int(Ink::Down));
        QCOMPARE(int(box.rows[1].ink), int(Ink::Strong));
    }

    void barsInFrontLeaveThePicture()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        const ZvUBKLine whole = chartsamples::kLine(900, 6);
        ZvUBKLine part = whole;
        part.bars = whole.bars.mid(400);
        plot.load(part, KLinePlot::Period::Day);
        const int x = plot.middleOf(450);
        plot.prepend(whole, 400);
        QCOMPARE(plot.middleOf(850), x);
        QCOMPARE(plot.lastPlace(), 899);
    }

    void anotherAnswerOfTheSameCollectionStaysWhereTheUserLooks()
    {
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        const ZvUBKLine line = chartsamples::kLine(1000, 6);
        plot.load(line, KLinePlot::Period::Day);
        plot.panBy(640);
        const int x = plot.middleOf(880);
        ZvUBKLine fewer = line;
        fewer.bars = line.bars.mid(200);
        plot.load(fewer, KLinePlot::Period::Day);
        QCOMPARE(plot.middleOf(680), x);

        ZvUBKLine other = line;
        other.collectionId = QStringLiteral("1002");
        plot.load(other, KLinePlot::Period::Day);
        QVERIFY(plot.window().isLastVisible());
    }

    void unusualFiguresAreDrawn_data()
    {
        QTest::addColumn<QVector<ZvUBBar>>("bars");
        const double endless = std::numeric_limits<double>::infinity();
        const double none = std::numeric_limits<double>::quiet_NaN();
        QTest::newRow("none") << QVector<ZvUBBar>();
        QTest::newRow("one") << QVector<ZvUBBar>{bar("2019-12-31", 1, 2, 1, 2)};
        QTest::newRow("equal") << QVector<ZvUBBar>(100, bar("2019-12-31", 5, 5, 5, 5));
        QTest::newRow("no volume") << QVector<ZvUBBar>(50, bar("2019-12-31", 5, 6, 4, 5, 0));
        QTest::newRow("zero") << QVector<ZvUBBar>(50, bar("", 0, 0, 0, 0, 0));
        QTest::newRow("huge") << QVector<ZvUBBar>{
            bar("2019-12-30", 1e-9, 1e300, 0, 5, 1),
            bar("2019-12-31", 9e15, 9e15, 1, 2, std::numeric_limits<qint64>::max())};
        QTest::newRow("no numbers") << QVector<ZvUBBar>{bar("x", none, endless, -endless, none)};
    }
    void unusualFiguresAreDrawn()
    {
        QFETCH(QVector<ZvUBBar>, bars);
        for (const QSize &size : {QSize(900, 600), QSize(120, 90), QSize(40, 40), QSize(1, 1),
                                  QSize(0, 0), QSize(2000, 3), QSize(3, 2000)}) {
            PlotBench bench(size);
            KLinePlot plot;
            plot.setFrame(bench.frame);
            plot.load(lineOf(bars), KLinePlot::Period::Month);
            QCOMPARE(plot.picture().size(), size);
            for (int study = 0; study < 3; ++study) {
                plot.setStudy(static_cast<KLinePlot::Study>(study));
                plot.zoom(3, plot.lastPlace());
                plot.picture();
                plot.zoom(-50, 0);
                plot.picture();
                plot.panBy(7);
                plot.grow(lineOf(bars), bars.size() - 1);
                plot.picture();
                plot.placeAt(10);
            }
        }
    }
};

ZV_TEST(KLinePlotTest)
#include "test_klineplot.moc"
