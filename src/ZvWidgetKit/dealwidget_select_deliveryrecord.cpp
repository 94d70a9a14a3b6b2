#include "ZvWidgetKit/dealwidget_select_deliveryrecord.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord_tableview.h"
#include "ui_dealwidget_select_deliveryrecord.h"

DealWidget_Select_DeliveryRecord::DealWidget_Select_DeliveryRecord(QWidget *parent)
    : RecordPage(parent), ui(std::make_unique<Ui::DealWidget_Select_DeliveryRecord>()),
      m_tableView(nullptr)
{
    ui->setupUi(this);
    m_tableView = new DealWidget_Select_DeliveryRecord_TableView(ui->frame_container_delivery);
    setUpPage(ui->frame_recordPanel, m_tableView, QStringLiteral("提货记录"));
}

DealWidget_Select_DeliveryRecord::~DealWidget_Select_DeliveryRecord() = default;

void DealWidget_Select_DeliveryRecord::slot_selectButton_clicked()
{
    m_tableView->selectRecords(1, dateText(ui->dateEdit_startDate),
                               dateText(ui->dateEdit_stopDate));
}

void DealWidget_Select_DeliveryRecord::slot_pageUpButton_clicked()
{
    m_tableView->pageUp();
}

void DealWidget_Select_DeliveryRecord::slot_pageDownButton_clicked()
{
    m_tableView->pageDown();
}
