#pragma once

#include "ZvWidgetKit/tablecelldelegate.h"

// Paints the cells of a list of deals: no focus frame, and the text in its own colour in a selected
// row, too.
class Collection_DealHistory_Delegate : public TableCellDelegate
{
    Q_OBJECT

public:
    explicit Collection_DealHistory_Delegate(QObject *parent = nullptr);
    ~Collection_DealHistory_Delegate() override;

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;
    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};
