#pragma once

#include "ZvWidgetKit/recordpage.h"

#include <memory>

class DealWidget_Select_ApplyRecord_TableView;

namespace Ui {
class DealWidget_Select_ApplyRecord;
}

// The page of the account's applications for newly issued collections. It has no choice of a type.
class DealWidget_Select_ApplyRecord : public RecordPage
{
    Q_OBJECT

public:
    explicit DealWidget_Select_ApplyRecord(QWidget *parent = nullptr);
    ~DealWidget_Select_ApplyRecord() override;

public slots:
    void slot_selectButton_clicked() override;
    void slot_pageUpButton_clicked() override;
    void slot_pageDownButton_clicked() override;

private:
    std::unique_ptr<Ui::DealWidget_Select_ApplyRecord> ui;
    DealWidget_Select_ApplyRecord_TableView *m_tableView;
};
