#include "ZvWidgetKit/dealwidget_select_delegatetoday.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_select_delegate_today_tableview.h"
#include "ui_dealwidget_select_delegatetoday.h"

namespace {

constexpr int PageSize = 10;

} // namespace

DealWidget_Select_DelegateToday::DealWidget_Select_DelegateToday(QWidget *parent)
    : RecordPage(parent), ui(std::make_unique<Ui::DealWidget_Select_DelegateToday>()),
      m_tableView(nullptr)
{
    ui->setupUi(this);
    m_tableView = new DealWidget_Select_Delegate_today_TableView(ui->frame_container_delegateToday);
    setUpPage(ui->frame_delegatePanel, m_tableView, QStringLiteral("当日委托"));
}

DealWidget_Select_DelegateToday::~DealWidget_Select_DelegateToday() = default;

void DealWidget_Select_DelegateToday::slot_selectButton_clicked()
{
    m_tableView->selectRecords(1, PageSize, ui->comboBox_type->currentIndex());
}

void DealWidget_Select_DelegateToday::slot_pageUpButton_clicked()
{
    m_tableView->pageUp();
}

void DealWidget_Select_DelegateToday::slot_pageDownButton_clicked()
{
    m_tableView->pageDown();
}
