#include "ZvWidgetKit/collection_tableview.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collectiontabledelegate.h"
#include "ZvWidgetKit/openaddress.h"
#include "ZvWidgetKit/scrollbarstyle.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDebug>
#include <QDesktopWidget>
#include <QHeaderView>
#include <QIcon>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QTimer>
#include <QWheelEvent>

#include <utility>

namespace {

constexpr int PendingMilliseconds = 1000;
constexpr int CodeColumn = 1;
constexpr int NameColumn = 2;
constexpr int NameWidth = 250;
constexpr int HiddenColumns[] = {0, 19, 20, 21};
constexpr int WheelNotch = 120; // eighths of a degree

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

// Whether a cell looks otherwise although its number is the same.
bool differsBesideNumbers(const ZvUBObject &before, const ZvUBObject &after)
{
    if (before.sharesWith(after))
        return false;
    for (int column = 0, count = ZvUBObject::dataCountForModelUse(); column < count; ++column) {
        if (before.editDataForModelUse(column) != after.editDataForModelUse(column))
            continue;
        if (before.displayDataForModelUse(column) != after.displayDataForModelUse(column)
            || before.resultCompareFloatWithLast(column)
                != after.resultCompareFloatWithLast(column))
            return true;
    }
    return false;
}

} // namespace

Collection_TableView::Collection_TableView(QWidget *parent)
    : LateTableView(parent), m_isOptionView(false), m_pendingTimer(new QTimer(this))
{
    m_pendingTimer->start(PendingMilliseconds);
    setItemDelegate(new CollectionTableDelegate);
    m_proxy.setSourceModel(&m_model);
    m_proxy.setDynamicSortFilter(true);
    m_model.setEmissionWrapper(
        [this](const QList<QModelIndex> &changed, const CollectionTableModel::Emission &emission) {
            m_proxy.keepOrder(changed, emission);
        });
    setModel(&m_proxy);
    applyStyle();
    createConnections();
}

Collection_TableView::~Collection_TableView()
{
    // The delegate has no parent, and a view does not own its delegate.
    delete qobject_cast<CollectionTableDelegate *>(itemDelegate());
}

void Collection_TableView::applyStyle()
{
    applyColumnWidths();

    setSortingEnabled(true);
    sortByColumn(CodeColumn, Qt::AscendingOrder);
    setSelectionBehavior(QAbstractItemView::SelectRows);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setShowGrid(false);
    for (const int column : HiddenColumns)
        setColumnHidden(column, true);

    setStyleSheet(QStringLiteral("QTableView {background-color: rgb(21,21,21);border: none;"
                                 "selection-background-color: transparent;}"));
    QHeaderView *header = horizontalHeader();
    header->setStyleSheet(
        QStringLiteral("QHeaderView::section {height:30px;background-color: #181a1e;"
                       "border-top: none;border-bottom:none;border-right:1px solid #181a1e;"
                       "border-left:none;}"
                       "QHeaderView{height: 30px;background-color: #181a1e;"
                       "border-top: 1px solid #181a1e;border-bottom: 1px solid #181a1e;}"));
    header->setHighlightSections(false);
    header->setSectionResizeMode(QHeaderView::Interactive);

    QFont tableFont = font();
    tableFont.setPixelSize(16);
    header->setFont(tableFont);
    // Below a style sheet a font does not reach the viewport by itself, and that is where it is
    // drawn.
    header->viewport()->setFont(tableFont);
    setFont(tableFont);
    verticalHeader()->hide();

    applyScrollBarStyle(this);
}

// Shares the width of a wide screen among the columns; on a narrow one they only shrink a little.
void Collection_TableView::applyColumnWidths()
{
    constexpr int otherWidths = 300;
    constexpr int narrowest = 71;
    const QList<int> columns = ZvUBObject::avgWidthColumnIDList();
    const int nameWidth = columnWidth(NameColumn);
    const int available = QApplication::desktop()->availableGeometry(this).width();
    const int average = (available - otherWidths) / qMax(1, columns.size());
    if (average < narrowest) {
        for (const int column : columns)
            setColumnWidth(column, columnWidth(column) - 10);
        setColumnWidth(NameColumn, nameWidth);
    } else {
        for (const int column : columns)
            setColumnWidth(column, average);
        setColumnWidth(CodeColumn, average + 30);
        setColumnWidth(NameColumn, NameWidth);
    }
}

void Collection_TableView::createConnections()
{
    connect(pool(), &ZvWidgetSignalSLotPool::signal_showCollectionInfo_clicked, this,
            &Collection_TableView::showCollectionInfo);
    connect(pool(), &ZvWidgetSignalSLotPool::signal_global_colletionId_changed, this,
            &Collection_TableView::selectCollectionRow);
    connect(m_pendingTimer, &QTimer::timeout, this, &Collection_TableView::pendingTimerTimeout);
}

void Collection_TableView::setIsOptionView(bool isOptionView)
{
    m_isOptionView = isOptionView;
}

void Collection_TableView::setMarketList(QList<ZvUBObject> list)
{
    if (isHidden())
        return;

    const QList<ZvUBObject> before = rowsOnScreen();
    m_model.setMarketList(std::move(list));
    // A sorted table lays itself out later, and would paint the same frame once before and once
    // after.
    executeDelayedItemsLayout();
    repaintWhatNoNumberTells(before);

    if (selectionModel()->hasSelection() || m_model.rowCount() == 0)
        return;
    selectRow(0);
    const QString id = currentCollectionId();
    if (!id.isEmpty())
        pool()->slot_collectionTableView_clicked(id);
}

QString Collection_TableView::currentCollectionId() const
{
    return m_model.collectionId(m_proxy.mapToSource(selectionModel()->currentIndex()));
}

QString Collection_TableView::collectionIdOfProxyRow(int row) const
{
    if (row < 0 || row >= m_proxy.rowCount())
        return {};
    return m_model.collectionId(m_proxy.mapToSource(m_proxy.index(row, 0)));
}

QString Collection_TableView::collectionIdAt(QPoint position) const
{
    return m_model.collectionId(m_proxy.mapToSource(indexAt(position)));
}

QList<ZvUBObject> Collection_TableView::rowsOnScreen() const
{
    QList<ZvUBObject> rows;
    const int first = rowAt(0);
    if (first < 0)
        return rows;
    const int last = rowAt(viewport()->height() - 1);
    for (int row = first, end = last < 0 ? m_proxy.rowCount() - 1 : last; row <= end; ++row)
        rows.append(m_model.item(m_proxy.mapToSource(m_proxy.index(row, 0)).row()));
    return rows;
}

// The model announces numbers alone. A row that comes to hold another collection changes its name
// too, a figure that appears may be zero like the one that was missing, and a price takes another
// colour with the previous close: such rows are painted once more.
void Collection_TableView::repaintWhatNoNumberTells(const QList<ZvUBObject> &before)
{
    const QList<ZvUBObject> after = rowsOnScreen();
    if (after.size() != before.size()) {
        viewport()->update();
        return;
    }
    const int first = rowAt(0);
    for (int i = 0; i < after.size(); ++i) {
        if (!differsBesideNumbers(before.at(i), after.at(i)))
            continue;
        const int top = rowViewportPosition(first + i);
        viewport()->update(0, top, viewport()->width(), rowHeight(first + i));
    }
}

void Collection_TableView::selectCollectionRow(QString id)
{
    // A selection made by this view comes back through the pool and ends here.
    if (id.isEmpty() || id == currentCollectionId())
        return;
    for (int row = 0, count = m_proxy.rowCount(); row < count; ++row) {
        if (collectionIdOfProxyRow(row) == id) {
            selectRow(row);
            return;
        }
    }
}

void Collection_TableView::mousePressEvent(QMouseEvent *event)
{
    // The pool hears of the click before the selection moves.
    const QString id = collectionIdAt(event->localPos().toPoint());
    if (!id.isEmpty())
        pool()->slot_collectionTableView_clicked(id);
    LateTableView::mousePressEvent(event);
}

void Collection_TableView::mouseDoubleClickEvent(QMouseEvent *event)
{
    // The press before it has already chosen the collection.
    if (!collectionIdAt(event->localPos().toPoint()).isEmpty())
        pool()->slot_collectionTimeLine_action();
    LateTableView::mouseDoubleClickEvent(event);
}

QModelIndex Collection_TableView::selectedSourceIndex() const
{
    const QModelIndexList rows = selectionModel()->selectedRows(0);
    qDebug() << "indexList:" << rows.count();
    return rows.isEmpty() ? QModelIndex() : m_proxy.mapToSource(rows.first());
}

void Collection_TableView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return) {
        const QModelIndex selected = selectedSourceIndex();
        if (!selected.isValid())
            return;
        if (!m_model.collectionId(selected).isEmpty())
            pool()->slot_collectionTimeLine_action();
    }
    LateTableView::keyPressEvent(event);
}

void Collection_TableView::keyReleaseEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Down) {
        const QModelIndex selected = selectedSourceIndex();
        if (!selected.isValid())
            return;
        const QString id = m_model.collectionId(selected);
        if (!id.isEmpty()) {
            qDebug().noquote() << QStringLiteral("-----KeyReleaseEvent: %1-------").arg(id);
            // A held key walks through the rows; the collection changes once, at its end.
            if (!event->isAutoRepeat())
                pool()->slot_collectionTableView_clicked(id);
        }
    }
    LateTableView::keyReleaseEvent(event);
}

void Collection_TableView::wheelEvent(QWheelEvent *event)
{
    selectRowByWheel(event);
    if (isRowHidden(-1))
        QAbstractScrollArea::wheelEvent(event);
    else
        event->accept();
}

// The wheel moves the selection at once and the current collection by the timer, since each change
// of collection makes the engine fetch its data.
void Collection_TableView::selectRowByWheel(const QWheelEvent *event)
{
    // One number for the turn and its direction: angleDelta() has two, and differs under Alt.
    QT_WARNING_PUSH
    QT_WARNING_DISABLE_DEPRECATED
    const bool isVertical = event->orientation() == Qt::Vertical;
    const int delta = event->delta();
    QT_WARNING_POP

    const QModelIndex current = currentIndex();
    if (!isVertical || !current.isValid())
        return;
    // The part of a notch that a fine wheel reports counts as downward, whatever its sign.
    const int step = delta < WheelNotch ? 1 : -1;
    const int end = step > 0 ? m_proxy.rowCount() : -1;
    for (int row = current.row() + step; row != end; row += step) {
        if (isRowHidden(row))
            continue;
        selectRow(row);
        m_pendingCollectionId = currentCollectionId();
        m_pendingServer = cache()->currentServer();
        return;
    }
}

void Collection_TableView::pendingTimerTimeout()
{
    // On another server the collection is none.
    const QString id = std::exchange(m_pendingCollectionId, QString());
    if (!id.isEmpty() && m_pendingServer == cache()->currentServer())
        pool()->slot_collectionTableView_clicked(id);
}

void Collection_TableView::contextMenuEvent(QContextMenuEvent *event)
{
    const QString id = collectionIdAt(event->pos());
    if (id.isEmpty())
        return;

    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    const QKeySequence noShortcut;
    QAction *introduction = menu->addAction(QIcon(QStringLiteral(":/icons/menu/introduction.png")),
                                            QStringLiteral("藏品介绍"), this,
                                            &Collection_TableView::showCollectionInfo, noShortcut);
    QAction *option = m_isOptionView
        ? menu->addAction(QIcon(QStringLiteral(":/icons/menu/favourite_remove.png")),
                          QStringLiteral("删除自选"), this, &Collection_TableView::removeOption,
                          noShortcut)
        : menu->addAction(QIcon(QStringLiteral(":/icons/menu/favourite_add.png")),
                          QStringLiteral("添加自选"), this, &Collection_TableView::addOption,
                          noShortcut);
    if (id.toInt() < 0) {
        // The composite of the market has no introduction and cannot be a favourite.
        introduction->setEnabled(false);
        option->setEnabled(false);
    }
    menu->addSeparator();
    const auto addChart = [menu](const QString &picture, const QString &text,
                                 void (ZvWidgetSignalSLotPool::*signal)()) {
        connect(menu->addAction(QIcon(picture), text), &QAction::triggered, pool(), signal);
    };
    addChart(QStringLiteral(":/icons/menu/timeline.png"), QStringLiteral("分时图"),
             &ZvWidgetSignalSLotPool::signal_collectionTimeLine_action);
    addChart(QStringLiteral(":/icons/menu/day.png"), QStringLiteral("日K图"),
             &ZvWidgetSignalSLotPool::signal_collectionKDayLine_action);
    addChart(QStringLiteral(":/icons/menu/week.png"), QStringLiteral("周K图"),
             &ZvWidgetSignalSLotPool::signal_collectionKWeekLine_action);
    addChart(QStringLiteral(":/icons/menu/month.png"), QStringLiteral("月K图"),
             &ZvWidgetSignalSLotPool::signal_collectionKMonthLine_action);
    menu->addSeparator();
    menu->popup(viewport()->mapToGlobal(event->pos()));
}

void Collection_TableView::showCollectionInfo()
{
    const QModelIndexList selected = selectedIndexes();
    if (selected.isEmpty())
        return;
    const QString address = m_model.introductionUrl(m_proxy.mapToSource(selected.first()));
    if (!address.isEmpty())
        openAddress(address);
}

void Collection_TableView::addOption()
{
    const QString id = currentCollectionId();
    if (id.isEmpty() || id.toInt() < 0)
        return;
    if (ZvServerEngine::getZvServerEngineInstance()->isLogged) {
        ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_addOption(id);
        return;
    }
    QStringList ids = cache()->getMarketListOption(QString());
    ids.removeAll(id);
    ids.append(id);
    cache()->setMarketListOption(ids, QString());
}

void Collection_TableView::removeOption()
{
    const QString id = currentCollectionId();
    if (id.isEmpty())
        return;
    if (ZvServerEngine::getZvServerEngineInstance()->isLogged) {
        ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_removeOption(id);
        return;
    }
    QStringList ids = cache()->getMarketListOption(QString());
    ids.removeAll(id);
    cache()->setMarketListOption(ids, QString());
}
