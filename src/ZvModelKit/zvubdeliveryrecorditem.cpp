#include "ZvModelKit/zvubdeliveryrecorditem.h"

ZvUBDeliveryRecordItem::ZvUBDeliveryRecordItem()
    : ZvUBDeliveryRecordItem(zvub::emptyItem<ZvUBDeliveryRecordItem>())
{
}

ZvUBDeliveryRecordItem::ZvUBDeliveryRecordItem(const Data &data)
    : m_row(Row{data,
                {data.deliveryId, data.orderNumber, data.code, data.name,
                 zvub::quantityText(data.quantity), zvub::priceText(data.fee), data.address,
                 data.consignee, data.phone, data.collectionId, QString::number(data.state),
                 stateText(data.state), zvub::dateTimeText(data.time), QString()}})
{
}

QStringList ZvUBDeliveryRecordItem::headerList()
{
    static const QStringList headers{
        QStringLiteral("提货编号"), QStringLiteral("单号"),     QStringLiteral("代码"),
        QStringLiteral("名称"),     QStringLiteral("提货数量"), QStringLiteral("提货费"),
        QStringLiteral("收货地址"), QStringLiteral("收货人"),   QStringLiteral("联系电话"),
        QStringLiteral("藏品编号"), QStringLiteral("状态码"),   QStringLiteral("状态"),
        QStringLiteral("申请时间"), QStringLiteral("操作"),
    };
    return headers;
}

QString ZvUBDeliveryRecordItem::displayData(int column) const
{
    return m_row->text(column);
}

QString ZvUBDeliveryRecordItem::stateText(int state)
{
    switch (state) {
    case Cancelled:
        return QStringLiteral("已取消");
    case Reviewing:
        return QStringLiteral("待审核");
    case Preparing:
        return QStringLiteral("备货中");
    case Sent:
        return QStringLiteral("已发货");
    case Refused:
        return QStringLiteral("已拒绝");
    default:
        return zvub::missingText();
    }
}
