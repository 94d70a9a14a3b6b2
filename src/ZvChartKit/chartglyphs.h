#pragma once

#include <QColor>
#include <QGlyphRun>
#include <QPointF>
#include <QRawFont>
#include <QStringView>

#include <vector>

class QFont;
class QPainter;

namespace zvplot {

// The one font of a chart at one size in pixels. Texts are looked up glyph by glyph and drawn
// without shaping; all texts of one colour go out as one run. Once its tables are as large as a
// frame needs, it asks for no memory.
class ChartGlyphs
{
public:
    // Takes the family of `font` and a size in pixels of the device.
    void setUp(const QFont &font, int pixelSize);

    int height() const { return m_height; } // from the top of the tallest to the lowest glyph
    int digitHeight() const { return m_digitHeight; }
    int width(QStringView text) const;

    // The baseline of a text whose digits stand in the middle between `top` and `bottom`.
    int baselineBetween(int top, int bottom) const
    {
        return top + (bottom - top + m_digitHeight) / 2;
    }

    // Collects a text whose baseline begins at (x, baseline). draw() puts out what was collected.
    void put(int x, int baseline, QStringView text, QRgb colour);
    void draw(QPainter *painter);

private:
    static constexpr int longest = 48;

    struct Run {
        QRgb colour = 0;
        std::vector<quint32> glyphs;
        std::vector<QPointF> positions;
    };

    int lookUp(QStringView text, quint32 *glyphs, QPointF *advances) const;
    Run &runOf(QRgb colour);

    QRawFont m_font;
    QGlyphRun m_glyphRun;
    std::vector<Run> m_runs;
    std::size_t m_usedRuns = 0;
    int m_height = 0;
    int m_digitHeight = 0;
};

} // namespace zvplot
