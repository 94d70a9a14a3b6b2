#include "ZvWidgetKit/moneyoverviewdialog.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ui_moneyoverviewdialog.h"

MoneyOverviewDialog::MoneyOverviewDialog(QWidget *parent)
    : BreltFramlessMoveableDialog(parent), ui(std::make_unique<Ui::MoneyOverviewDialog>())
{
    ui->setupUi(this);
    connect(ui->pushButton_close, SIGNAL(clicked()), this, SLOT(closeClicked()));
    ui->pushButton_close->setStyleSheet(QStringLiteral(
        "QPushButton{background-color:rgb(212,59,51);background-image:url(:/icons/close1.png);"
        "border-style:soli}QPushButton:hover{background-color:rgb(212,59,51);"
        "background-image:url(:/icons/close2.png);border-style:soli}"));
}

MoneyOverviewDialog::~MoneyOverviewDialog() = default;

void MoneyOverviewDialog::closeClicked()
{
    close();
}
