#include "ZvWidgetKit/dealwidget_select_applyrecord_tablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int ColumnCount = 9;
constexpr int LastKeyColumn = 1; // code and name

} // namespace

DealWidget_Select_ApplyRecord_TableModel::DealWidget_Select_ApplyRecord_TableModel(QObject *parent)
    : RecordTableModel(ZvUBApplyItem::headerListForModelUse(), ColumnCount, parent)
{
}

DealWidget_Select_ApplyRecord_TableModel::~DealWidget_Select_ApplyRecord_TableModel() = default;

QString DealWidget_Select_ApplyRecord_TableModel::text(const ZvUBApplyItem &item, int column) const
{
    return item.displayDataForModelUse(column);
}

QColor DealWidget_Select_ApplyRecord_TableModel::foreground(const ZvUBApplyItem &, int column) const
{
    return column <= LastKeyColumn ? Qt::yellow : Qt::white;
}

Qt::Alignment DealWidget_Select_ApplyRecord_TableModel::alignment(int column) const
{
    return column <= LastKeyColumn ? centred() : right();
}
