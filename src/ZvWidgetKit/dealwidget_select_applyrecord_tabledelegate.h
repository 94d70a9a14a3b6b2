#pragma once

#include "ZvWidgetKit/recordtabledelegate.h"

// Paints the cells of the page of applications.
class DealWidget_Select_ApplyRecord_TableDelegate : public RecordTableDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_Select_ApplyRecord_TableDelegate(QObject *parent = nullptr);
    ~DealWidget_Select_ApplyRecord_TableDelegate() override;
};
