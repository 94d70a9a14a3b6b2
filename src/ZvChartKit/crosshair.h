#pragma once

#include <QPoint>

#include <optional>

namespace zvplot {

class ChartPlot;

// Where the crosshair is: a place of the plot, and a row of the frame.
struct Crosshair {
    int place = -1;
    int row = 0;

    bool isShown() const { return place >= 0; }
    bool operator==(const Crosshair &other) const
    {
        return place == other.place && (row == other.row || !isShown());
    }
    bool operator!=(const Crosshair &other) const { return !(*this == other); }
};

// Leads the crosshair: with the mouse from bar to bar, by keys, and around the bar of a zoom.
class CrosshairGuide
{
public:
    explicit CrosshairGuide(const ChartPlot *plot) : m_plot(plot) { }

    // Another plot, without a crosshair.
    void setPlot(const ChartPlot *plot);

    const Crosshair &crosshair() const { return m_crosshair; }

    // The mouse is at this pixel of the device; where it is over no plot there is no crosshair.
    void moveMouse(const QPoint &device);
    void forgetMouse();
    bool isOverPlots(const QPoint &device) const;

    // To the price of a place, and on to the next figure above or below. Keys do that.
    void moveTo(int place);
    void moveToFigure(bool isAbove);

    // A zoom keeps its bar on its pixel, but the one under the mouse may be a neighbour then: the
    // crosshair stays on its bar until the mouse moves, so that many notches go around one bar.
    void holdForZoom();

    // So many places were put in front.
    void prepend(int count);

    // Figures or places have changed: back to where the mouse is, or to the bar that it is held on.
    void settle();

private:
    enum class Hold { None, Keys, Zoom };

    void followMouse();
    int rowAt(int place) const;

    const ChartPlot *m_plot;
    Crosshair m_crosshair;
    std::optional<QPoint> m_mouse; // over the plots
    Hold m_hold = Hold::None;
};

} // namespace zvplot
