#include "ZvChartKit/chartnotice.h"

#include "ZvChartKit/chartglyphs.h"
#include "ZvChartKit/chartplot.h"

#include <QPixmap>
#include <QRegion>

#include <algorithm>
#include <vector>

namespace zvplot {

namespace {

constexpr int gap = 8; // in pixels of the widget
constexpr int figureSide = 64;

// How much of each pixel the figure of a chart without data covers, in a square of that side; empty
// where the program has no such picture.
std::vector<uchar> figureCover(int side)
{
    const QPixmap picture(QStringLiteral(":/icons_vedio/nodata.png"));
    std::vector<uchar> cover;
    if (picture.isNull())
        return cover;
    const QImage mask = picture.toImage()
                            .scaled(side, side, Qt::IgnoreAspectRatio, Qt::SmoothTransformation)
                            .convertToFormat(QImage::Format_Alpha8);
    cover.reserve(std::size_t(side) * std::size_t(side));
    for (int y = 0; y < side; ++y)
        cover.insert(cover.end(), mask.constScanLine(y), mask.constScanLine(y) + side);
    return cover;
}

} // namespace

ChartText ChartNotice::text() const
{
    ChartText text;
    switch (m_kind) {
    case None:
        break;
    case Waiting:
        text.add(u"正在读取行情…");
        break;
    case NoData:
        text.add(u"暂无数据");
        break;
    case Stale: {
        const qint64 seconds = std::max<qint64>(0, m_ageMs) / 1000;
        text.add(u"行情停在 ");
        if (seconds < 60)
            text.addFixed(static_cast<double>(seconds), 0).add(u" 秒前");
        else if (seconds < 3600)
            text.addFixed(static_cast<double>(seconds / 60), 0).add(u" 分钟前");
        else
            text.addFixed(static_cast<double>(seconds / 3600), 0).add(u" 小时前");
        break;
    }
    }
    return text;
}

int ChartNotice::reserve(const ChartPlot &plot) const
{
    if (m_kind != Stale)
        return 0;
    return plot.frame().glyphs->width(text().view()) + plot.frame().px(2 * gap);
}

void ChartNotice::paint(QImage *image, const ChartPlot &plot, const QRegion &region) const
{
    const QRect head = plot.frame().toWidget(plot.panes().priceHead);
    if (m_kind == Stale && !plot.panes().isEmpty() && region.intersects(head))
        putAge(plot);
    else if ((m_kind == Waiting || m_kind == NoData) && plot.isEmpty())
        putInstead(Pixels(image, image->rect()), plot);
    else
        return;
    plot.frame().glyphs->draw(Pixels(image, image->rect()));
}

void ChartNotice::putAge(const ChartPlot &plot) const
{
    ChartGlyphs &glyphs = *plot.frame().glyphs;
    const QRect &head = plot.panes().priceHead;
    const ChartText words = text();
    const int width = glyphs.width(words.view());
    if (width > head.width())
        return;
    glyphs.put(head.right() + 1 - width - plot.frame().px(gap),
               glyphs.baselineBetween(head.top(), head.bottom() + 1), words.view(),
               (*plot.frame().colours)[Ink::Key]);
}

// The lines of an empty chart, such as that of the previous close, stop at the words.
void ChartNotice::putInstead(Pixels pixels, const ChartPlot &plot) const
{
    ChartGlyphs &glyphs = *plot.frame().glyphs;
    const QRect area
        = plot.panes().isEmpty() ? QRect(QPoint(), plot.frame().size) : plot.panes().price;
    const ChartText words = text();
    const int width = glyphs.width(words.view());
    if (width > area.width() || glyphs.height() > area.height())
        return;
    const ChartColours &colours = *plot.frame().colours;
    QRect place(0, 0, width + 2 * plot.frame().px(gap), glyphs.height());
    place.moveCenter(area.center());
    pixels.within(area).fill(place, colours[Ink::Ground]);
    if (m_kind == NoData)
        putFigure(pixels.within(area), plot, place);
    glyphs.put(area.center().x() - width / 2, glyphs.baselineBetween(area.top(), area.bottom() + 1),
               words.view(), colours[Ink::Dim]);
}

// Above the words, where there is room for it.
void ChartNotice::putFigure(Pixels pixels, const ChartPlot &plot, const QRect &words) const
{
    const int side = plot.frame().px(figureSide);
    QRect place(0, 0, side, side);
    place.moveCenter(words.center());
    place.moveBottom(words.top() - plot.frame().px(gap));
    if (!pixels.clip().contains(place))
        return;
    const std::vector<uchar> cover = figureCover(side);
    if (cover.empty())
        return;
    const ChartColours &colours = *plot.frame().colours;
    pixels.fill(place, colours[Ink::Ground]);
    pixels.stamp(place.topLeft(), place.size(), cover.data(), colours[Ink::Dim]);
}

} // namespace zvplot
