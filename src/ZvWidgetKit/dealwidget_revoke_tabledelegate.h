#pragma once

#include "ZvWidgetKit/checkboxcelldelegate.h"

// Paints the cells of the open orders.
class DealWidget_Revoke_tableDelegate : public CheckBoxCellDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_Revoke_tableDelegate(QObject *parent = nullptr);
    ~DealWidget_Revoke_tableDelegate() override;
};
