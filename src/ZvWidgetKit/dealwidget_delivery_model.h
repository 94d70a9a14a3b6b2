#pragma once

#include "ZvModelKit/zvubcapitem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// The holdings that can be taken out, a row a holding. Before their last column stands one without
// texts, for the button of the row.
class DealWidget_Delivery_Model : public RecordTableModel<ZvUBCapItem>
{
    Q_OBJECT

public:
    static constexpr int ButtonColumn = 11;

    explicit DealWidget_Delivery_Model(QObject *parent = nullptr);
    ~DealWidget_Delivery_Model() override;

protected:
    QString text(const ZvUBCapItem &item, int column) const override;
    QColor foreground(const ZvUBCapItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
    Qt::Alignment headerAlignment(int section) const override;
};
