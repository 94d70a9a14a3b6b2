#pragma once

#include "ZvChartKit/chartplot.h"

#include <QRegion>

#include <array>

class QPainter;

namespace zvplot {

// Where the crosshair is: a place of the plot, and a row of the frame.
struct Crosshair {
    int place = -1;
    int row = 0;

    bool isShown() const { return place >= 0; }
    bool operator==(const Crosshair &other) const
    {
        return place == other.place && (row == other.row || !isShown());
    }
    bool operator!=(const Crosshair &other) const { return !(*this == other); }
};

// What stands over the kept picture and follows the crosshair and the last price: the words above
// the panes, the last price on its axis, the crosshair with its labels, and the box of values. It
// asks for no memory, and draws only what the region to be painted touches.
class ChartOverlay
{
public:
    // A part of the overlay that is repainted as one.
    enum Part {
        RowLine,
        LeftLabel,
        RightLabel,
        PlaceLine, // this one and those below follow the place alone
        TimeLabel,
        Box,
        PriceHead,
        VolumeHead,
        IndicatorHead,
        LastPrice,
        PartCount
    };

    // `indicatorIndent` is room left free in front of the words of the lowest pane, `priceReserve`
    // behind those of the uppermost one.
    ChartOverlay(const ChartPlot &plot, const Crosshair &crosshair, int indicatorIndent,
                 int priceReserve);

    // Where a part stands; empty where there is none.
    QRect rectOf(Part part) const;

    void paint(QPainter *painter, const QRegion &region) const;

private:
    QRect boxRect() const;
    void paintHead(const QRect &head, const Legend &legend, int indent, int reserve) const;
    void paintLabel(QPainter *painter, const AxisLabel &label) const;
    void paintBox(QPainter *painter) const;
    QColor colour(Ink ink) const;

    const ChartPlot &m_plot;
    const ChartFrame &m_frame;
    const ChartPanes &m_panes;
    Crosshair m_crosshair;
    int m_indicatorIndent;
    int m_priceReserve;
};

} // namespace zvplot
