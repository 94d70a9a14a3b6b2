#pragma once

#include "ZvWidgetKit/checkboxcelldelegate.h"

// Paints the cells of the prepared orders.
class DealWidget_PrePay_TableDelegate : public CheckBoxCellDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_PrePay_TableDelegate(QObject *parent = nullptr);
    ~DealWidget_PrePay_TableDelegate() override;
};
