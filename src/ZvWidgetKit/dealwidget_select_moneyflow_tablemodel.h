#pragma once

#include "ZvModelKit/zvubmoneyflowitem.h"
#include "ZvWidgetKit/itemtablemodel.h"

// One page of the account's money in and out, a row a movement.
class DealWidget_Select_MoneyFlow_TableModel : public RecordTableModel<ZvUBMoneyFlowItem>
{
    Q_OBJECT

public:
    explicit DealWidget_Select_MoneyFlow_TableModel(QObject *parent = nullptr);
    ~DealWidget_Select_MoneyFlow_TableModel() override;

protected:
    QString text(const ZvUBMoneyFlowItem &item, int column) const override;
    QColor foreground(const ZvUBMoneyFlowItem &item, int column) const override;
    Qt::Alignment alignment(int column) const override;
};
