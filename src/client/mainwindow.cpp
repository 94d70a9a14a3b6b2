#include "client/mainwindow.h"

#include "client/connectionstrip.h"
#include "client/embeddedexchange.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_tableview.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QFontMetrics>
#include <QHeaderView>
#include <QResizeEvent>
#include <QScrollBar>
#include <QSplitter>
#include <QVBoxLayout>

namespace {

constexpr int nameColumn = 2;
constexpr int cellMargins = 10;

int widestName(const QAbstractItemModel *model, const QFontMetrics &metrics)
{
    int widest = 0;
    for (int row = 0, count = model->rowCount(); row < count; ++row) {
        const QString name = model->index(row, nameColumn).data().toString();
        widest = qMax(widest, metrics.horizontalAdvance(name) + cellMargins);
    }
    return widest;
}

} // namespace

MainWindow::MainWindow(QWidget *parent)
    : QWidget(parent), m_halves(new QSplitter(Qt::Vertical)), m_table(new Collection_TableView),
      m_strip(new ConnectionStrip)
{
    setObjectName(QStringLiteral("MainWindow"));
    setAttribute(Qt::WA_StyledBackground);
    setStyleSheet(QStringLiteral("MainWindow{background-color:rgb(21,21,21);}"));
    setWindowTitle(QStringLiteral("藏品交易"));
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

void MainWindow::followExchange(EmbeddedExchange *exchange)
{
    connect(exchange, &EmbeddedExchange::available, this, [this](const QUrl &address) {
        m_strip->setServiceNotice(QString());
        // A service that was started again answers on another port, and what is under way to the
        // old one has nobody to come from.
        ZvServerAccessManager *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
        access->stop();
        access->setExchangeAddress(address);
        access->start();
    });
    connect(exchange, &EmbeddedExchange::lost, m_strip, &ConnectionStrip::setServiceNotice);
}

bool MainWindow::hasMarket() const
{
    return m_table->model()->rowCount() > 0;
}

void MainWindow::feedTable()
{
    const bool hadMarket = hasMarket();
    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
    QList<ZvUBObject> rows = cache->getMarketListByTypeId(-1, QString());
    ZvUBObject composite;
    if (cache->getCompsite(composite, QString()))
        rows.prepend(composite);
    m_table->setMarketList(rows);
    if (!hadMarket && hasMarket()) {
        widenNames();
        emit marketShown();
    }
}

// On a small screen the table keeps its names narrow. Where the window has room to spare, they get
// it, so that they are read in full.
void MainWindow::widenNames()
{
    QHeaderView *header = m_table->horizontalHeader();
    // The first rows are in, but the bar that they need has not taken its place yet.
    const QScrollBar *bar = m_table->verticalScrollBar();
    const int barToCome = bar->isVisible() ? 0 : bar->sizeHint().width();
    const int spare = m_table->viewport()->width() - barToCome - header->length();
    const int missing
        = widestName(m_table->model(), m_table->fontMetrics()) - header->sectionSize(nameColumn);
    if (spare > 0 && missing > 0)
        header->resizeSection(nameColumn, header->sectionSize(nameColumn) + qMin(spare, missing));
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
    feedTable();
}
