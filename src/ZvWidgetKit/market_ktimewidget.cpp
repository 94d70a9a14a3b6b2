#include "ZvWidgetKit/market_ktimewidget.h"

#include "ZvChartKit/zv_collectioncharts.h"
#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_detailwidget.h"
#include "ZvWidgetKit/widgetbackground.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>
#include <QVBoxLayout>
#include <QWheelEvent>

#include <utility>

namespace {

constexpr int TitleHeight = 30;
constexpr int WheelMilliseconds = 1000;
constexpr int WheelNotch = 120; // in eighths of a degree

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

// Where the current collection stands in the server's list of all collections; negative where it is
// not in it, as the composite is not.
struct Standing {
    QStringList ids = ZvServerCache::getZvServerCacheInstance()->getCurrentBriefInfo().getIDList();
    int position
        = ids.indexOf(ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID());

    bool isLast() const { return position == ids.size() - 1; }
};

} // namespace

Market_KTimeWidget::Market_KTimeWidget(QWidget *parent)
    : QWidget(parent), m_titleWidget(new QWidget),
      m_titleLabel(new QLabel(QStringLiteral("藏品名称与编号"))),
      m_detailWidget(new Collection_DetailWidget), m_charts(new Zv_CollectionCharts),
      m_wheelTimer(new QTimer(this))
{
    layOut();
    setBackground(this, QColor(0x16, 0x18, 0x1c));
    createConnections();
    m_wheelTimer->start(WheelMilliseconds);
}

Market_KTimeWidget::~Market_KTimeWidget() = default;

void Market_KTimeWidget::layOut()
{
    auto *title = new QHBoxLayout(m_titleWidget);
    title->setContentsMargins(0, 0, 0, 0);
    title->setSpacing(0);
    title->addSpacing(20);
    title->addWidget(m_titleLabel);
    title->addStretch(1);
    m_titleWidget->setFixedHeight(TitleHeight);

    auto *left = new QVBoxLayout;
    left->setContentsMargins(0, 0, 0, 0);
    left->setSpacing(0);
    left->addWidget(m_titleWidget);
    left->addWidget(m_charts);

    auto *page = new QHBoxLayout(this);
    page->setContentsMargins(1, 1, 1, 1);
    page->setSpacing(1);
    page->addLayout(left);
    page->addWidget(m_detailWidget);
    m_titleWidget->hide();
}

void Market_KTimeWidget::createConnections()
{
    connect(pool(), &ZvWidgetSignalSLotPool::signal_pageup_clicked, this,
            &Market_KTimeWidget::slot_beforeCollection);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_pagedown_clicked, this,
            &Market_KTimeWidget::slot_nextCollection);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_wheelOnChart_clicked, this,
            &Market_KTimeWidget::wheelChanged);
    connect(m_wheelTimer, &QTimer::timeout, this, &Market_KTimeWidget::timer_wheelCard_timeout);
}

void Market_KTimeWidget::changeToPage_timeChart()
{
    m_charts->changeToPage_timeChart();
}

void Market_KTimeWidget::changeToPage_kline_day()
{
    m_charts->changeToPage_kline_day();
}

void Market_KTimeWidget::changeToPage_kline_week()
{
    m_charts->changeToPage_kline_week();
}

void Market_KTimeWidget::changeToPage_kline_month()
{
    m_charts->changeToPage_kline_month();
}

void Market_KTimeWidget::slot_nextCollection()
{
    if (isHidden())
        return;
    const Standing standing;
    if (standing.position < 0 || standing.isLast())
        return;
    pool()->slot_collectionTableView_clicked(standing.ids.at(standing.position + 1));
}

void Market_KTimeWidget::slot_beforeCollection()
{
    if (isHidden())
        return;
    const Standing standing;
    if (standing.position <= 0)
        return;
    // Readers of logs know these two lines as they are, numbers and all.
    qDebug("src/ZvWidgetKit/market_ktimewidget slot_beforeCollection 157 wxk1");
    pool()->slot_collectionTableView_clicked(standing.ids.at(standing.position - 1));
    qDebug("src/ZvWidgetKit/market_ktimewidget slot_beforeCollection 159 wxk2");
}

// However far the wheel turned, the target is the neighbour, and until the timer fires a further
// notch points at the same one.
void Market_KTimeWidget::wheelChanged(int degrees)
{
    const int steps = degrees / WheelNotch;
    const Standing standing;
    int target = standing.position;
    if (standing.position < 0)
        return;
    if (steps > 0 && standing.position != 0)
        --target;
    else if (steps < 0 && !standing.isLast())
        ++target;
    else
        return;
    const QString id = standing.ids.at(target);
    if (!id.isEmpty())
        m_wheelCollectionId = id;
}

void Market_KTimeWidget::wheelEvent(QWheelEvent *event)
{
    // One number for the turn in either direction: angleDelta() has two.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    wheelChanged(event->delta());
    QT_WARNING_POP
    event->accept();
}

void Market_KTimeWidget::timer_wheelCard_timeout()
{
    // Whoever hears of the collection may take this page away. The list may be that of another
    // server by now.
    const QString id = std::exchange(m_wheelCollectionId, QString());
    if (!id.isEmpty() && Standing().ids.contains(id))
        pool()->slot_collectionTableView_clicked(id);
}
