#pragma once

#include "ZvWidgetKit/latetableview.h"
#include "ZvWidgetKit/pageturn.h"

// A table that shows one page of a list on the exchange. It keeps the state of paging and sends the
// requests; answers carry no number, so the next one is taken for that to the latest request.
//
// It has no meta-object of its own, so that each member stands directly below QTableView there.
class PagedTableView : public LateTableView
{
public:
    explicit PagedTableView(QWidget *parent);
    ~PagedTableView() override;

    // Ask for the page before the one on view, at least the first one, and for the next one, which
    // may not exist. What is on view stays until the answer.
    void pageUp();
    void pageDown();

protected:
    // Sends the query that runs, for m_requestPage.
    virtual void sendRequest() = 0;

    // Tells the debug log of a page that is asked for.
    virtual void logTurn(pageturn::Direction direction) const;

    // Begins a query at this page; the request is to be sent afterwards.
    void beginSelect(int page);

    // Takes an answer, and says whether its rows are to be shown. An empty one is shown when it
    // answers a query; beyond the last page it leaves table and page as they are.
    bool takeAnswer(bool isEmpty);

    // The wheel turns pages, it does not scroll.
    void wheelEvent(QWheelEvent *event) override;

    bool m_selectPending; // a query was sent and its answer has not been seen
    int m_currentPage; // on view
    int m_requestPage; // asked for last
    int m_wheelDelta;

private:
    void turnTo(int page, pageturn::Direction direction);
};
