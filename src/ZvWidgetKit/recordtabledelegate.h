#pragma once

#include "ZvWidgetKit/tablecelldelegate.h"

// Paints the cells of the tables in the trading half: no focus frame, and the text in its own
// colour in a selected row, too. Where a text is cut, it is told as a tool tip. It has no
// meta-object of its own, as its base class.
class RecordTableDelegate : public TableCellDelegate
{
public:
    explicit RecordTableDelegate(QObject *parent = nullptr);
    ~RecordTableDelegate() override;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

protected:
    // The option that a cell is painted with.
    static QStyleOptionViewItem ownLook(const QStyleOptionViewItem &option,
                                        const QModelIndex &index);
};
