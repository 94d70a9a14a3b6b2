#include "ZvModelKit/zvubcapitem.h"

namespace {

qint64 marketValueOf(const ZvUBCapItem::Data &data)
{
    return data.latest < 0 ? data.cost : zvub::product(data.latest, data.quantity);
}

qint64 profitOf(const ZvUBCapItem::Data &data)
{
    return zvub::difference(marketValueOf(data), data.cost);
}

bool hasProfit(const ZvUBCapItem::Data &data)
{
    return data.latest >= 0;
}

bool hasProfitRate(const ZvUBCapItem::Data &data)
{
    return hasProfit(data) && data.cost > 0;
}

qint64 profitRateOf(const ZvUBCapItem::Data &data)
{
    return zvub::roundedRatio(profitOf(data), data.cost, 10000);
}

QString textUnless(bool isMissing, qint64 hundredths)
{
    return isMissing ? zvub::missingText() : zvub::moneyText(hundredths);
}

} // namespace

ZvUBCapItem::ZvUBCapItem() : ZvUBCapItem(zvub::emptyItem<ZvUBCapItem>()) { }

ZvUBCapItem::ZvUBCapItem(const Data &data)
    : m_row(Row{
        data,
        {data.code, data.name, zvub::quantityText(data.quantity), zvub::quantityText(data.sellable),
         zvub::quantityText(zvub::difference(data.quantity, data.sellable)),
         data.quantity > 0 ? zvub::moneyText(zvub::roundedRatio(data.cost, data.quantity, 1))
                           : zvub::missingText(),
         zvub::priceText(data.latest), zvub::moneyText(marketValueOf(data)),
         textUnless(!hasProfit(data), profitOf(data)),
         hasProfitRate(data) ? zvub::moneyText(profitRateOf(data)) : zvub::missingText(),
         data.collectionId, zvub::moneyText(data.cost), zvub::moneyText(data.cost)}})
{
}

QStringList ZvUBCapItem::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("代码"),     QStringLiteral("名称"),     QStringLiteral("持有数量"),
        QStringLiteral("可卖数量"), QStringLiteral("冻结数量"), QStringLiteral("成本价"),
        QStringLiteral("最新价"),   QStringLiteral("持有市值"), QStringLiteral("盈亏"),
        QStringLiteral("盈亏率%"),  QStringLiteral("藏品编号"), QStringLiteral("持仓成本"),
    };
    return headers;
}

QString ZvUBCapItem::displayDataForModelUse(int column) const
{
    return m_row->text(column);
}

qint64 ZvUBCapItem::marketValue() const
{
    return marketValueOf(data());
}

double ZvUBCapItem::getProfit() const
{
    return zvub::yuan(profitOf(data()));
}

double ZvUBCapItem::getProfit_rate() const
{
    return hasProfitRate(data()) ? zvub::yuan(profitRateOf(data())) : 0.0;
}
