#include "ZvWidgetKit/dealwidget_select_deliveryrecord_model.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int LastKeyColumn = 3; // the numbers, code and name
constexpr int ButtonColumn = 13;

bool isCentred(int column)
{
    return column <= LastKeyColumn || column == 7 || column == 8 || column == 11 || column == 12;
}

} // namespace

DealWidget_Select_DeliveryRecord_Model::DealWidget_Select_DeliveryRecord_Model(QObject *parent)
    : RecordTableModel(ZvUBDeliveryRecordItem::headerList(), parent)
{
}

DealWidget_Select_DeliveryRecord_Model::~DealWidget_Select_DeliveryRecord_Model() = default;

// A row beyond the list gives the item of default data, which has nothing to cancel.
int DealWidget_Select_DeliveryRecord_Model::getState(int row) const
{
    return m_recordList.value(row).state();
}

QString DealWidget_Select_DeliveryRecord_Model::getOrderNumber(int row) const
{
    return m_recordList.value(row).orderNumber();
}

QString DealWidget_Select_DeliveryRecord_Model::getCollectionName(int row) const
{
    return m_recordList.value(row).collectionName();
}

QString DealWidget_Select_DeliveryRecord_Model::getQuantity(int row) const
{
    return m_recordList.value(row).quantity();
}

QString DealWidget_Select_DeliveryRecord_Model::getDeliveryId(int row) const
{
    return m_recordList.value(row).deliveryId();
}

QString DealWidget_Select_DeliveryRecord_Model::text(const ZvUBDeliveryRecordItem &item,
                                                     int column) const
{
    return item.displayData(column);
}

QColor DealWidget_Select_DeliveryRecord_Model::foreground(const ZvUBDeliveryRecordItem &,
                                                          int column) const
{
    return column <= LastKeyColumn ? Qt::yellow : Qt::white;
}

Qt::Alignment DealWidget_Select_DeliveryRecord_Model::alignment(int column) const
{
    return isCentred(column) ? centred() : right();
}

QVariant DealWidget_Select_DeliveryRecord_Model::headerText(int section) const
{
    return m_headerList.value(section);
}

Qt::Alignment DealWidget_Select_DeliveryRecord_Model::headerAlignment(int section) const
{
    return section == ButtonColumn ? centred() : alignment(section);
}
