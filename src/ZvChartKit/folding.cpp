#include "ZvChartKit/folding.h"

#include "ZvChartKit/barwindow.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zvplot {

BarColumn foldedBars(const BarSeries &bars, const BarWindow &window, int column)
{
    const int begin = window.firstBarOf(column);
    const int end = window.firstBarOf(column + 1);
    BarColumn folded;
    folded.column = column;
    if (begin >= end)
        return folded;
    const Bar &first = bars.at(begin);
    folded.open = first.open;
    folded.high = first.high;
    folded.low = first.low;
    folded.volume = first.volume;
    int mostTraded = begin;
    for (int bar = begin + 1; bar < end; ++bar) {
        const Bar &next = bars.at(bar);
        folded.high = std::max(folded.high, next.high);
        folded.low = std::min(folded.low, next.low);
        if (next.volume > folded.volume) {
            folded.volume = next.volume;
            mostTraded = bar;
        }
    }
    folded.close = bars.at(end - 1).close;
    folded.volumeDirection = bars.directionOf(mostTraded);
    folded.direction = end - begin == 1 ? bars.directionOf(begin)
                                        : (folded.close < bars.referenceOf(begin) ? -1 : 1);
    return folded;
}

CurvePoint::CurvePoint(int middle)
    : x(middle), first(std::numeric_limits<double>::quiet_NaN()), last(first), low(first),
      high(first)
{
}

void CurvePoint::take(double value)
{
    if (!std::isfinite(value))
        return;
    last = value;
    if (std::isnan(first)) {
        first = low = high = value;
        return;
    }
    low = std::min(low, value);
    high = std::max(high, value);
}

CurvePoint foldedCurve(const Curve &curve, const BarWindow &window, int column)
{
    CurvePoint point(window.middleOf(column));
    const int end = window.firstBarOf(column + 1);
    for (int bar = window.firstBarOf(column); bar < end; ++bar)
        point.take(curve[static_cast<std::size_t>(bar)]);
    return point;
}

void ValueRange::take(double value)
{
    if (!std::isfinite(value))
        return;
    low = isEmpty ? value : std::min(low, value);
    high = isEmpty ? value : std::max(high, value);
    isEmpty = false;
}

void ValueRange::take(const CurvePoint &point)
{
    take(point.low);
    take(point.high);
}

} // namespace zvplot
