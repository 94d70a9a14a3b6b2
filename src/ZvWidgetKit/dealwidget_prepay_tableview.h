#pragma once

#include "ZvWidgetKit/latetableview.h"

// The prepared orders, with a tick in front of each. The model belongs to the ticket.
class DealWidget_PrePay_TableView : public LateTableView
{
    Q_OBJECT

public:
    explicit DealWidget_PrePay_TableView(QWidget *parent = nullptr);
    ~DealWidget_PrePay_TableView() override;

    // Gives table and columns their look. To be called once the model is set: before, there are no
    // columns.
    void setupView();
};
