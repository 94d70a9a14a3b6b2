#pragma once

#include "ZvModelKit/zvubentrustitem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// One page of the account's orders, of the day or of the past.
class DealWidget_Select_Delegate_TableModel : public RecordTableModel<ZvUBEntrustItem>
{
    Q_OBJECT

public:
    explicit DealWidget_Select_Delegate_TableModel(QObject *parent = nullptr);
    ~DealWidget_Select_Delegate_TableModel() override;

protected:
    QString text(const ZvUBEntrustItem &item, int column) const override;
    QColor foreground(const ZvUBEntrustItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
};
