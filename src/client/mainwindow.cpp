#include "client/mainwindow.h"

#include "client/accountbutton.h"
#include "client/connectionstrip.h"
#include "client/embeddedexchange.h"
#include "client/keyboardsprite.h"
#include "client/marketkeys.h"
#include "client/namecolumn.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QResizeEvent>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace {

constexpr int tablePage = 0;

// The market half gives way to the trading half down to this, also where the page of a chart would
// rather have more: the window has to fit a screen of 800 lines.
constexpr int leastMarketHeight = 420;

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QWidget(parent), m_halves(new QSplitter(Qt::Vertical)), m_market(new Market_Widget),
      m_pages(m_market->findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly)),
      m_table(m_pages->widget(tablePage)->findChild<QTableView *>()),
      m_transactions(new Transaction_Widget), m_strip(new ConnectionStrip), m_sprite(nullptr)
{
    setObjectName(QStringLiteral("MainWindow"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("MainWindow{background-color:rgb(21,21,21);}"));
    setWindowTitle(QStringLiteral("藏品交易"));

    m_halves->setChildrenCollapsible(false);
    m_market->setMinimumHeight(leastMarketHeight);
    m_halves->addWidget(m_market);
    m_halves->addWidget(m_transactions);
    // What the window grows by is the market's.
    m_halves->setStretchFactor(m_halves->indexOf(m_market), 1);
    m_halves->setStretchFactor(m_halves->indexOf(m_transactions), 0);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_halves, 1);
    layout->addWidget(m_strip);

    m_sprite = new KeyboardSprite(m_halves);
    new MarketKeys(this, m_pages, m_sprite);
    new NameColumn(m_table);
    createConnections();
    // Before the window has a size of its own: what it needs at least is told by its parts as they
    // are on the smallest screen.
    pool()->slot_adjustSize(size());
    m_table->setFocus();
}

void MainWindow::createConnections()
{
    connect(m_table->model(), &QAbstractItemModel::modelReset, this, &MainWindow::noteRows);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed, m_market,
            &Market_Widget::showButtonsNeedLog);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace, m_market,
            &Market_Widget::hideButtonsNeedLog);
    connect(m_strip->accountButton(), &AccountButton::transferWanted, m_market,
            &Market_Widget::slot_inputoutput_clicked);
    connect(m_strip->accountButton(), &AccountButton::hideTransactionsToggled, this,
            &MainWindow::hideTransactions);
    connect(m_strip->accountButton(), &AccountButton::lockTransactionsWanted, m_transactions,
            &Transaction_Widget::slot_showTransctionLock);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed, this,
            [this] { hideTransactions(false); });

    connect(pool(), &ZvWidgetSignalSLotPool::signal_escape_clicked, this, &MainWindow::goBack);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_keyboardFairy_clicked, m_sprite,
            &KeyboardSprite::begin);
    connect(m_sprite, &KeyboardSprite::chosen, m_market,
            &Market_Widget::slot_changePageWhenKeybordFairy);
    // The codes of another server are none here.
    connect(pool(), &ZvWidgetSignalSLotPool::signal_loadTradeData_fromServer, m_sprite,
            &KeyboardSprite::leave);
}

// From the page of deals to the chart, and from the chart to the table.
void MainWindow::goBack()
{
    if (!m_market->slot_escapeToTimeKline())
        m_market->slot_escapeToTableView();
}

void MainWindow::useExchange(const QUrl &address)
{
    // A service that was started again answers on another port, and what is under way to the old
    // one has nobody to come from.
    ZvServerAccessManager *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
    access->stop();
    access->setExchangeAddress(address);
    ZvServerConfig::getZvServerConfigInstance()->setServiceAddress(address.toString());
    access->start();
}

void MainWindow::followExchange(EmbeddedExchange *exchange)
{
    connect(exchange, &EmbeddedExchange::available, this, [this](const QUrl &address) {
        m_strip->setServiceNotice(QString());
        useExchange(address);
    });
    connect(exchange, &EmbeddedExchange::lost, m_strip, &ConnectionStrip::setServiceNotice);
}

void MainWindow::noteRows()
{
    if (m_hasMarket || m_table->model()->rowCount() == 0)
        return;
    m_hasMarket = true;
    emit marketShown();
}

// The keys do not stay with what is out of sight.
void MainWindow::hideTransactions(bool isHidden)
{
    const bool hadKeys = m_transactions->isAncestorOf(focusWidget());
    m_transactions->setHidden(isHidden);
    if (isHidden && hadKeys) {
        const bool isTable = m_pages->currentIndex() == tablePage;
        (isTable ? m_table : m_pages->currentWidget())->setFocus();
    }
}

// The trading half asks for a height by the window's. A splitter makes room for a half that needs
// more, keeps the room when less would do, and does not see that a half has changed its own size.
void MainWindow::adjustHalves()
{
    layout()->activate(); // the halves have the room of the window as it is now
    QList<int> heights = m_halves->sizes();
    const int before = m_transactions->minimumHeight();
    pool()->slot_adjustSize(size());
    const int wanted = m_transactions->minimumHeight();
    const int rest = m_halves->height() - m_halves->handleWidth() - wanted;
    if ((wanted != before || !m_isAdjusted) && rest > 0)
        heights = {rest, wanted};
    m_halves->setSizes(heights);
    m_isAdjusted = true;
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    adjustHalves();
}

void MainWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // A hidden table takes no rows, and on a quiet market the next ones may be long in coming.
    if (!event->spontaneous() && m_pages->currentIndex() == tablePage)
        ZvServerEngine::getZvServerEngineInstance()->changedToMarketList();
}
