#pragma once

#include "ZvChartKit/chartcanvas.h"
#include "ZvModelKit/zvubkline.h"

#include <QImage>

// The product's chart in a window of its own.
class OurChart
{
public:
    OurChart();

    zvplot::ChartCanvas &canvas() { return m_canvas; }

    // Shows all bars, folded as far as that takes.
    void load(const ZvUBKLine &line);

    // Each paints before it returns.
    void paintAll(const ZvUBKLine &line); // lays everything out and draws it anew
    void changeLast(const ZvUBKLine &line);
    void moveCrosshair(const QPoint &at);
    void drag(int x); // of a drag that has begun
    void beginDrag(int x);
    void endDrag(int x);

    QImage picture();

private:
    zvplot::ChartCanvas m_canvas;
};
