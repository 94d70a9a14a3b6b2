#pragma once

#include "ZvWidgetKit/dealwidget_select_deliveryrecord_model.h"
#include "ZvWidgetKit/pagedtableview.h"

class DealWidget_Select_DeliveryRecord_Delegate;

// One page of the applications for delivery. Whenever it is shown, it loads the first page without
// dates.
class DealWidget_Select_DeliveryRecord_TableView : public PagedTableView
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DeliveryRecord_TableView(QWidget *parent = nullptr);
    ~DealWidget_Select_DeliveryRecord_TableView() override;

    // Queries the applications between two dates, "yyyy/MM/dd"; an empty one is no bound.
    void selectRecords(int page, QString start, QString stop);

    // Asks the user, then cancels the application of a row; one without an identifier cannot be.
    void cancelDelivery(int row);

public slots:
    // Takes the answer of the exchange.
    void slot_recordCacheChanged();

    // Tell the user how a cancellation ended. A success loads the first page without dates.
    void slot_cancelSucceed();
    void slot_cancelFailed(QString reason);

protected:
    void showEvent(QShowEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void sendRequest() override;
    void logTurn(pageturn::Direction direction) const override;

private:
    void setupView();
    void createConnections();

    QString m_startDate;
    QString m_stopDate;
    DealWidget_Select_DeliveryRecord_Model m_model;
    DealWidget_Select_DeliveryRecord_Delegate *m_delegate;
};
