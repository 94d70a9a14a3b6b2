#include "ZvWidgetKit/dealwidget_select_dealrecord_tabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_Select_DealRecord_TableDelegate::DealWidget_Select_DealRecord_TableDelegate(
    QObject *parent)
    : RecordTableDelegate(parent)
{
}

DealWidget_Select_DealRecord_TableDelegate::~DealWidget_Select_DealRecord_TableDelegate() = default;
