#include "ZvWidgetKit/dealwidget_prepay_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvWidgetKit/dealwidget_prepay_tabledelegate.h"
#include "ZvWidgetKit/recordtablestyle.h"

namespace {

constexpr int RowHeight = 24;

} // namespace

DealWidget_PrePay_TableView::DealWidget_PrePay_TableView(QWidget *parent) : LateTableView(parent)
{
    giveItemDelegate(this, new DealWidget_PrePay_TableDelegate);
}

DealWidget_PrePay_TableView::~DealWidget_PrePay_TableView() = default;

void DealWidget_PrePay_TableView::setupView()
{
    applyRecordTableStyle(this, RowHeight);
    setSelectionMode(QAbstractItemView::MultiSelection);
    setColumnWidths(this, {{0, 50}, {1, 100}, {2, 200}, {3, 50}, {5, 75}, {7, 200}});
}
