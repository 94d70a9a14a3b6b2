#include "ZvChartKit/chartoverlay.h"

#include "ZvChartKit/chartglyphs.h"

namespace zvplot {

namespace {

// In pixels of the widget.
constexpr int headIndent = 6;
constexpr int entryGap = 12;
constexpr int boxPadding = 8;
constexpr int boxRow = 18;
constexpr int boxGap = 14; // between a name and its value
constexpr int boxDistance = 6; // from the edges of the pane
constexpr int labelGap = 5;

} // namespace

ChartOverlay::ChartOverlay(const ChartPlot &plot, const Crosshair &crosshair, int indicatorIndent,
                           int priceReserve)
    : m_plot(plot), m_frame(plot.frame()), m_panes(plot.panes()), m_crosshair(crosshair),
      m_indicatorIndent(indicatorIndent), m_priceReserve(priceReserve)
{
}

QRect ChartOverlay::rectOf(Part part) const
{
    if (m_panes.isEmpty())
        return {};
    const bool isShown = m_crosshair.isShown();
    const int line = m_frame.line();
    switch (part) {
    case RowLine:
        if (!isShown || !m_panes.paneAt(m_crosshair.row))
            return {};
        return QRect(m_panes.price.left(), m_crosshair.row, m_panes.price.width(), line);
    case LeftLabel:
        return isShown ? m_plot.leftLabel(m_crosshair.row).rect : QRect();
    case RightLabel:
        return isShown ? m_plot.rightLabel(m_crosshair.row).rect : QRect();
    case PlaceLine: {
        if (!isShown)
            return {};
        const QRect plots(m_panes.price.left(), m_panes.price.top(), m_panes.price.width(),
                          m_panes.bottom() - m_panes.price.top());
        return QRect(m_plot.middleOf(m_crosshair.place), plots.top(), line, plots.height()) & plots;
    }
    case TimeLabel:
        return isShown ? m_plot.timeLabel(m_crosshair.place).rect : QRect();
    case Box:
        return isShown ? boxRect() : QRect();
    case PriceHead:
        return wordsIn(m_panes.priceHead, 5) & m_panes.priceHead.adjusted(0, 0, -m_priceReserve, 0);
    case VolumeHead:
        return wordsIn(m_panes.volumeHead, 3);
    case IndicatorHead:
        // Without the tabs in it, which would be painted along.
        return wordsIn(m_panes.indicatorHead.adjusted(m_indicatorIndent, 0, 0, 0), 3);
    case LastPrice:
        return m_plot.lastPriceLabel().rect;
    case PartCount:
        break;
    }
    return {};
}

// As wide as so many entries may be: the rest of a head is not painted with every move.
QRect ChartOverlay::wordsIn(const QRect &head, int entries) const
{
    const int entry
        = m_frame.glyphs->width(u"RSI24 ") + m_plot.valueBoxWidth() + m_frame.px(entryGap);
    return head
        & QRect(head.left(), head.top(), m_frame.px(headIndent) + entries * entry, head.height());
}

void ChartOverlay::paint(QImage *image, const QRegion &region) const
{
    const auto isTouched = [this, &region](Part part) {
        const QRect rect = rectOf(part);
        return !rect.isEmpty() && region.intersects(m_frame.toWidget(rect));
    };
    Pixels pixels(image, image->rect());
    const int place = m_crosshair.place;
    if (isTouched(PriceHead))
        paintHead(rectOf(PriceHead), m_plot.priceLegend(place));
    if (isTouched(VolumeHead))
        paintHead(rectOf(VolumeHead), m_plot.volumeLegend(place));
    if (isTouched(IndicatorHead))
        paintHead(rectOf(IndicatorHead), m_plot.indicatorLegend(place));
    if (isTouched(LastPrice))
        paintLabel(&pixels, m_plot.lastPriceLabel());
    m_frame.glyphs->draw(pixels);
    if (!m_crosshair.isShown())
        return;

    for (const Part line : {RowLine, PlaceLine}) {
        if (isTouched(line))
            pixels.fill(rectOf(line), colour(Ink::Cross));
    }
    if (isTouched(LeftLabel))
        paintLabel(&pixels, m_plot.leftLabel(m_crosshair.row));
    if (isTouched(RightLabel))
        paintLabel(&pixels, m_plot.rightLabel(m_crosshair.row));
    if (isTouched(TimeLabel))
        paintLabel(&pixels, m_plot.timeLabel(place));
    if (isTouched(Box))
        paintBox(&pixels);
    m_frame.glyphs->draw(pixels);
}

QRect ChartOverlay::boxRect() const
{
    const int padding = m_frame.px(boxPadding);
    const int distance = m_frame.px(boxDistance);
    const int rows = m_plot.valueBoxRows();
    const int width = 2 * padding + m_frame.glyphs->width(u"成交量") + m_frame.px(boxGap)
        + m_plot.valueBoxWidth();
    const int height = padding + rows * m_frame.px(boxRow);
    const QRect &pane = m_panes.price;
    // A pane that is too small for the box and the bars beside it is read from the words above it.
    if (height + 2 * distance > pane.height() || 2 * (width + distance) > pane.width())
        return {};
    const bool isLeft = m_plot.middleOf(m_crosshair.place) > pane.center().x();
    const int left = isLeft ? pane.left() + distance : pane.right() + 1 - distance - width;
    return QRect(left, pane.top() + distance, width, height);
}

void ChartOverlay::paintHead(const QRect &head, const Legend &legend) const
{
    ChartGlyphs &glyphs = *m_frame.glyphs;
    int x = head.left() + m_frame.px(headIndent);
    const int end = head.right() + 1;
    const int baseline = glyphs.baselineBetween(head.top(), head.bottom() + 1);
    for (std::size_t i = 0; i < legend.count; ++i) {
        const Legend::Entry &entry = legend.entries[i];
        const int width = glyphs.width(entry.text.view());
        if (x + width > end)
            return;
        glyphs.put(x, baseline, entry.text.view(), colour(entry.ink));
        x += width + m_frame.px(entryGap);
    }
}

void ChartOverlay::paintLabel(Pixels *pixels, const AxisLabel &label) const
{
    ChartGlyphs &glyphs = *m_frame.glyphs;
    pixels->fill(label.rect, colour(label.ground));
    // The words of the left axis stand at its right, beside the plot.
    const bool isLeft = label.rect.right() < m_panes.price.left();
    const int gap = m_frame.px(labelGap);
    const int x = isLeft ? label.rect.right() + 1 - gap - glyphs.width(label.text.view())
                         : label.rect.left() + gap;
    glyphs.put(x, glyphs.baselineBetween(label.rect.top(), label.rect.bottom() + 1),
               label.text.view(), colour(label.ink));
}

void ChartOverlay::paintBox(Pixels *pixels) const
{
    ChartGlyphs &glyphs = *m_frame.glyphs;
    const QRect rect = boxRect();
    const int line = m_frame.line();
    pixels->fill(rect, colour(Ink::Frame));
    pixels->fill(rect.adjusted(line, line, -line, -line), colour(Ink::Raised));
    const ValueBox box = m_plot.valueBox(m_crosshair.place);
    const int padding = m_frame.px(boxPadding);
    int top = rect.top() + padding / 2;
    for (std::size_t i = 0; i < box.count; ++i) {
        const ValueBox::Row &row = box.rows[i];
        const int baseline = glyphs.baselineBetween(top, top + m_frame.px(boxRow));
        glyphs.put(rect.left() + padding, baseline, row.name, colour(Ink::Dim));
        glyphs.put(rect.right() + 1 - padding - glyphs.width(row.value.view()), baseline,
                   row.value.view(), colour(row.ink));
        top += m_frame.px(boxRow);
    }
}

QRgb ChartOverlay::colour(Ink ink) const
{
    return (*m_frame.colours)[ink];
}

} // namespace zvplot
