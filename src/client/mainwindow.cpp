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
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QResizeEvent>
#include <QSplitter>
#include <QStackedWidget>
#include <QTableView>
#include <QVBoxLayout>

namespace {

constexpr int tablePage = 0;

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QWidget(parent), m_halves(new QSplitter(Qt::Vertical)), m_market(new Market_Widget),
      m_pages(m_market->findChild<QStackedWidget *>(QString(), Qt::FindDirectChildrenOnly)),
      m_table(m_pages->widget(tablePage)->findChild<QTableView *>()), m_strip(new ConnectionStrip),
      m_sprite(nullptr)
{
    setObjectName(QStringLiteral("MainWindow"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("MainWindow{background-color:rgb(21,21,21);}"));
    setWindowTitle(QStringLiteral("藏品交易"));

    m_halves->setChildrenCollapsible(false);
    m_halves->addWidget(m_market);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_halves, 1);
    layout->addWidget(m_strip);

    m_sprite = new KeyboardSprite(m_halves);
    new MarketKeys(this, m_pages, m_sprite);
    new NameColumn(m_table);
    createConnections();
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

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    pool()->slot_adjustSize(size());
}

void MainWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // A hidden table takes no rows, and on a quiet market the next ones may be long in coming.
    if (!event->spontaneous() && m_pages->currentIndex() == tablePage)
        ZvServerEngine::getZvServerEngineInstance()->changedToMarketList();
}
