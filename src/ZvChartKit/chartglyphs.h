#pragma once

#include "ZvChartKit/pixels.h"

#include <QRawFont>
#include <QStringView>

#include <unordered_map>
#include <vector>

class QFont;

namespace zvplot {

// The one font of a chart at one size in pixels. Every glyph is drawn once, and its shape is kept;
// a text is put together from shapes on whole pixels, so digits stand in columns. Once it knows the
// glyphs that a chart uses, it asks for no memory.
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
    void draw(Pixels pixels);

private:
    static constexpr int longest = 48; // characters of a text

    struct Shape {
        QPoint place; // of its top left pixel, from the baseline's begin
        QSize size;
        std::vector<uchar> cover; // row by row
    };

    struct Placed {
        const Shape *shape;
        QPoint at;
        QRgb colour;
    };

    void drawUsual();
    int lookUp(QStringView text, quint32 *glyphs, int *advances) const;
    const Shape &shapeOf(quint32 glyph);
    Shape drawn(quint32 glyph) const;

    QRawFont m_font;
    std::unordered_map<quint32, Shape> m_shapes;
    std::vector<Placed> m_collected;
    int m_height = 0;
    int m_digitHeight = 0;
};

} // namespace zvplot
