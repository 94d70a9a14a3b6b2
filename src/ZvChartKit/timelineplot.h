#pragma once

#include "ZvChartKit/chartplot.h"
#include "ZvChartKit/folding.h"
#include "ZvChartKit/sessionaxis.h"
#include "ZvChartKit/valueaxis.h"

#include <vector>

namespace zvplot {

// The time line of one session: price and average price around the previous close, and the volumes
// of its minutes. A minute without a deal keeps the price of the one before.
class TimeLinePlot : public ChartPlot
{
public:
    TimeLinePlot();
    ~TimeLinePlot() override;

    Change load(const ZvUBTimeLine &line);

    // Minutes from `first` on have changed or are new.
    Change grow(const ZvUBTimeLine &line, int first);

    const SessionAxis &axis() const { return m_axis; }

    bool isEmpty() const override { return m_minutes.empty(); }
    int firstPlace() const override { return m_firstPlace; }
    int lastPlace() const override;
    int placeAt(int x) const override;
    int middleOf(int place) const override;
    int stride() const override;
    int priceRow(int place) const override;

    Legend priceLegend(int place) const override;
    Legend volumeLegend(int place) const override;
    Legend indicatorLegend(int place) const override;
    ValueBox valueBox(int place) const override;
    int valueBoxRows() const override { return 6; }
    AxisLabel lastPriceLabel() const override;
    AxisLabel leftLabel(int y) const override;
    AxisLabel rightLabel(int y) const override;

protected:
    void layOut() override;
    void paintStill(Pixels pixels) override;
    void paintLast(Pixels pixels) override;
    QRect lastStrip() const override;
    ChartText timeText(int place) const override;
    Figures figuresOf(int place) const override;

private:
    // One place from the first deal of the session on.
    struct Minute {
        double price = 0;
        double average = 0;
        double volume = 0;
        int direction = 1;
    };

    // What one column shows: the volume of a minute, or the largest of several.
    struct VolumeBar {
        int left = 0;
        int width = 0;
        double volume = 0;
        int direction = 1;
        int firstPlace = 0;
    };

    struct Axes {
        ValueAxis price;
        ValueAxis volume;
        bool operator==(const Axes &other) const
        {
            return price == other.price && volume == other.volume;
        }
    };

    void takeMinutes(const ZvUBTimeLine &line);
    bool takeLastMinute(const ZvUBTimeLine &line);
    const Minute &at(int place) const
    {
        return m_minutes[static_cast<std::size_t>(place - m_firstPlace)];
    }
    int leftOf(int place) const; // in the plot
    bool hasReference() const { return m_previousClose > 0; }
    double base() const;
    int axisWidth() const;
    void fold();
    void addPlace(int place);
    Axes axesOfEntries() const;
    void paintGrid(Pixels pixels) const;
    void paintTimes(Pixels pixels) const;
    void paintVolumes(Pixels pixels, std::size_t begin, std::size_t end) const;
    void paintCurves(Pixels pixels, std::size_t begin, std::size_t end) const;

    SessionAxis m_axis;
    double m_previousClose = 0;
    int m_knownMinutes = 0; // of the feed
    int m_firstPlace = 0;
    std::vector<Minute> m_minutes;

    std::vector<CurvePoint> m_prices; // an entry for each column with figures
    std::vector<CurvePoint> m_averages;
    std::vector<VolumeBar> m_volumes;
    Axes m_axes;
};

} // namespace zvplot
