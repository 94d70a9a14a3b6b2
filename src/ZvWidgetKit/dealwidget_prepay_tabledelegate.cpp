#include "ZvWidgetKit/dealwidget_prepay_tabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_PrePay_TableDelegate::DealWidget_PrePay_TableDelegate(QObject *parent)
    : CheckBoxCellDelegate(parent)
{
}

DealWidget_PrePay_TableDelegate::~DealWidget_PrePay_TableDelegate() = default;
