#pragma once

#include <QIdentityProxyModel>

namespace zvtest {

// Stands between a table model and QAbstractItemModelTester. The table models answer the same
// counts for every parent, which the tester takes for a tree without end; this proxy answers 0 for
// a valid parent and passes on everything else.
class FlatIdentityProxy : public QIdentityProxyModel
{
public:
    explicit FlatIdentityProxy(QAbstractItemModel *source) { setSourceModel(source); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : QIdentityProxyModel::rowCount();
    }

    int columnCount(const QModelIndex &parent = QModelIndex()) const override
    {
        return parent.isValid() ? 0 : QIdentityProxyModel::columnCount();
    }

    bool hasChildren(const QModelIndex &parent = QModelIndex()) const override
    {
        return !parent.isValid() && rowCount() > 0 && columnCount() > 0;
    }
};

} // namespace zvtest
