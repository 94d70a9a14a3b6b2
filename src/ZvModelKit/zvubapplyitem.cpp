#include "ZvModelKit/zvubapplyitem.h"

ZvUBApplyItem::ZvUBApplyItem() : ZvUBApplyItem(zvub::emptyItem<ZvUBApplyItem>()) { }

ZvUBApplyItem::ZvUBApplyItem(const Data &data)
    : m_row(
        Row{data,
            {data.code, data.name, zvub::priceText(data.price), zvub::quantityText(data.quantity),
             data.price < 0 || data.quantity < 0
                 ? zvub::missingText()
                 : zvub::moneyText(zvub::product(data.price, data.quantity)),
             zvub::quantityText(data.allotted), stateText(data.state),
             zvub::dateTimeText(data.time), zvub::quantityText(data.number)}})
{
}

QStringList ZvUBApplyItem::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("代码"),     QStringLiteral("名称"),     QStringLiteral("申购价"),
        QStringLiteral("申购数量"), QStringLiteral("申购金额"), QStringLiteral("中签数量"),
        QStringLiteral("状态"),     QStringLiteral("申购时间"), QStringLiteral("申购编号"),
    };
    return headers;
}

QString ZvUBApplyItem::displayDataForModelUse(int column) const
{
    return m_row->text(column);
}

QString ZvUBApplyItem::stateText(int state)
{
    switch (state) {
    case Pending:
        return QStringLiteral("待抽签");
    case Granted:
        return QStringLiteral("已中签");
    case Missed:
        return QStringLiteral("未中签");
    case Withdrawn:
        return QStringLiteral("已撤销");
    default:
        return zvub::missingText();
    }
}
