#include "ZvWidgetKit/delegatetableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_delegate_tabledelegate.h"
#include "ZvWidgetKit/recordtablestyle.h"

DelegateTableView::DelegateTableView(QWidget *parent)
    : PagedTableView(parent), m_pageSize(10), m_type(0)
{
    setUpRecordTable(this, &m_model, new DealWidget_Select_Delegate_TableDelegate, RecordRowHeight);
    hideColumns(this, {0, 10, 13});
    setColumnWidths(this, {{1, 200}, {2, 100}, {3, 200}, {4, 50}, {6, 100}, {15, 200}});
}

DelegateTableView::~DelegateTableView() = default;
