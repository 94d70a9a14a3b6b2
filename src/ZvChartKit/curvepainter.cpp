#include "ZvChartKit/curvepainter.h"

#include "ZvChartKit/valueaxis.h"

#include <algorithm>
#include <cmath>

namespace zvplot {

namespace {
constexpr int fillOpacity = 22; // of 256
} // namespace

void CurvePainter::draw(const std::vector<CurvePoint> &points, int begin, int end, QRgb colour)
{
    for (int i = std::max(0, begin); i < end; ++i) {
        const CurvePoint &point = points[static_cast<std::size_t>(i)];
        if (std::isnan(point.first))
            continue;
        const double to = heightOf(point.first);
        const CurvePoint *before = i > 0 ? &points[static_cast<std::size_t>(i - 1)] : nullptr;
        double at = to;
        if (before && !std::isnan(before->last)) {
            at = heightOf(before->last);
            const double slope = (to - at) / (point.x - before->x);
            for (int x = before->x + 1; x < point.x; ++x) {
                column(x, at, at + slope, colour);
                at += slope;
            }
        }
        // The column of the point itself also holds how far the curve goes within it.
        const double top = std::min({at, to, heightOf(point.high)});
        const double bottom = std::max({at, to, heightOf(point.low)});
        column(point.x, top, bottom, colour);
    }
}

double CurvePainter::heightOf(double value) const
{
    // The middle of a row, or between two of them for an even thickness: a level line is sharp.
    const double y = m_axis.y(value);
    return m_thickness % 2 == 1 ? std::floor(y) + 0.5 : std::round(y);
}

void CurvePainter::column(int x, double from, double to, QRgb colour)
{
    const double half = m_thickness / 2.0;
    const double top = std::min(from, to) - half;
    const double bottom = std::max(from, to) + half;
    if (m_fillTo >= 0)
        m_pixels.tint(m_left + x, static_cast<int>(std::ceil(bottom)), m_fillTo, colour,
                      fillOpacity);
    for (int i = 0; i < m_thickness; ++i)
        m_pixels.cover(m_left + x + i, top, bottom, colour);
}

} // namespace zvplot
