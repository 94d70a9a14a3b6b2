#include "ZvModelKit/zvubdealitem.h"

namespace {

enum Column { Time, Price, Quantity, Direction };

int colorOfDirection(int direction)
{
    switch (direction) {
    case zvub::Buy:
        return Qt::red;
    case zvub::Sell:
        return Qt::green;
    default:
        return Qt::white;
    }
}

} // namespace

ZvUBDealItem::ZvUBDealItem() : ZvUBDealItem(zvub::emptyItem<ZvUBDealItem>()) { }

ZvUBDealItem::ZvUBDealItem(const Data &data)
    : m_row(Row{data,
                {zvub::clockText(data.time), zvub::priceText(data.price),
                 zvub::quantityText(data.quantity), zvub::directionText(data.direction)}})
{
}

int ZvUBDealItem::dataCountForModelUse()
{
    return headerListForModelUse().size();
}

QStringList ZvUBDealItem::headerListForModelUse()
{
    static const QStringList headers{QStringLiteral("时间"), QStringLiteral("价格"),
                                     QStringLiteral("数量"), QStringLiteral("方向")};
    return headers;
}

QString ZvUBDealItem::displayDataForModelUse(int column) const
{
    return m_row->text(column);
}

int ZvUBDealItem::displayColorIdForModelUse(int column) const
{
    switch (column) {
    case Price:
        if (data().price < 0 || data().previousClose < 0 || data().price == data().previousClose) {
            return Qt::white;
        }
        return data().price > data().previousClose ? Qt::red : Qt::green;
    case Quantity:
    case Direction:
        return colorOfDirection(data().direction);
    default:
        return Qt::white;
    }
}
