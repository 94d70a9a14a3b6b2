#include "ZvModelKit/zvubproitem.h"

namespace {

QString averagePriceText(const ZvUBProItem::Data &data)
{
    const bool isComposite = data.collectionId.startsWith(QLatin1Char('-'));
    if (isComposite || data.volume <= 0 || data.amount < 0) {
        return zvub::missingText();
    }
    return zvub::moneyText(zvub::roundedRatio(data.amount, data.volume, 1));
}

QString shareText(qint64 part, qint64 whole)
{
    return zvub::percentText(zvub::roundedRatio(part, whole, 10000));
}

QString turnoverText(const ZvUBProItem::Data &data)
{
    return data.volume < 0 || data.listed <= 0 ? zvub::missingText()
                                               : shareText(data.volume, data.listed);
}

// 100 % when only buyers wait, -100 % when only sellers do.
QString balanceText(const ZvUBProItem::Data &data)
{
    const qint64 waiting = zvub::sum(data.buyQuantity, data.sellQuantity);
    if (data.buyQuantity < 0 || data.sellQuantity < 0 || waiting == 0) {
        return zvub::missingText();
    }
    return shareText(data.buyQuantity - data.sellQuantity, waiting);
}

QString amountText(qint64 fen)
{
    return fen < 0 ? zvub::missingText() : zvub::shortMoneyText(fen);
}

} // namespace

ZvUBProItem::ZvUBProItem() : ZvUBProItem(zvub::emptyItem<ZvUBProItem>()) { }

ZvUBProItem::ZvUBProItem(const Data &data)
    : m_row(Row{data,
                {averagePriceText(data), turnoverText(data), zvub::priceText(data.open),
                 zvub::quantityText(data.volume), zvub::priceText(data.high), balanceText(data),
                 zvub::priceText(data.low), amountText(data.amount), zvub::quantityText(data.outer),
                 zvub::quantityText(data.inner)}})
{
}

QString ZvUBProItem::getPropertyString(int property) const
{
    return m_row->text(property);
}
