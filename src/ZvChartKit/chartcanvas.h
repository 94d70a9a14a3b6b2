#pragma once

#include "ZvChartKit/chartcolours.h"
#include "ZvChartKit/chartglyphs.h"
#include "ZvChartKit/chartnotice.h"
#include "ZvChartKit/chartoverlay.h"
#include "ZvChartKit/klineplot.h"
#include "ZvChartKit/timelineplot.h"

#include <QImage>
#include <QWidget>

#include <optional>

namespace zvplot {

class IndicatorTabs;

// Shows one chart and answers mouse and keys. It is told its figures and what has changed of them;
// where they come from is not its business.
class ChartCanvas : public QWidget
{
    Q_OBJECT

public:
    explicit ChartCanvas(QWidget *parent = nullptr);
    ~ChartCanvas() override;

    void showTimeLine(const ZvUBTimeLine &line);
    void growTimeLine(const ZvUBTimeLine &line, int first);

    void showKLine(const ZvUBKLine &line, KLinePlot::Period period);
    void growKLine(const ZvUBKLine &line, int first);
    void prependKLine(const ZvUBKLine &line, int count);

    void setNotice(const ChartNotice &notice);

    bool isRedUp() const { return m_colours.isRedUp(); }
    void setRedUp(bool isRedUp);

signals:
    // Bars before the first one will be wanted soon.
    void earlierWanted();

protected:
    bool event(QEvent *event) override;
    void changeEvent(QEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void leaveEvent(QEvent *event) override;
    void wheelEvent(QWheelEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    using Part = ChartOverlay::Part;

    // Where the parts of the overlay stand that a change may move.
    struct OverlayRects {
        QRect rects[ChartOverlay::PartCount];
    };

    bool isKLine() const { return m_plot == &m_kLine; }
    void setPlot(ChartPlot *plot);
    void syncFrame();
    void placeTabs();
    void updateAll();
    void updateDevice(const QRect &rect);

    void apply(const ChartPlot::Change &change, const OverlayRects &before);
    void applyAll(const ChartPlot::Change &change);
    ChartOverlay overlay() const;
    OverlayRects overlayRects() const;
    void updateParts(const OverlayRects &before, const OverlayRects &after, Part first, Part last);

    void compose(const QRegion &region);
    QPoint toDevice(const QPointF &position) const;
    template <typename Move>
    void moveCrosshair(Move move);
    void moveByPlaces(int places);
    void jumpTo(bool isLast);
    bool moveByFigure(bool isAbove);
    int zoomAnchor() const;
    void zoom(int levels);
    bool handleKey(QKeyEvent *event);
    void askForEarlier();

    ChartColours m_colours;
    ChartGlyphs m_glyphs;
    TimeLinePlot m_timeLine;
    KLinePlot m_kLine;
    ChartPlot *m_plot;
    IndicatorTabs *m_tabs;
    QImage m_shown; // the picture with what stands over it

    ChartNotice m_notice;

    CrosshairGuide m_guide;
    std::optional<int> m_grip; // the column that a drag holds
    bool m_isDragging = false;
    int m_wheelRest = 0; // eighths of a degree that are no whole notch yet
};

} // namespace zvplot
