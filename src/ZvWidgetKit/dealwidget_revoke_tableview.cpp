#include "ZvWidgetKit/dealwidget_revoke_tableview.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/dealwidget_revoke_tabledelegate.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/recordtablestyle.h"

#include <QHeaderView>
#include <QPointer>

namespace {

void tellResult(const QString &text)
{
    framedmessage::show(framedmessage::paragraph(text), QStringLiteral("提示"));
}

} // namespace

DealWidget_Revoke_TableView::DealWidget_Revoke_TableView(QWidget *parent)
    : PagedTableView(parent), m_pageSize(SmallestPage)
{
    setUpRecordTable(this, &m_model, new DealWidget_Revoke_tableDelegate, RecordRowHeight);
    setupView();
    createConnections();
}

DealWidget_Revoke_TableView::~DealWidget_Revoke_TableView() = default;

void DealWidget_Revoke_TableView::setupView()
{
    setSelectionMode(QAbstractItemView::MultiSelection);
    hideColumns(this, {1, 10, 13});
    setColumnWidths(this, {{0, 50}, {2, 200}, {3, 100}, {4, 200}, {5, 50}, {6, 100}, {15, 200}});
}

void DealWidget_Revoke_TableView::createConnections()
{
    using Self = DealWidget_Revoke_TableView;
    using Result = ZvServerActionResult;
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_RevokeList_changed, this, &Self::slot_revokeListChanged);
    Result *result = Result::getZvServerActionResultInstance();
    connect(result, &Result::signal_trade_revoke_succeed, this, &Self::slot_revokeSucceed);
    connect(result, &Result::signal_trade_revoke_failed, this, &Self::slot_revokeFailed);
}

void DealWidget_Revoke_TableView::selectOrders(int page, int minimumSize)
{
    beginSelect(page);
    const int rows = height() / verticalHeader()->defaultSectionSize() - 1; // the header takes one
    m_pageSize = qMax(rows, minimumSize);
    sendRequest();
}

void DealWidget_Revoke_TableView::sendRequest()
{
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_RevokeList(m_requestPage, m_pageSize);
}

void DealWidget_Revoke_TableView::showEvent(QShowEvent *event)
{
    PagedTableView::showEvent(event);
    selectOrders(1, SmallestPage);
}

void DealWidget_Revoke_TableView::slot_revokeListChanged()
{
    const QList<ZvUBRevokeItem> list = ZvServerCache::getZvServerCacheInstance()->getRevokeList();
    if (takeAnswer(list.isEmpty()))
        m_model.setItemList(list);
}

void DealWidget_Revoke_TableView::sendRevoke(QList<int> ids)
{
    m_pendingRevokeIDs = ids;
    ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_trade_revoke(ids);
}

void DealWidget_Revoke_TableView::slot_revokeSucceed()
{
    m_model.removeIDs(m_pendingRevokeIDs);
    m_pendingRevokeIDs.clear();
    tellResult(QStringLiteral("撤单成功"));
}

void DealWidget_Revoke_TableView::slot_revokeFailed(QString msg)
{
    m_pendingRevokeIDs.clear();
    tellResult(msg.isEmpty() ? QStringLiteral("撤单失败") : msg.toHtmlEscaped());
}

void DealWidget_Revoke_TableView::slot_revokeSelected()
{
    revokeAfterQuestion(m_model.checkedIDs(), QStringLiteral("确认撤掉选中？"),
                        QStringLiteral("当前没有选中要撤销的委托！"));
}

void DealWidget_Revoke_TableView::slot_revokeAll()
{
    revokeAfterQuestion(m_model.allIDs(), QStringLiteral("确认撤掉全部？"),
                        QStringLiteral("当前委托列表为空！"));
}

void DealWidget_Revoke_TableView::slot_revokeSells()
{
    revokeAfterQuestion(m_model.sellIDs(), QStringLiteral("确认撤卖？"),
                        QStringLiteral("当前没有任何卖出委托！"));
}

void DealWidget_Revoke_TableView::slot_revokeBuys()
{
    revokeAfterQuestion(m_model.buyIDs(), QStringLiteral("确认撤买？"),
                        QStringLiteral("当前没有任何买入委托！"));
}

void DealWidget_Revoke_TableView::slot_revokeLast()
{
    revokeAfterQuestion(m_model.lastID(), QStringLiteral("确认撤掉最后一笔？"),
                        QStringLiteral("当前委托列表为空！"));
}

// What is taken back is what the user was asked about: while the box stands, a new list may come.
void DealWidget_Revoke_TableView::revokeAfterQuestion(const QList<int> &ids,
                                                      const QString &question,
                                                      const QString &emptyText)
{
    if (ids.isEmpty()) {
        BreltGlobalFunction::getBreltGlobalFunciton()->alertMessage(emptyText);
        return;
    }
    const QPointer<DealWidget_Revoke_TableView> self(this);
    const bool isConfirmed
        = framedmessage::show(framedmessage::paragraph(question), QStringLiteral("撤单前信息确认"),
                              QStringLiteral("取消"));
    if (self && isConfirmed)
        sendRevoke(ids);
}

void DealWidget_Revoke_TableView::slot_selectAll()
{
    m_model.selectAll();
}

void DealWidget_Revoke_TableView::slot_deselectAll()
{
    m_model.deselectAll();
}
