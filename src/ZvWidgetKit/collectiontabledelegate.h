#pragma once

#include "ZvWidgetKit/tablecelldelegate.h"

// Paints the cells of the market table: the platform's background under the selected row, the text
// in its own colour even there, and the triangle of a rising or falling number to its left.
class CollectionTableDelegate : public TableCellDelegate
{
    Q_OBJECT

public:
    explicit CollectionTableDelegate(QObject *parent = nullptr);
    ~CollectionTableDelegate() override;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
