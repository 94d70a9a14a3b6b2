#include "ZvChartKit/valueaxis.h"

#include <algorithm>
#include <cmath>

namespace zvplot {

namespace {

constexpr double farOutside = 20000; // pixels; beyond any screen and well within an int

// 1, 2, 2.5 or 5 times a power of ten, and at least `step`.
double roundStep(double step)
{
    const double power = std::pow(10.0, std::floor(std::log10(step)));
    for (const double factor : {1.0, 2.0, 2.5, 5.0}) {
        if (factor * power >= step * (1 - 1e-9))
            return factor * power;
    }
    return 10 * power;
}

} // namespace

ValueAxis::ValueAxis(double low, double high, int top, int bottom)
    : m_low(low), m_high(high > low ? high : low + 1), m_top(top), m_bottom(std::max(top, bottom))
{
}

ValueAxis ValueAxis::padded(double low, double high, double share, double least, int top,
                            int bottom)
{
    double room = (high - low) * share;
    if (!(high > low))
        room = std::max(least, std::abs(low) / 100);
    return ValueAxis(low - room, high + room, top, bottom);
}

double ValueAxis::y(double value) const
{
    const double share = (value - m_low) / (m_high - m_low);
    const double at = m_bottom - share * (m_bottom - m_top);
    return std::isnan(at) ? at : std::clamp(at, -farOutside, farOutside);
}

int ValueAxis::row(double value) const
{
    const double at = y(value);
    return std::isnan(at) ? m_bottom : static_cast<int>(std::floor(at));
}

double ValueAxis::valueAt(int row) const
{
    if (m_bottom == m_top)
        return m_low;
    return m_low + (m_bottom - row - 0.5) / (m_bottom - m_top) * (m_high - m_low);
}

std::vector<double> ValueAxis::ticks(int distance, double smallestStep) const
{
    std::vector<double> found;
    const int height = m_bottom - m_top;
    const double span = m_high - m_low;
    if (height < distance || distance <= 0 || !std::isfinite(span))
        return found;
    const double step = std::max(roundStep(span * distance / height), smallestStep);
    // Counted rather than added up: between huge numbers a step may change nothing.
    const double first = std::ceil(m_low / step);
    for (int i = 0; i <= height / distance + 1; ++i) {
        const double value = (first + i) * step;
        if (value > m_high)
            break;
        found.push_back(value);
    }
    return found;
}

} // namespace zvplot
