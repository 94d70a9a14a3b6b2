#pragma once

#include "ZvWidgetKit/delegatetableview.h"

// One page of the account's orders of the past between two dates.
class DealWidget_Select_Delegate_history_TableView : public DelegateTableView
{
    Q_OBJECT

public:
    explicit DealWidget_Select_Delegate_history_TableView(QWidget *parent = nullptr);
    ~DealWidget_Select_Delegate_history_TableView() override;

    // Queries the orders from a date to a date, of a type code.
    void selectRecords(QString startDate, QString stopDate, int page, int type, int pageSize);

public slots:
    // Takes the answer of the exchange.
    void slot_recordCacheChanged();

protected:
    void sendRequest() override;

private:
    QString m_startDate; // of the query that runs
    QString m_stopDate;
};
