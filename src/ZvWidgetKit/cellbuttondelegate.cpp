#include "ZvWidgetKit/cellbuttondelegate.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvfaults.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QHoverEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>
#include <QStyleOptionButton>

namespace {

// The mouse finds a button in a slightly lower place than it is painted in.
QRect paintedRect(const QRect &cell)
{
    return cell.adjusted(20, 1, -20, -1);
}

QRect mouseRect(const QRect &cell)
{
    return cell.adjusted(20, 3, -20, -3);
}

// The place of a mouse or hover event. False for an event that has none, such as a key.
bool placeOf(const QEvent *event, QPoint *place)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
        *place = static_cast<const QMouseEvent *>(event)->localPos().toPoint();
        return true;
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
    case QEvent::HoverLeave:
        *place = static_cast<const QHoverEvent *>(event)->posF().toPoint();
        return true;
    default:
        return false;
    }
}

// The colours of a painted button. The palette of the application is that of the host's style,
// which may be a light one.
QPalette buttonPalette()
{
    QPalette palette(QColor(0x2a, 0x2e, 0x36), QColor(0x16, 0x18, 0x1c));
    palette.setColor(QPalette::ButtonText, Qt::white);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, QColor(0x5f, 0x66, 0x72));
    return palette;
}

} // namespace

CellButtonDelegate::CellButtonDelegate(int buttonColumn, QObject *parent)
    : RecordTableDelegate(parent), m_buttonColumn(buttonColumn), m_isTakingRelease(false)
{
}

CellButtonDelegate::~CellButtonDelegate()
{
    qDeleteAll(m_buttonOptions);
}

void CellButtonDelegate::follow(QAbstractItemView *view)
{
    m_followed = view;
    m_viewport = view->viewport();
    m_viewport->setAttribute(Qt::WA_Hover);
    m_viewport->installEventFilter(this);

    // Where the cells move below a mouse that rests, it counts as gone.
    using Model = QAbstractItemModel;
    const Model *model = view->model();
    connect(model, &Model::modelReset, this, &CellButtonDelegate::leaveButton);
    connect(model, &Model::layoutChanged, this, &CellButtonDelegate::leaveButton);
    connect(model, &Model::rowsInserted, this, &CellButtonDelegate::leaveButton);
    connect(model, &Model::rowsRemoved, this, &CellButtonDelegate::leaveButton);
    for (const QScrollBar *bar : {view->verticalScrollBar(), view->horizontalScrollBar()})
        connect(bar, &QScrollBar::valueChanged, this, &CellButtonDelegate::leaveButton);
}

void CellButtonDelegate::leaveButton()
{
    if (!zvFault("hand-is-kept"))
        m_hand.giveBack();
    m_hovered = QModelIndex();
    repaintHovered();
}

void CellButtonDelegate::repaintHovered()
{
    if (m_viewport)
        m_viewport->update(m_hoveredCell);
}

void CellButtonDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                               const QModelIndex &index) const
{
    if (index.column() == m_buttonColumn)
        paintButton(painter, option, index);
    else
        RecordTableDelegate::paint(painter, option, index);
}

void CellButtonDelegate::paintButton(QPainter *painter, const QStyleOptionViewItem &option,
                                     const QModelIndex &index) const
{
    const QString text = buttonText(index);
    if (text.isEmpty())
        return;
    QStyleOptionButton *&button = m_buttonOptions[index];
    if (!button) {
        button = new QStyleOptionButton;
        button->palette = buttonPalette();
    }
    const bool isEnabled = option.state & QStyle::State_Enabled;
    const bool isHovered = index == m_hovered;
    const bool isDown = isHovered && index == m_pressed;
    button->text = text;
    button->rect = paintedRect(option.rect);
    button->direction = option.direction;
    button->fontMetrics = option.fontMetrics;
    button->palette.setCurrentColorGroup(isEnabled ? QPalette::Active : QPalette::Disabled);
    button->state = option.state & (QStyle::State_Enabled | QStyle::State_Active);
    button->state |= isDown ? QStyle::State_Sunken : QStyle::State_Raised;
    button->state.setFlag(QStyle::State_MouseOver, isHovered);

    painter->save();
    QApplication::style()->drawControl(QStyle::CE_PushButton, button, painter);
    painter->restore();
}

bool CellButtonDelegate::editorEvent(QEvent *event, QAbstractItemModel *,
                                     const QStyleOptionViewItem &option, const QModelIndex &index)
{
    QPoint place;
    if (index.column() != m_buttonColumn || !placeOf(event, &place)
        || !mouseRect(option.rect).contains(place))
        return true;
    switch (event->type()) {
    case QEvent::HoverEnter:
        m_hand.take();
        m_hovered = index;
        m_hoveredCell = option.rect;
        m_hoveredAt = place;
        repaintHovered();
        break;
    case QEvent::HoverLeave:
        leaveButton();
        break;
    case QEvent::MouseButtonRelease:
        m_clicked = index;
        if (!m_isTakingRelease)
            tellClick();
        break;
    default:
        break;
    }
    return true;
}

void CellButtonDelegate::tellClick()
{
    const QModelIndex clicked = m_clicked;
    m_clicked = QModelIndex();
    if (clicked.isValid())
        buttonClicked(clicked);
}

bool CellButtonDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != m_viewport)
        return RecordTableDelegate::eventFilter(watched, event);
    if (!m_followed) // it is in its destructor
        return false;
    switch (event->type()) {
    case QEvent::HoverEnter:
    case QEvent::HoverMove:
        hoverAt(static_cast<const QHoverEvent *>(event)->posF().toPoint());
        break;
    case QEvent::HoverLeave:
    case QEvent::Leave:
    case QEvent::Hide:
    case QEvent::EnabledChange:
    case QEvent::WindowDeactivate:
        hoverNowhere();
        break;
    case QEvent::MouseButtonPress:
        m_pressed = m_hovered;
        repaintHovered();
        break;
    case QEvent::MouseButtonRelease:
        m_pressed = QModelIndex();
        repaintHovered();
        break;
    default:
        break;
    }
    return false;
}

void CellButtonDelegate::hoverAt(const QPoint &place)
{
    const QModelIndex index = m_followed->indexAt(place);
    const QRect cell = m_followed->visualRect(index);
    const bool isOnButton = index.column() == m_buttonColumn && mouseRect(cell).contains(place);
    if (!isOnButton || index != m_hovered)
        hoverNowhere();
    if (isOnButton && index != m_hovered)
        forward(QEvent::HoverEnter, index, cell, place);
}

// The mouse leaves with the last place it was seen at: the event of a view that is left has none.
void CellButtonDelegate::hoverNowhere()
{
    if (m_hovered.isValid())
        forward(QEvent::HoverLeave, m_hovered, m_hoveredCell, m_hoveredAt);
}

void CellButtonDelegate::forward(QEvent::Type type, const QModelIndex &index, const QRect &cell,
                                 const QPoint &place)
{
    QStyleOptionViewItem option;
    option.rect = cell;
    QHoverEvent event(type, place, m_hoveredAt);
    editorEvent(&event, const_cast<QAbstractItemModel *>(index.model()), option, index);
}
