#include "ZvWidgetKit/dealwidget_revoke.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/dealwidget_revoke_tableview.h"
#include "ui_dealwidget_revoke.h"

namespace {

constexpr QSize ButtonSize(70, 24);

// Letters with which the longest text, of five characters, fits a button.
QFont buttonFont(QFont font)
{
    font.setPixelSize(12);
    font.setLetterSpacing(QFont::AbsoluteSpacing, -0.8);
    return font;
}

} // namespace

DealWidget_Revoke::DealWidget_Revoke(QWidget *parent)
    : RecordPage(parent), ui(std::make_unique<Ui::DealWidget_Revoke>()), m_tableView(nullptr)
{
    ui->setupUi(this);
    m_tableView = new DealWidget_Revoke_TableView(ui->widget_tableViewContainer);
    setUpPage(ui->frame, m_tableView, QStringLiteral("可撤委托"));
    applyStyle();
    createConnections();
}

DealWidget_Revoke::~DealWidget_Revoke() = default;

void DealWidget_Revoke::applyStyle()
{
    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    ui->frame->setStyleSheet(QStringLiteral("QFrame{background-color:rgb(10,17,20)}"));
    for (QPushButton *button : {ui->pushButton_allSelect, ui->pushButton_allDiselect,
                                ui->pushButton_withdrawal, ui->pushButton_withdrawalBuy,
                                ui->pushButton_withdrawalSell, ui->pushButton_withdrawalLast}) {
        button->setStyleSheet(config->getStyleOf_DealGrayRoundButton());
        button->setFixedSize(ButtonSize);
        button->setFont(buttonFont(button->font()));
    }
    ui->pushButton_findCode->setStyleSheet(config->getStyleOf_DealCheckButton());
    // The exchange finds no order by a code.
    ui->lineEdit_code->setVisible(false);
    ui->pushButton_findCode->setVisible(false);
}

void DealWidget_Revoke::createConnections()
{
    using View = DealWidget_Revoke_TableView;
    const auto join = [this](QPushButton *button, void (View::*slot)()) {
        connect(button, &QPushButton::clicked, m_tableView, slot);
    };
    join(ui->pushButton_allSelect, &View::slot_selectAll);
    join(ui->pushButton_allDiselect, &View::slot_deselectAll);
    join(ui->pushButton_withdrawal, &View::slot_revokeSelected);
    join(ui->pushButton_withdrawalBuy, &View::slot_revokeBuys);
    join(ui->pushButton_withdrawalSell, &View::slot_revokeSells);
    join(ui->pushButton_withdrawalLast, &View::slot_revokeLast);
}

void DealWidget_Revoke::slot_selectButton_clicked()
{
    m_tableView->selectOrders(1, DealWidget_Revoke_TableView::SmallestPage);
}

void DealWidget_Revoke::slot_pageUpButton_clicked()
{
    m_tableView->pageUp();
}

void DealWidget_Revoke::slot_pageDownButton_clicked()
{
    m_tableView->pageDown();
}
