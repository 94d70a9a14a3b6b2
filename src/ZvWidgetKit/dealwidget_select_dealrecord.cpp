#include "ZvWidgetKit/dealwidget_select_dealrecord.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_dealrecord_tableview.h"
#include "ui_dealwidget_select_dealrecord.h"

DealWidget_Select_DealRecord::DealWidget_Select_DealRecord(QWidget *parent)
    : RecordPage(parent), ui(std::make_unique<Ui::DealWidget_Select_DealRecord>()),
      m_tableView(nullptr)
{
    ui->setupUi(this);
    m_tableView = new DealWidget_Select_DealRecord_TableView(ui->frame_container_dealRecord);
    setUpPage(ui->frame_recordPanel, m_tableView, QStringLiteral("成交记录"));
}

DealWidget_Select_DealRecord::~DealWidget_Select_DealRecord() = default;

void DealWidget_Select_DealRecord::slot_selectButton_clicked()
{
    m_tableView->selectRecords(dateText(ui->dateEdit_startDate), dateText(ui->dateEdit_stopDate), 1,
                               ui->comboBox_type->currentIndex());
}

void DealWidget_Select_DealRecord::slot_pageUpButton_clicked()
{
    m_tableView->pageUp();
}

void DealWidget_Select_DealRecord::slot_pageDownButton_clicked()
{
    m_tableView->pageDown();
}

void DealWidget_Select_DealRecord::hideRecordPanel()
{
    ui->frame_recordPanel->hide();
}

void DealWidget_Select_DealRecord::showRecordPanel()
{
    ui->frame_recordPanel->show();
}
