#include "ZvWidgetKit/dealwidget_buysell_captablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int ColumnCount = 12;
constexpr int LastKeyColumn = 1; // code and name
constexpr int ProfitColumn = 8;
constexpr int ProfitRateColumn = 9;

} // namespace

DealWidget_BuySell_CapTableModel::DealWidget_BuySell_CapTableModel(QObject *parent)
    : ItemTableModel(ZvUBCapItem::headerListForModelUse(), ColumnCount, parent)
{
}

DealWidget_BuySell_CapTableModel::~DealWidget_BuySell_CapTableModel() = default;

void DealWidget_BuySell_CapTableModel::setItemList(const QList<ZvUBCapItem> &list)
{
    replaceItems(m_itemList, list);
}

QString DealWidget_BuySell_CapTableModel::collectionId(int row) const
{
    return m_itemList.value(row).collectionId();
}

QString DealWidget_BuySell_CapTableModel::text(const ZvUBCapItem &item, int column) const
{
    return item.displayDataForModelUse(column);
}

QColor DealWidget_BuySell_CapTableModel::foreground(const ZvUBCapItem &item, int column) const
{
    if (column <= LastKeyColumn)
        return Qt::yellow;
    if (column == ProfitColumn)
        return profitColour(item.getProfit());
    if (column == ProfitRateColumn)
        return profitColour(item.getProfit_rate());
    return Qt::white;
}

Qt::Alignment DealWidget_BuySell_CapTableModel::alignment(int column) const
{
    return column <= LastKeyColumn ? centred() : right();
}
