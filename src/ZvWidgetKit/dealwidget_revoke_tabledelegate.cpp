#include "ZvWidgetKit/dealwidget_revoke_tabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"

DealWidget_Revoke_tableDelegate::DealWidget_Revoke_tableDelegate(QObject *parent)
    : CheckBoxCellDelegate(parent)
{
}

DealWidget_Revoke_tableDelegate::~DealWidget_Revoke_tableDelegate() = default;
