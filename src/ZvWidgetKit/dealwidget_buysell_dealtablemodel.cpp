#include "ZvWidgetKit/dealwidget_buysell_dealtablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

#include <cmath>

namespace {

constexpr int LastKeyColumn = 1; // code and name
constexpr int PositionChangeColumn = 10;
constexpr int SellProfitColumn = 11;

QColor changeColour(double change)
{
    if (change > 0)
        return QColor(231, 60, 60);
    return change < 0 ? QColor(56, 176, 65) : QColor(Qt::white);
}

} // namespace

DealWidget_BuySell_DealTableModel::DealWidget_BuySell_DealTableModel(QObject *parent)
    : ItemTableModel(ZvUBGatherItem::headerListForModelUse(),
                     ZvUBGatherItem::dataCountForModelUse(), parent)
{
}

DealWidget_BuySell_DealTableModel::~DealWidget_BuySell_DealTableModel() = default;

void DealWidget_BuySell_DealTableModel::setItemList(const QList<ZvUBGatherItem> &list)
{
    replaceItems(m_itemList, list);
}

QString DealWidget_BuySell_DealTableModel::collectionId(int row) const
{
    return m_itemList.value(row).collectionId();
}

QString DealWidget_BuySell_DealTableModel::text(const ZvUBGatherItem &item, int column) const
{
    return item.displayDataForModelUse(column);
}

QColor DealWidget_BuySell_DealTableModel::foreground(const ZvUBGatherItem &item, int column) const
{
    if (column <= LastKeyColumn)
        return Qt::yellow;
    if (column == PositionChangeColumn)
        return changeColour(item.positionChange());
    // A profit of less than a yuan counts as none.
    if (column == SellProfitColumn)
        return changeColour(std::trunc(item.sellProfit()));
    return Qt::white;
}

Qt::Alignment DealWidget_BuySell_DealTableModel::alignment(int column) const
{
    return column <= LastKeyColumn ? centred() : right();
}
