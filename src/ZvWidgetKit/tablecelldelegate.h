#pragma once

#include <QStyledItemDelegate>

// What the delegates of the tables share. It has no meta-object of its own, so that each delegate
// stands directly below QStyledItemDelegate there.
class TableCellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

protected:
    // A copy of the option that draws no focus frame.
    static QStyleOptionViewItem withoutFocusFrame(QStyleOptionViewItem option)
    {
        option.state &= ~QStyle::State_HasFocus;
        return option;
    }

    // Lets a selected cell keep the colour of its text: puts the foreground of the index into the
    // palette of the option as the colour of highlighted text, when it is a colour.
    static void keepForeground(QStyleOptionViewItem *option, const QModelIndex &index)
    {
        const QVariant foreground = index.data(Qt::ForegroundRole);
        if (foreground.canConvert<QColor>())
            option->palette.setBrush(QPalette::All, QPalette::HighlightedText,
                                     QBrush(foreground.value<QColor>(), Qt::SolidPattern));
    }
};
