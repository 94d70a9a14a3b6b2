#include "ZvWidgetKit/dealwidget_buysell_dealtableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_buysell_dealtabledelegate.h"
#include "ZvWidgetKit/recordtablestyle.h"

DealWidget_BuySell_DealTableView::DealWidget_BuySell_DealTableView(QWidget *parent)
    : CollectionRowsView(parent)
{
    setUpTable(&m_model, new DealWidget_BuySell_DealTableDelegate);
    hideColumns(this, {12});
    setColumnWidths(this, {{1, 150}, {2, 70}, {5, 70}, {8, 70}});
    connect(this, &QTableView::doubleClicked, this,
            &DealWidget_BuySell_DealTableView::slot_rowDoubleClicked);
}

DealWidget_BuySell_DealTableView::~DealWidget_BuySell_DealTableView() = default;

void DealWidget_BuySell_DealTableView::setGatherList(QList<ZvUBGatherItem> list)
{
    m_model.setItemList(list);
}

void DealWidget_BuySell_DealTableView::slot_rowDoubleClicked(QModelIndex index)
{
    showTimeLine(m_model.collectionId(index.row()));
}

void DealWidget_BuySell_DealTableView::showEvent(QShowEvent *event)
{
    CollectionRowsView::showEvent(event);
    ZvServerEngine::getZvServerEngineInstance()->changedToGatherVisible();
}

void DealWidget_BuySell_DealTableView::hideEvent(QHideEvent *event)
{
    CollectionRowsView::hideEvent(event);
    ZvServerEngine::getZvServerEngineInstance()->changedToGatherHidden();
}
