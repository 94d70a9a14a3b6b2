#include "ZvModelKit/zvubrevokeitem.h"

ZvUBRevokeItem::ZvUBRevokeItem() : ZvUBRevokeItem(zvub::emptyItem<ZvUBRevokeItem>()) { }

ZvUBRevokeItem::ZvUBRevokeItem(const Data &data)
    : m_row(Row{data,
                {QString(), data.collectionId, QString::number(data.orderNumber), data.code,
                 data.name, zvub::directionText(data.direction), zvub::priceText(data.price),
                 zvub::quantityText(data.quantity), zvub::quantityText(data.filled),
                 zvub::quantityText(ZvUBEntrustItem::openQuantityOf(data)), data.key,
                 zvub::moneyText(data.frozen), ZvUBEntrustItem::stateText(data.state),
                 QString::number(data.state), zvub::moneyText(data.amount),
                 zvub::dateTimeText(data.time), QString()}})
{
}

QStringList ZvUBRevokeItem::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("选择"),
        QStringLiteral("藏品编号"),
        QStringLiteral("委托编号"),
        QStringLiteral("代码"),
        QStringLiteral("名称"),
        QStringLiteral("方向"),
        QStringLiteral("委托价"),
        QStringLiteral("委托数量"),
        QStringLiteral("成交数量"),
        QStringLiteral("未成数量"),
        QStringLiteral("委托密钥"),
        QStringLiteral("冻结资金"),
        QStringLiteral("状态"),
        QStringLiteral("状态码"),
        QStringLiteral("成交金额"),
        QStringLiteral("委托时间"),
        QString(),
    };
    return headers;
}
