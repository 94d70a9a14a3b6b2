#include "ZvWidgetKit/dealwidget_delivery_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvfaults.h"
#include "ZvWidgetKit/dealwidget_delivery_delegate.h"
#include "ZvWidgetKit/recordtablestyle.h"
#include "ZvWidgetKit/small_deliveryhandling_dialog.h"

#include <QDebug>
#include <QHeaderView>
#include <QPointer>

#include <limits>

namespace {

constexpr int CodeColumn = 0;
constexpr int NameColumn = 1;
constexpr int AvailableColumn = 3;
constexpr int IdColumn = 10;
constexpr int NameWidth = 200;
constexpr int RowHeight = 24;

} // namespace

DealWidget_Delivery_TableView::DealWidget_Delivery_TableView(QWidget *parent)
    : LateTableView(parent), m_delegate(new DealWidget_Delivery_Delegate(this))
{
    setUpRecordTable(this, &m_model, m_delegate, RowHeight);
    applyStyle();
    m_delegate->follow(this);
}

DealWidget_Delivery_TableView::~DealWidget_Delivery_TableView() = default;

void DealWidget_Delivery_TableView::applyStyle()
{
    horizontalHeader()->setStyleSheet(deliveryHeaderSheet());
    hideColumns(this, {IdColumn});
    setColumnWidths(this, {{NameColumn, NameWidth}});
}

void DealWidget_Delivery_TableView::setRecordList(const QList<ZvUBCapItem> &list)
{
    m_model.setRecordList(list);
}

QString DealWidget_Delivery_TableView::textAt(int row, int column) const
{
    return m_model.index(row, column).data().toString();
}

// The form counts in int. Of a larger holding it offers what it can count: the rest can be taken
// out afterwards.
int DealWidget_Delivery_TableView::availableAt(int row) const
{
    constexpr qint64 most = std::numeric_limits<int>::max();
    return int(qMin(textAt(row, AvailableColumn).toLongLong(), most));
}

void DealWidget_Delivery_TableView::showDeliveryDialog(int row)
{
    const QString code = textAt(row, CodeColumn);
    const QString name = textAt(row, NameColumn);
    const int available = availableAt(row);
    const QString id = textAt(row, IdColumn);
    qDebug() << "delivery collection ID:" << id;

    // The form ends with this view, should that end while it runs.
    m_delegate->leaveButton();
    const QPointer<Small_DeliveryHandling_Dialog> dialog(new Small_DeliveryHandling_Dialog(this));
    dialog->setCollectionId(id);
    dialog->setCollectionCode(code);
    dialog->setCollectionName(name);
    dialog->setAvailableNum(available);
    dialog->exec();
    if (!zvFault("form-is-kept"))
        delete dialog;
}

void DealWidget_Delivery_TableView::mouseReleaseEvent(QMouseEvent *event)
{
    m_delegate->clickAfter([this, event] { LateTableView::mouseReleaseEvent(event); });
}
