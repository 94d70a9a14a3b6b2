#pragma once

#include "ZvChartKit/barseries.h"

#include <QStringView>

#include <vector>

namespace zvplot {

// One value for each bar; not a number where there is none yet.
using Curve = std::vector<double>;

// Curves that are worked out of the bars before them. A changed bar changes the values from it on
// and no others, so a new price costs one value a curve.
class Indicator
{
public:
    virtual ~Indicator();

    // Works out the values from bar `first` on.
    void update(const BarSeries &bars, int first);

    int curveCount() const { return static_cast<int>(m_names.size()); }
    QStringView name(int curve) const { return m_names[static_cast<std::size_t>(curve)]; }
    const Curve &curve(int curve) const { return m_curves[static_cast<std::size_t>(curve)]; }

protected:
    // Besides the curves that are shown, some keep what the next value is worked out from.
    Indicator(std::vector<QStringView> names, int keptCurves);

    virtual void workOut(const BarSeries &bars, int bar) = 0;

    double &value(int curve, int bar)
    {
        return m_curves[static_cast<std::size_t>(curve)][static_cast<std::size_t>(bar)];
    }

private:
    std::vector<QStringView> m_names;
    std::vector<Curve> m_curves;
};

// The plain mean of so many closes or volumes, from the first bar on that has so many behind it.
class MovingAverages : public Indicator
{
public:
    enum Source { Closes, Volumes };

    struct Average {
        QStringView name;
        int period;
    };

    MovingAverages(Source source, std::vector<Average> averages);

protected:
    void workOut(const BarSeries &bars, int bar) override;

private:
    Source m_source;
    std::vector<Average> m_averages;
};

// MACD(12, 26, 9): DIF is the distance of two exponential means of the closes, DEA the exponential
// mean of DIF, MACD twice the distance of the two. An exponential mean begins at its first value.
class Macd : public Indicator
{
public:
    enum Shown { Dif, Dea, Bar };

    Macd();

protected:
    void workOut(const BarSeries &bars, int bar) override;
};

// KDJ(9, 3, 3): K and D begin at 50. Where the highest and the lowest price of nine bars are the
// same, a close stands in the middle, at 50.
class Kdj : public Indicator
{
public:
    Kdj();

protected:
    void workOut(const BarSeries &bars, int bar) override;
};

// RSI(6, 12, 24): the smoothed rises as a share of the smoothed changes, from the second bar on; 50
// where nothing has moved.
class Rsi : public Indicator
{
public:
    Rsi();

protected:
    void workOut(const BarSeries &bars, int bar) override;
};

} // namespace zvplot
