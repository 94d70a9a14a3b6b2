#include "ZvModelKit/zvubmoneyflowitem.h"

ZvUBMoneyFlowItem::ZvUBMoneyFlowItem() : ZvUBMoneyFlowItem(zvub::emptyItem<ZvUBMoneyFlowItem>()) { }

ZvUBMoneyFlowItem::ZvUBMoneyFlowItem(const Data &data)
    : m_row(Row{data,
                {zvub::quantityText(data.number), zvub::priceText(data.amount),
                 zvub::dateTimeText(data.time),
                 data.moneyIn != 0 ? QStringLiteral("入金") : QStringLiteral("出金"), data.note,
                 stateText(data.state)}})
{
}

QStringList ZvUBMoneyFlowItem::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("流水号"), QStringLiteral("金额"), QStringLiteral("时间"),
        QStringLiteral("类型"),   QStringLiteral("备注"), QStringLiteral("状态"),
    };
    return headers;
}

QString ZvUBMoneyFlowItem::displayDataForModelUse(int column) const
{
    return m_row->text(column);
}

QString ZvUBMoneyFlowItem::stateText(int state)
{
    switch (state) {
    case Pending:
        return QStringLiteral("处理中");
    case Done:
        return QStringLiteral("成功");
    case Failed:
        return QStringLiteral("失败");
    default:
        return zvub::missingText();
    }
}
