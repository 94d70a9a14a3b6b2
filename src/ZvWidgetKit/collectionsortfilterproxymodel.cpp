#include "ZvWidgetKit/collectionsortfilterproxymodel.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/collectioncolumns.h"
#include "ZvWidgetKit/collectiontablemodel.h"

#include <algorithm>
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

void CollectionSortFilterProxyModel::keepOrder(const QList<QModelIndex> &changed,
                                               const std::function<void()> &emission)
{
    // A dynamically sorting proxy moves one row at a time among rows that it takes to be sorted;
    // among rows that are not, it puts them into wrong places. So a broken order is sorted as a
    // whole. An order that holds costs no layout change when each row finds itself in place.
    if (!dynamicSortFilter() || isInOrder(changed)) {
        emission();
        return;
    }
    setDynamicSortFilter(false);
    emission();
    setDynamicSortFilter(true);
}

// The rows were in order before, so only those whose number changed can be out of place. Texts may
// have changed with nothing said, and are looked through from end to end.
bool CollectionSortFilterProxyModel::isInOrder(const QList<QModelIndex> &changed) const
{
    const int column = sortColumn();
    if (column < 0)
        return true;
    if (CollectionColumns::all().isNumber(column)) {
        return std::none_of(changed.begin(), changed.end(), [&](const QModelIndex &cell) {
            return cell.column() == column && isOutOfPlace(mapFromSource(cell).row());
        });
    }
    for (int row = 1, count = rowCount(); row < count; ++row) {
        if (isOutOfPlace(row))
            return false;
    }
    return true;
}

// Whether a row does not belong between the one above and the one below it.
bool CollectionSortFilterProxyModel::isOutOfPlace(int row) const
{
    const auto isMisplaced = [this](int upper, int lower) {
        if (upper < 0 || lower >= rowCount())
            return false;
        const QModelIndex first = mapToSource(index(upper, sortColumn()));
        const QModelIndex second = mapToSource(index(lower, sortColumn()));
        return sortOrder() == Qt::AscendingOrder ? lessThan(second, first)
                                                 : lessThan(first, second);
    };
    return isMisplaced(row - 1, row) || isMisplaced(row, row + 1);
}
