#pragma once

#include "ZvWidgetKit/recordpage.h"

#include <memory>

class DealWidget_Select_Delegate_today_TableView;

namespace Ui {
class DealWidget_Select_DelegateToday;
}

// The page of the account's orders of the day. It has no dates.
class DealWidget_Select_DelegateToday : public RecordPage
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DelegateToday(QWidget *parent = nullptr);
    ~DealWidget_Select_DelegateToday() override;

public slots:
    void slot_selectButton_clicked() override;
    void slot_pageUpButton_clicked() override;
    void slot_pageDownButton_clicked() override;

private:
    std::unique_ptr<Ui::DealWidget_Select_DelegateToday> ui;
    DealWidget_Select_Delegate_today_TableView *m_tableView;
};
