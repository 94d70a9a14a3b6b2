#pragma once

#include "ZvWidgetKit/collectionrowsview.h"
#include "ZvWidgetKit/dealwidget_buysell_captablemodel.h"

// The holdings under the order ticket. A double click on one shows its time line.
class DealWidget_BuySell_CapTableView : public CollectionRowsView
{
    Q_OBJECT

public:
    explicit DealWidget_BuySell_CapTableView(QWidget *parent = nullptr);
    ~DealWidget_BuySell_CapTableView() override;

    void setCapList(QList<ZvUBCapItem> list);

public slots:
    void slot_rowDoubleClicked(QModelIndex index);

private:
    DealWidget_BuySell_CapTableModel m_model;
};
