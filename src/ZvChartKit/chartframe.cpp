#include "ZvChartKit/chartframe.h"

namespace zvplot {

namespace {

// In pixels of the widget.
constexpr int headHeight = 24;
constexpr int timesHeight = 22;
constexpr int leastPlotWidth = 24;
constexpr int leastPrice = 24;
constexpr int leastLower = 20; // height of a pane below the price

} // namespace

const QRect *ChartPanes::paneAt(int y) const
{
    for (const QRect *pane : {&price, &volume, &indicator}) {
        if (!pane->isEmpty() && y >= pane->top() && y <= pane->bottom())
            return pane;
    }
    return nullptr;
}

ChartPanes ChartPanes::of(const ChartFrame &frame, int leftAxis, int rightAxis, bool hasIndicator)
{
    ChartPanes panes;
    panes.frameWidth = frame.size.width();
    const int width = frame.size.width() - leftAxis - rightAxis;
    const int head = frame.px(headHeight);
    const int free = frame.size.height() - frame.px(timesHeight);
    panes.times = QRect(leftAxis, free, std::max(0, width), frame.px(timesHeight));
    if (width < frame.px(leastPlotWidth) || free - head < frame.px(leastPrice)) {
        panes.times = QRect(leftAxis, frame.size.height(), 0, 0);
        return panes;
    }

    // Shares of the height that is left when every pane that is shown has its words.
    const double volumeShare = hasIndicator ? 0.18 : 0.26;
    const double indicatorShare = hasIndicator ? 0.22 : 0;
    const auto lowerHeight = [&](int heads, double share) {
        const int height = static_cast<int>((free - heads * head) * share);
        return height < frame.px(leastLower) ? 0 : height;
    };
    const int indicatorHeight = hasIndicator ? lowerHeight(3, indicatorShare) : 0;
    const int volumeHeight = lowerHeight(indicatorHeight > 0 ? 3 : 2, volumeShare);

    int bottom = free;
    const auto takeBelow = [&](int height, QRect *pane, QRect *words) {
        if (height <= 0)
            return;
        *pane = QRect(leftAxis, bottom - height, width, height);
        *words = QRect(leftAxis, bottom - height - head, width, head);
        bottom -= height + head;
    };
    takeBelow(indicatorHeight, &panes.indicator, &panes.indicatorHead);
    takeBelow(volumeHeight, &panes.volume, &panes.volumeHead);
    takeBelow(bottom - head, &panes.price, &panes.priceHead);
    return panes;
}

} // namespace zvplot
