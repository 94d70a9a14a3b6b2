#pragma once

#include "ZvWidgetKit/recordtabledelegate.h"

// Paints the cells of the holdings.
class DealWidget_BuySell_CapTableDelegate : public RecordTableDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_BuySell_CapTableDelegate(QObject *parent = nullptr);
    ~DealWidget_BuySell_CapTableDelegate() override;
};
