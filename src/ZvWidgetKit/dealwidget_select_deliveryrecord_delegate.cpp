#include "ZvWidgetKit/dealwidget_select_deliveryrecord_delegate.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord_tableview.h"

namespace {

constexpr int ButtonColumn = 13;

bool canBeCancelled(const QModelIndex &index)
{
    const auto *model = qobject_cast<const DealWidget_Select_DeliveryRecord_Model *>(index.model());
    return model && model->getState(index.row()) == ZvUBDeliveryRecordItem::Reviewing;
}

} // namespace

DealWidget_Select_DeliveryRecord_Delegate::DealWidget_Select_DeliveryRecord_Delegate(
    QObject *parent)
    : CellButtonDelegate(ButtonColumn, parent), m_view(nullptr)
{
}

DealWidget_Select_DeliveryRecord_Delegate::~DealWidget_Select_DeliveryRecord_Delegate() = default;

void DealWidget_Select_DeliveryRecord_Delegate::setView(
    DealWidget_Select_DeliveryRecord_TableView *view)
{
    m_view = view;
}

QString DealWidget_Select_DeliveryRecord_Delegate::buttonText(const QModelIndex &index) const
{
    return canBeCancelled(index) ? QStringLiteral("取消") : QString();
}

void DealWidget_Select_DeliveryRecord_Delegate::buttonClicked(const QModelIndex &index)
{
    if (m_view && canBeCancelled(index))
        m_view->cancelDelivery(index.row());
}
