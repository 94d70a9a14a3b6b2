#include "ZvWidgetKit/market_detailwidget.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/pageturn.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "ui_market_detailwidget.h"

#include <QDebug>
#include <QWheelEvent>

namespace {

constexpr int ViewWidth = 300; // at least
constexpr int RowHeight = 25;
constexpr int HeadHeight = 55; // the title and the header of a list
constexpr int ViewSpacing = 20;
constexpr int LoggedView = 2;

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

void setSpacing(QLayout *layout, int spacing)
{
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(spacing);
}

} // namespace

Market_DetailWidget::Market_DetailWidget(QWidget *parent)
    : QWidget(parent), m_wheelDelta(0), ui(std::make_unique<Ui::Market_DetailWidget>()),
      m_viewCount(10), m_rowsPerView(10), m_pageSize(m_viewCount * m_rowsPerView), m_currentPage(1),
      m_requestedPage(1), m_newSelection(false)
{
    ui->setupUi(this);
    m_lines << ui->line_0 << ui->line_1 << ui->line_2 << ui->line_3 << ui->line_4 << ui->line_5
            << ui->line_6 << ui->line_7 << ui->line_8 << ui->line_9;
    m_views << ui->tableView_0 << ui->tableView_1 << ui->tableView_2 << ui->tableView_3
            << ui->tableView_4 << ui->tableView_5 << ui->tableView_6 << ui->tableView_7
            << ui->tableView_8 << ui->tableView_9;
    for (int i = 0; i < m_views.size(); ++i)
        m_views.at(i)->setAccessibleName(QStringLiteral("成交明细 %1").arg(i + 1));
    applyLayout();
    createConnections();
}

Market_DetailWidget::~Market_DetailWidget() = default;

void Market_DetailWidget::applyLayout()
{
    setSpacing(layout(), 0);
    setSpacing(ui->frame_title->layout(), 0);
    setSpacing(ui->frame_detail->layout(), ViewSpacing);
}

void Market_DetailWidget::createConnections()
{
    connect(cache(), &ZvServerCache::signal_cache_Market_Detail_changed, this,
            &Market_DetailWidget::slot_updateMarketDetail);
    ZvWidgetSignalSLotPool *pool = ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
    connect(pool, &ZvWidgetSignalSLotPool::signal_pagedown_clicked, this,
            &Market_DetailWidget::requestPage_whenWheelIn);
    connect(pool, &ZvWidgetSignalSLotPool::signal_pageup_clicked, this,
            &Market_DetailWidget::requestPage_whenWheelOut);
}

int Market_DetailWidget::usedViews() const
{
    return qMin(m_viewCount, m_views.size());
}

void Market_DetailWidget::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_viewCount = width() / ViewWidth;
    m_rowsPerView = (height() - HeadHeight) / RowHeight;
    m_pageSize = m_viewCount * m_rowsPerView;
    const QString id = engine()->getGlobalCollectionID();
    if (isVisible())
        nameCollection(id);
    selectTiggered(id);
    qDebug() << m_viewCount << m_rowsPerView << m_pageSize;
    for (int i = 0; i < m_views.size(); ++i) {
        const bool isUsed = i < m_viewCount;
        m_views.at(i)->setVisible(isUsed);
        m_lines.at(i)->setVisible(isUsed);
        // When it comes back, it must not show the deals of long ago beside those of the others.
        if (!isUsed)
            m_views.at(i)->setDealList({});
    }
}

void Market_DetailWidget::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    slot_clearMarketDetail();
    const QString id = engine()->getGlobalCollectionID();
    nameCollection(id);
    selectTiggered(id);
}

// The current collection may change under the page, and no deals may stand below another name.
void Market_DetailWidget::nameCollection(const QString &id)
{
    const ZvUBBriefInfo info = cache()->getCurrentBriefInfo();
    const QString name = info.getNameFromCollectionID(id);
    const QString code = info.getCodeFromCollectionID(id);
    ui->label_title->setText(name + QLatin1Char('(') + code + QLatin1Char(')')
                             + QStringLiteral("成交明细"));
}

void Market_DetailWidget::selectTiggered(QString collectionId)
{
    m_currentPage = 1;
    m_requestedPage = 1;
    m_newSelection = true;
    engine()->sendRequest_Market_Detail(collectionId, 1, m_pageSize);
}

void Market_DetailWidget::requestPage_whenWheelOut()
{
    requestPage(qMax(1, m_currentPage - 1), pageturn::Up);
}

void Market_DetailWidget::requestPage_whenWheelIn()
{
    requestPage(m_currentPage + 1, pageturn::Down);
}

void Market_DetailWidget::requestPage(int page, pageturn::Direction direction)
{
    if (isHidden())
        return;
    slot_clearMarketDetail();
    m_requestedPage = page;
    pageturn::log(direction, m_requestedPage);
    const QString id = engine()->getGlobalCollectionID();
    nameCollection(id);
    engine()->sendRequest_Market_Detail(id, m_requestedPage, m_pageSize);
}

void Market_DetailWidget::wheelEvent(QWheelEvent *event)
{
    switch (pageturn::byWheel(event->angleDelta().y(), m_wheelDelta)) {
    case pageturn::Up:
        requestPage_whenWheelOut();
        break;
    case pageturn::Down:
        requestPage_whenWheelIn();
        break;
    case pageturn::None:
        break;
    }
    event->accept();
}

void Market_DetailWidget::slot_clearMarketDetail()
{
    qDebug() << "clear clear clear";
    for (int i = 0; i < usedViews(); ++i)
        m_views.at(i)->setDealList({});
}

void Market_DetailWidget::slot_updateMarketDetail()
{
    if (isHidden())
        return;
    const QList<ZvUBDealItem> deals = cache()->getMarketDetail();
    if (!deals.isEmpty()) {
        m_deals = deals;
        fillViews(Fills);
        m_currentPage = m_requestedPage;
    } else if (m_newSelection) {
        m_deals.clear();
        fillViews(Fills);
        m_currentPage = 1;
    } else {
        // Past the last page; what was blanked for the answer comes back.
        fillViews(Restores);
    }
    m_newSelection = false;
}

void Market_DetailWidget::fillViews(Filling filling)
{
    const int rows = qMax(0, m_rowsPerView);
    for (int i = 0; i < usedViews(); ++i) {
        const QList<ZvUBDealItem> deals = m_deals.mid(i * rows, rows);
        if (filling == Restores && i == LoggedView)
            qDebug() << "wo ri" << deals.size();
        m_views.at(i)->setDealList(deals);
    }
}
