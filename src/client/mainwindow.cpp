#include "client/mainwindow.h"

#include "client/accountbutton.h"
#include "client/buttonkeys.h"
#include "client/connectionstrip.h"
#include "client/embeddedexchange.h"
#include "client/halves.h"
#include "client/keyboardsprite.h"
#include "client/keysinsight.h"
#include "client/marketkeys.h"
#include "client/namecolumn.h"
#include "client/signin.h"
#include "client/sparememory.h"
#include "client/windowframe.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QPainter>
#include <QResizeEvent>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace {

constexpr int tablePage = 0;
constexpr QColor ground(21, 21, 21);

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

QString platformName()
{
    const auto platform = ZvServerConfig::getZvServerConfigInstance()->getCurrentPlatform();
    return platform == ZvServerConfig::LanChuan ? QStringLiteral("岚川商品交易平台")
                                                : QStringLiteral("澄湖文化交易平台");
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QWidget(parent, WindowFrame::flags), m_titleBar(new TitleBar(this)),
      m_statusBar(new StatusBar(this)), m_market(new Market_Widget(this)),
      m_transactions(new Transaction_Widget(this)),
      m_pages(m_market->findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly)),
      m_table(m_pages->widget(tablePage)->findChild<QTableView *>()),
      m_halves(new Halves(m_market, m_transactions, this)), m_strip(new ConnectionStrip(this)),
      m_signIn(new SignIn(this)), m_frame(nullptr), m_sprite(nullptr)
{
    setObjectName(QStringLiteral("MainWindow"));
    setAttribute(Qt::WA_OpaquePaintEvent);
    setWindowTitle(platformName());
    m_titleBar->setTitle(platformName());

    layOut();
    m_frame = new WindowFrame(this, m_titleBar);
    m_sprite = new KeyboardSprite(m_halves);
    new MarketKeys(this, m_pages, m_sprite);
    new ButtonKeys(this);
    new NameColumn(m_table);
    new SpareMemory(m_table->model(), this);
    auto *keys = new KeysInSight(this);
    connect(keys, &KeysInSight::lost, this, &MainWindow::takeKeysToMarket);
    joinBars();
    joinMarket();
    // Before the window has a size of its own: what it needs at least is told by its parts as they
    // are on the smallest screen.
    pool()->slot_adjustSize(size());
    m_table->setFocus();
}

// The order of the Tab key is the same.
void MainWindow::layOut()
{
    auto *layout = new QVBoxLayout(this);
    layout->setSpacing(0);
    layout->addWidget(m_titleBar);
    layout->addWidget(m_halves, 1);
    layout->addWidget(m_strip);
    layout->addWidget(m_statusBar);
}

void MainWindow::joinBars()
{
    connect(m_titleBar, &TitleBar::signal_loginClicked, m_signIn, &SignIn::open);
    connect(m_titleBar, &TitleBar::signal_minimizeClicked, m_frame, &WindowFrame::minimize);
    connect(m_titleBar, &TitleBar::signal_normalClicked, m_frame, &WindowFrame::toggleMaximized);
    connect(m_titleBar, &TitleBar::signal_doubleClicked, m_frame, &WindowFrame::toggleMaximized);
    connect(m_titleBar, &TitleBar::signal_exitClicked, this, &QWidget::close);
    connect(m_statusBar, &StatusBar::signal_hideTransactions_toggled, this,
            &MainWindow::hideTransactions);
    connect(m_statusBar, &StatusBar::signal_lockTransactions_clicked, m_transactions,
            &Transaction_Widget::slot_showTransctionLock);
    connect(m_strip->accountButton(), &AccountButton::transferWanted, m_market,
            &Market_Widget::slot_inputoutput_clicked);
}

void MainWindow::joinMarket()
{
    connect(m_table->model(), &QAbstractItemModel::modelReset, this, &MainWindow::noteRows);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed, m_market,
            &Market_Widget::showButtonsNeedLog);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace, m_market,
            &Market_Widget::hideButtonsNeedLog);
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

void MainWindow::hideTransactions(bool isHidden)
{
    m_transactions->setHidden(isHidden);
    if (isHidden && !m_market->isAncestorOf(focusWidget()))
        takeKeysToMarket();
}

void MainWindow::takeKeysToMarket()
{
    const bool isTable = m_pages->currentIndex() == tablePage;
    (isTable ? m_table : m_pages->currentWidget())->setFocus();
}

// By hand, since a style sheet of the window would be worked through for each of its parts anew.
void MainWindow::paintEvent(QPaintEvent *event)
{
    QPainter(this).fillRect(event->rect(), ground);
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layout()->activate(); // the halves have the room of the window as it is now
    m_halves->fit(size());
}

void MainWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // A hidden table takes no rows, and on a quiet market the next ones may be long in coming.
    if (!event->spontaneous() && m_pages->currentIndex() == tablePage)
        ZvServerEngine::getZvServerEngineInstance()->changedToMarketList();
}
