#pragma once

#include "ZvWidgetKit/dealwidget_revoke_tablemodel.h"
#include "ZvWidgetKit/pagedtableview.h"

// One page of the open orders, and what takes them back: the ticked ones, all of them, all sales,
// all buys or the newest one. "All" are those of the page on view.
class DealWidget_Revoke_TableView : public PagedTableView
{
    Q_OBJECT

public:
    static constexpr int SmallestPage = 10; // orders, however low the table is

    explicit DealWidget_Revoke_TableView(QWidget *parent = nullptr);
    ~DealWidget_Revoke_TableView() override;

    // Queries the orders, as many a page as the table has room for, at least `minimumSize`.
    void selectOrders(int page, int minimumSize);

    // Takes these orders back. A later call before the answer takes the place of an earlier one.
    void sendRevoke(QList<int> ids);

public slots:
    // Takes the answer of the exchange.
    void slot_revokeListChanged();

    // Tell the user how a withdrawal ended. A success cuts the table without asking for a new list.
    void slot_revokeSucceed();
    void slot_revokeFailed(QString msg);

    // Ask the user, then take orders back.
    void slot_revokeSelected();
    void slot_revokeAll();
    void slot_revokeSells();
    void slot_revokeBuys();
    void slot_revokeLast();

    void slot_selectAll();
    void slot_deselectAll();

protected:
    void showEvent(QShowEvent *event) override;
    void sendRequest() override;

private:
    void setupView();
    void createConnections();
    void revokeAfterQuestion(const QList<int> &ids, const QString &question,
                             const QString &emptyText);

    DealWidget_Revoke_tableModel m_model;
    QList<int> m_pendingRevokeIDs; // of the withdrawal that was sent last
    int m_pageSize;
};
