#include "ZvWidgetKit/dealwidget_select_delegate_tablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int LastKeyColumn = 3; // the numbers, code and name
constexpr int DirectionColumn = 4;

} // namespace

DealWidget_Select_Delegate_TableModel::DealWidget_Select_Delegate_TableModel(QObject *parent)
    : RecordTableModel(ZvUBEntrustItem::headerList(), parent)
{
}

DealWidget_Select_Delegate_TableModel::~DealWidget_Select_Delegate_TableModel() = default;

QString DealWidget_Select_Delegate_TableModel::text(const ZvUBEntrustItem &item, int column) const
{
    return item.displayData(column);
}

QColor DealWidget_Select_Delegate_TableModel::foreground(const ZvUBEntrustItem &item,
                                                         int column) const
{
    if (column <= LastKeyColumn)
        return Qt::yellow;
    if (column == DirectionColumn)
        return item.direction() == zvub::Buy ? Qt::red : Qt::green;
    return Qt::white;
}

Qt::Alignment DealWidget_Select_Delegate_TableModel::alignment(int column) const
{
    return column <= LastKeyColumn ? centred() : right();
}
