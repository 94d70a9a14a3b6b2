#pragma once

#include "ZvChartKit/chartframe.h"
#include "ZvChartKit/pixels.h"
#include "ZvChartKit/readings.h"

#include <QImage>
#include <QRect>

#include <array>

namespace zvplot {

class ValueAxis;

// One kind of chart: it lays its figures out, draws them into a picture that is kept, and tells
// what stands at a place. A place is a bar, or a minute of the session.
//
// The picture has a last entry that is drawn over what stands behind it. A new price on it changes
// that strip alone, as long as no axis has to change.
class ChartPlot
{
public:
    ChartPlot();
    virtual ~ChartPlot();
    ChartPlot(const ChartPlot &) = delete;
    ChartPlot &operator=(const ChartPlot &) = delete;

    // What of the picture has changed.
    struct Change {
        bool isEverything = false;
        QRect strip; // empty where nothing of it has changed
    };

    // Takes another frame; one of no size draws nothing. Colours may have changed behind it.
    void setFrame(const ChartFrame &frame);
    const ChartFrame &frame() const { return m_frame; }
    const ChartPanes &panes() const { return m_panes; }

    // The picture of everything but what follows the crosshair, brought up to date.
    const QImage &picture();

    virtual bool isEmpty() const = 0;
    virtual int firstPlace() const = 0; // places without figures before it do not count
    virtual int lastPlace() const = 0;
    virtual int placeAt(int x) const = 0; // the nearest place with figures; -1 where there is none
    virtual int middleOf(int place) const = 0; // in the frame
    virtual int stride() const = 0; // places that share a column

    // A row of the price pane where a figure of the place stands, if one is within reach of `y`;
    // else `y`.
    int magnet(int place, int y) const;

    // The row of the next figure above or below `y`; `y` where there is none.
    int nextFigure(int place, int y, bool isAbove) const;

    // The row of the place's own price.
    virtual int priceRow(int place) const = 0;

    // What the heads of the panes say, of a place or, for -1, of the last one.
    virtual Legend priceLegend(int place) const = 0;
    virtual Legend volumeLegend(int place) const = 0;
    virtual Legend indicatorLegend(int place) const = 0;
    virtual ValueBox valueBox(int place) const = 0;
    virtual int valueBoxRows() const = 0;
    int valueBoxWidth() const { return m_boxWidth; } // of the widest figure in it

    // The figure of the last price on its axis; an empty rectangle where it is out of view.
    virtual AxisLabel lastPriceLabel() const = 0;

    // What the axes say where the crosshair crosses them; empty rectangles where there is no axis.
    virtual AxisLabel leftLabel(int y) const = 0;
    virtual AxisLabel rightLabel(int y) const = 0;
    AxisLabel timeLabel(int place) const;

protected:
    // Lays everything out anew: panes, axes, and what is to be drawn.
    virtual void layOut() = 0;

    // Draws everything but the last entry, and then the last entry alone.
    virtual void paintStill(Pixels pixels) = 0;
    virtual void paintLast(Pixels pixels) = 0;

    // Where the last entry stands; empty where it is out of view.
    virtual QRect lastStrip() const = 0;

    virtual ChartText timeText(int place) const = 0;

    // Rows of the price pane that the crosshair snaps to.
    struct Figures {
        std::array<int, 4> rows{};
        std::size_t count = 0;
    };
    virtual Figures figuresOf(int place) const = 0;

    Change everythingChanged();
    Change lastChanged();

    void setPanes(const ChartPanes &panes) { m_panes = panes; }
    void setBoxWidth(int width) { m_boxWidth = width; }
    QRgb colour(Ink ink) const { return (*m_frame.colours)[ink]; }
    int textWidth(const ChartText &text) const;

    // Parts that all charts draw alike.
    void paintFrames(Pixels pixels) const;
    void paintLevel(Pixels pixels, const QRect &pane, int row, Ink ink) const;
    void putAxisText(const QRect &axis, int row, const ChartText &text, bool isRightAligned,
                     Ink ink) const;
    // Words below the panes and a line through them; false where they would touch the one before.
    bool putTime(Pixels pixels, int x, const ChartText &text, int *endOfLast) const;
    AxisLabel labelOn(const QRect &axis, int row, const ChartText &text) const;

private:
    enum class Dirt { Nothing, Last, Everything };

    void keepBehind();
    void restoreBehind();

    ChartFrame m_frame;
    ChartPanes m_panes;
    int m_boxWidth = 0;
    QImage m_picture;
    QImage m_behind; // what stands behind the last entry
    QRect m_strip;
    Dirt m_dirt = Dirt::Everything;
};

} // namespace zvplot
