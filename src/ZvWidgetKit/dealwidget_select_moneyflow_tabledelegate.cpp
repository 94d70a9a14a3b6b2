#include "ZvWidgetKit/dealwidget_select_moneyflow_tabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_Select_MoneyFlow_TableDelegate::DealWidget_Select_MoneyFlow_TableDelegate(
    QObject *parent)
    : RecordTableDelegate(parent)
{
}

DealWidget_Select_MoneyFlow_TableDelegate::~DealWidget_Select_MoneyFlow_TableDelegate() = default;
