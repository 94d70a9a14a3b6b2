#pragma once

#include <QSortFilterProxyModel>

#include <functional>

// Sorts the market table: numbers by their value, all other columns by their text.
class CollectionSortFilterProxyModel : public QSortFilterProxyModel
{
    Q_OBJECT

public:
    explicit CollectionSortFilterProxyModel(QObject *parent = nullptr);
    ~CollectionSortFilterProxyModel() override;

    // Runs `emission`, which announces the changed numbers of rows that are all replaced already,
    // so that the rows are in order afterwards. `changed` holds the source model's indexes of those
    // numbers, and may hold others.
    void keepOrder(const QList<QModelIndex> &changed, const std::function<void()> &emission);

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    bool isInOrder(const QList<QModelIndex> &changed) const;
    bool isOutOfPlace(int row) const;
};
