#include "ZvWidgetKit/recordtabledelegate.h"

#include "BreltWidgetToolKit/brelttooltip.h"
#include "ZvNetworkKit/serverpaths.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QStyle>
#include <QToolTip>

RecordTableDelegate::RecordTableDelegate(QObject *parent) : TableCellDelegate(parent) { }

RecordTableDelegate::~RecordTableDelegate() = default;

void RecordTableDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                const QModelIndex &index) const
{
    TableCellDelegate::paint(painter, ownLook(option, index), index);
}

QSize RecordTableDelegate::sizeHint(const QStyleOptionViewItem &option,
                                    const QModelIndex &index) const
{
    return TableCellDelegate::sizeHint(option, index);
}

bool RecordTableDelegate::helpEvent(QHelpEvent *event, QAbstractItemView *view,
                                    const QStyleOptionViewItem &option, const QModelIndex &index)
{
    if (event->type() != QEvent::ToolTip || !index.isValid())
        return TableCellDelegate::helpEvent(event, view, option, index);
    const QRect cell = view->visualRect(index);
    // Wrapped, a text would need no more width than it has; a row shows only its first line.
    QStyleOptionViewItem whole = option;
    initStyleOption(&whole, index);
    whole.features &= ~QStyleOptionViewItem::WrapText;
    const QSize needed
        = view->style()->sizeFromContents(QStyle::CT_ItemViewItem, &whole, QSize(), view);
    const bool isCut = needed.width() > cell.width();
    // An empty text takes away the tip of a cell before.
    QToolTip::showText(event->globalPos(),
                       isCut ? brelt::plainToolTip(index.data().toString()) : QString(),
                       view->viewport(), cell);
    return true;
}

QStyleOptionViewItem RecordTableDelegate::ownLook(const QStyleOptionViewItem &option,
                                                  const QModelIndex &index)
{
    QStyleOptionViewItem cell = withoutFocusFrame(option);
    if (cell.state & QStyle::State_Selected)
        keepForeground(&cell, index);
    return cell;
}
