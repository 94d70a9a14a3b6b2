#pragma once

#include "ZvWidgetKit/recordtabledelegate.h"

// Paints the cells of both pages of orders.
class DealWidget_Select_Delegate_TableDelegate : public RecordTableDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_Select_Delegate_TableDelegate(QObject *parent = nullptr);
    ~DealWidget_Select_Delegate_TableDelegate() override;
};
