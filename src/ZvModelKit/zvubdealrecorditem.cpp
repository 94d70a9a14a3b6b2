#include "ZvModelKit/zvubdealrecorditem.h"

ZvUBDealRecordItem::ZvUBDealRecordItem() : ZvUBDealRecordItem(zvub::emptyItem<ZvUBDealRecordItem>())
{
}

ZvUBDealRecordItem::ZvUBDealRecordItem(const Data &data)
    : m_row(Row{data,
                {data.code, data.name, zvub::directionText(data.direction),
                 zvub::priceText(data.price), zvub::quantityText(data.quantity),
                 data.price < 0 || data.quantity < 0
                     ? zvub::missingText()
                     : zvub::moneyText(zvub::product(data.price, data.quantity)),
                 zvub::priceText(data.fee), zvub::dateTimeText(data.time),
                 zvub::quantityText(data.number)}})
{
}

QStringList ZvUBDealRecordItem::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("代码"),   QStringLiteral("名称"),     QStringLiteral("方向"),
        QStringLiteral("成交价"), QStringLiteral("成交数量"), QStringLiteral("成交金额"),
        QStringLiteral("手续费"), QStringLiteral("成交时间"), QStringLiteral("成交编号"),
    };
    return headers;
}

QString ZvUBDealRecordItem::displayDataForModelUse(int column) const
{
    return m_row->text(column);
}
