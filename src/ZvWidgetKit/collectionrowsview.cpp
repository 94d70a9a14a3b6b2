#include "ZvWidgetKit/collectionrowsview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/recordtablestyle.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

namespace {

constexpr int RowHeight = 24;

} // namespace

CollectionRowsView::CollectionRowsView(QWidget *parent) : LateTableView(parent) { }

CollectionRowsView::~CollectionRowsView() = default;

void CollectionRowsView::setUpTable(QAbstractItemModel *model, QAbstractItemDelegate *delegate)
{
    giveItemDelegate(this, delegate);
    setModel(model);
    applyTicketTableStyle(this, RowHeight);
}

void CollectionRowsView::showTimeLine(const QString &collectionId)
{
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()
        ->slot_collectionTableView_clicked_and_changeToTimeLine(collectionId);
}
