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
constexpr int mostNotches = 1000; // of one turn

} // namespace

ChartCanvas::ChartCanvas(QWidget *parent)
    : QWidget(parent), m_plot(&m_timeLine), m_tabs(new IndicatorTabs(this)), m_guide(m_plot)
{
    setFocusPolicy(Qt::StrongFocus);
    setMouseTracking(true);
    // Every pixel is drawn here, so nothing is to be erased below.
    setAttribute(Qt::WA_OpaquePaintEvent);
    m_tabs->hide();
    connect(m_tabs, &IndicatorTabs::chosen, this, [this](int index) {
        applyAll(m_kLine.setStudy(static_cast<KLinePlot::Study>(index)));
    });
    syncFrame();
}

ChartCanvas::~ChartCanvas() = default;

void ChartCanvas::showTimeLine(const ZvUBTimeLine &line)
{
    const ChartPlot::Change change = m_timeLine.load(line);
    setPlot(&m_timeLine);
    applyAll(change);
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
    m_guide.prepend(count);
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
        updateDevice(m_plot->panes().priceHead);
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
    m_guide.setPlot(plot);
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
    if (!change.isEverything)
        return;
    // Where the crosshair stood may not be a place any more.
    m_guide.settle();
    updateAll();
}

void ChartCanvas::apply(const ChartPlot::Change &change, const OverlayRects &before)
{
    if (change.isEverything) {
        applyAll(change);
        return;
    }
    updateDevice(change.strip);
    const OverlayRects after = overlayRects();
    updateParts(before, after, ChartOverlay::LastPrice, ChartOverlay::LastPrice);
    const Crosshair &crosshair = m_guide.crosshair();
    const bool showsLast = !crosshair.isShown() || crosshair.place == m_plot->lastPlace();
    if (showsLast)
        updateParts(before, after, ChartOverlay::Box, ChartOverlay::IndicatorHead);
}

ChartOverlay ChartCanvas::overlay() const
{
    const int indent = m_tabs->isHidden()
        ? 0
        : m_plot->frame().px(m_tabs->geometry().right() + 1) - m_plot->panes().indicatorHead.left();
    return ChartOverlay(*m_plot, m_guide.crosshair(), indent, m_notice.reserve(*m_plot));
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

// Moves the crosshair by `move` and repaints what it leaves and where it comes to.
template <typename Move>
void ChartCanvas::moveCrosshair(Move move)
{
    const Crosshair from = m_guide.crosshair();
    const OverlayRects before = overlayRects();
    move();
    const Crosshair to = m_guide.crosshair();
    if (to == from)
        return;
    const OverlayRects after = overlayRects();
    updateParts(before, after, ChartOverlay::RowLine, ChartOverlay::RightLabel);
    if (to.place != from.place)
        updateParts(before, after, ChartOverlay::PlaceLine, ChartOverlay::IndicatorHead);
}

void ChartCanvas::moveByPlaces(int places)
{
    const Crosshair &from = m_guide.crosshair();
    int place = from.isShown() ? from.place + places * m_plot->stride()
                               : m_plot->placeAt(m_plot->panes().price.right());
    place = std::clamp(place, m_plot->firstPlace(), m_plot->lastPlace());
    const int middle = m_plot->middleOf(place);
    const QRect &plot = m_plot->panes().price;
    if (isKLine() && (middle < plot.left() || middle > plot.right())) {
        applyAll(m_kLine.show(place));
        askForEarlier();
    }
    moveCrosshair([this, place] { m_guide.moveTo(place); });
}

void ChartCanvas::jumpTo(bool isLast)
{
    if (isKLine()) {
        applyAll(isLast ? m_kLine.showLast() : m_kLine.showFirst());
        askForEarlier();
    }
    moveCrosshair(
        [this, isLast] { m_guide.moveTo(isLast ? m_plot->lastPlace() : m_plot->firstPlace()); });
}

bool ChartCanvas::moveByFigure(bool isAbove)
{
    if (!m_guide.crosshair().isShown())
        return false;
    moveCrosshair([this, isAbove] { m_guide.moveToFigure(isAbove); });
    return true;
}

// The bar under the crosshair, or the last one in view.
int ChartCanvas::zoomAnchor() const
{
    if (m_guide.crosshair().isShown())
        return m_guide.crosshair().place;
    return m_plot->placeAt(m_plot->panes().price.right());
}

void ChartCanvas::zoom(int levels)
{
    const ChartPlot::Change change = m_kLine.zoom(levels, zoomAnchor());
    if (!change.isEverything)
        return;
    m_guide.holdForZoom();
    applyAll(change);
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
    m_guide.forgetMouse();
    syncFrame();
    askForEarlier();
}

void ChartCanvas::paintEvent(QPaintEvent *event)
{
    if (m_plot->frame().scale != devicePixelRatioF())
        syncFrame();
    const QRegion &region = event->region();
    compose(region);
    QPainter painter(this);
    // From here on a unit is a pixel of the device, and the widget begins on a whole one, wherever
    // a scale such as 1.25 has put it.
    const QTransform toDevice = painter.deviceTransform();
    const QPointF origin = toDevice.map(QPointF(0, 0));
    painter.setWorldTransform(
        QTransform::fromTranslate(std::round(origin.x()), std::round(origin.y()))
        * toDevice.inverted());
    for (const QRect &rect : region) {
        const QRect area = m_plot->frame().toDevice(rect);
        if (!m_shown.rect().contains(area))
            painter.fillRect(area, QColor(m_colours[Ink::Ground]));
        const QRect copied = area & m_shown.rect();
        if (!copied.isEmpty())
            painter.drawImage(copied.topLeft(), m_shown, copied);
    }
}

// Puts the picture and what stands over it together, for a region of the widget. Words are drawn
// here rather than in the window, where the many rectangles of a crosshair's region clip them.
void ChartCanvas::compose(const QRegion &region)
{
    const QImage &picture = m_plot->picture();
    if (m_shown.size() != picture.size())
        m_shown = QImage(picture.size(), QImage::Format_RGB32);
    if (m_shown.isNull())
        return;
    for (const QRect &rect : region) {
        const QRect area = m_plot->frame().toDevice(rect) & picture.rect();
        if (!area.isEmpty())
            copyPixels(picture, area, &m_shown, area.topLeft());
    }
    overlay().paint(&m_shown, region);
    m_notice.paint(&m_shown, *m_plot, region);
}

void ChartCanvas::mousePressEvent(QMouseEvent *event)
{
    const QPoint at = toDevice(event->localPos());
    if (event->button() != Qt::LeftButton || !m_guide.isOverPlots(at)) {
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
    moveCrosshair([this, at] { m_guide.moveMouse(at); });
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
    moveCrosshair([this] { m_guide.forgetMouse(); });
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
    m_wheelRest += qBound(-mostNotches * notch, event->angleDelta().y(), mostNotches * notch);
    const int notches = m_wheelRest / notch;
    m_wheelRest -= notches * notch;
    const QPoint at = toDevice(event->position());
    moveCrosshair([this, at] { m_guide.moveMouse(at); });
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
