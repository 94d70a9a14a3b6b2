#pragma once

#include "ZvWidgetKit/pointinghand.h"
#include "ZvWidgetKit/recordtabledelegate.h"

#include <QMap>
#include <QPersistentModelIndex>
#include <QPointer>
#include <QRect>

class QAbstractItemView;
class QStyleOptionButton;

// What the delegates of the tables with buttons share: one column holds a button in each row, which
// is painted and no widget. While the mouse is over the place of a button, the application's cursor
// is a pointing hand. It has no meta-object of its own, so that each member stands directly below
// QStyledItemDelegate there.
class CellButtonDelegate : public RecordTableDelegate
{
public:
    ~CellButtonDelegate() override;

    // Follows the mouse over the view, which keeps hover events for itself, and hands them to
    // editorEvent() cell by cell. To be called once, when the view has its model.
    void follow(QAbstractItemView *view);

    // The mouse counts as gone until it moves again; the cursor is given back. To be called before
    // a dialog.
    void leaveButton();

    // Runs `release`, in which the view takes the release of a mouse button, and tells of a click
    // afterwards. A view goes on with itself after its delegate has taken a release, so what ends
    // the view, as a dialog may, has to wait for it.
    template <typename Release>
    void clickAfter(Release release)
    {
        m_isTakingRelease = true;
        release();
        m_isTakingRelease = false;
        tellClick();
    }

    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override;

    // Takes every event, so that a view makes nothing else of it.
    bool editorEvent(QEvent *event, QAbstractItemModel *model, const QStyleOptionViewItem &option,
                     const QModelIndex &index) override;

protected:
    CellButtonDelegate(int buttonColumn, QObject *parent);

    // The text of a cell's button; where it is empty, no button is painted.
    virtual QString buttonText(const QModelIndex &index) const = 0;

    // The mouse was released over the place of a button, whether or not one is painted there. This
    // object may be gone when it returns.
    virtual void buttonClicked(const QModelIndex &index) = 0;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void paintButton(QPainter *painter, const QStyleOptionViewItem &option,
                     const QModelIndex &index) const;
    void tellClick();
    void repaintHovered();
    void hoverAt(const QPoint &place);
    void hoverNowhere();
    void forward(QEvent::Type type, const QModelIndex &index, const QRect &cell,
                 const QPoint &place);

    const int m_buttonColumn;
    mutable QMap<QModelIndex, QStyleOptionButton *> m_buttonOptions; // owned, one a cell
    QPointer<QAbstractItemView> m_followed;
    QPointer<QWidget> m_viewport; // of the view that is followed

    PointingHand m_hand;
    QPersistentModelIndex m_hovered; // the cell with the button below the mouse
    QRect m_hoveredCell; // its place when the mouse came
    QPoint m_hoveredAt;
    QPersistentModelIndex m_pressed; // the cell whose button a mouse button holds
    QPersistentModelIndex m_clicked; // the cell whose click is not told yet
    bool m_isTakingRelease;
};
