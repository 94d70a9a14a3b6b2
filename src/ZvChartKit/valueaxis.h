#pragma once

#include <vector>

namespace zvplot {

// Values from bottom to top of a pane. Heights are pixels of the device; `bottom` is the first row
// below the pane.
class ValueAxis
{
public:
    ValueAxis() = default;
    ValueAxis(double low, double high, int top, int bottom);

    // A range with a share of its height left free above and below. One without height gets at
    // least `least`, or a hundredth of its value, on either side.
    static ValueAxis padded(double low, double high, double share, double least, int top,
                            int bottom);

    double low() const { return m_low; }
    double high() const { return m_high; }

    double y(double value) const; // no number for no number, else not far outside the pane
    int row(double value) const; // the row that y() falls in
    double valueAt(int row) const; // in the middle of the row

    // Round values within the pane whose rows stand at least so many pixels apart, none finer than
    // `smallestStep`. From low to high.
    std::vector<double> ticks(int distance, double smallestStep) const;

    bool operator==(const ValueAxis &other) const
    {
        return m_low == other.m_low && m_high == other.m_high && m_top == other.m_top
            && m_bottom == other.m_bottom;
    }
    bool operator!=(const ValueAxis &other) const { return !(*this == other); }

private:
    double m_low = 0;
    double m_high = 1;
    int m_top = 0;
    int m_bottom = 0;
};

} // namespace zvplot
