#pragma once

#include "ZvChartKit/folding.h"

#include <array>
#include <cstddef>
#include <vector>

namespace zvplot {

// What a window shows of a K line: its columns of bars, and beside them the curves of three panes,
// all folded. One column beyond either edge is among them, since curves come in from there and go
// out to it.
class BarColumns
{
public:
    enum Pane { Prices, Volumes, Study, PaneCount };
    using Indicators = std::array<const Indicator *, PaneCount>;

    void fold(const BarSeries &bars, const BarWindow &window, const Indicators &indicators);

    // Folds the last column anew, whose last bar has changed.
    void foldLast(const BarSeries &bars, const BarWindow &window);

    std::size_t size() const { return m_columns.size(); }
    bool isEmpty() const { return m_columns.empty(); }
    const BarColumn &at(std::size_t index) const { return m_columns[index]; }
    const BarColumn &last() const { return m_columns.back(); }
    int curveCount(Pane pane) const { return static_cast<int>(m_curves[pane].size()); }
    const std::vector<CurvePoint> &curve(Pane pane, int curve) const
    {
        return m_curves[pane][static_cast<std::size_t>(curve)];
    }

    // True where the newest bar is among them.
    bool holdNewest() const { return m_holdNewest; }

    // How far the columns within the window go.
    ValueRange prices() const;
    double mostVolume() const;
    ValueRange values(Pane pane) const;

private:
    void foldColumn(const BarSeries &bars, const BarWindow &window, std::size_t index);

    int m_firstColumn = 0;
    std::size_t m_beginInView = 0;
    std::size_t m_endInView = 0;
    bool m_holdNewest = false;
    Indicators m_indicators{};
    std::vector<BarColumn> m_columns;
    std::array<std::vector<std::vector<CurvePoint>>, PaneCount> m_curves;
};

} // namespace zvplot
