#include "ZvWidgetKit/collection_dealhistory_view.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/collection_dealhistory_delegate.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QDebug>
#include <QHeaderView>
#include <QMouseEvent>
#include <QWheelEvent>

#include <utility>

namespace {

constexpr int DirectionColumn = 3;
constexpr int FirstDealLimit = 10;
constexpr int HeaderPixels = 20;
constexpr int RowHeight = 25;
constexpr int SmallHeaderPixels = 14;
constexpr int SmallRowHeight = 16;

// Below a style sheet a font does not reach the viewport by itself, and that is where it is drawn.
void setFontPixels(QHeaderView *header, int pixels)
{
    QFont font = header->font();
    font.setPixelSize(pixels);
    header->setFont(font);
    header->viewport()->setFont(font);
}

} // namespace

Collection_DealHistory_View::Collection_DealHistory_View(QWidget *parent)
    : LateTableView(parent), m_smallMode(false), m_dealLimit(FirstDealLimit)
{
    setItemDelegate(new Collection_DealHistory_Delegate(this));
    setModel(&m_model);
    applyStyle();
}

Collection_DealHistory_View::~Collection_DealHistory_View() = default;

void Collection_DealHistory_View::applyStyle()
{
    verticalHeader()->hide();
    setShowGrid(false);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::NoSelection);
    setFocusPolicy(Qt::NoFocus);
    horizontalHeader()->setSectionResizeMode(QHeaderView::Stretch);
    setColumnHidden(DirectionColumn, true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    setStyleSheet(QStringLiteral("QTableView {background-color: #16181c; border: none;"
                                 "selection-background-color: transparent;}"));
    horizontalHeader()->setStyleSheet(
        QStringLiteral("QHeaderView::section {height:30px;background-color: #16181c;"
                       "border-top: 1px solid #16181c;border-bottom: 1px solid #16181c;}"
                       "QHeaderView{height: 25px;background-color: #16181c;"
                       "border-top: 1px solid #16181c;border-bottom: 1px solid #16181c;}"));
    horizontalHeader()->setHighlightSections(false);
    setFontPixels(horizontalHeader(), HeaderPixels);
    // Left alone, the style sets a least height that depends on the font, and rows are counted by
    // the height that is given here.
    verticalHeader()->setMinimumSectionSize(1);
    verticalHeader()->setDefaultSectionSize(RowHeight);
}

void Collection_DealHistory_View::applySmallStyle()
{
    setFontPixels(horizontalHeader(), SmallHeaderPixels);
    verticalHeader()->setDefaultSectionSize(SmallRowHeight);
    m_smallMode = true;
    horizontalHeader()->setStyleSheet(
        QStringLiteral("QHeaderView::section {height:30px;background-color: #16181c;"
                       "border-top: none;border-bottom:none;border-right:1px solid #161618;"
                       "border-left:none;}"
                       "QHeaderView{height: 25px;background-color: #16181c;"
                       "border-top: 1px solid #161618;border-bottom: 1px solid #161618;}"));
}

void Collection_DealHistory_View::setDealLimit(int limit)
{
    m_dealLimit = limit;
}

void Collection_DealHistory_View::setDealList(QList<ZvUBDealItem> deals)
{
    m_model.setDealList(std::move(deals));
}

void Collection_DealHistory_View::slot_updateLatestDeal(QString collectionID)
{
    QList<ZvUBDealItem> deals
        = ZvServerCache::getZvServerCacheInstance()->getLatestDealList(collectionID);
    const int limit = qMax(0, m_dealLimit);
    if (deals.size() > limit)
        deals = deals.mid(deals.size() - limit);
    setDealList(std::move(deals));
    scrollToBottom();
}

void Collection_DealHistory_View::mouseDoubleClickEvent(QMouseEvent *)
{
    if (!m_smallMode)
        return;
    qDebug() << "double clicked in small deal history view";
    ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_marketDeatil_clicked();
}

void Collection_DealHistory_View::wheelEvent(QWheelEvent *event)
{
    event->ignore();
}
