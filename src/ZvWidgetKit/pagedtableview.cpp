#include "ZvWidgetKit/pagedtableview.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QWheelEvent>

PagedTableView::PagedTableView(QWidget *parent)
    : LateTableView(parent), m_selectPending(false), m_currentPage(1), m_requestPage(1),
      m_wheelDelta(0)
{
}

PagedTableView::~PagedTableView() = default;

void PagedTableView::pageUp()
{
    turnTo(qMax(1, m_currentPage - 1), pageturn::Up);
}

void PagedTableView::pageDown()
{
    turnTo(m_currentPage + 1, pageturn::Down);
}

void PagedTableView::turnTo(int page, pageturn::Direction direction)
{
    m_requestPage = page;
    logTurn(direction);
    sendRequest();
}

void PagedTableView::logTurn(pageturn::Direction direction) const
{
    pageturn::log(direction, m_requestPage);
}

void PagedTableView::beginSelect(int page)
{
    m_selectPending = true;
    m_currentPage = page;
    m_requestPage = page;
}

bool PagedTableView::takeAnswer(bool isEmpty)
{
    const bool isShown = !isEmpty || m_selectPending;
    if (isShown)
        m_currentPage = isEmpty ? 1 : m_requestPage;
    m_selectPending = false;
    return isShown;
}

void PagedTableView::wheelEvent(QWheelEvent *event)
{
    switch (pageturn::byWheel(event->angleDelta().y(), m_wheelDelta)) {
    case pageturn::Up:
        pageUp();
        break;
    case pageturn::Down:
        pageDown();
        break;
    case pageturn::None:
        break;
    }
    event->accept();
}
