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
    // palette of the option as the colour of highlighted text, and returns it. Where it is no
    // colour, the palette stays as it is, and the answer is invalid.
    static QColor keepForeground(QStyleOptionViewItem *option, const QModelIndex &index)
    {
        const QVariant foreground = index.data(Qt::ForegroundRole);
        if (!foreground.canConvert<QColor>())
            return {};
        const auto colour = foreground.value<QColor>();
        option->palette.setBrush(QPalette::All, QPalette::HighlightedText,
                                 QBrush(colour, Qt::SolidPattern));
        return colour;
    }
};
