#pragma once

#include "ZvChartKit/barcolumns.h"
#include "ZvChartKit/chartframe.h"
#include "ZvChartKit/pixels.h"
#include "ZvChartKit/valueaxis.h"

namespace zvplot {

class BarWindow;

// One axis for each pane of a K line.
struct KLineAxes {
    ValueAxis price;
    ValueAxis volume;
    ValueAxis study;

    bool operator==(const KLineAxes &other) const
    {
        return price == other.price && volume == other.volume && study == other.study;
    }
};

// Draws the columns of a K line: candles, volumes, and the curves of all panes over them.
class KLinePainter
{
public:
    // `hasStudyBars`: the last curve of the lowest pane stands as bars around zero.
    KLinePainter(const ChartFrame &frame, const ChartPanes &panes, const BarWindow &window,
                 const BarColumns &columns, const KLineAxes &axes, bool hasStudyBars);

    // Draws the columns from `begin` up to but without `end`.
    void paint(const Pixels &pixels, std::size_t begin, std::size_t end) const;

    // The colour of a curve by its place in its pane.
    static Ink curveInk(int curve)
    {
        return static_cast<Ink>(static_cast<int>(Ink::Curve1) + curve);
    }

private:
    // How the parts of a candle stand in its column.
    struct Shape {
        int wickLeft = 0;
        int wick = 0;
        int bodyLeft = 0;
        int body = 0; // 0: the column is too narrow for one
        bool isHollow = false;
    };

    static Shape shapeFor(int step, int line);
    QRgb directionColour(int direction) const;
    void paintCandle(Pixels &pixels, const BarColumn &column) const;
    void paintVolume(Pixels &pixels, const BarColumn &column) const;
    void paintStudyBar(Pixels &pixels, const BarColumn &column, const CurvePoint &bar) const;
    void paintCurves(const Pixels &pixels, BarColumns::Pane pane, const QRect &area,
                     const ValueAxis &axis, std::size_t begin, std::size_t end) const;

    const ChartFrame &m_frame;
    const ChartPanes &m_panes;
    const BarWindow &m_window;
    const BarColumns &m_columns;
    const KLineAxes &m_axes;
    bool m_hasStudyBars;
    Shape m_shape;
};

} // namespace zvplot
