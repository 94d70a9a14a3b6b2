#pragma once

#include "ZvWidgetKit/dealwidget_delivery_model.h"
#include "ZvWidgetKit/latetableview.h"

class DealWidget_Delivery_Delegate;

// The table of the holdings that can be taken out. The button of a row opens the form for it.
class DealWidget_Delivery_TableView : public LateTableView
{
    Q_OBJECT

public:
    explicit DealWidget_Delivery_TableView(QWidget *parent = nullptr);
    ~DealWidget_Delivery_TableView() override;

    // Shows these holdings in place of all others.
    void setRecordList(const QList<ZvUBCapItem> &list);

    // Runs the form for the holding of a row, which is read before; the rows may change while it
    // is open, and this view may end.
    void showDeliveryDialog(int row);

protected:
    void mouseReleaseEvent(QMouseEvent *event) override;

private:
    void applyStyle();
    QString textAt(int row, int column) const;
    int availableAt(int row) const; // pieces

    DealWidget_Delivery_Model m_model;
    DealWidget_Delivery_Delegate *m_delegate; // ends with this view
};
