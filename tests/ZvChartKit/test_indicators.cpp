#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/indicators.h"
#include "support/testregistry.h"

#include <cmath>
#include <vector>

using namespace zvplot;

namespace {

BarSeries seriesOf(const ZvUBKLine &line)
{
    BarSeries series;
    series.update(line.bars, 0);
    return series;
}

// A series of closes alone: each bar opens, peaks and ends there.
BarSeries seriesOfCloses(const std::vector<double> &closes)
{
    QVector<ZvUBBar> bars;
    for (const double close : closes)
        bars.append(chartsamples::bar("2019-12-31", close, close, close, close));
    BarSeries series;
    series.update(bars, 0);
    return series;
}

// The exponential mean as the sum it stands for: each earlier value weighs less by the same share.
double exponentialMean(const std::vector<double> &values, std::size_t at, int period)
{
    const double share = 2.0 / (period + 1);
    double sum = values[0] * std::pow(1 - share, double(at));
    for (std::size_t i = 1; i <= at; ++i)
        sum += share * values[i] * std::pow(1 - share, double(at - i));
    return sum;
}

bool isNear(double one, double two)
{
    if (std::isnan(one) || std::isnan(two))
        return std::isnan(one) && std::isnan(two);
    return std::abs(one - two) <= 1e-8 * (1 + std::abs(two));
}

} // namespace

class IndicatorsTest : public QObject
{
    Q_OBJECT

private slots:
    void averagesByHand()
    {
        MovingAverages averages(MovingAverages::Closes, {{u"MA2", 2}, {u"MA3", 3}});
        averages.update(seriesOfCloses({1, 2, 6, 10}), 0);
        QCOMPARE(averages.curveCount(), 2);
        QCOMPARE(averages.name(1).toString(), QStringLiteral("MA3"));
        QVERIFY(std::isnan(averages.curve(0)[0]));
        QCOMPARE(averages.curve(0)[1], 1.5);
        QCOMPARE(averages.curve(0)[3], 8.0);
        QVERIFY(std::isnan(averages.curve(1)[1]));
        QCOMPARE(averages.curve(1)[2], 3.0);
        QCOMPARE(averages.curve(1)[3], 6.0);
    }

    void averagesOfVolumes()
    {
        BarSeries series;
        series.update({chartsamples::bar("2019-12-30", 1, 1, 1, 1, 10),
                       chartsamples::bar("2019-12-31", 1, 1, 1, 1, 30)},
                      0);
        MovingAverages averages(MovingAverages::Volumes, {{u"MA2", 2}});
        averages.update(series, 0);
        QCOMPARE(averages.curve(0)[1], 20.0);
    }

    void macdByHand()
    {
        // 10, then 13: EMA12 = 10 + 3 * 2/13, EMA26 = 10 + 3 * 2/27.
        Macd macd;
        macd.update(seriesOfCloses({10, 13}), 0);
        const double dif = 3 * 2.0 / 13 - 3 * 2.0 / 27;
        QCOMPARE(macd.curve(Macd::Dif)[0], 0.0);
        QVERIFY(isNear(macd.curve(Macd::Dif)[1], dif));
        QVERIFY(isNear(macd.curve(Macd::Dea)[1], dif * 0.2));
        QVERIFY(isNear(macd.curve(Macd::Bar)[1], 2 * dif * 0.8));
    }

    void macdAgainstItsSums()
    {
        const BarSeries series = seriesOf(chartsamples::kLine(120));
        Macd macd;
        macd.update(series, 0);
        std::vector<double> closes;
        std::vector<double> difs;
        for (int bar = 0; bar < series.size(); ++bar) {
            const auto at = static_cast<std::size_t>(bar);
            closes.push_back(series.at(bar).close);
            difs.push_back(exponentialMean(closes, at, 12) - exponentialMean(closes, at, 26));
            const double dea = exponentialMean(difs, at, 9);
            QVERIFY2(isNear(macd.curve(Macd::Dif)[at], difs.back()),
                     qPrintable(QString::number(bar)));
            QVERIFY(isNear(macd.curve(Macd::Dea)[at], dea));
            QVERIFY(isNear(macd.curve(Macd::Bar)[at], 2 * (difs.back() - dea)));
        }
    }

    void kdjByHand()
    {
        BarSeries series;
        series.update({chartsamples::bar("2019-12-30", 10, 12, 8, 11),
                       chartsamples::bar("2019-12-31", 11, 16, 11, 16)},
                      0);
        Kdj kdj;
        kdj.update(series, 0);
        // First bar: 75 of 100; K = (2*50 + 75)/3, D = (2*50 + K)/3.
        const double k0 = 175.0 / 3;
        const double d0 = (100 + k0) / 3;
        QVERIFY(isNear(kdj.curve(0)[0], k0));
        QVERIFY(isNear(kdj.curve(1)[0], d0));
        QVERIFY(isNear(kdj.curve(2)[0], 3 * k0 - 2 * d0));
        // Second bar: at the top of 8 to 16.
        const double k1 = (2 * k0 + 100) / 3;
        QVERIFY(isNear(kdj.curve(0)[1], k1));
        QVERIFY(isNear(kdj.curve(1)[1], (2 * d0 + k1) / 3));
    }

    void kdjLooksBackNineBars()
    {
        const BarSeries series = seriesOf(chartsamples::kLine(60));
        Kdj kdj;
        kdj.update(series, 0);
        double k = 50;
        double d = 50;
        for (int bar = 0; bar < series.size(); ++bar) {
            double high = -1;
            double low = 1e9;
            for (int i = 0; i < series.size(); ++i) {
                if (i > bar || i + 9 <= bar)
                    continue;
                high = std::max(high, series.at(i).high);
                low = std::min(low, series.at(i).low);
            }
            const double share = 100 * (series.at(bar).close - low) / (high - low);
            k = k * 2 / 3 + share / 3;
            d = d * 2 / 3 + k / 3;
            const auto at = static_cast<std::size_t>(bar);
            QVERIFY(isNear(kdj.curve(0)[at], k));
            QVERIFY(isNear(kdj.curve(1)[at], d));
            QVERIFY(isNear(kdj.curve(2)[at], 3 * k - 2 * d));
        }
    }

    void rsiByHand()
    {
        // Changes +3 and -1: rises 3, then 3 - 3/6 = 2.5; falls 0, then 1/6.
        Rsi rsi;
        rsi.update(seriesOfCloses({10, 13, 12}), 0);
        QVERIFY(std::isnan(rsi.curve(0)[0]));
        QCOMPARE(rsi.curve(0)[1], 100.0);
        QVERIFY(isNear(rsi.curve(0)[2], 100 * 2.5 / (2.5 + 1.0 / 6)));
        QVERIFY(isNear(rsi.curve(1)[2], 100 * 2.75 / (2.75 + 1.0 / 12)));
        QVERIFY(isNear(rsi.curve(2)[2], 100 * 2.875 / (2.875 + 1.0 / 24)));
    }

    void nothingMovesNothing()
    {
        const BarSeries series = seriesOfCloses(std::vector<double>(50, 7.5));
        Macd macd;
        Kdj kdj;
        Rsi rsi;
        macd.update(series, 0);
        kdj.update(series, 0);
        rsi.update(series, 0);
        QCOMPARE(macd.curve(Macd::Dif)[49], 0.0);
        QCOMPARE(macd.curve(Macd::Bar)[49], 0.0);
        QCOMPARE(kdj.curve(0)[49], 50.0);
        QCOMPARE(kdj.curve(2)[49], 50.0);
        QCOMPARE(rsi.curve(1)[49], 50.0);
    }

    // A changed or new last bar, worked out alone, gives what all bars worked out anew give.
    void stepByStepIsTheSameAsAtOnce()
    {
        const ZvUBKLine whole = chartsamples::kLine(200, 5);
        MovingAverages averages(MovingAverages::Closes, {{u"MA5", 5}, {u"MA30", 30}});
        Macd macd;
        Kdj kdj;
        Rsi rsi;
        const std::vector<Indicator *> grown{&averages, &macd, &kdj, &rsi};
        BarSeries series;
        for (int size = 1; size <= whole.bars.size(); ++size) {
            QVector<ZvUBBar> bars = whole.bars.mid(0, size);
            for (const double wrong : {3.0, -2.0, 0.0}) { // the last price on its way
                bars.last().close = whole.bars.at(size - 1).close + wrong;
                series.update(bars, size - 1);
                for (Indicator *indicator : grown)
                    indicator->update(series, size - 1);
            }
        }
        MovingAverages averagesAtOnce(MovingAverages::Closes, {{u"MA5", 5}, {u"MA30", 30}});
        Macd macdAtOnce;
        Kdj kdjAtOnce;
        Rsi rsiAtOnce;
        const std::vector<Indicator *> fresh{&averagesAtOnce, &macdAtOnce, &kdjAtOnce, &rsiAtOnce};
        const BarSeries all = seriesOf(whole);
        for (std::size_t i = 0; i < fresh.size(); ++i) {
            fresh[i]->update(all, 0);
            for (int curve = 0; curve < fresh[i]->curveCount(); ++curve) {
                for (std::size_t bar = 0; bar < 200; ++bar)
                    QVERIFY(isNear(grown[i]->curve(curve)[bar], fresh[i]->curve(curve)[bar]));
            }
        }
    }

    void noBars()
    {
        Rsi rsi;
        rsi.update(BarSeries(), 0);
        QVERIFY(rsi.curve(0).empty());
        rsi.update(seriesOfCloses({1, 2}), 0);
        rsi.update(BarSeries(), 0);
        QVERIFY(rsi.curve(2).empty());
    }
};

ZV_TEST(IndicatorsTest)
#include "test_indicators.moc"
