#pragma once

#include "ZvWidgetKit/latetableview.h"

// What the tables under the order ticket share: each row stands for a collection, and a double
// click shows its time line. It has no meta-object of its own, so that each member stands directly
// below QTableView there.
class CollectionRowsView : public LateTableView
{
public:
    explicit CollectionRowsView(QWidget *parent);
    ~CollectionRowsView() override;

protected:
    void setUpTable(QAbstractItemModel *model, QAbstractItemDelegate *delegate);

    // Leads the whole client to the time line of a collection.
    static void showTimeLine(const QString &collectionId);
};
