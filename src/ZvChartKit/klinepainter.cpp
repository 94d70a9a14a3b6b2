#include "ZvChartKit/klinepainter.h"

#include "ZvChartKit/barwindow.h"
#include "ZvChartKit/curvepainter.h"

#include <algorithm>

namespace zvplot {

KLinePainter::KLinePainter(const ChartFrame &frame, const ChartPanes &panes,
                           const BarWindow &window, const BarColumns &columns,
                           const KLineAxes &axes, bool hasStudyBars)
    : m_frame(frame), m_panes(panes), m_window(window), m_columns(columns), m_axes(axes),
      m_hasStudyBars(hasStudyBars), m_shape(shapeFor(window.step(), frame.line()))
{
}

void KLinePainter::paint(const Pixels &pixels, std::size_t begin, std::size_t end) const
{
    Pixels prices = pixels.within(m_panes.price);
    Pixels volumes = pixels.within(m_panes.volume);
    Pixels study = pixels.within(m_panes.indicator);
    const int barCurve = m_columns.curveCount(BarColumns::Study) - 1;
    for (std::size_t index = begin; index < end; ++index) {
        const BarColumn &column = m_columns.at(index);
        paintCandle(prices, column);
        paintVolume(volumes, column);
        if (m_hasStudyBars)
            paintStudyBar(study, column, m_columns.curve(BarColumns::Study, barCurve)[index]);
    }
    paintCurves(pixels, BarColumns::Prices, m_panes.price, m_axes.price, begin, end);
    paintCurves(pixels, BarColumns::Volumes, m_panes.volume, m_axes.volume, begin, end);
    paintCurves(pixels, BarColumns::Study, m_panes.indicator, m_axes.study, begin, end);
}

KLinePainter::Shape KLinePainter::shapeFor(int step, int line)
{
    Shape shape;
    shape.wick = std::min(line, step);
    // Body and wick have one middle: their widths are both even or both odd.
    int body = step * 3 / 4;
    body -= (body - shape.wick) % 2 != 0 ? 1 : 0;
    shape.body = body >= 3 * shape.wick ? body : 0;
    shape.wickLeft = (step - shape.wick) / 2;
    shape.bodyLeft = shape.wickLeft - (shape.body - shape.wick) / 2;
    shape.isHollow = shape.body >= 5 * shape.wick;
    return shape;
}

QRgb KLinePainter::directionColour(int direction) const
{
    return (*m_frame.colours)[direction < 0 ? Ink::Down : Ink::Up];
}

void KLinePainter::paintCandle(Pixels &pixels, const BarColumn &column) const
{
    const QRgb ink = directionColour(column.direction);
    const int left = m_panes.price.left() + m_window.leftOf(column.column);
    const int line = m_frame.line();
    const int high = m_axes.price.row(column.high);
    const int low = m_axes.price.row(column.low);
    pixels.fill(QRect(left + m_shape.wickLeft, high, m_shape.wick, std::max(line, low - high + 1)),
                ink);
    if (m_shape.body == 0)
        return;
    const int top = m_axes.price.row(std::max(column.open, column.close));
    const int bottom = m_axes.price.row(std::min(column.open, column.close));
    const QRect body(left + m_shape.bodyLeft, top, m_shape.body, std::max(line, bottom - top + 1));
    pixels.fill(body, ink);
    // A rise is told from a fall without colours, too.
    if (m_shape.isHollow && column.direction > 0)
        pixels.fill(body.adjusted(line, line, -line, -line), (*m_frame.colours)[Ink::Ground]);
}

void KLinePainter::paintVolume(Pixels &pixels, const BarColumn &column) const
{
    const QRect &pane = m_panes.volume;
    if (!(column.volume > 0) || pane.isEmpty())
        return;
    const bool hasBody = m_shape.body > 0;
    const int left = pane.left() + m_window.leftOf(column.column)
        + (hasBody ? m_shape.bodyLeft : m_shape.wickLeft);
    // Something was dealt, so something is seen.
    const int top = std::min(m_axes.volume.row(column.volume), pane.bottom() + 1 - m_frame.line());
    pixels.fill(QRect(left, top, hasBody ? m_shape.body : m_shape.wick, pane.bottom() + 1 - top),
                directionColour(column.volumeDirection));
}

void KLinePainter::paintStudyBar(Pixels &pixels, const BarColumn &column,
                                 const CurvePoint &bar) const
{
    if (m_panes.indicator.isEmpty())
        return;
    const int line = m_frame.line();
    const int beside = std::max(0, (m_shape.body - m_shape.wick) / 6);
    const int left
        = m_panes.indicator.left() + m_window.leftOf(column.column) + m_shape.wickLeft - beside;
    const int width = m_shape.wick + 2 * beside;
    const int zero = m_axes.study.row(0);
    const int top = std::min(m_axes.study.row(bar.high), zero - line);
    const int bottom = std::max(m_axes.study.row(bar.low), zero + line);
    if (bar.high > 0)
        pixels.fill(QRect(left, top, width, zero - top), directionColour(1));
    if (bar.low < 0)
        pixels.fill(QRect(left, zero + 1, width, bottom - zero), directionColour(-1));
}

void KLinePainter::paintCurves(const Pixels &pixels, BarColumns::Pane pane, const QRect &area,
                               const ValueAxis &axis, std::size_t begin, std::size_t end) const
{
    if (area.isEmpty())
        return;
    CurvePainter painter(pixels.within(area), axis, area.left(), m_frame.line());
    const bool endsWithBars = m_hasStudyBars && pane == BarColumns::Study;
    const int count = m_columns.curveCount(pane) - (endsWithBars ? 1 : 0);
    for (int curve = 0; curve < count; ++curve)
        painter.draw(m_columns.curve(pane, curve), static_cast<int>(begin), static_cast<int>(end),
                     (*m_frame.colours)[curveInk(curve)]);
}

} // namespace zvplot
