#include "ZvWidgetKit/dealwidget_buysell_dealtabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_BuySell_DealTableDelegate::DealWidget_BuySell_DealTableDelegate(QObject *parent)
    : RecordTableDelegate(parent)
{
}

DealWidget_BuySell_DealTableDelegate::~DealWidget_BuySell_DealTableDelegate() = default;
