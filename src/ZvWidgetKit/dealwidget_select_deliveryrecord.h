#pragma once

#include "ZvWidgetKit/recordpage.h"

#include <memory>

class DealWidget_Select_DeliveryRecord_TableView;

namespace Ui {
class DealWidget_Select_DeliveryRecord;
}

// The page of the applications for delivery between two dates, which can be cancelled in their
// rows.
class DealWidget_Select_DeliveryRecord : public RecordPage
{
    Q_OBJECT

public:
    explicit DealWidget_Select_DeliveryRecord(QWidget *parent = nullptr);
    ~DealWidget_Select_DeliveryRecord() override;

public slots:
    void slot_selectButton_clicked() override;
    void slot_pageUpButton_clicked() override;
    void slot_pageDownButton_clicked() override;

private:
    std::unique_ptr<Ui::DealWidget_Select_DeliveryRecord> ui;
    DealWidget_Select_DeliveryRecord_TableView *m_tableView;
};
