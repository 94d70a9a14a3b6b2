#pragma once

#include "ZvWidgetKit/recordpage.h"

#include <memory>

class DealWidget_Select_Delegate_history_TableView;

namespace Ui {
class DealWidget_Select_DelegateRecord;
}

// The page of the account's orders of the past.
class DealWidget_Select_DelegateRecord : public RecordPage
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DelegateRecord(QWidget *parent = nullptr);
    ~DealWidget_Select_DelegateRecord() override;

public slots:
    void slot_selectButton_clicked() override;
    void slot_pageUpButton_clicked() override;
    void slot_pageDownButton_clicked() override;

private:
    std::unique_ptr<Ui::DealWidget_Select_DelegateRecord> ui;
    DealWidget_Select_Delegate_history_TableView *m_tableView;
};
