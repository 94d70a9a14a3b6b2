#pragma once

#include <QString>
#include <QWidget>

class Collection_DetailWidget;
class QLabel;
class QTimer;
class Zv_CollectionCharts;

// The page of one collection: its chart, and beside it levels, figures and newest deals.
//
// Page Up, Page Down and the wheel walk through the server's list of all collections, whose order
// need not be that of the market table. The wheel walks at most one collection a second.
class Market_KTimeWidget : public QWidget
{
    Q_OBJECT

public:
    explicit Market_KTimeWidget(QWidget *parent = nullptr);
    ~Market_KTimeWidget() override;

    void changeToPage_timeChart();
    void changeToPage_kline_day();
    void changeToPage_kline_week();
    void changeToPage_kline_month();

public slots:
    // Makes the collection at which the wheel points the current one; comes every second.
    void timer_wheelCard_timeout();

protected:
    void wheelEvent(QWheelEvent *event) override;

private:
    void layOut();
    void createConnections();
    void slot_nextCollection();
    void slot_beforeCollection();
    void wheelChanged(int degrees);

    QWidget *m_titleWidget;
    QLabel *m_titleLabel;
    Collection_DetailWidget *m_detailWidget;
    Zv_CollectionCharts *m_charts;
    QTimer *m_wheelTimer;
    QString m_wheelCollectionId; // waits for the timer; empty for none
};
