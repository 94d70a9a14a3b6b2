#include "ZvWidgetKit/dealwidget_select_dealrecord_tablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int ColumnCount = 9;
constexpr int LastKeyColumn = 1; // code and name
constexpr int DirectionColumn = 2;

} // namespace

DealWidget_Select_DealRecord_TableModel::DealWidget_Select_DealRecord_TableModel(QObject *parent)
    : RecordTableModel(ZvUBDealRecordItem::headerListForModelUse(), ColumnCount, parent)
{
}

DealWidget_Select_DealRecord_TableModel::~DealWidget_Select_DealRecord_TableModel() = default;

QString DealWidget_Select_DealRecord_TableModel::text(const ZvUBDealRecordItem &item,
                                                      int column) const
{
    return item.displayDataForModelUse(column);
}

QColor DealWidget_Select_DealRecord_TableModel::foreground(const ZvUBDealRecordItem &item,
                                                           int column) const
{
    if (column <= LastKeyColumn)
        return Qt::yellow;
    if (column == DirectionColumn)
        return item.direction() == zvub::Buy ? Qt::red : Qt::green;
    return Qt::white;
}

Qt::Alignment DealWidget_Select_DealRecord_TableModel::alignment(int column) const
{
    return column <= LastKeyColumn ? centred() : right();
}
