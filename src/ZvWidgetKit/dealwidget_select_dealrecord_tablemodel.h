#pragma once

#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// One page of the account's deals, a row a deal.
class DealWidget_Select_DealRecord_TableModel : public RecordTableModel<ZvUBDealRecordItem>
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DealRecord_TableModel(QObject *parent = nullptr);
    ~DealWidget_Select_DealRecord_TableModel() override;

protected:
    QString text(const ZvUBDealRecordItem &item, int column) const override;
    QColor foreground(const ZvUBDealRecordItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
};
