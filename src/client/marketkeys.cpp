#include "client/marketkeys.h"

#include "client/keyboardsprite.h"

#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QApplication>
#include <QKeyEvent>
#include <QStackedWidget>
#include <QTableView>
#include <QWheelEvent>

namespace {

constexpr int tablePage = 0;
constexpr int chartPage = 1;
constexpr int idColumn = 21; // of the market table, hidden
constexpr int notch = 120; // of a wheel, in eighths of a degree
constexpr int mostNotches = 1000; // of one turn

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

bool isWithin(const QWidget *page, const QObject *watched)
{
    const auto *widget = qobject_cast<const QWidget *>(watched);
    return widget && (widget == page || page->isAncestorOf(widget));
}

} // namespace

MarketKeys::MarketKeys(QWidget *window, QStackedWidget *pages, const QWidget *sprite)
    : QObject(window), m_window(window), m_pages(pages),
      m_table(pages->widget(tablePage)->findChild<QTableView *>()), m_sprite(sprite)
{
    // A table would take letters for a search of its own, so they are seen before it.
    qApp->installEventFilter(this);
}

bool MarketKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (!isTaken(watched, event))
        return false;
    // What is filtered and not accepted goes on to the parent, and would be taken once more there.
    event->accept();
    return true;
}

bool MarketKeys::isTaken(const QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::KeyPress:
        return isOurs(watched) && takePress(*static_cast<QKeyEvent *>(event));
    case QEvent::KeyRelease:
        if (watched == m_table && isOurs(watched))
            takeRelease(*static_cast<QKeyEvent *>(event));
        return false;
    case QEvent::Wheel:
        return isOurs(watched) && isWithin(m_pages->widget(chartPage), watched)
            && takeWheel(*static_cast<QWheelEvent *>(event));
    default:
        return false;
    }
}

bool MarketKeys::isOurs(const QObject *watched) const
{
    return isWithin(m_window, watched) && !QApplication::activeModalWidget()
        && !QApplication::activePopupWidget() && m_sprite->isHidden();
}

bool MarketKeys::isTyping() const
{
    const QWidget *focus = m_window->focusWidget();
    return focus && focus->testAttribute(Qt::WA_InputMethodEnabled);
}

// In a list that stands beside the pages, such as the records of the trading half.
bool MarketKeys::isScrolling() const
{
    const auto *view = qobject_cast<const QAbstractItemView *>(m_window->focusWidget());
    return view && !m_pages->isAncestorOf(view);
}

bool MarketKeys::takePress(const QKeyEvent &event)
{
    const Qt::KeyboardModifiers modifiers = event.modifiers() & ~Qt::KeypadModifier;
    const bool isCharacter = KeyboardSprite::begins(event.key());
    if (modifiers & ~(isCharacter ? Qt::ShiftModifier : Qt::NoModifier))
        return false;
    const bool isPaging = event.key() == Qt::Key_PageUp || event.key() == Qt::Key_PageDown;
    if ((isPaging || isCharacter) && isTyping())
        return false;
    if (isPaging && (isScrolling() || m_pages->currentIndex() == tablePage))
        return false;

    // A page that is turned while a key is held would not stop at the next one.
    const bool isHeld = event.isAutoRepeat();
    switch (event.key()) {
    case Qt::Key_F5:
        if (!isHeld)
            pool()->slot_turnoverKTime_clicked();
        return true;
    case Qt::Key_F6:
        if (!isHeld)
            pool()->slot_F6_clicked();
        return true;
    case Qt::Key_Escape:
        if (!isHeld)
            pool()->slot_escape_clicked();
        return true;
    case Qt::Key_PageUp:
        pool()->slot_pageup_clicked();
        return true;
    case Qt::Key_PageDown:
        pool()->slot_pagedown_clicked();
        return true;
    default:
        if (isCharacter)
            pool()->slot_keyboardFairy_clicked(event.key());
        return isCharacter;
    }
}

// These keys move the selection of the table and leave the collection behind, and Return would open
// the chart of another one than is marked. As with the arrow keys, the collection changes once, at
// the end.
void MarketKeys::takeRelease(const QKeyEvent &event)
{
    switch (event.key()) {
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
    case Qt::Key_Home:
    case Qt::Key_End: {
        const QModelIndex current = m_table->currentIndex();
        if (!event.isAutoRepeat() && current.isValid())
            pool()->slot_collectionTableView_clicked(
                current.siblingAtColumn(idColumn).data().toString());
        return;
    }
    default:
        return;
    }
}

// A fine wheel turns by parts of a notch, and the page counts whole ones.
bool MarketKeys::takeWheel(const QWheelEvent &event)
{
    const int turn = qBound(-mostNotches * notch, event.angleDelta().y(), mostNotches * notch);
    if (turn == 0 || event.modifiers() != Qt::NoModifier)
        return false;
    if ((turn < 0) != (m_turned < 0))
        m_turned = 0;
    m_turned += turn;
    const int notches = m_turned / notch;
    m_turned %= notch;
    if (notches != 0)
        pool()->slot_wheelOnChart_clicked(notches * notch);
    return true;
}
