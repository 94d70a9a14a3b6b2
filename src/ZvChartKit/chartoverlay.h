#pragma once

#include "ZvChartKit/chartplot.h"
#include "ZvChartKit/crosshair.h"

#include <QRegion>

#include <array>

namespace zvplot {

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

    // Draws over a copy of the picture, of which the region of the widget is fresh.
    void paint(QImage *image, const QRegion &region) const;

private:
    QRect boxRect() const;
    QRect wordsIn(const QRect &head, int entries) const;
    void paintHead(const QRect &head, const Legend &legend) const;
    void paintLabel(Pixels *pixels, const AxisLabel &label) const;
    void paintBox(Pixels *pixels) const;
    QRgb colour(Ink ink) const;

    const ChartPlot &m_plot;
    const ChartFrame &m_frame;
    const ChartPanes &m_panes;
    Crosshair m_crosshair;
    int m_indicatorIndent;
    int m_priceReserve;
};

} // namespace zvplot
