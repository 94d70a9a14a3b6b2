#pragma once

#include "ZvChartKit/zvchartkit_export.h"

#include <QWidget>

#include <memory>

/// The chart of the current collection: the time line of its session, or its day, week or month
/// K lines.
///
/// It asks for its figures and draws them by itself. The collection is the engine's global one; the
/// chart is the one that was chosen last, the time line at first. While it is hidden it asks
/// nothing, and catches up when it comes back.
///
/// The mouse and the arrow keys move a crosshair, Home and End go to the first and the last bar;
/// dragging moves K lines, Ctrl with the wheel, + and - zoom them around the bar under the cursor.
/// All other keys and the plain wheel are left to the parent.
class ZVCHARTKIT_EXPORT Zv_CollectionCharts : public QWidget
{
    Q_OBJECT

public:
    explicit Zv_CollectionCharts(QWidget *parent = nullptr);
    ~Zv_CollectionCharts() override;

    void changeToPage_timeChart();
    void changeToPage_kline_day();
    void changeToPage_kline_week();
    void changeToPage_kline_month();

    /// True at first: what rises is red and what falls is green. False turns the two around in
    /// every series.
    bool isRedUp() const;
    void setRedUp(bool isRedUp);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    class Private;
    std::unique_ptr<Private> d;
};
