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

    // Runs `emission`, which announces changed cells of rows that are all replaced already, so that
    // the rows are in order afterwards.
    void keepOrder(const std::function<void()> &emission);

protected:
    bool lessThan(const QModelIndex &left, const QModelIndex &right) const override;

private:
    bool isInOrder() const;
};
