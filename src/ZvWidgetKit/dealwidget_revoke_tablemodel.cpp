#include "ZvWidgetKit/dealwidget_revoke_tablemodel.h"

#include "ZvNetworkKit/serverpaths.h"

namespace {

constexpr int LastKeyColumn = 4; // tick, numbers, code and name
constexpr int DirectionColumn = 5;
constexpr int HeadlessColumn = 16;

template <typename Test>
QList<int> idsWhere(const QList<ZvUBRevokeItem> &items, Test isMeant)
{
    QList<int> ids;
    for (const ZvUBRevokeItem &item : items) {
        if (isMeant(item))
            ids << item.getCollectionID();
    }
    return ids;
}

QList<int> idsOfType(const QList<ZvUBRevokeItem> &items, int type)
{
    return idsWhere(items, [type](const ZvUBRevokeItem &item) { return item.getTypeID() == type; });
}

} // namespace

DealWidget_Revoke_tableModel::DealWidget_Revoke_tableModel(QObject *parent)
    : TickedTableModel(ZvUBRevokeItem::headerListForModelUse(), parent)
{
}

DealWidget_Revoke_tableModel::~DealWidget_Revoke_tableModel() = default;

void DealWidget_Revoke_tableModel::setItemList(const QList<ZvUBRevokeItem> &list)
{
    replaceItems(m_itemList, list);
}

void DealWidget_Revoke_tableModel::selectAll()
{
    tickAll(true);
}

void DealWidget_Revoke_tableModel::deselectAll()
{
    tickAll(false);
}

QList<int> DealWidget_Revoke_tableModel::checkedIDs() const
{
    return idsWhere(m_itemList, [](const ZvUBRevokeItem &item) { return item.getUserChecked(); });
}

QList<int> DealWidget_Revoke_tableModel::allIDs() const
{
    return idsWhere(m_itemList, [](const ZvUBRevokeItem &) { return true; });
}

QList<int> DealWidget_Revoke_tableModel::sellIDs() const
{
    return idsOfType(m_itemList, zvub::Sell);
}

QList<int> DealWidget_Revoke_tableModel::buyIDs() const
{
    return idsOfType(m_itemList, zvub::Buy);
}

QList<int> DealWidget_Revoke_tableModel::lastID() const
{
    return allIDs().mid(0, 1);
}

void DealWidget_Revoke_tableModel::removeIDs(const QList<int> &ids)
{
    QList<ZvUBRevokeItem> rest = m_itemList;
    for (int row = rest.size() - 1; row >= 0; --row) {
        if (ids.contains(rest.at(row).getCollectionID()))
            rest.removeAt(row);
    }
    setItemList(rest);
}

QString DealWidget_Revoke_tableModel::text(const ZvUBRevokeItem &item, int column) const
{
    return item.displayDataForModelUse(column);
}

QColor DealWidget_Revoke_tableModel::foreground(const ZvUBRevokeItem &item, int column) const
{
    if (column <= LastKeyColumn)
        return Qt::yellow;
    if (column == DirectionColumn)
        return item.getTypeID() == zvub::Sell ? Qt::green : Qt::red;
    return Qt::white;
}

Qt::Alignment DealWidget_Revoke_tableModel::alignment(int column) const
{
    return column <= LastKeyColumn ? centred() : right();
}

QVariant DealWidget_Revoke_tableModel::headerText(int section) const
{
    return section == HeadlessColumn ? QVariant() : TickedTableModel::headerText(section);
}

bool DealWidget_Revoke_tableModel::isTicked(const ZvUBRevokeItem &item) const
{
    return item.getUserChecked();
}

void DealWidget_Revoke_tableModel::setTicked(int row, bool ticked)
{
    m_itemList[row].setUserChecked(ticked);
}
