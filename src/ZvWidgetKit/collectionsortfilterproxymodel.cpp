#include "ZvWidgetKit/collectionsortfilterproxymodel.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/collectioncolumns.h"
#include "ZvWidgetKit/collectiontablemodel.h"

#include <typeinfo>

namespace {

// A derived model may answer its edit role by itself, so only the very class is read directly.
const CollectionTableModel *marketModel(const QAbstractItemModel *model)
{
    return model && typeid(*model) == typeid(CollectionTableModel)
        ? static_cast<const CollectionTableModel *>(model)
        : nullptr;
}

} // namespace

CollectionSortFilterProxyModel::CollectionSortFilterProxyModel(QObject *parent)
    : QSortFilterProxyModel(parent)
{
}

CollectionSortFilterProxyModel::~CollectionSortFilterProxyModel() = default;

bool CollectionSortFilterProxyModel::lessThan(const QModelIndex &left,
                                              const QModelIndex &right) const
{
    if (!CollectionColumns::all().isNumber(left.column()))
        return QSortFilterProxyModel::lessThan(left, right);
    const QAbstractItemModel *source = sourceModel();
    if (const CollectionTableModel *market = marketModel(source))
        return market->number(left) < market->number(right);
    return source->data(left, Qt::EditRole).toFloat() < source->data(right, Qt::EditRole).toFloat();
}

void CollectionSortFilterProxyModel::keepOrder(const std::function<void()> &emission)
{
    // A dynamically sorting proxy moves one row at a time among rows that it takes to be sorted;
    // among rows that are not, it puts them into wrong places. So a broken order is sorted as a
    // whole. An order that holds costs no layout change when each row finds itself in place.
    if (!dynamicSortFilter() || isInOrder()) {
        emission();
        return;
    }
    setDynamicSortFilter(false);
    emission();
    setDynamicSortFilter(true);
}

bool CollectionSortFilterProxyModel::isInOrder() const
{
    const int column = sortColumn();
    if (column < 0)
        return true;
    const bool isAscending = sortOrder() == Qt::AscendingOrder;
    const int count = rowCount();
    const CollectionTableModel *market = marketModel(sourceModel());
    if (market && CollectionColumns::all().isNumber(column)) {
        // The same as below; each number is read once.
        float previous = 0;
        for (int row = 0; row < count; ++row) {
            const float current = market->number(mapToSource(index(row, column)));
            if (row > 0 && (isAscending ? current < previous : previous < current))
                return false;
            previous = current;
        }
        return true;
    }
    QModelIndex previous;
    for (int row = 0; row < count; ++row) {
        const QModelIndex current = mapToSource(index(row, column));
        if (row > 0 && (isAscending ? lessThan(current, previous) : lessThan(previous, current)))
            return false;
        previous = current;
    }
    return true;
}
