#include "ZvChartKit/barcolumns.h"

#include "ZvChartKit/barwindow.h"

#include <algorithm>

namespace zvplot {

void BarColumns::fold(const BarSeries &bars, const BarWindow &window, const Indicators &indicators)
{
    m_indicators = indicators;
    const int first = window.firstColumn();
    const int last = window.lastColumn();
    const bool isAny = !bars.isEmpty() && first <= last;
    const int newest = isAny ? window.columnOf(bars.size() - 1) : 0;
    m_firstColumn = isAny ? std::max(window.columnOf(0), first - 1) : 0;
    const int end = isAny ? std::min(newest, last + 1) + 1 : 0;
    m_beginInView = static_cast<std::size_t>(isAny ? first - m_firstColumn : 0);
    m_endInView = static_cast<std::size_t>(isAny ? last + 1 - m_firstColumn : 0);
    m_holdNewest = isAny && end == newest + 1;

    m_columns.resize(static_cast<std::size_t>(end - m_firstColumn));
    for (std::size_t pane = 0; pane < PaneCount; ++pane) {
        m_curves[pane].resize(static_cast<std::size_t>(indicators[pane]->curveCount()));
        for (std::vector<CurvePoint> &curve : m_curves[pane])
            curve.resize(m_columns.size(), CurvePoint(0));
    }
    for (std::size_t index = 0; index < m_columns.size(); ++index)
        foldColumn(bars, window, index);
}

void BarColumns::foldLast(const BarSeries &bars, const BarWindow &window)
{
    foldColumn(bars, window, m_columns.size() - 1);
}

ValueRange BarColumns::prices() const
{
    ValueRange range;
    for (std::size_t index = m_beginInView; index < m_endInView; ++index) {
        range.take(m_columns[index].high);
        range.take(m_columns[index].low);
    }
    return range;
}

double BarColumns::mostVolume() const
{
    double most = 0;
    for (std::size_t index = m_beginInView; index < m_endInView; ++index)
        most = std::max(most, m_columns[index].volume);
    return most;
}

ValueRange BarColumns::values(Pane pane) const
{
    ValueRange range;
    for (const std::vector<CurvePoint> &curve : m_curves[pane]) {
        for (std::size_t index = m_beginInView; index < m_endInView; ++index)
            range.take(curve[index]);
    }
    return range;
}

void BarColumns::foldColumn(const BarSeries &bars, const BarWindow &window, std::size_t index)
{
    const int column = m_firstColumn + static_cast<int>(index);
    m_columns[index] = foldedBars(bars, window, column);
    for (std::size_t pane = 0; pane < PaneCount; ++pane) {
        for (std::size_t curve = 0; curve < m_curves[pane].size(); ++curve)
            m_curves[pane][curve][index]
                = foldedCurve(m_indicators[pane]->curve(static_cast<int>(curve)), window, column);
    }
}

} // namespace zvplot
