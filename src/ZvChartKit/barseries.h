#pragma once

#include <QVector>

#include <vector>

struct ZvUBBar;

namespace zvplot {

// One bar as the chart works with it: plain numbers, sound whatever came in.
struct Bar {
    double open = 0; // yuan
    double high = 0; // at least open, close and low
    double low = 0; // at most open, close and high
    double close = 0;
    double volume = 0; // pieces, never negative
    double amount = 0; // yuan
    int day = 0; // 20191231; 0 where it is not known
};

// The bars of a K line, the oldest first.
class BarSeries
{
public:
    // Takes over the bars from `first` on; those before it stand as they are.
    void update(const QVector<ZvUBBar> &bars, int first);

    int size() const { return static_cast<int>(m_bars.size()); }
    bool isEmpty() const { return m_bars.empty(); }
    const Bar &at(int bar) const { return m_bars[static_cast<std::size_t>(bar)]; }

    // What a bar's change counts from: the close before it, or its own open where it is the first.
    double referenceOf(int bar) const { return bar > 0 ? at(bar - 1).close : at(bar).open; }

    // Above 0 for a bar that rose, below 0 for one that fell. A bar that closed where it opened is
    // compared with the close before it, and has risen where that is the same, too.
    int directionOf(int bar) const;

    // The first bar of this day or later; size() where there is none.
    int barOfDay(int day) const;

private:
    std::vector<Bar> m_bars;
};

} // namespace zvplot
