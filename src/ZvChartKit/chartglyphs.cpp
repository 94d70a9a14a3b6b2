#include "ZvChartKit/chartglyphs.h"

#include <QFont>
#include <QGlyphRun>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace zvplot {

namespace {

// What a chart writes; any other character is drawn when it comes.
constexpr QStringView usualCharacters
    = u"0123456789.,+-%:/ 日周月分时K开高低收盘涨跌幅成交量额价均最新期间"
      u"万亿MADIFECJRS行情停在秒前钟小暂无数据";

} // namespace

void ChartGlyphs::setUp(const QFont &font, int pixelSize)
{
    QFont sized(font);
    sized.setFamilies({QStringLiteral("Noto Sans CJK SC"), font.family()});
    sized.setPixelSize(std::max(1, pixelSize));
    // The writing system makes sure that one font has the words as well as the digits.
    const QRawFont found = QRawFont::fromFont(sized, QFontDatabase::SimplifiedChinese);
    if (found == m_font)
        return;
    m_font = found;
    m_shapes.clear();
    m_collected.clear();
    m_digitHeight = static_cast<int>(std::lround(m_font.capHeight()));
    m_height = static_cast<int>(std::ceil(m_font.ascent() + m_font.descent()));
}

// With the first text: a chart that is not on view yet writes none.
void ChartGlyphs::drawUsual()
{
    for (const QChar character : usualCharacters) {
        quint32 glyphs[longest];
        int advances[longest];
        if (lookUp(QStringView(&character, 1), glyphs, advances) == 1)
            shapeOf(glyphs[0]);
    }
}

int ChartGlyphs::width(QStringView text) const
{
    quint32 glyphs[longest];
    int advances[longest];
    const int count = lookUp(text, glyphs, advances);
    int sum = 0;
    for (int i = 0; i < count; ++i)
        sum += advances[i];
    return sum;
}

void ChartGlyphs::put(int x, int baseline, QStringView text, QRgb colour)
{
    if (m_shapes.empty())
        drawUsual();
    quint32 glyphs[longest];
    int advances[longest];
    const int count = lookUp(text, glyphs, advances);
    for (int i = 0; i < count; ++i) {
        const Shape &shape = shapeOf(glyphs[i]);
        if (!shape.size.isEmpty())
            m_collected.push_back({&shape, QPoint(x, baseline) + shape.place, colour});
        x += advances[i];
    }
}

void ChartGlyphs::draw(Pixels pixels)
{
    for (const Placed &placed : m_collected)
        pixels.stamp(placed.at, placed.shape->size, placed.shape->cover.data(), placed.colour);
    m_collected.clear();
}

int ChartGlyphs::lookUp(QStringView text, quint32 *glyphs, int *advances) const
{
    if (!m_font.isValid())
        return 0;
    QPointF exact[longest];
    int count = longest;
    const auto size = static_cast<int>(std::min<qsizetype>(text.size(), longest));
    if (!m_font.glyphIndexesForChars(text.data(), size, glyphs, &count)
        || !m_font.advancesForGlyphIndexes(glyphs, exact, count))
        return 0;
    for (int i = 0; i < count; ++i)
        advances[i] = static_cast<int>(std::lround(exact[i].x()));
    return count;
}

const ChartGlyphs::Shape &ChartGlyphs::shapeOf(quint32 glyph)
{
    const auto found = m_shapes.find(glyph);
    if (found != m_shapes.end())
        return found->second;
    return m_shapes.emplace(glyph, drawn(glyph)).first->second;
}

// White on black, so that a shape is as strong as light text on a dark ground has to be.
ChartGlyphs::Shape ChartGlyphs::drawn(quint32 glyph) const
{
    const int margin = m_height;
    QImage image(3 * margin, 3 * margin, QImage::Format_RGB32);
    image.fill(Qt::black);
    {
        QGlyphRun run;
        run.setRawFont(m_font);
        run.setGlyphIndexes({glyph});
        run.setPositions({QPointF(margin, 2 * margin)});
        QPainter painter(&image);
        painter.setPen(Qt::white);
        painter.drawGlyphRun(QPointF(), run);
    }
    QRect used;
    for (int y = 0; y < image.height(); ++y) {
        const QRgb *row = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            if (qGreen(row[x]) > 0)
                used |= QRect(x, y, 1, 1);
        }
    }
    Shape shape;
    shape.place = used.topLeft() - QPoint(margin, 2 * margin);
    shape.size = used.size();
    for (int y = used.top(); y <= used.bottom(); ++y) {
        for (int x = used.left(); x <= used.right(); ++x)
            shape.cover.push_back(static_cast<uchar>(qGreen(image.pixel(x, y))));
    }
    return shape;
}

} // namespace zvplot
