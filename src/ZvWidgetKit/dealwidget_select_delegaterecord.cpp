#include "ZvWidgetKit/dealwidget_select_delegaterecord.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_delegate_history_tableview.h"
#include "ui_dealwidget_select_delegaterecord.h"

namespace {

constexpr int PageSize = 10;

} // namespace

DealWidget_Select_DelegateRecord::DealWidget_Select_DelegateRecord(QWidget *parent)
    : RecordPage(parent), ui(std::make_unique<Ui::DealWidget_Select_DelegateRecord>()),
      m_tableView(nullptr)
{
    ui->setupUi(this);
    m_tableView
        = new DealWidget_Select_Delegate_history_TableView(ui->frame_container_delegateRecord);
    setUpPage(ui->frame_delegatePanel, m_tableView, QStringLiteral("历史委托"));
}

DealWidget_Select_DelegateRecord::~DealWidget_Select_DelegateRecord() = default;

void DealWidget_Select_DelegateRecord::slot_selectButton_clicked()
{
    m_tableView->selectRecords(dateText(ui->dateEdit_startDate), dateText(ui->dateEdit_stopDate), 1,
                               ui->comboBox_type->currentIndex(), PageSize);
}

void DealWidget_Select_DelegateRecord::slot_pageUpButton_clicked()
{
    m_tableView->pageUp();
}

void DealWidget_Select_DelegateRecord::slot_pageDownButton_clicked()
{
    m_tableView->pageDown();
}
