#include "ZvWidgetKit/dealwidget_buysell_captabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_BuySell_CapTableDelegate::DealWidget_BuySell_CapTableDelegate(QObject *parent)
    : RecordTableDelegate(parent)
{
}

DealWidget_BuySell_CapTableDelegate::~DealWidget_BuySell_CapTableDelegate() = default;
