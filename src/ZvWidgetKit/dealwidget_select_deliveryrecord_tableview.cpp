#include "ZvWidgetKit/dealwidget_select_deliveryrecord_tableview.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_select_deliveryrecord_delegate.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/recordtablestyle.h"

#include <QDebug>
#include <QHeaderView>
#include <QPointer>

namespace {

constexpr int RowHeight = 24;

void alertMessage(const QString &text)
{
    BreltGlobalFunction::getBreltGlobalFunciton()->alertMessage(text);
}

QString line(const QString &caption, const QString &value)
{
    return QStringLiteral("<p style='font-size:16px' align='center'>") + caption + value.toHtmlEscaped()
        + QStringLiteral("</p>");
}

} // namespace

DealWidget_Select_DeliveryRecord_TableView::DealWidget_Select_DeliveryRecord_TableView(
    QWidget *parent)
    : PagedTableView(parent), m_delegate(new DealWidget_Select_DeliveryRecord_Delegate)
{
    m_delegate->setView(this);
    setUpRecordTable(this, &m_model, m_delegate, RowHeight);
    setupView();
    m_delegate->follow(this);
    createConnections();
}

DealWidget_Select_DeliveryRecord_TableView::~DealWidget_Select_DeliveryRecord_TableView() = default;

void DealWidget_Select_DeliveryRecord_TableView::setupView()
{
    horizontalHeader()->setStyleSheet(deliveryHeaderSheet());
    hideColumns(this, {0, 9, 10});
    setColumnWidths(this, {{1, 160}, {3, 250}, {6, 200}, {8, 100}, {11, 100}, {12, 200}});
}

void DealWidget_Select_DeliveryRecord_TableView::createConnections()
{
    using Self = DealWidget_Select_DeliveryRecord_TableView;
    using Result = ZvServerActionResult;
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_Select_DeliveryRecord_changed, this,
            &Self::slot_recordCacheChanged);
    Result *result = Result::getZvServerActionResultInstance();
    connect(result, &Result::signal_cancelDelivery_succeed, this, &Self::slot_cancelSucceed);
    connect(result, &Result::signal_cancelDelivery_failed, this, &Self::slot_cancelFailed);
}

void DealWidget_Select_DeliveryRecord_TableView::selectRecords(int page, QString start,
                                                               QString stop)
{
    beginSelect(page);
    m_startDate = start;
    m_stopDate = stop;
    qDebug("点击了提货记录查询");
    sendRequest();
}

void DealWidget_Select_DeliveryRecord_TableView::sendRequest()
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Select_DeliveryRecord(
        m_requestPage, m_startDate, m_stopDate);
}

// This table turns its pages without a word in the log.
void DealWidget_Select_DeliveryRecord_TableView::logTurn(pageturn::Direction) const { }

void DealWidget_Select_DeliveryRecord_TableView::showEvent(QShowEvent *)
{
    selectRecords(1, QString(), QString());
}

void DealWidget_Select_DeliveryRecord_TableView::mouseReleaseEvent(QMouseEvent *event)
{
    m_delegate->clickAfter([this, event] { PagedTableView::mouseReleaseEvent(event); });
}

void DealWidget_Select_DeliveryRecord_TableView::slot_recordCacheChanged()
{
    const QList<ZvUBDeliveryRecordItem> list
        = ZvServerCache::getZvServerCacheInstance()->getDeliveryRecordList();
    if (takeAnswer(list.isEmpty()))
        m_model.setRecordList(list);
    repaint();
}

void DealWidget_Select_DeliveryRecord_TableView::cancelDelivery(int row)
{
    // What the user is asked about is what is cancelled: while the box stands, other rows may come.
    const QString orderNumber = m_model.getOrderNumber(row);
    const QString name = m_model.getCollectionName(row);
    const QString quantity = m_model.getQuantity(row);
    const QString id = m_model.getDeliveryId(row);
    if (id.isEmpty())
        return;
    const QString html = line(QStringLiteral("单号："), orderNumber)
        + line(QStringLiteral("名称："), name) + line(QStringLiteral("数量："), quantity)
        + QStringLiteral("<p style='font-size:16px' align='center'>确定取消提货？");

    m_delegate->leaveButton();
    const QPointer<DealWidget_Select_DeliveryRecord_TableView> self(this);
    const bool isConfirmed
        = framedmessage::show(html, QStringLiteral("温馨提示"), QStringLiteral("取消"));
    if (self && isConfirmed)
        ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_deliveryCancel(id);
}

void DealWidget_Select_DeliveryRecord_TableView::slot_cancelSucceed()
{
    selectRecords(1, QString(), QString());
    alertMessage(QStringLiteral("取消提货成功"));
}

void DealWidget_Select_DeliveryRecord_TableView::slot_cancelFailed(QString reason)
{
    alertMessage(reason.isEmpty() ? QStringLiteral("取消提货失败") : reason);
}
