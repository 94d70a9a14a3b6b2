#pragma once

#include "ZvWidgetKit/dealwidget_select_delegate_tablemodel.h"
#include "ZvWidgetKit/pagedtableview.h"

// What the tables of orders share, those of the day and those of the past. It has no meta-object of
// its own, as its base class.
class DelegateTableView : public PagedTableView
{
public:
    explicit DelegateTableView(QWidget *parent);
    ~DelegateTableView() override;

protected:
    int m_pageSize; // of the query that runs
    int m_type;
    DealWidget_Select_Delegate_TableModel m_model;
};
