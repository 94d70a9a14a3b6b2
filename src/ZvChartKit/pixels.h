#pragma once

#include <QColor>
#include <QImage>
#include <QRect>

namespace zvplot {

// Copies a rectangle of an image of 32 bits a pixel to a place of another one. Both hold it whole.
void copyPixels(const QImage &from, const QRect &rect, QImage *to, const QPoint &place);

// Draws bars and curves straight into an opaque image of 32 bits a pixel, within a rectangle of it.
// Everything is in whole pixels but the height of curves, which are smooth.
class Pixels
{
public:
    Pixels(QImage *image, const QRect &clip);

    // The same image within another rectangle.
    Pixels within(const QRect &clip) const;

    const QRect &clip() const { return m_clip; }

    void fill(const QRect &rect, QRgb colour);

    // One pixel wide, from `top` up to `bottom`; the rows at both ends are covered in part.
    void cover(int x, double top, double bottom, QRgb colour);

    // Likewise in whole rows and half transparent: 256 is opaque.
    void tint(int x, int top, int bottom, QRgb colour, int opacity);

    // A shape whose pixels are covered by so much of 255, row by row.
    void stamp(const QPoint &place, const QSize &size, const uchar *cover, QRgb colour);

private:
    Pixels(QRgb *bits, int stride, const QRect &clip) : m_bits(bits), m_stride(stride), m_clip(clip)
    {
    }

    void blend(QRgb *pixel, QRgb colour, int opacity);

    QRgb *m_bits;
    int m_stride; // in pixels
    QRect m_clip;
};

} // namespace zvplot
