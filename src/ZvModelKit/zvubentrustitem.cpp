#include "ZvModelKit/zvubentrustitem.h"

namespace {

QString averagePriceText(const ZvUBEntrustItem::Data &data)
{
    return data.filled > 0 ? zvub::moneyText(zvub::roundedRatio(data.amount, data.filled, 1))
                           : zvub::missingText();
}

} // namespace

ZvUBEntrustItem::ZvUBEntrustItem() : ZvUBEntrustItem(zvub::emptyItem<ZvUBEntrustItem>()) { }

ZvUBEntrustItem::ZvUBEntrustItem(const Data &data)
    : m_row(Row{data,
                {data.collectionId, QString::number(data.orderNumber), data.code, data.name,
                 zvub::directionText(data.direction), zvub::priceText(data.price),
                 zvub::quantityText(data.quantity), zvub::quantityText(data.filled),
                 averagePriceText(data), zvub::quantityText(data.withdrawn), data.key,
                 zvub::moneyText(data.fee), stateText(data.state), QString::number(data.state),
                 zvub::moneyText(data.amount), zvub::dateTimeText(data.time)}})
{
}

QStringList ZvUBEntrustItem::headerList()
{
    static const QStringList headers{
        QStringLiteral("藏品编号"), QStringLiteral("委托编号"), QStringLiteral("代码"),
        QStringLiteral("名称"),     QStringLiteral("方向"),     QStringLiteral("委托价"),
        QStringLiteral("委托数量"), QStringLiteral("成交数量"), QStringLiteral("成交均价"),
        QStringLiteral("撤单数量"), QStringLiteral("委托密钥"), QStringLiteral("手续费"),
        QStringLiteral("状态"),     QStringLiteral("状态码"),   QStringLiteral("成交金额"),
        QStringLiteral("委托时间"),
    };
    return headers;
}

QString ZvUBEntrustItem::displayData(int column) const
{
    return m_row->text(column);
}

qint64 ZvUBEntrustItem::openQuantity() const
{
    return openQuantityOf(data());
}

qint64 ZvUBEntrustItem::openQuantityOf(const Data &data)
{
    if (data.state != Open && data.state != PartlyFilled) {
        return 0;
    }
    const qint64 done = zvub::sum(data.filled, data.withdrawn);
    return qMax(qint64(0), zvub::difference(data.quantity, done));
}

QString ZvUBEntrustItem::stateText(int state)
{
    switch (state) {
    case Open:
        return QStringLiteral("已申报");
    case PartlyFilled:
        return QStringLiteral("部分成交");
    case Filled:
        return QStringLiteral("全部成交");
    case Withdrawn:
        return QStringLiteral("已撤单");
    case PartlyWithdrawn:
        return QStringLiteral("部成部撤");
    case Refused:
        return QStringLiteral("废单");
    default:
        return zvub::missingText();
    }
}
