#pragma once

#include "ZvWidgetKit/recordpage.h"

#include <memory>

class DealWidget_Select_DealRecord_TableView;

namespace Ui {
class DealWidget_Select_DealRecord;
}

// The page of the account's deals. It serves two menu entries, one with the filter bar and one
// without.
class DealWidget_Select_DealRecord : public RecordPage
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DealRecord(QWidget *parent = nullptr);
    ~DealWidget_Select_DealRecord() override;

    // Neither sends a query.
    void hideRecordPanel();
    void showRecordPanel();

public slots:
    void slot_selectButton_clicked() override;
    void slot_pageUpButton_clicked() override;
    void slot_pageDownButton_clicked() override;

private:
    std::unique_ptr<Ui::DealWidget_Select_DealRecord> ui;
    DealWidget_Select_DealRecord_TableView *m_tableView;
};
