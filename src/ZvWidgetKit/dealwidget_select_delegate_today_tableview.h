#pragma once

#include "ZvWidgetKit/delegatetableview.h"

// One page of the account's orders of the day.
class DealWidget_Select_Delegate_today_TableView : public DelegateTableView
{
    Q_OBJECT

public:
    explicit DealWidget_Select_Delegate_today_TableView(QWidget *parent = nullptr);
    ~DealWidget_Select_Delegate_today_TableView() override;

    // Queries the orders of a type code.
    void selectRecords(int page, int pageSize, int type);

public slots:
    // Takes the answer of the exchange.
    void slot_recordCacheChanged();

protected:
    void sendRequest() override;
};
