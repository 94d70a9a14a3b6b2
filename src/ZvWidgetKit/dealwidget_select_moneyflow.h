#pragma once

#include "ZvWidgetKit/recordpage.h"

#include <memory>

class DealWidget_Select_MoneyFlow_TableView;

namespace Ui {
class DealWidget_Select_MoneyFlow;
}

// The page of the account's money in and out.
class DealWidget_Select_MoneyFlow : public RecordPage
{
    Q_OBJECT

public:
    explicit DealWidget_Select_MoneyFlow(QWidget *parent = nullptr);
    ~DealWidget_Select_MoneyFlow() override;

public slots:
    void slot_selectButton_clicked() override;
    void slot_pageUpButton_clicked() override;
    void slot_pageDownButton_clicked() override;

private:
    std::unique_ptr<Ui::DealWidget_Select_MoneyFlow> ui;
    DealWidget_Select_MoneyFlow_TableView *m_tableView;
};
