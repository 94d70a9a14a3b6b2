#include "ZvWidgetKit/small_money_overview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/moneytext.h"
#include "ui_small_money_overview.h"

namespace {

QString yuanText(double yuan)
{
    return moneyText(yuan) + QStringLiteral("元");
}

} // namespace

Small_Money_Overview::Small_Money_Overview(QWidget *parent)
    : BreltFramlessMoveableDialog(parent), ui(std::make_unique<Ui::Small_Money_Overview>())
{
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    showAccount();
    showMoney();
    connect(ui->toolButton_close, &QToolButton::clicked, this, &QDialog::accept);
    ui->toolButton_close->setText(QString());
    ui->toolButton_close->setStyleSheet(
        QStringLiteral("QToolButton{border-image: url(:/icons/smallwidget/close1.png)}"
                       "QToolButton:hover{border-image: url(:/icons/smallwidget/close2.png)}"));
    const QString background
        = ZvServerConfig::getZvServerConfigInstance()->getPathOf_zijingzonglanPNG();
    setStyleSheet(QStringLiteral("QDialog{border-image: url(%1);}").arg(background));
}

Small_Money_Overview::~Small_Money_Overview() = default;

void Small_Money_Overview::showAccount()
{
    const ZvUBMyAcount account = ZvServerCache::getZvServerCacheInstance()->myAccount;
    ui->label_account_value->setText(account.accountNumber());
    ui->label_name_value->setText(account.name());
    ui->label_phone_value->setText(account.phone());
}

void Small_Money_Overview::showMoney()
{
    const ZvUBCapInfo money = ZvServerCache::getZvServerCacheInstance()->capInfo;
    ui->label_money_total_value->setText(yuanText(money.totalAssets()));
    ui->label_money_available_value->setText(yuanText(money.availableMoney()));
    ui->label_money_hold_value->setText(yuanText(money.heldMarketValue()));
    ui->label_money_freeze_value->setText(yuanText(money.frozenMoney()));
}
