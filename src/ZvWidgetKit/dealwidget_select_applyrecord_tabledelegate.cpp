#include "ZvWidgetKit/dealwidget_select_applyrecord_tabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_Select_ApplyRecord_TableDelegate::DealWidget_Select_ApplyRecord_TableDelegate(
    QObject *parent)
    : RecordTableDelegate(parent)
{
}

DealWidget_Select_ApplyRecord_TableDelegate::~DealWidget_Select_ApplyRecord_TableDelegate()
    = default;
