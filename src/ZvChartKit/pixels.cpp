#include "ZvChartKit/pixels.h"

#include <algorithm>
#include <cmath>
#include <cstring>

namespace zvplot {

void copyPixels(const QImage &from, const QRect &rect, QImage *to, const QPoint &place)
{
    const auto width = static_cast<std::size_t>(rect.width()) * sizeof(QRgb);
    for (int y = 0; y < rect.height(); ++y) {
        const uchar *source = from.constScanLine(rect.top() + y);
        uchar *target = to->scanLine(place.y() + y);
        std::memcpy(target + place.x() * int(sizeof(QRgb)),
                    source + rect.left() * int(sizeof(QRgb)), width);
    }
}

Pixels::Pixels(QImage *image, const QRect &clip)
    : m_bits(reinterpret_cast<QRgb *>(image->bits())), m_stride(image->bytesPerLine() / 4),
      m_clip(clip & image->rect())
{
}

Pixels Pixels::within(const QRect &clip) const
{
    return Pixels(m_bits, m_stride, m_clip & clip);
}

void Pixels::fill(const QRect &rect, QRgb colour)
{
    if (rect.isEmpty())
        return; // what two rectangles share is not empty where one of them is inside out
    const QRect area = rect & m_clip;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        QRgb *row = m_bits + static_cast<std::ptrdiff_t>(y) * m_stride + area.left();
        std::fill(row, row + area.width(), colour);
    }
}

void Pixels::cover(int x, double top, double bottom, QRgb colour)
{
    if (x < m_clip.left() || x > m_clip.right())
        return;
    const double from = std::max(top, double(m_clip.top()));
    const double to = std::min(bottom, double(m_clip.bottom() + 1));
    if (!(from < to))
        return;
    const auto first = static_cast<int>(std::floor(from));
    const auto last = static_cast<int>(std::ceil(to)) - 1;
    QRgb *pixel = m_bits + static_cast<std::ptrdiff_t>(first) * m_stride + x;
    for (int y = first; y <= last; ++y, pixel += m_stride) {
        const double share = std::min(to, y + 1.0) - std::max(from, double(y));
        blend(pixel, colour, static_cast<int>(std::lround(share * 256)));
    }
}

void Pixels::tint(int x, int top, int bottom, QRgb colour, int opacity)
{
    if (x < m_clip.left() || x > m_clip.right())
        return;
    const int first = std::max(top, m_clip.top());
    const int end = std::min(bottom, m_clip.bottom() + 1);
    QRgb *pixel = m_bits + static_cast<std::ptrdiff_t>(first) * m_stride + x;
    for (int y = first; y < end; ++y, pixel += m_stride)
        blend(pixel, colour, opacity);
}

void Pixels::stamp(const QPoint &place, const QSize &size, const uchar *cover, QRgb colour)
{
    const QRect area = QRect(place, size) & m_clip;
    for (int y = area.top(); y <= area.bottom(); ++y) {
        const uchar *strength
            = cover + static_cast<std::ptrdiff_t>(y - place.y()) * size.width() - place.x();
        QRgb *row = m_bits + static_cast<std::ptrdiff_t>(y) * m_stride;
        for (int x = area.left(); x <= area.right(); ++x) {
            if (strength[x] > 0)
                blend(row + x, colour, strength[x] + (strength[x] >> 7));
        }
    }
}

void Pixels::blend(QRgb *pixel, QRgb colour, int opacity)
{
    if (opacity >= 256) {
        *pixel = colour;
        return;
    }
    // Red and blue together, then green: with 8 bits of room each, neither runs into the other.
    const auto share = static_cast<quint32>(opacity);
    const quint32 rest = 256 - share;
    const quint32 redAndBlue = (*pixel & 0xff00ffu) * rest + (colour & 0xff00ffu) * share;
    const quint32 green = (*pixel & 0x00ff00u) * rest + (colour & 0x00ff00u) * share;
    *pixel = 0xff000000u | (redAndBlue >> 8 & 0xff00ffu) | (green >> 8 & 0x00ff00u);
}

} // namespace zvplot
