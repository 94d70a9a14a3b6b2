#pragma once

#include "ZvWidgetKit/cellbuttondelegate.h"

class DealWidget_Select_DeliveryRecord_TableView;

// Paints the applications for delivery, with a button that cancels in each row where that is still
// possible.
class DealWidget_Select_DeliveryRecord_Delegate : public CellButtonDelegate
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DeliveryRecord_Delegate(QObject *parent = nullptr);
    ~DealWidget_Select_DeliveryRecord_Delegate() override;

    // Who cancels; without one a click does nothing.
    void setView(DealWidget_Select_DeliveryRecord_TableView *view);

protected:
    QString buttonText(const QModelIndex &index) const override;
    void buttonClicked(const QModelIndex &index) override;

private:
    DealWidget_Select_DeliveryRecord_TableView *m_view;
};
