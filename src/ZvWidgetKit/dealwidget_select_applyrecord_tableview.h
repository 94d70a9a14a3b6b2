#pragma once

#include "ZvWidgetKit/dealwidget_select_applyrecord_tablemodel.h"
#include "ZvWidgetKit/pagedtableview.h"

// One page of the account's applications for newly issued collections between two dates.
class DealWidget_Select_ApplyRecord_TableView : public PagedTableView
{
    Q_OBJECT

public:
    explicit DealWidget_Select_ApplyRecord_TableView(QWidget *parent = nullptr);
    ~DealWidget_Select_ApplyRecord_TableView() override;

    // Queries the applications from a date to a date.
    void selectRecords(int page, QString startDate, QString stopDate);

public slots:
    // Takes the answer of the exchange.
    void slot_recordCacheChanged();

protected:
    void sendRequest() override;

private:
    QString m_startDate; // of the query that runs
    QString m_stopDate;
    DealWidget_Select_ApplyRecord_TableModel m_model;
};
