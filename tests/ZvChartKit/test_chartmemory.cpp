#include "ZvChartKit/chartoverlay.h"
#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/klineplot.h"
#include "ZvChartKit/plotbench.h"
#include "ZvChartKit/timelineplot.h"
#include "support/testregistry.h"

#if defined(__SANITIZE_ADDRESS__)
// Of the sanitizer's run-time library, whose headers a compiler need not bring.
extern "C" int __sanitizer_install_malloc_and_free_hooks( // NOLINT(bugprone-reserved-identifier)
    void (*onMalloc)(const volatile void *, size_t), void (*onFree)(const volatile void *));
#endif

using namespace zvplot;

namespace {

#if defined(__SANITIZE_ADDRESS__)

thread_local bool isCounting = false;
thread_local int counted = 0;

void countOne(const volatile void *, size_t)
{
    if (isCounting)
        ++counted;
}

void skipOne(const volatile void *) { }

// How often memory is asked for, by anybody.
template <typename Action>
int allocationsOf(Action action)
{
    static const int installed = __sanitizer_install_malloc_and_free_hooks(countOne, skipOne);
    Q_UNUSED(installed)
    counted = 0;
    isCounting = true;
    action();
    isCounting = false;
    return counted;
}

#endif

// All that the crosshair needs to know of a place, as a move of the mouse asks for it.
int readPlace(const ChartPlot &plot, const Crosshair &crosshair)
{
    const ChartOverlay overlay(plot, crosshair, 100, 50);
    int sum = 0;
    for (int part = 0; part < ChartOverlay::PartCount; ++part)
        sum += overlay.rectOf(static_cast<ChartOverlay::Part>(part)).width();
    sum += plot.magnet(crosshair.place, crosshair.row);
    sum += static_cast<int>(
        plot.priceLegend(crosshair.place).count + plot.volumeLegend(crosshair.place).count
        + plot.indicatorLegend(crosshair.place).count + plot.valueBox(crosshair.place).count);
    return sum;
}

} // namespace

// A new price and a move of the crosshair come many times a second: no code of the kit asks for
// memory then. Painting texts, which is Qt's, is not part of it.
class ChartMemoryTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
#if !defined(__SANITIZE_ADDRESS__)
        QSKIP("only a build with AddressSanitizer can count");
#endif
    }

    void theCounterCounts()
    {
#if defined(__SANITIZE_ADDRESS__)
        std::vector<int> kept;
        QVERIFY(allocationsOf([&kept] { kept.resize(100); }) > 0);
#endif
    }

    void aNewPriceOfAKLine_data()
    {
        QTest::addColumn<int>("bars");
        QTest::addColumn<int>("zoom");
        QTest::newRow("usual") << 500 << 0;
        QTest::newRow("folded") << 20000 << -20;
    }
    void aNewPriceOfAKLine()
    {
#if defined(__SANITIZE_ADDRESS__)
        QFETCH(int, bars);
        QFETCH(int, zoom);
        PlotBench bench;
        KLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBKLine line = chartsamples::kLine(bars);
        line.bars.last().high += 1;
        plot.load(line, KLinePlot::Period::Day);
        plot.zoom(zoom, plot.lastPlace());
        plot.picture();
        ZvUBBar &last = line.bars.last();
        for (int i = 0; i < 10; ++i) {
            last.close = last.low + i * 0.01;
            bool isEverything = true;
            const int asked = allocationsOf([&] {
                isEverything = plot.grow(line, bars - 1).isEverything;
                plot.picture();
            });
            QVERIFY(!isEverything);
            QCOMPARE(asked, 0);
        }
#endif
    }

    void aNewPriceOfATimeLine()
    {
#if defined(__SANITIZE_ADDRESS__)
        PlotBench bench;
        TimeLinePlot plot;
        plot.setFrame(bench.frame);
        ZvUBTimeLine line = chartsamples::timeLine(200);
        plot.load(line);
        plot.picture();
        for (int i = 0; i < 10; ++i) {
            line.minutes.last().price = 100 + i * 0.01;
            line.minutes.last().volume = 5 + i;
            bool isEverything = true;
            const int asked = allocationsOf([&] {
                isEverything = plot.grow(line, 199).isEverything;
                plot.picture();
            });
            QVERIFY(!isEverything);
            QCOMPARE(asked, 0);
        }
#endif
    }

    void aMoveOfTheCrosshair()
    {
#if defined(__SANITIZE_ADDRESS__)
        PlotBench bench;
        KLinePlot kLine;
        kLine.setFrame(bench.frame);
        kLine.load(chartsamples::kLine(500), KLinePlot::Period::Day);
        TimeLinePlot timeLine;
        timeLine.setFrame(bench.frame);
        timeLine.load(chartsamples::timeLine(200));
        for (const ChartPlot *plot :
             {static_cast<ChartPlot *>(&kLine), static_cast<ChartPlot *>(&timeLine)}) {
            Crosshair crosshair;
            crosshair.place = plot->lastPlace();
            crosshair.row = 100;
            readPlace(*plot, crosshair);
            int sum = 0;
            const int asked = allocationsOf([&] {
                for (int x = 100; x < 700; x += 3) {
                    crosshair.place = plot->placeAt(x);
                    crosshair.row = x / 2;
                    sum += readPlace(*plot, crosshair);
                }
            });
            QVERIFY(sum > 0);
            QCOMPARE(asked, 0);
        }
#endif
    }
};

ZV_TEST(ChartMemoryTest)
#include "test_chartmemory.moc"
