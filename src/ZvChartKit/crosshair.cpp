#include "ZvChartKit/crosshair.h"

#include "ZvChartKit/chartplot.h"

#include <algorithm>

namespace zvplot {

void CrosshairGuide::setPlot(const ChartPlot *plot)
{
    m_plot = plot;
    m_crosshair = Crosshair();
    m_hold = Hold::None;
}

void CrosshairGuide::moveMouse(const QPoint &device)
{
    if (m_mouse == device)
        return;
    m_mouse.reset();
    if (isOverPlots(device))
        m_mouse = device;
    m_hold = Hold::None;
    followMouse();
}

void CrosshairGuide::forgetMouse()
{
    m_mouse.reset();
    m_hold = Hold::None;
    followMouse();
}

bool CrosshairGuide::isOverPlots(const QPoint &device) const
{
    const ChartPanes &panes = m_plot->panes();
    return !panes.isEmpty() && device.x() >= panes.price.left() && device.x() <= panes.price.right()
        && device.y() >= panes.price.top() && device.y() < panes.bottom();
}

void CrosshairGuide::moveTo(int place)
{
    m_hold = Hold::Keys;
    m_crosshair.place = place;
    m_crosshair.row = rowAt(place);
}

void CrosshairGuide::moveToFigure(bool isAbove)
{
    m_hold = Hold::Keys;
    m_crosshair.row = m_plot->nextFigure(m_crosshair.place, m_crosshair.row, isAbove);
}

void CrosshairGuide::holdForZoom()
{
    if (m_hold == Hold::None)
        m_hold = Hold::Zoom;
}

void CrosshairGuide::prepend(int count)
{
    if (m_crosshair.isShown())
        m_crosshair.place += count;
}

void CrosshairGuide::settle()
{
    if (m_hold == Hold::None || !m_crosshair.isShown() || m_plot->isEmpty()) {
        followMouse();
        return;
    }
    m_crosshair.place = std::clamp(m_crosshair.place, m_plot->firstPlace(), m_plot->lastPlace());
    m_crosshair.row = rowAt(m_crosshair.place);
}

void CrosshairGuide::followMouse()
{
    m_crosshair = Crosshair();
    if (m_mouse)
        m_crosshair.place = m_plot->placeAt(m_mouse->x());
    if (m_crosshair.isShown())
        m_crosshair.row = rowAt(m_crosshair.place);
}

// The mouse's row, or that of a figure within its reach; the place's price where keys rule.
int CrosshairGuide::rowAt(int place) const
{
    if (m_hold == Hold::Keys || !m_mouse)
        return m_plot->priceRow(place);
    const bool isOverPrices = m_plot->panes().paneAt(m_mouse->y()) == &m_plot->panes().price;
    return isOverPrices ? m_plot->magnet(place, m_mouse->y()) : m_mouse->y();
}

} // namespace zvplot
