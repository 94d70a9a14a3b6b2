#include "ZvChartKit/indicators.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zvplot {

namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

std::vector<QStringView> namesOf(const std::vector<MovingAverages::Average> &averages)
{
    std::vector<QStringView> names;
    for (const MovingAverages::Average &average : averages)
        names.push_back(average.name);
    return names;
}

double exponentialMean(double before, double value, int period)
{
    return before + (value - before) * 2.0 / (period + 1);
}

} // namespace

Indicator::Indicator(std::vector<QStringView> names, int keptCurves)
    : m_names(std::move(names)), m_curves(m_names.size() + static_cast<std::size_t>(keptCurves))
{
}

Indicator::~Indicator() = default;

void Indicator::update(const BarSeries &bars, int first)
{
    for (Curve &curve : m_curves)
        curve.resize(static_cast<std::size_t>(bars.size()));
    for (int bar = std::max(0, first); bar < bars.size(); ++bar)
        workOut(bars, bar);
}

MovingAverages::MovingAverages(Source source, std::vector<Average> averages)
    : Indicator(namesOf(averages), 0), m_source(source), m_averages(std::move(averages))
{
}

void MovingAverages::workOut(const BarSeries &bars, int bar)
{
    // Summed anew each time: a sum that is carried along drifts away from the mean of its bars.
    for (int curve = 0; curve < curveCount(); ++curve) {
        const int period = m_averages[static_cast<std::size_t>(curve)].period;
        double sum = 0;
        for (int i = std::max(0, bar - period + 1); i <= bar; ++i)
            sum += m_source == Closes ? bars.at(i).close : bars.at(i).volume;
        value(curve, bar) = bar + 1 < period ? none : sum / period;
    }
}

namespace {
enum MacdKept { FastMean = 3, SlowMean };
} // namespace

Macd::Macd() : Indicator({u"DIF", u"DEA", u"MACD"}, 2) { }

void Macd::workOut(const BarSeries &bars, int bar)
{
    const double close = bars.at(bar).close;
    const bool isFirst = bar == 0;
    value(FastMean, bar) = isFirst ? close : exponentialMean(value(FastMean, bar - 1), close, 12);
    value(SlowMean, bar) = isFirst ? close : exponentialMean(value(SlowMean, bar - 1), close, 26);
    const double dif = value(FastMean, bar) - value(SlowMean, bar);
    const double dea = isFirst ? dif : exponentialMean(value(Dea, bar - 1), dif, 9);
    value(Dif, bar) = dif;
    value(Dea, bar) = dea;
    value(Bar, bar) = 2 * (dif - dea);
}

Kdj::Kdj() : Indicator({u"K", u"D", u"J"}, 0) { }

void Kdj::workOut(const BarSeries &bars, int bar)
{
    double high = bars.at(bar).high;
    double low = bars.at(bar).low;
    for (int i = std::max(0, bar - 8); i < bar; ++i) {
        high = std::max(high, bars.at(i).high);
        low = std::min(low, bars.at(i).low);
    }
    const double position = high > low ? (bars.at(bar).close - low) / (high - low) * 100 : 50;
    const double k = ((bar > 0 ? value(0, bar - 1) : 50) * 2 + position) / 3;
    const double d = ((bar > 0 ? value(1, bar - 1) : 50) * 2 + k) / 3;
    value(0, bar) = k;
    value(1, bar) = d;
    value(2, bar) = 3 * k - 2 * d;
}

Rsi::Rsi() : Indicator({u"RSI6", u"RSI12", u"RSI24"}, 6) { }

void Rsi::workOut(const BarSeries &bars, int bar)
{
    static constexpr int periods[] = {6, 12, 24};
    for (int curve = 0; curve < 3; ++curve) {
        const int rises = 3 + 2 * curve;
        const int falls = rises + 1;
        if (bar == 0) {
            value(rises, bar) = value(falls, bar) = 0;
            value(curve, bar) = none;
            continue;
        }
        const double change = bars.at(bar).close - bars.at(bar - 1).close;
        const double period = bar == 1 ? 1 : periods[curve];
        const auto smoothed = [this, bar, period](int kept, double moved) {
            const double before = value(kept, bar - 1);
            value(kept, bar) = before + (moved - before) / period;
        };
        smoothed(rises, std::max(0.0, change));
        smoothed(falls, std::max(0.0, -change));
        const double moved = value(rises, bar) + value(falls, bar);
        value(curve, bar) = moved > 0 ? value(rises, bar) / moved * 100 : 50;
    }
}

} // namespace zvplot
