#include "ZvWidgetKit/dealwidget_select_moneyflow_tablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int ColumnCount = 6;
constexpr int AmountColumn = 1;
constexpr int DirectionColumn = 3; // in or out

} // namespace

DealWidget_Select_MoneyFlow_TableModel::DealWidget_Select_MoneyFlow_TableModel(QObject *parent)
    : RecordTableModel(ZvUBMoneyFlowItem::headerListForModelUse(), ColumnCount, parent)
{
}

DealWidget_Select_MoneyFlow_TableModel::~DealWidget_Select_MoneyFlow_TableModel() = default;

QString DealWidget_Select_MoneyFlow_TableModel::text(const ZvUBMoneyFlowItem &item,
                                                     int column) const
{
    return item.displayDataForModelUse(column);
}

QColor DealWidget_Select_MoneyFlow_TableModel::foreground(const ZvUBMoneyFlowItem &item,
                                                          int column) const
{
    if (column == DirectionColumn)
        return item.moneyIn() != 0 ? Qt::red : Qt::green;
    return Qt::white;
}

Qt::Alignment DealWidget_Select_MoneyFlow_TableModel::alignment(int column) const
{
    return column == AmountColumn ? right() : centred();
}
