#include "client/mainwindow.h"

#include "client/connectionstrip.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_tableview.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QCloseEvent>
#include <QResizeEvent>
#include <QSplitter>
#include <QVBoxLayout>

MainWindow::MainWindow(QWidget *parent)
    : QWidget(parent), m_halves(new QSplitter(Qt::Vertical)), m_table(new Collection_TableView),
      m_strip(new ConnectionStrip)
{
    setObjectName(QStringLiteral("MainWindow"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("MainWindow{background-color:rgb(21,21,21);}"));
    m_table->setAccessibleName(QStringLiteral("行情列表"));

    m_halves->setChildrenCollapsible(false);
    m_halves->addWidget(m_table);

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(m_halves, 1);
    layout->addWidget(m_strip);

    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_MarketList_changed, this, &MainWindow::feedTable);
    ZvServerEngine::getZvServerEngineInstance()->changedToMarketList();
    m_table->setFocus();
}

void MainWindow::feedTable()
{
    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
    QList<ZvUBObject> rows = cache->getMarketListByTypeId(-1, QString());
    ZvUBObject composite;
    if (cache->getCompsite(composite, QString()))
        rows.prepend(composite);
    m_table->setMarketList(rows);
}

void MainWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_adjustSize(size());
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    emit closed();
}
