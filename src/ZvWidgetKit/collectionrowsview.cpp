#include "ZvWidgetKit/collectionrowsview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/recordtablestyle.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QHeaderView>

namespace {

constexpr int RowHeight = 24;

} // namespace

CollectionRowsView::CollectionRowsView(QWidget *parent) : QTableView(parent) { }

CollectionRowsView::~CollectionRowsView() = default;

void CollectionRowsView::setUpTable(QAbstractItemModel *model, QAbstractItemDelegate *delegate)
{
    setUpRecordTable(this, model, delegate, RowHeight);
    // Here table and header take theirs from one sheet.
    horizontalHeader()->setStyleSheet(QString());
    setStyleSheet(recordTableSheet() + recordHeaderSheet());
}

void CollectionRowsView::showTimeLine(const QString &collectionId)
{
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()
        ->slot_collectionTableView_clicked_and_changeToTimeLine(collectionId);
}
