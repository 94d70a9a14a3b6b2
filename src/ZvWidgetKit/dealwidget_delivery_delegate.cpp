#include "ZvWidgetKit/dealwidget_delivery_delegate.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_delivery_model.h"
#include "ZvWidgetKit/dealwidget_delivery_tableview.h"

DealWidget_Delivery_Delegate::DealWidget_Delivery_Delegate(DealWidget_Delivery_TableView *view)
    : CellButtonDelegate(DealWidget_Delivery_Model::ButtonColumn, nullptr), m_view(view)
{
}

DealWidget_Delivery_Delegate::~DealWidget_Delivery_Delegate() = default;

QString DealWidget_Delivery_Delegate::buttonText(const QModelIndex &) const
{
    return QStringLiteral("提货");
}

void DealWidget_Delivery_Delegate::buttonClicked(const QModelIndex &index)
{
    if (m_view)
        m_view->showDeliveryDialog(index.row());
}
