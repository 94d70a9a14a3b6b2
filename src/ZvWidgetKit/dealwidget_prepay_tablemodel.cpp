#include "ZvWidgetKit/dealwidget_prepay_tablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QDebug>

namespace {

constexpr int LastKeyColumn = 2; // tick, code and name
constexpr int DirectionColumn = 3;

} // namespace

DealWidget_PrePay_TableModel::DealWidget_PrePay_TableModel(QObject *parent)
    : TickedTableModel(ZvUBTradeItem::headerListForModelUse(),
                       ZvUBTradeItem::dataCountForModelUse(), parent)
{
}

DealWidget_PrePay_TableModel::~DealWidget_PrePay_TableModel()
{
    qDeleteAll(m_itemList);
}

void DealWidget_PrePay_TableModel::addTradeItem(const ZvUBTradeItem &item)
{
    insertItem(0, item);
}

ZvUBTradeItem DealWidget_PrePay_TableModel::itemAt(int row) const
{
    return *m_itemList.at(row);
}

QList<int> DealWidget_PrePay_TableModel::checkedRows() const
{
    QList<int> rows;
    for (int row = m_itemList.size() - 1; row >= 0; --row) {
        if (m_itemList.at(row)->checked)
            rows << row;
    }
    return rows;
}

void DealWidget_PrePay_TableModel::removeCheckedRows()
{
    for (const int row : checkedRows())
        removeItem(row);
}

void DealWidget_PrePay_TableModel::removeByMd5(QString md5)
{
    const int row = rowOf(md5);
    if (row >= 0)
        removeItem(row);
}

void DealWidget_PrePay_TableModel::markFailed(QString md5, QString msg)
{
    const int row = rowOf(md5);
    if (row < 0)
        return;
    ZvUBTradeItem failed = itemAt(row);
    failed.state = ZvUBTradeItem::Failed;
    failed.message = msg;
    removeItem(row);
    insertItem(row, failed);
}

void DealWidget_PrePay_TableModel::selectAll()
{
    qDebug("全选");
    tickAll(true);
}

void DealWidget_PrePay_TableModel::deselectAll()
{
    tickAll(false);
}

QString DealWidget_PrePay_TableModel::text(ZvUBTradeItem *const &item, int column) const
{
    return item->displayDataForModelUse(column);
}

QColor DealWidget_PrePay_TableModel::foreground(ZvUBTradeItem *const &item, int column) const
{
    if (column <= LastKeyColumn)
        return Qt::yellow;
    if (column == DirectionColumn)
        return item->direction == 1 ? Qt::red : Qt::green;
    return Qt::white;
}

Qt::Alignment DealWidget_PrePay_TableModel::alignment(int column) const
{
    return column <= LastKeyColumn ? centred() : right();
}

bool DealWidget_PrePay_TableModel::isTicked(ZvUBTradeItem *const &item) const
{
    return item->checked;
}

void DealWidget_PrePay_TableModel::setTicked(int row, bool ticked)
{
    m_itemList.at(row)->checked = ticked;
}

int DealWidget_PrePay_TableModel::rowOf(const QString &md5) const
{
    for (int row = 0; row < m_itemList.size(); ++row) {
        if (m_itemList.at(row)->md5 == md5)
            return row;
    }
    return -1;
}

void DealWidget_PrePay_TableModel::insertItem(int row, const ZvUBTradeItem &item)
{
    beginInsertRows({}, row, row);
    m_itemList.insert(row, new ZvUBTradeItem(item));
    endInsertRows();
}

void DealWidget_PrePay_TableModel::removeItem(int row)
{
    beginRemoveRows({}, row, row);
    delete m_itemList.takeAt(row);
    endRemoveRows();
}
