#pragma once

#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// One page of the applications for delivery.
class DealWidget_Select_DeliveryRecord_Model : public RecordTableModel<ZvUBDeliveryRecordItem>
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DeliveryRecord_Model(QObject *parent = nullptr);
    ~DealWidget_Select_DeliveryRecord_Model() override;

    // Of a row; 0 or an empty text of one that is not there.
    int getState(int row) const;
    QString getOrderNumber(int row) const;
    QString getCollectionName(int row) const;
    QString getQuantity(int row) const;
    QString getDeliveryId(int row) const;

protected:
    QString text(const ZvUBDeliveryRecordItem &item, int column) const override;
    QColor foreground(const ZvUBDeliveryRecordItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
    QVariant headerText(int section) const override;
    Qt::Alignment headerAlignment(int section) const override;
};
