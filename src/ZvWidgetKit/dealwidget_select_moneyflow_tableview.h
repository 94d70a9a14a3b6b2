#pragma once

#include "ZvWidgetKit/dealwidget_select_moneyflow_tablemodel.h"
#include "ZvWidgetKit/pagedtableview.h"

// One page of the account's money in and out between two dates.
class DealWidget_Select_MoneyFlow_TableView : public PagedTableView
{
    Q_OBJECT

public:
    explicit DealWidget_Select_MoneyFlow_TableView(QWidget *parent = nullptr);
    ~DealWidget_Select_MoneyFlow_TableView() override;

    // Queries the movements of a type code from a date to a date.
    void selectRecords(int page, int type, QString startDate, QString stopDate);

public slots:
    // Takes the answer of the exchange.
    void slot_recordCacheChanged();

protected:
    void sendRequest() override;

private:
    QString m_startDate; // of the query that runs
    QString m_stopDate;
    int m_type;
    DealWidget_Select_MoneyFlow_TableModel m_model;
};
