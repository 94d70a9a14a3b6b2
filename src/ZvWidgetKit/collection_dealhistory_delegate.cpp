#include "ZvWidgetKit/collection_dealhistory_delegate.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QDebug>

Collection_DealHistory_Delegate::Collection_DealHistory_Delegate(QObject *parent)
    : TableCellDelegate(parent)
{
}

Collection_DealHistory_Delegate::~Collection_DealHistory_Delegate() = default;

void Collection_DealHistory_Delegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                            const QModelIndex &index) const
{
    QStyleOptionViewItem cell = withoutFocusFrame(option);
    if (cell.state & QStyle::State_Selected) {
        const QColor kept = keepForeground(&cell, index);
        if (kept.isValid())
            qDebug() << kept;
    }
    TableCellDelegate::paint(painter, cell, index);
}

QSize Collection_DealHistory_Delegate::sizeHint(const QStyleOptionViewItem &option,
                                                const QModelIndex &index) const
{
    return TableCellDelegate::sizeHint(option, index);
}
