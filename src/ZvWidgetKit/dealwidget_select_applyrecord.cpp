#include "ZvWidgetKit/dealwidget_select_applyrecord.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_applyrecord_tableview.h"
#include "ui_dealwidget_select_applyrecord.h"

DealWidget_Select_ApplyRecord::DealWidget_Select_ApplyRecord(QWidget *parent)
    : RecordPage(parent), ui(std::make_unique<Ui::DealWidget_Select_ApplyRecord>()),
      m_tableView(nullptr)
{
    ui->setupUi(this);
    m_tableView = new DealWidget_Select_ApplyRecord_TableView(ui->frame_container_apply);
    setUpPage(ui->frame_recordPanel, m_tableView, QStringLiteral("申购记录"));
}

DealWidget_Select_ApplyRecord::~DealWidget_Select_ApplyRecord() = default;

void DealWidget_Select_ApplyRecord::slot_selectButton_clicked()
{
    m_tableView->selectRecords(1, dateText(ui->dateEdit_startDate),
                               dateText(ui->dateEdit_stopDate));
}

void DealWidget_Select_ApplyRecord::slot_pageUpButton_clicked()
{
    m_tableView->pageUp();
}

void DealWidget_Select_ApplyRecord::slot_pageDownButton_clicked()
{
    m_tableView->pageDown();
}
