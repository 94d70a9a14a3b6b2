#pragma once

#include "ZvWidgetKit/collectionrowsview.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtablemodel.h"

// The sums of the day's deals under the order ticket. A double click on one shows its time line.
// The sums are polled only while this table is on screen, so they may be stale when it comes back.
class DealWidget_BuySell_DealTableView : public CollectionRowsView
{
    Q_OBJECT

public:
    explicit DealWidget_BuySell_DealTableView(QWidget *parent = nullptr);
    ~DealWidget_BuySell_DealTableView() override;

    void setGatherList(QList<ZvUBGatherItem> list);

public slots:
    void slot_rowDoubleClicked(QModelIndex index);

protected:
    void showEvent(QShowEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    DealWidget_BuySell_DealTableModel m_model;
};
