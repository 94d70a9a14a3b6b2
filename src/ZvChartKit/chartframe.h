#pragma once

#include "ZvChartKit/chartcolours.h"

#include <QRect>
#include <QSize>

#include <algorithm>
#include <cmath>

namespace zvplot {

class ChartGlyphs;

// What a chart is drawn into. All of it is in pixels of the device, so that a line of one pixel is
// one at every scale.
struct ChartFrame {
    QSize size;
    double scale = 1; // pixels of the device for one of the widget
    ChartGlyphs *glyphs = nullptr;
    const ChartColours *colours = nullptr;

    int px(double widgetPixels) const
    {
        return static_cast<int>(std::lround(widgetPixels * scale));
    }

    // The smallest rectangle of the widget that holds one of the device, and a pixel more on each
    // side where a pixel of the widget is no whole number of the device's.
    QRect toWidget(const QRect &device) const
    {
        const int margin = scale == std::floor(scale) ? 0 : 1;
        const auto low = [&](int at) { return static_cast<int>(std::floor(at / scale)) - margin; };
        const auto high = [&](int at) { return static_cast<int>(std::ceil(at / scale)) + margin; };
        const int left = low(device.left());
        const int top = low(device.top());
        return QRect(left, top, high(device.right() + 1) - left, high(device.bottom() + 1) - top);
    }

    // All pixels of the device that a rectangle of the widget touches; some more on each side where
    // these are not its own.
    QRect toDevice(const QRect &widget) const
    {
        const int margin = scale == std::floor(scale) ? 0 : 1;
        const auto low = [&](int at) { return static_cast<int>(std::floor(at * scale)) - margin; };
        const auto high = [&](int at) { return static_cast<int>(std::ceil(at * scale)) + margin; };
        const int left = low(widget.left());
        const int top = low(widget.top());
        return QRect(left, top, high(widget.right() + 1) - left, high(widget.bottom() + 1) - top);
    }

    // How thick lines are.
    int line() const { return std::max(1, static_cast<int>(scale)); }
};

// Where the parts of a chart stand, from top to bottom: three panes, each below a row of words, and
// a row of times. Panes that have no room are empty, the lowest ones first.
struct ChartPanes {
    QRect priceHead;
    QRect price;
    QRect volumeHead;
    QRect volume;
    QRect indicatorHead;
    QRect indicator;
    QRect times;
    int frameWidth = 0;

    bool isEmpty() const { return price.isEmpty(); }
    int bottom() const { return times.top(); }

    // The axis columns beside a pane.
    QRect leftOf(const QRect &pane) const
    {
        return QRect(0, pane.top(), pane.left(), pane.height());
    }
    QRect rightOf(const QRect &pane) const
    {
        return QRect(pane.right() + 1, pane.top(), frameWidth - pane.right() - 1, pane.height());
    }

    // The pane that holds a row, words above it not included; null between the panes.
    const QRect *paneAt(int y) const;

    static ChartPanes of(const ChartFrame &frame, int leftAxis, int rightAxis, bool hasIndicator);
};

} // namespace zvplot
