#include "ZvWidgetKit/dealwidget_buysell_captableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_buysell_captabledelegate.h"
#include "ZvWidgetKit/recordtablestyle.h"

DealWidget_BuySell_CapTableView::DealWidget_BuySell_CapTableView(QWidget *parent)
    : CollectionRowsView(parent)
{
    setUpTable(&m_model, new DealWidget_BuySell_CapTableDelegate);
    hideColumns(this, {10});
    setColumnWidths(this, {{1, 200}});
    connect(this, &QTableView::doubleClicked, this,
            &DealWidget_BuySell_CapTableView::slot_rowDoubleClicked);
}

DealWidget_BuySell_CapTableView::~DealWidget_BuySell_CapTableView() = default;

void DealWidget_BuySell_CapTableView::setCapList(QList<ZvUBCapItem> list)
{
    m_model.setItemList(list);
}

void DealWidget_BuySell_CapTableView::slot_rowDoubleClicked(QModelIndex index)
{
    showTimeLine(m_model.collectionId(index.row()));
}
