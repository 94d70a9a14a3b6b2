#include "ZvChartKit/chartglyphs.h"

#include <QFont>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace zvplot {

void ChartGlyphs::setUp(const QFont &font, int pixelSize)
{
    QFont sized(font);
    sized.setFamilies({QStringLiteral("Noto Sans CJK SC"), font.family()});
    sized.setPixelSize(std::max(1, pixelSize));
    // The writing system makes sure that one font has the words as well as the digits.
    m_font = QRawFont::fromFont(sized, QFontDatabase::SimplifiedChinese);
    m_glyphRun = QGlyphRun();
    m_glyphRun.setRawFont(m_font);
    m_digitHeight = static_cast<int>(std::lround(m_font.capHeight()));
    m_height = static_cast<int>(std::ceil(m_font.ascent() + m_font.descent()));
}

int ChartGlyphs::width(QStringView text) const
{
    quint32 glyphs[longest];
    QPointF advances[longest];
    const int count = lookUp(text, glyphs, advances);
    double sum = 0;
    for (int i = 0; i < count; ++i)
        sum += advances[i].x();
    return static_cast<int>(std::ceil(sum));
}

void ChartGlyphs::put(int x, int baseline, QStringView text, QRgb colour)
{
    quint32 glyphs[longest];
    QPointF advances[longest];
    const int count = lookUp(text, glyphs, advances);
    Run &run = runOf(colour);
    double at = x;
    for (int i = 0; i < count; ++i) {
        run.glyphs.push_back(glyphs[i]);
        run.positions.emplace_back(at, baseline);
        at += advances[i].x();
    }
}

void ChartGlyphs::draw(QPainter *painter)
{
    for (std::size_t i = 0; i < m_usedRuns; ++i) {
        Run &run = m_runs[i];
        if (!run.glyphs.empty()) {
            m_glyphRun.setRawData(run.glyphs.data(), run.positions.data(),
                                  static_cast<int>(run.glyphs.size()));
            painter->setPen(QColor(run.colour));
            painter->drawGlyphRun(QPointF(), m_glyphRun);
        }
        run.glyphs.clear();
        run.positions.clear();
    }
    m_usedRuns = 0;
}

int ChartGlyphs::lookUp(QStringView text, quint32 *glyphs, QPointF *advances) const
{
    if (!m_font.isValid())
        return 0;
    int count = longest;
    const auto size = static_cast<int>(std::min<qsizetype>(text.size(), longest));
    if (!m_font.glyphIndexesForChars(text.data(), size, glyphs, &count)
        || !m_font.advancesForGlyphIndexes(glyphs, advances, count))
        return 0;
    return count;
}

ChartGlyphs::Run &ChartGlyphs::runOf(QRgb colour)
{
    for (std::size_t i = 0; i < m_usedRuns; ++i) {
        if (m_runs[i].colour == colour)
            return m_runs[i];
    }
    if (m_usedRuns == m_runs.size())
        m_runs.emplace_back();
    m_runs[m_usedRuns].colour = colour;
    return m_runs[m_usedRuns++];
}

} // namespace zvplot
