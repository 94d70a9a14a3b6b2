#pragma once

#include "ZvWidgetKit/dealwidget_select_dealrecord_tablemodel.h"
#include "ZvWidgetKit/pagedtableview.h"

// One page of the account's deals between two dates.
class DealWidget_Select_DealRecord_TableView : public PagedTableView
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DealRecord_TableView(QWidget *parent = nullptr);
    ~DealWidget_Select_DealRecord_TableView() override;

    // Queries the deals from a date to a date, of a type code.
    void selectRecords(QString startDate, QString stopDate, int page, int type);

public slots:
    // Takes the answer of the exchange.
    void slot_recordCacheChanged();

protected:
    void sendRequest() override;

private:
    QString m_startDate; // of the query that runs
    QString m_stopDate;
    int m_type;
    DealWidget_Select_DealRecord_TableModel m_model;
};
