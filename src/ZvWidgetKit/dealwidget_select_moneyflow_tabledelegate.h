#pragma once

#include "ZvWidgetKit/recordtabledelegate.h"

// Paints the cells of the page of money in and out.
class DealWidget_Select_MoneyFlow_TableDelegate : public RecordTableDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_Select_MoneyFlow_TableDelegate(QObject *parent = nullptr);
    ~DealWidget_Select_MoneyFlow_TableDelegate() override;
};
