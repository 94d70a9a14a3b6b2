#include "client/mainwindow.h"

#include "client/connectionstrip.h"
#include "client/embeddedexchange.h"
#include "client/namecolumn.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/market_tablewidget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QResizeEvent>
#include <QShortcut>
#include <QSplitter>
#include <QTableView>
#include <QVBoxLayout>

MainWindow::MainWindow(QWidget *parent)
    : QWidget(parent), m_halves(new QSplitter(Qt::Vertical)), m_table(nullptr),
      m_strip(new ConnectionStrip)
{
    setObjectName(QStringLiteral("MainWindow"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("MainWindow{background-color:rgb(21,21,21);}"));
    setWindowTitle(QStringLiteral("藏品交易"));

    auto *market = new Market_TableWidget;
    m_table = market->findChild<QTableView *>();
    m_halves->setChildrenCollapsible(false);
    m_halves->addWidget(market);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_halves, 1);
    layout->addWidget(m_strip);

    new NameColumn(m_table);
    connect(m_table->model(), &QAbstractItemModel::modelReset, this, &MainWindow::noteRows);
    createShortcuts();
    m_table->setFocus();
}

void MainWindow::createShortcuts()
{
    auto *turnOver = new QShortcut(Qt::Key_F6, this);
    turnOver->setAutoRepeat(false);
    connect(turnOver, &QShortcut::activated, ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
            &ZvWidgetSignalSLotPool::slot_F6_clicked);
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
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_adjustSize(size());
}

void MainWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    // A hidden table takes no rows, and on a quiet market the next ones may be long in coming.
    if (!event->spontaneous())
        ZvServerEngine::getZvServerEngineInstance()->changedToMarketList();
}
