#pragma once

#include "ZvChartKit/barwindow.h"
#include "ZvChartKit/chartplot.h"
#include "ZvChartKit/indicators.h"
#include "ZvChartKit/klinepainter.h"

#include <QString>

struct ZvUBKLine;

namespace zvplot {

// K lines: candles with their averages, volumes with theirs, and one more indicator below.
class KLinePlot : public ChartPlot
{
public:
    enum class Period { Day, Week, Month };
    enum class Study { Macd, Kdj, Rsi };

    KLinePlot();
    ~KLinePlot() override;

    // Other bars, with the newest in view; the zoom stays. Bars of the collection and period that
    // stood already stay where they are, unless the newest one was in view.
    Change load(const ZvUBKLine &line, Period period);

    // Bars from `first` on have changed or are new.
    Change grow(const ZvUBKLine &line, int first);

    // So many bars were put in front.
    Change prepend(const ZvUBKLine &line, int count);

    Study study() const { return m_study; }
    Change setStudy(Study study);

    // Pixels are those of the frame.
    Change panBy(int pixels);
    Change zoom(int levels, int place); // around this bar; changes nothing at an end
    Change showFirst();
    Change showLast();
    Change show(int place);

    // True where earlier bars will be wanted soon.
    bool wantsEarlier() const;

    const BarWindow &window() const { return m_window; }

    bool isEmpty() const override { return m_bars.isEmpty(); }
    int firstPlace() const override { return 0; }
    int lastPlace() const override { return m_bars.size() - 1; }
    int placeAt(int x) const override;
    int middleOf(int place) const override;
    int stride() const override { return m_window.barsPerColumn(); }
    int priceRow(int place) const override;

    Legend priceLegend(int place) const override;
    Legend volumeLegend(int place) const override;
    Legend indicatorLegend(int place) const override;
    ValueBox valueBox(int place) const override;
    int valueBoxRows() const override { return 9; }
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
    void updateBars(const ZvUBKLine &line, int first);
    const Indicator &studied() const;
    int axisWidth() const;
    KLineAxes axesOfColumns() const;
    KLinePainter painter() const;
    void paintGrid(Pixels pixels) const;
    void paintTimes(Pixels pixels) const;

    BarSeries m_bars;
    BarWindow m_window;
    QString m_collectionId;
    Period m_period = Period::Day;
    Study m_study = Study::Macd;
    double m_usualScale = 0; // that the usual width of a bar was chosen for
    ValueRange m_allPrices; // since the bars were loaded: how wide the axis has to be
    double m_mostVolume = 0;

    MovingAverages m_priceAverages;
    MovingAverages m_volumeAverages;
    Macd m_macd;
    Kdj m_kdj;
    Rsi m_rsi;

    BarColumns m_columns;
    KLineAxes m_axes;
};

} // namespace zvplot
