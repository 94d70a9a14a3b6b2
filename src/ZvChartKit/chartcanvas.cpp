#include "ZvChartKit/chartcanvas.h"

#include "ZvChartKit/indicatortabs.h"

#include <QGuiApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>
#include <QStyleHints>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace zvplot {

namespace {

// In pixels of the widget.
constexpr int fontSize = 12;
constexpr int tabsLeft = 4;

constexpr int notch = 120; // of a wheel, in eighths of a degree

} // namespace

ChartCanvas::ChartCanvas(QWidget *parent)
    : QWidget(parent), m_plot(&m_timeLine), m_tabs(new IndicatorTabs(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    // Every pixel is drawn here, so nothing is to be erased below.
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_tabs->hide();
    connect(m_tabs, &IndicatorTabs::chosen, this, [this](int index) {
        applyAll(m_kLine.setStudy(static_cast<KLinePlot::Study>(index)));
        settleCrosshair();
    });
    syncFrame();
}

ChartCanvas::~ChartCanvas() = default;

void ChartCanvas::showTimeLine(const ZvUBTimeLine &line)
{
    const ChartPlot::Change change = m_timeLine.load(line);
    setPlot(&m_timeLine);
    applyAll(change);
    settleCrosshair();
}

void ChartCanvas::growTimeLine(const ZvUBTimeLine &line, int first)
{
    const OverlayRects before = overlayRects();
    apply(m_timeLine.grow(line, first), before);
}

void ChartCanvas::showKLine(const ZvUBKLine &line, KLinePlot::Period period)
{
    const ChartPlot::Change change = m_kLine.load(line, period);
    setPlot(&m_kLine);
    applyAll(change);
    settleCrosshair();
    askForEarlier();
}

void ChartCanvas::growKLine(const ZvUBKLine &line, int first)
{
    const OverlayRects before = overlayRects();
    apply(m_kLine.grow(line, first), before);
}

void ChartCanvas::prependKLine(const ZvUBKLine &line, int count)
{
    const ChartPlot::Change change = m_kLine.prepend(line, count);
    if (m_crosshair.isShown())
        m_crosshair.place += count;
    applyAll(change);
    askForEarlier();
}

void ChartCanvas::setNotice(const ChartNotice &notice)
{
    const ChartNotice before = m_notice;
    m_notice = notice;
    if (before.kind() == notice.kind() && before.text().view() == notice.text().view())
        return;
    // The age of stale figures counts on in its own row; every other notice changes the picture.
    if (before.kind() == notice.kind())
        updateDevice(overlay().rectOf(ChartOverlay::PriceHead));
    else
        updateAll();
}

void ChartCanvas::setRedUp(bool isRedUp)
{
    if (isRedUp == m_colours.isRedUp())
        return;
    m_colours.setRedUp(isRedUp);
    for (ChartPlot *plot :
         {static_cast<ChartPlot *>(&m_timeLine), static_cast<ChartPlot *>(&m_kLine)})
        plot->setFrame(plot->frame());
    updateAll();
}

void ChartCanvas::setPlot(ChartPlot *plot)
{
    if (m_plot == plot)
        return;
    m_plot = plot;
    m_crosshair = Crosshair();
    m_hold = Hold::None;
    m_grip.reset();
    m_isDragging = false;
    unsetCursor();
}

// The frame is measured in pixels of the device, so it follows the screen as well as the size.
void ChartCanvas::syncFrame()
{
    ChartFrame frame;
    frame.scale = devicePixelRatioF();
    frame.size = QSize(static_cast<int>(std::lround(width() * frame.scale)),
                       static_cast<int>(std::lround(height() * frame.scale)));
    frame.glyphs = &m_glyphs;
    frame.colours = &m_colours;
    m_glyphs.setUp(font(), frame.px(fontSize));
    m_timeLine.setFrame(frame);
    m_kLine.setFrame(frame);
    placeTabs();
}

void ChartCanvas::placeTabs()
{
    const QRect head = m_plot->panes().indicatorHead;
    const bool areShown = isKLine() && !head.isEmpty();
    if (areShown) {
        const double scale = m_plot->frame().scale;
        const QSize size = m_tabs->sizeHint();
        const int top = static_cast<int>(head.center().y() / scale) - size.height() / 2;
        m_tabs->setGeometry(static_cast<int>(head.left() / scale) + tabsLeft, top, size.width(),
                            size.height());
    }
    m_tabs->setVisible(areShown);
}

void ChartCanvas::updateAll()
{
    placeTabs();
    update();
}

void ChartCanvas::updateDevice(const QRect &rect)
{
    if (!rect.isEmpty())
        update(m_plot->frame().toWidget(rect));
}

void ChartCanvas::applyAll(const ChartPlot::Change &change)
{
    if (change.isEverything)
        updateAll();
}

void ChartCanvas::apply(const ChartPlot::Change &change, const OverlayRects &before)
{
    if (change.isEverything) {
        settleCrosshair();
        updateAll();
        return;
    }
    updateDevice(change.strip);
    const OverlayRects after = overlayRects();
    updateParts(before, after, ChartOverlay::LastPrice, ChartOverlay::LastPrice);
    const bool showsLast = !m_crosshair.isShown() || m_crosshair.place == m_plot->lastPlace();
    if (showsLast)
        updateParts(before, after, ChartOverlay::Box, ChartOverlay::IndicatorHead);
}

ChartOverlay ChartCanvas::overlay() const
{
    const int indent = m_tabs->isHidden()
        ? 0
        : m_plot->frame().px(m_tabs->geometry().right() + 1) - m_plot->panes().indicatorHead.left();
    return ChartOverlay(*m_plot, m_crosshair, indent, m_notice.reserve(*m_plot));
}

ChartCanvas::OverlayRects ChartCanvas::overlayRects() const
{
    OverlayRects found;
    const ChartOverlay shown = overlay();
    for (int part = 0; part < ChartOverlay::PartCount; ++part)
        found.rects[part] = shown.rectOf(static_cast<Part>(part));
    return found;
}

void ChartCanvas::updateParts(const OverlayRects &before, const OverlayRects &after, Part first,
                              Part last)
{
    for (int part = first; part <= last; ++part) {
        updateDevice(before.rects[part]);
        if (after.rects[part] != before.rects[part])
            updateDevice(after.rects[part]);
    }
}

QPoint ChartCanvas::toDevice(const QPointF &position) const
{
    const double scale = m_plot->frame().scale;
    return QPoint(static_cast<int>(std::floor(position.x() * scale)),
                  static_cast<int>(std::floor(position.y() * scale)));
}

bool ChartCanvas::isOverPlots(const QPoint &device) const
{
    const ChartPanes &panes = m_plot->panes();
    return !panes.isEmpty() && device.x() >= panes.price.left() && device.x() <= panes.price.right()
        && device.y() >= panes.price.top() && device.y() < panes.bottom();
}

void ChartCanvas::setCrosshair(const Crosshair &crosshair)
{
    if (crosshair == m_crosshair)
        return;
    const OverlayRects before = overlayRects();
    const bool isAnotherPlace = crosshair.place != m_crosshair.place;
    m_crosshair = crosshair;
    const OverlayRects after = overlayRects();
    updateParts(before, after, ChartOverlay::RowLine, ChartOverlay::RightLabel);
    if (isAnotherPlace)
        updateParts(before, after, ChartOverlay::PlaceLine, ChartOverlay::IndicatorHead);
}

void ChartCanvas::moveMouse(const QPoint &device)
{
    if (m_mouse == device)
        return;
    m_mouse = device;
    if (!isOverPlots(device))
        m_mouse.reset();
    m_hold = Hold::None;
    followMouse();
}

void ChartCanvas::forgetMouse()
{
    m_mouse.reset();
    m_hold = Hold::None;
    followMouse();
}

void ChartCanvas::followMouse()
{
    setCrosshair(crosshairAtMouse());
}

Crosshair ChartCanvas::crosshairAtMouse() const
{
    Crosshair crosshair;
    if (m_mouse)
        crosshair.place = m_plot->placeAt(m_mouse->x());
    if (crosshair.isShown())
        crosshair.row = rowAt(crosshair.place);
    return crosshair;
}

// The mouse's row, or that of a figure within its reach; the place's price where keys rule.
int ChartCanvas::rowAt(int place) const
{
    if (m_hold == Hold::Keys || !m_mouse)
        return m_plot->priceRow(place);
    const bool isOverPrices = m_plot->panes().paneAt(m_mouse->y()) == &m_plot->panes().price;
    return isOverPrices ? m_plot->magnet(place, m_mouse->y()) : m_mouse->y();
}

// After the figures or their places have changed and everything is painted anew: the crosshair
// stays where the mouse is, or on the bar that keys or the zoom hold it on. Where it stood may not
// be a place any more.
void ChartCanvas::settleCrosshair()
{
    if (m_hold == Hold::None || !m_crosshair.isShown() || m_plot->isEmpty()) {
        m_crosshair = crosshairAtMouse();
        return;
    }
    m_crosshair.place = std::clamp(m_crosshair.place, m_plot->firstPlace(), m_plot->lastPlace());
    m_crosshair.row = rowAt(m_crosshair.place);
}

void ChartCanvas::moveByPlaces(int places)
{
    Crosshair crosshair = m_crosshair;
    if (crosshair.isShown())
        crosshair.place += places * m_plot->stride();
    else
        crosshair.place = m_plot->placeAt(m_plot->panes().price.right());
    crosshair.place = std::clamp(crosshair.place, m_plot->firstPlace(), m_plot->lastPlace());
    if (isKLine()) {
        const int middle = m_plot->middleOf(crosshair.place);
        const QRect &plot = m_plot->panes().price;
        if (middle < plot.left() || middle > plot.right()) {
            applyAll(m_kLine.show(crosshair.place));
            askForEarlier();
        }
    }
    m_hold = Hold::Keys;
    crosshair.row = rowAt(crosshair.place);
    setCrosshair(crosshair);
}

void ChartCanvas::jumpTo(bool isLast)
{
    if (isKLine()) {
        applyAll(isLast ? m_kLine.showLast() : m_kLine.showFirst());
        askForEarlier();
    }
    Crosshair crosshair;
    crosshair.place = isLast ? m_plot->lastPlace() : m_plot->firstPlace();
    m_hold = Hold::Keys;
    crosshair.row = rowAt(crosshair.place);
    setCrosshair(crosshair);
}

bool ChartCanvas::moveByFigure(bool isAbove)
{
    if (!m_crosshair.isShown())
        return false;
    Crosshair crosshair = m_crosshair;
    crosshair.row = m_plot->nextFigure(crosshair.place, crosshair.row, isAbove);
    m_hold = Hold::Keys;
    setCrosshair(crosshair);
    return true;
}

// The bar under the crosshair, or the last one in view.
int ChartCanvas::zoomAnchor() const
{
    if (m_crosshair.isShown())
        return m_crosshair.place;
    return m_plot->placeAt(m_plot->panes().price.right());
}

// The bar keeps its pixel, but the one under the cursor may be its neighbour now: the crosshair
// holds on to the bar, so that a turn of many notches goes around one bar.
void ChartCanvas::zoom(int levels)
{
    const ChartPlot::Change change = m_kLine.zoom(levels, zoomAnchor());
    if (!change.isEverything)
        return;
    updateAll();
    if (m_hold == Hold::None)
        m_hold = Hold::Zoom;
    settleCrosshair();
    askForEarlier();
}

void ChartCanvas::askForEarlier()
{
    if (isKLine() && m_kLine.wantsEarlier())
        emit earlierWanted();
}

bool ChartCanvas::event(QEvent *event)
{
    // A window that comes to a screen of another scale keeps its size.
    if (event->type() == QEvent::ScreenChangeInternal || event->type() == QEvent::Show)
        syncFrame();
    return QWidget::event(event);
}

void ChartCanvas::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() == QEvent::FontChange) {
        syncFrame();
        updateAll();
    }
}

void ChartCanvas::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    forgetMouse();
    syncFrame();
    askForEarlier();
}

void ChartCanvas::paintEvent(QPaintEvent *event)
{
    if (m_plot->frame().scale != devicePixelRatioF())
        syncFrame();
    const QImage &picture = m_plot->picture();
    const QRegion &region = event->region();
    QPainter painter(this);
    // From here on a unit is a pixel of the device, and the widget begins on a whole one, wherever
    // a scale such as 1.25 has put it.
    const QTransform toDevice = painter.deviceTransform();
    const QPointF origin = toDevice.map(QPointF(0, 0));
    painter.setWorldTransform(
        QTransform::fromTranslate(std::round(origin.x()), std::round(origin.y()))
        * toDevice.inverted());

    for (const QRect &rect : region) {
        const double scale = m_plot->frame().scale;
        const QPoint first(static_cast<int>(std::floor(rect.left() * scale)) - 1,
                           static_cast<int>(std::floor(rect.top() * scale)) - 1);
        const QPoint last(static_cast<int>(std::ceil((rect.right() + 1) * scale)) + 1,
                          static_cast<int>(std::ceil((rect.bottom() + 1) * scale)) + 1);
        const QRect area(first, last);
        if (!picture.rect().contains(area))
            painter.fillRect(area, QColor(m_colours[Ink::Ground]));
        const QRect copied = area & picture.rect();
        if (!copied.isEmpty())
            painter.drawImage(copied.topLeft(), picture, copied);
    }
    overlay().paint(&painter, region);
    m_notice.paint(&painter, *m_plot, region);
}

void ChartCanvas::mousePressEvent(QMouseEvent *event)
{
    const QPoint at = toDevice(event->localPos());
    if (event->button() != Qt::LeftButton || !isOverPlots(at)) {
        event->ignore();
        return;
    }
    m_grip = at.x();
}

void ChartCanvas::mouseMoveEvent(QMouseEvent *event)
{
    const QPoint at = toDevice(event->localPos());
    if (m_grip && isKLine() && (event->buttons() & Qt::LeftButton)) {
        // A click that trembles is no drag.
        const int distance
            = m_plot->frame().px(QGuiApplication::styleHints()->startDragDistance() / 2.0);
        if (!m_isDragging && std::abs(at.x() - *m_grip) >= distance) {
            m_isDragging = true;
            setCursor(Qt::ClosedHandCursor);
        }
        if (m_isDragging && at.x() != *m_grip) {
            applyAll(m_kLine.panBy(at.x() - *m_grip));
            m_grip = at.x();
            askForEarlier();
        }
    }
    moveMouse(at);
}

void ChartCanvas::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    m_grip.reset();
    if (m_isDragging)
        unsetCursor();
    m_isDragging = false;
}

void ChartCanvas::leaveEvent(QEvent *event)
{
    QWidget::leaveEvent(event);
    forgetMouse();
}

void ChartCanvas::wheelEvent(QWheelEvent *event)
{
    if (!(event->modifiers() & Qt::ControlModifier)) {
        event->ignore(); // walks through the collections
        return;
    }
    event->accept();
    if (!isKLine() || m_plot->isEmpty())
        return;
    m_wheelRest += event->angleDelta().y();
    const int notches = m_wheelRest / notch;
    m_wheelRest -= notches * notch;
    moveMouse(toDevice(event->position()));
    if (notches != 0)
        zoom(notches);
}

void ChartCanvas::keyPressEvent(QKeyEvent *event)
{
    event->setAccepted(handleKey(event));
}

// True where the key is the chart's own; every other one belongs to the page and the host.
bool ChartCanvas::handleKey(QKeyEvent *event)
{
    const auto modifiers = event->modifiers() & ~(Qt::KeypadModifier | Qt::ShiftModifier);
    if (modifiers != Qt::NoModifier || m_plot->isEmpty() || m_plot->panes().isEmpty())
        return false;
    switch (event->key()) {
    case Qt::Key_Left:
        moveByPlaces(-1);
        return true;
    case Qt::Key_Right:
        moveByPlaces(1);
        return true;
    case Qt::Key_Up:
        return moveByFigure(true);
    case Qt::Key_Down:
        return moveByFigure(false);
    case Qt::Key_Home:
        jumpTo(false);
        return true;
    case Qt::Key_End:
        jumpTo(true);
        return true;
    case Qt::Key_Plus:
    case Qt::Key_Equal:
    case Qt::Key_Minus:
    case Qt::Key_Underscore:
        if (!isKLine())
            return false;
        zoom(event->key() == Qt::Key_Plus || event->key() == Qt::Key_Equal ? 1 : -1);
        return true;
    default:
        return false;
    }
}

} // namespace zvplot
