#include "ZvChartKit/barseries.h"

#include "ZvModelKit/zvubkline.h"

#include <algorithm>
#include <cmath>

namespace zvplot {

namespace {

constexpr double largest = 1e15; // what an axis can still tell apart from its neighbours in fen

double sound(double value)
{
    return std::isfinite(value) ? std::clamp(value, -largest, largest) : 0.0;
}

// "2019-12-31" as 20191231; 0 for any other form.
int dayNumber(const QString &text)
{
    if (text.size() != 10)
        return 0;
    int number = 0;
    for (int i = 0; i < 10; ++i) {
        const char16_t character = text.at(i).unicode();
        if (i == 4 || i == 7) {
            if (character != u'-')
                return 0;
            continue;
        }
        if (character < u'0' || character > u'9')
            return 0;
        number = number * 10 + (character - u'0');
    }
    return number;
}

Bar barOf(const ZvUBBar &from)
{
    Bar bar;
    bar.open = sound(from.open);
    bar.close = sound(from.close);
    bar.high = std::max({sound(from.high), bar.open, bar.close});
    bar.low = std::min({sound(from.low), bar.open, bar.close});
    bar.volume = static_cast<double>(std::max<qint64>(0, from.volume));
    bar.amount = sound(from.amount);
    bar.day = dayNumber(from.day);
    return bar;
}

} // namespace

void BarSeries::update(const QVector<ZvUBBar> &bars, int first)
{
    const int from = std::clamp(first, 0, std::min(size(), bars.size()));
    m_bars.resize(static_cast<std::size_t>(bars.size()));
    for (int bar = from; bar < bars.size(); ++bar)
        m_bars[static_cast<std::size_t>(bar)] = barOf(bars.at(bar));
}

int BarSeries::directionOf(int bar) const
{
    const Bar &shown = at(bar);
    const double from = shown.close == shown.open ? referenceOf(bar) : shown.open;
    return shown.close < from ? -1 : 1;
}

int BarSeries::barOfDay(int day) const
{
    const auto found
        = std::lower_bound(m_bars.begin(), m_bars.end(), day,
                           [](const Bar &bar, int sought) { return bar.day < sought; });
    return static_cast<int>(found - m_bars.begin());
}

} // namespace zvplot
