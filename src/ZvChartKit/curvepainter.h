#pragma once

#include "ZvChartKit/folding.h"
#include "ZvChartKit/pixels.h"

#include <vector>

namespace zvplot {

class ValueAxis;

// Draws a curve column by column: smooth where it rises and falls, sharp where it is level, and
// never more work than the plot has columns.
class CurvePainter
{
public:
    CurvePainter(const Pixels &pixels, const ValueAxis &axis, int left, int thickness)
        : m_pixels(pixels), m_axis(axis), m_left(left), m_thickness(thickness)
    {
    }

    // Tints the area between the curve and this row; none at first.
    void fillDownTo(int row) { m_fillTo = row; }

    // Draws the points from `begin` up to but without `end`, each with the line that leads to it
    // from the one before.
    void draw(const std::vector<CurvePoint> &points, int begin, int end, QRgb colour);

private:
    double heightOf(double value) const;
    void column(int x, double from, double to, QRgb colour);

    Pixels m_pixels;
    const ValueAxis &m_axis;
    int m_left;
    int m_thickness;
    int m_fillTo = -1;
};

} // namespace zvplot
