#include "ZvWidgetKit/dealwidget_delivery_model.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int ColumnCount = 13;
constexpr int ProfitColumn = 8;
constexpr int ProfitRateColumn = 9;

QStringList headersWithButton()
{
    QStringList headers = ZvUBCapItem::headerListForModelUse();
    headers.insert(headers.size() - 1, QStringLiteral("操作"));
    return headers;
}

// Code and name.
bool isKeyColumn(int column)
{
    return column <= 1;
}

} // namespace

DealWidget_Delivery_Model::DealWidget_Delivery_Model(QObject *parent)
    : RecordTableModel(headersWithButton(), ColumnCount, parent)
{
}

DealWidget_Delivery_Model::~DealWidget_Delivery_Model() = default;

QString DealWidget_Delivery_Model::text(const ZvUBCapItem &item, int column) const
{
    return column == ButtonColumn ? QLatin1String("") : item.displayDataForModelUse(column);
}

QColor DealWidget_Delivery_Model::foreground(const ZvUBCapItem &item, int column) const
{
    if (isKeyColumn(column))
        return Qt::yellow;
    if (column == ProfitColumn)
        return profitColour(item.getProfit());
    if (column == ProfitRateColumn)
        return profitColour(item.getProfit_rate());
    return Qt::white;
}

Qt::Alignment DealWidget_Delivery_Model::alignment(int column) const
{
    return isKeyColumn(column) ? centred() : right();
}

// The word above the buttons stands over their middle.
Qt::Alignment DealWidget_Delivery_Model::headerAlignment(int section) const
{
    return section == ButtonColumn ? centred() : alignment(section);
}
