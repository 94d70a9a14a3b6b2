#include "ZvWidgetKit/dealwidget_select_moneyflow.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_moneyflow_tableview.h"
#include "ui_dealwidget_select_moneyflow.h"

DealWidget_Select_MoneyFlow::DealWidget_Select_MoneyFlow(QWidget *parent)
    : RecordPage(parent), ui(std::make_unique<Ui::DealWidget_Select_MoneyFlow>()),
      m_tableView(nullptr)
{
    ui->setupUi(this);
    m_tableView = new DealWidget_Select_MoneyFlow_TableView(ui->tableView_containter_moneyFlow);
    setUpPage(ui->frame_recordPanel, m_tableView, QStringLiteral("出入金记录"));
}

DealWidget_Select_MoneyFlow::~DealWidget_Select_MoneyFlow() = default;

void DealWidget_Select_MoneyFlow::slot_selectButton_clicked()
{
    m_tableView->selectRecords(1, ui->comboBox_type->currentIndex(),
                               dateText(ui->dateEdit_startDate), dateText(ui->dateEdit_stopDate));
}

void DealWidget_Select_MoneyFlow::slot_pageUpButton_clicked()
{
    m_tableView->pageUp();
}

void DealWidget_Select_MoneyFlow::slot_pageDownButton_clicked()
{
    m_tableView->pageDown();
}
