#include "ZvWidgetKit/transaction_widget.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/framedmessage.h"
#include "ZvWidgetKit/transaction_deal.h"
#include "ZvWidgetKit/transaction_lock.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QHBoxLayout>
#include <QPointer>
#include <QStackedWidget>

namespace {

// A main frame above this height has room for five quote levels below the market, others for three.
constexpr int LargeFrameHeight = 780;
constexpr int LargeHeight = 307;
constexpr int SmallHeight = 226;

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

Transaction_Widget::Transaction_Widget(QWidget *parent)
    : QWidget(parent), m_transactionStack(nullptr), m_transactionDeal(new Transaction_Deal),
      m_transactionLock(new Transaction_Lock)
{
    m_transactionStack = new QStackedWidget;
    m_transactionStack->addWidget(m_transactionDeal);
    m_transactionStack->addWidget(m_transactionLock);
    auto *page = new QHBoxLayout(this);
    page->setSpacing(0);
    page->setContentsMargins(0, 0, 0, 0);
    page->addWidget(m_transactionStack);
    applyStyle();
    createConnections();
}

Transaction_Widget::~Transaction_Widget() = default;

// The two pages style themselves.
void Transaction_Widget::applyStyle() { }

void Transaction_Widget::createConnections()
{
    using Self = Transaction_Widget;
    const auto *result = ZvServerActionResult::getZvServerActionResultInstance();
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_LoggedOtherPlace, this,
            &Self::slot_login_LoggedOtherPlace);
    connect(result, &ZvServerActionResult::signal_login_succeed, this,
            &Self::slot_after_login_succeed);
    connect(result, &ZvServerActionResult::signal_login_failed, this,
            &Self::slot_after_login_failed);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_loadTradeData_fromServer, this,
            &Self::slot_after_serverChanged);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_adjustSize, this, &Self::slot_adjustSize);
}

void Transaction_Widget::slot_showTransctionLock()
{
    m_transactionStack->setCurrentWidget(m_transactionLock);
    m_transactionLock->resetLockPage();
}

void Transaction_Widget::slot_after_login_succeed()
{
    m_transactionDeal->resetAfterLogin();
    m_transactionStack->setCurrentWidget(m_transactionDeal);
    m_transactionLock->resetLockPage();
}

void Transaction_Widget::slot_after_login_failed(QString msg)
{
    m_transactionLock->showUnlockFailed(msg);
}

void Transaction_Widget::slot_after_serverChanged()
{
    m_transactionDeal->reloadPages();
}

// The box runs an event loop, in which the host may end this widget: nothing of it is touched
// after that. A session that was begun meanwhile may end as well; the box that stands says so.
void Transaction_Widget::slot_login_LoggedOtherPlace(QString msg)
{
    ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
    if (m_isTelling)
        return;
    m_isTelling = true;
    const QPointer<Transaction_Widget> self(this);
    framedmessage::show(framedmessage::paragraph(msg), QStringLiteral("错误提示"));
    if (self)
        m_isTelling = false;
    pool()->slot_loggedOtherPlace();
}

void Transaction_Widget::slot_adjustSize(QSize mainSize)
{
    const int height = mainSize.height() > LargeFrameHeight ? LargeHeight : SmallHeight;
    setMinimumHeight(height);
    resize(width(), height);
}
