#include "ZvWidgetKit/checkboxcelldelegate.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyle>

namespace {

constexpr int TickColumn = 0;
constexpr int IndicatorGap = 5; // what the style leaves free beside the box

int focusMargin()
{
    return QApplication::style()->pixelMetric(QStyle::PM_FocusFrameHMargin);
}

// A place of this size in the middle of `room`.
QRect centred(const QStyleOptionViewItem &option, const QSize &size, const QRect &room)
{
    return QStyle::alignedRect(option.direction, Qt::AlignCenter, size, room);
}

QRect paintedRect(const QStyleOptionViewItem &option)
{
    const int margin = focusMargin();
    return centred(option,
                   {option.decorationSize.width() + IndicatorGap, option.decorationSize.height()},
                   option.rect.adjusted(margin, 0, -margin, 0));
}

QRect clickedRect(const QStyleOptionViewItem &option)
{
    return centred(option, option.decorationSize,
                   option.rect.adjusted(2 * (focusMargin() + 1), 0, 0, 0));
}

bool turnsTick(const QEvent *event, const QStyleOptionViewItem &option)
{
    switch (event->type()) {
    case QEvent::MouseButtonRelease:
        return clickedRect(option).contains(static_cast<const QMouseEvent *>(event)->pos());
    case QEvent::KeyPress: {
        const int key = static_cast<const QKeyEvent *>(event)->key();
        return key == Qt::Key_Select || key == Qt::Key_Space;
    }
    default:
        return false;
    }
}

} // namespace

void CheckBoxCellDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                 const QModelIndex &index) const
{
    QStyleOptionViewItem cell(option);
    if (index.column() == TickColumn)
        cell.rect = paintedRect(option);
    RecordTableDelegate::paint(painter, cell, index);
}

bool CheckBoxCellDelegate::editorEvent(QEvent *event, QAbstractItemModel *model,
                                       const QStyleOptionViewItem &option, const QModelIndex &index)
{
    const Qt::ItemFlags needed = Qt::ItemIsUserCheckable | Qt::ItemIsEnabled;
    const QVariant value = index.data(Qt::CheckStateRole);
    if ((model->flags(index) & needed) != needed || !value.isValid() || !turnsTick(event, option))
        return false;
    const Qt::CheckState turned = value.toInt() == Qt::Checked ? Qt::Unchecked : Qt::Checked;
    return model->setData(index, turned, Qt::CheckStateRole);
}
