#pragma once

#include "ZvWidgetKit/recordtabledelegate.h"

// What the delegates of the tables with ticks share: the box stands in the middle of column 0, and
// a release of the mouse over it, or a key, turns the tick. No meta-object of its own.
class CheckBoxCellDelegate : public RecordTableDelegate
{
public:
    using RecordTableDelegate::RecordTableDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;
};
