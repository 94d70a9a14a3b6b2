#pragma once

#include "ZvModelKit/zvubapplyitem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// One page of the account's applications for newly issued collections.
class DealWidget_Select_ApplyRecord_TableModel : public RecordTableModel<ZvUBApplyItem>
{
    Q_OBJECT

public:
    explicit DealWidget_Select_ApplyRecord_TableModel(QObject *parent = nullptr);
    ~DealWidget_Select_ApplyRecord_TableModel() override;

protected:
    QString text(const ZvUBApplyItem &item, int column) const override;
    QColor foreground(const ZvUBApplyItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
};
