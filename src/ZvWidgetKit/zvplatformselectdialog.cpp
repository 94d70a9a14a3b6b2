#include "ZvWidgetKit/zvplatformselectdialog.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ui_zvplatformselectdialog.h"

ZvPlatformSelectDialog::ZvPlatformSelectDialog(QWidget *parent)
    : BreltFramlessMoveableDialog(parent), ui(std::make_unique<Ui::ZvPlatformSelectDialog>())
{
    ui->setupUi(this);
}

ZvPlatformSelectDialog::~ZvPlatformSelectDialog() = default;

void ZvPlatformSelectDialog::on_pushButton_CH_clicked()
{
    ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::ChengHu);
    accept();
}

void ZvPlatformSelectDialog::on_pushButton_LC_clicked()
{
    ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
    accept();
}
