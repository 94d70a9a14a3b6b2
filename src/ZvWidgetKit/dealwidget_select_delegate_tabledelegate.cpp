#include "ZvWidgetKit/dealwidget_select_delegate_tabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_Select_Delegate_TableDelegate::DealWidget_Select_Delegate_TableDelegate(QObject *parent)
    : RecordTableDelegate(parent)
{
}

DealWidget_Select_Delegate_TableDelegate::~DealWidget_Select_Delegate_TableDelegate() = default;
