#pragma once

#include "ZvWidgetKit/cellbuttondelegate.h"

class DealWidget_Delivery_TableView;

// Paints the holdings that can be taken out, and the button "提货" of each.
class DealWidget_Delivery_Delegate : public CellButtonDelegate
{
    Q_OBJECT

public:
    // Clicks open the form of `view`, if there is one.
    explicit DealWidget_Delivery_Delegate(DealWidget_Delivery_TableView *view);
    ~DealWidget_Delivery_Delegate() override;

protected:
    QString buttonText(const QModelIndex &index) const override;
    void buttonClicked(const QModelIndex &index) override;

private:
    DealWidget_Delivery_TableView *const m_view;
};
