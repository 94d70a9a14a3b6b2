#pragma once

#include "ZvWidgetKit/recordtabledelegate.h"

// Paints the cells of the sums of the day's deals.
class DealWidget_BuySell_DealTableDelegate : public RecordTableDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_BuySell_DealTableDelegate(QObject *parent = nullptr);
    ~DealWidget_BuySell_DealTableDelegate() override;
};
