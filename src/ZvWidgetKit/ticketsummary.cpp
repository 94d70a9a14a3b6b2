#include "ZvWidgetKit/ticketsummary.h"

#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubgatherinfo.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ui_dealwidget_buysell.h"

namespace ticketsummary {
namespace {

// A number without separators, money with two decimals.
void show(QLabel *label, int count)
{
    label->setText(QString::number(count));
}

void show(QLabel *label, double yuan)
{
    label->setText(QStringLiteral("%1").arg(yuan, 0, 'f', 2));
}

// The sheets for a figure above, below and at zero.
struct SignSheets {
    QString above;
    QString below;
    QString zero;

    void applyTo(QLabel *label, double figure) const
    {
        label->setStyleSheet(figure > 0 ? above : figure < 0 ? below : zero);
    }
};

} // namespace

// The two pages differ in their reds and greens.

void write(const Form &form, const ZvUBCapInfo &info)
{
    static const SignSheets sheets{
        QStringLiteral("QLabel{color:red;border-style:soli;}"),
        QStringLiteral("QLabel{color:#04ff05;border-style:soli;}"),
        QStringLiteral("QLabel{color:white;border-style:soli;}"),
    };
    show(form.label_cap_value, info.heldMarketValue());
    show(form.label_profit_value, info.profit());
    show(form.label_remainder_value, info.availableMoney());
    show(form.label_assets_value, info.totalAssets());
    show(form.label_ticketTypeCount_cap_value, info.items().size());
    show(form.label_availableMoneyValue, info.availableMoney());
    sheets.applyTo(form.label_profit_value, info.profit());
}

void write(const Form &form, const ZvUBGatherInfo &info)
{
    static const SignSheets sheets{
        QStringLiteral("QLabel{color:#e73c3c;border-style:soli;}"),
        QStringLiteral("QLabel{color:#38b041;border-style:soli;}"),
        QStringLiteral("QLabel{color:#ffffff;border-style:soli;}"),
    };
    show(form.label_ticketTypeCount_deal_value, info.kindCount());
    show(form.label_count_buy_value, info.buyCount());
    show(form.label_poundage_buy_value, info.buyFee());
    show(form.label_count_sell_value, info.sellCount());
    show(form.label_poundage_sell_value, info.sellFee());
    show(form.label_count_total_value, info.totalCount());
    show(form.label_poundage_total_value, info.totalFee());
    show(form.label_deal_CountChange_value, info.positionChange());
    show(form.label_deal_profit_value, info.sellProfit());
    sheets.applyTo(form.label_deal_CountChange_value, info.positionChange());
    sheets.applyTo(form.label_deal_profit_value, info.sellProfit());
}

} // namespace ticketsummary
