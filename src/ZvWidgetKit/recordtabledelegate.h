#pragma once

#include "ZvWidgetKit/tablecelldelegate.h"

// Paints the cells of the tables in the trading half: no focus frame, and the text in its own
// colour in a selected row, too. It has no meta-object of its own, as its base class.
class RecordTableDelegate : public TableCellDelegate
{
public:
    using TableCellDelegate::TableCellDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        TableCellDelegate::paint(painter, ownLook(option, index), index);
    }

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        return TableCellDelegate::sizeHint(option, index);
    }

protected:
    // The option that a cell is painted with.
    static QStyleOptionViewItem ownLook(const QStyleOptionViewItem &option,
                                        const QModelIndex &index)
    {
        QStyleOptionViewItem cell = withoutFocusFrame(option);
        if (cell.state & QStyle::State_Selected)
            keepForeground(&cell, index);
        return cell;
    }
};
