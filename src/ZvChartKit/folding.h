#pragma once

#include "ZvChartKit/indicators.h"

namespace zvplot {

class BarWindow;

// What one column of a K line shows: a bar, or several bars as one that began with the first, ended
// with the last and went as far as any of them. Drawn one over the other they would look the same.
struct BarColumn {
    int column = 0;
    double open = 0;
    double high = 0;
    double low = 0;
    double close = 0;
    int direction = 1; // above 0: rose
    double volume = 0; // the largest of a bar
    int volumeDirection = 1; // of the bar with that volume
};

BarColumn foldedBars(const BarSeries &bars, const BarWindow &window, int column);

// What one column shows of a curve: where it comes in, goes out, and how far it goes in between.
// All are no numbers where the curve has no value in the column.
struct CurvePoint {
    int x = 0; // the middle of the column, from the plot's left edge
    double first;
    double last;
    double low;
    double high;

    explicit CurvePoint(int middle);
    void take(double value);
};

CurvePoint foldedCurve(const Curve &curve, const BarWindow &window, int column);

// The lowest and the highest of some values; empty until one was taken.
struct ValueRange {
    double low = 0;
    double high = 0;
    bool isEmpty = true;

    void take(double value); // anything but a number is skipped
    void take(const CurvePoint &point);
};

} // namespace zvplot
