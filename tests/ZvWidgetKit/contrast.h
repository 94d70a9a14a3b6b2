#pragma once

#include <QColor>

#include <cmath>

namespace zvtest {

// Relative luminance, from 0 for black to 1 for white.
inline double luminance(const QColor &colour)
{
    const auto linear = [](double part) {
        return part <= 0.03928 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * linear(colour.redF()) + 0.7152 * linear(colour.greenF())
        + 0.0722 * linear(colour.blueF());
}

// From 1, the same colour, to 21, black on white; 4.5 is what small text needs.
inline double contrast(const QColor &one, const QColor &other)
{
    const double lighter = qMax(luminance(one), luminance(other));
    const double darker = qMin(luminance(one), luminance(other));
    return (lighter + 0.05) / (darker + 0.05);
}

} // namespace zvtest
