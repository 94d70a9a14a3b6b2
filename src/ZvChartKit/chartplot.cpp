#include "ZvChartKit/chartplot.h"

#include "ZvChartKit/chartglyphs.h"

#include <cstdlib>

namespace zvplot {

namespace {

// In pixels of the widget.
constexpr int magnetReach = 6;
constexpr int axisGap = 5; // between a plot and the words of its axis
constexpr int labelHeight = 18;
constexpr int timeGap = 14; // between two words of the time axis

} // namespace

ChartPlot::ChartPlot() = default;

ChartPlot::~ChartPlot() = default;

void ChartPlot::setFrame(const ChartFrame &frame)
{
    m_frame = frame;
    everythingChanged();
}

const QImage &ChartPlot::picture()
{
    if (m_dirt == Dirt::Everything) {
        if (m_picture.size() != m_frame.size)
            m_picture = QImage(m_frame.size, QImage::Format_RGB32);
        if (!m_picture.isNull()) {
            m_picture.fill(colour(Ink::Ground));
            if (!m_panes.isEmpty()) {
                const Pixels pixels(&m_picture, m_picture.rect());
                paintStill(pixels);
                m_frame.glyphs->draw(pixels);
            }
        }
        keepBehind();
    } else if (m_dirt == Dirt::Last) {
        restoreBehind();
    }
    if (m_dirt != Dirt::Nothing && !m_strip.isEmpty())
        paintLast(Pixels(&m_picture, m_strip));
    m_dirt = Dirt::Nothing;
    return m_picture;
}

int ChartPlot::magnet(int place, int y) const
{
    const Figures figures = figuresOf(place);
    int nearest = y;
    int distance = m_frame.px(magnetReach) + 1;
    for (std::size_t i = 0; i < figures.count; ++i) {
        const int away = std::abs(figures.rows[i] - y);
        if (away < distance) {
            distance = away;
            nearest = figures.rows[i];
        }
    }
    return nearest;
}

int ChartPlot::nextFigure(int place, int y, bool isAbove) const
{
    const Figures figures = figuresOf(place);
    int nearest = y;
    for (std::size_t i = 0; i < figures.count; ++i) {
        const int row = figures.rows[i];
        const bool isBeyond = isAbove ? row < y : row > y;
        if (isBeyond && (nearest == y || std::abs(row - y) < std::abs(nearest - y)))
            nearest = row;
    }
    return nearest;
}

AxisLabel ChartPlot::timeLabel(int place) const
{
    AxisLabel label;
    if (m_panes.times.isEmpty())
        return label;
    label.text = timeText(place);
    const int width = textWidth(label.text) + 2 * m_frame.px(axisGap);
    const int most = m_panes.times.right() + 1 - width;
    const int x = std::clamp(middleOf(place) - width / 2, m_panes.times.left(),
                             std::max(m_panes.times.left(), most));
    label.rect = QRect(x, m_panes.times.top() + m_frame.line(), width, m_frame.px(labelHeight));
    return label;
}

ChartPlot::Change ChartPlot::everythingChanged()
{
    if (m_frame.glyphs)
        layOut();
    m_dirt = Dirt::Everything;
    return {true, QRect()};
}

ChartPlot::Change ChartPlot::lastChanged()
{
    if (m_dirt == Dirt::Everything)
        return {true, QRect()};
    m_dirt = Dirt::Last;
    return {false, m_strip};
}

int ChartPlot::textWidth(const ChartText &text) const
{
    return m_frame.glyphs->width(text.view());
}

void ChartPlot::paintFrames(Pixels pixels) const
{
    const int line = m_frame.line();
    const int width = m_frame.size.width();
    for (const QRect *pane : {&m_panes.price, &m_panes.volume, &m_panes.indicator}) {
        if (!pane->isEmpty())
            pixels.fill(QRect(0, pane->bottom() + 1, width, line), colour(Ink::Frame));
    }
    const int height = m_panes.bottom();
    if (m_panes.price.left() > 0)
        pixels.fill(QRect(m_panes.price.left() - line, 0, line, height), colour(Ink::Frame));
    pixels.fill(QRect(m_panes.price.right() + 1, 0, line, height), colour(Ink::Frame));
}

void ChartPlot::paintLevel(Pixels pixels, const QRect &pane, int row, Ink ink) const
{
    pixels.within(pane).fill(QRect(pane.left(), row, pane.width(), m_frame.line()), colour(ink));
}

void ChartPlot::putAxisText(const QRect &axis, int row, const ChartText &text, bool isRightAligned,
                            Ink ink) const
{
    const int gap = m_frame.px(axisGap) + m_frame.line();
    const int x = isRightAligned ? axis.right() + 1 - gap - textWidth(text) : axis.left() + gap;
    // Held within the frame: a figure at the top edge of a pane is read whole.
    const int half = m_frame.glyphs->digitHeight() / 2;
    const int baseline = m_frame.glyphs->baselineBetween(row, row);
    m_frame.glyphs->put(x, std::max(baseline, 2 * half + m_frame.px(2)), text.view(), colour(ink));
}

bool ChartPlot::putTime(Pixels pixels, int x, const ChartText &text, int *endOfLast) const
{
    const int width = textWidth(text);
    const int most = m_panes.times.right() + 1 - width;
    const int left
        = std::clamp(x - width / 2, m_panes.times.left(), std::max(m_panes.times.left(), most));
    if (left < *endOfLast)
        return false;
    *endOfLast = left + width + m_frame.px(timeGap);
    for (const QRect *pane : {&m_panes.price, &m_panes.volume, &m_panes.indicator})
        pixels.within(*pane).fill(QRect(x, pane->top(), m_frame.line(), pane->height()),
                                  colour(Ink::Grid));
    const int top = m_panes.times.top() + m_frame.line();
    m_frame.glyphs->put(left, m_frame.glyphs->baselineBetween(top, top + m_frame.px(labelHeight)),
                        text.view(), colour(Ink::Dim));
    return true;
}

AxisLabel ChartPlot::labelOn(const QRect &axis, int row, const ChartText &text) const
{
    AxisLabel label;
    if (axis.isEmpty())
        return label;
    const int height = m_frame.px(labelHeight);
    const int most = std::max(0, m_frame.size.height() - height);
    label.text = text;
    label.rect = QRect(axis.left() + m_frame.line(), std::clamp(row - height / 2, 0, most),
                       axis.width() - m_frame.line(), height);
    return label;
}

void ChartPlot::keepBehind()
{
    m_strip = m_panes.isEmpty() ? QRect() : lastStrip() & m_picture.rect();
    if (m_strip.isEmpty())
        return;
    if (m_behind.width() < m_strip.width() || m_behind.height() < m_strip.height())
        m_behind = QImage(m_strip.size(), QImage::Format_RGB32);
    copyPixels(m_picture, m_strip, &m_behind, QPoint());
}

void ChartPlot::restoreBehind()
{
    if (!m_strip.isEmpty())
        copyPixels(m_behind, QRect(QPoint(), m_strip.size()), &m_picture, m_strip.topLeft());
}

} // namespace zvplot
