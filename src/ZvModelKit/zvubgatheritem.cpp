#include "ZvModelKit/zvubgatheritem.h"

namespace {

qint64 positionChangeOf(const ZvUBGatherItem::Data &data)
{
    return zvub::difference(data.buyQuantity, data.sellQuantity);
}

QString averagePriceText(qint64 amount, qint64 quantity)
{
    return quantity > 0 ? zvub::moneyText(zvub::roundedRatio(amount, quantity, 1))
                        : zvub::missingText();
}

} // namespace

ZvUBGatherItem::ZvUBGatherItem() : ZvUBGatherItem(zvub::emptyItem<ZvUBGatherItem>()) { }

ZvUBGatherItem::ZvUBGatherItem(const Data &data)
    : m_row(
        Row{data,
            {data.code, data.name, zvub::quantityText(data.buyQuantity),
             averagePriceText(data.buyAmount, data.buyQuantity), zvub::moneyText(data.buyFee),
             zvub::quantityText(data.sellQuantity),
             averagePriceText(data.sellAmount, data.sellQuantity), zvub::moneyText(data.sellFee),
             zvub::quantityText(zvub::sum(data.buyQuantity, data.sellQuantity)),
             zvub::moneyText(zvub::sum(data.buyFee, data.sellFee)),
             QString::number(positionChangeOf(data)), zvub::moneyText(data.sellProfit),
             data.collectionId}})
{
}

int ZvUBGatherItem::dataCountForModelUse()
{
    return headerListForModelUse().size();
}

QStringList ZvUBGatherItem::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("代码"),     QStringLiteral("名称"),       QStringLiteral("买入量"),
        QStringLiteral("买入均价"), QStringLiteral("买入手续费"), QStringLiteral("卖出量"),
        QStringLiteral("卖出均价"), QStringLiteral("卖出手续费"), QStringLiteral("总量"),
        QStringLiteral("总手续费"), QStringLiteral("增减仓"),     QStringLiteral("卖出盈亏"),
        QStringLiteral("藏品编号"),
    };
    return headers;
}

QString ZvUBGatherItem::displayDataForModelUse(int column) const
{
    return m_row->text(column);
}

int ZvUBGatherItem::positionChange() const
{
    return zvub::cappedInt(positionChangeOf(data()));
}
