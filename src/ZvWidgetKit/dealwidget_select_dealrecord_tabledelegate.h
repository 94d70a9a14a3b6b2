#pragma once

#include "ZvWidgetKit/recordtabledelegate.h"

// Paints the cells of the page of deals.
class DealWidget_Select_DealRecord_TableDelegate : public RecordTableDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DealRecord_TableDelegate(QObject *parent = nullptr);
    ~DealWidget_Select_DealRecord_TableDelegate() override;
};
