#include "client/namecolumn.h"

#include "BreltWidgetToolKit/brelttooltip.h"

#include <QEvent>
#include <QFontMetrics>
#include <QHeaderView>
#include <QHelpEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QStyle>
#include <QTableView>
#include <QToolTip>

namespace {

constexpr int nameColumn = 2;
constexpr int cellMargins = 10;

} // namespace

NameColumn::NameColumn(QTableView *table)
    : QObject(table), m_table(table),
      m_leastWidth(table->horizontalHeader()->sectionSize(nameColumn))
{
    connect(table->model(), &QAbstractItemModel::modelReset, this, [this] {
        measure();
        fit();
    });
    connect(table->horizontalHeader(), &QHeaderView::sectionResized, this, [this](int column) {
        m_isUsers = m_isUsers || (column == nameColumn && !m_isFitting);
    });
    table->viewport()->installEventFilter(this);
}

bool NameColumn::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::Resize)
        fit();
    if (event->type() == QEvent::ToolTip)
        return tellName(*static_cast<QHelpEvent *>(event));
    return QObject::eventFilter(watched, event);
}

// True where the mouse rests on a name: a tip says it in full where the column cuts it.
bool NameColumn::tellName(const QHelpEvent &event) const
{
    const QModelIndex index = m_table->indexAt(event.pos());
    if (!index.isValid() || index.column() != nameColumn)
        return false;
    const QRect cell = m_table->visualRect(index);
    const QString name = index.data().toString();
    const int margin = m_table->style()->pixelMetric(QStyle::PM_FocusFrameHMargin) + 1;
    const bool isCut = m_table->fontMetrics().horizontalAdvance(name) + 2 * margin > cell.width();
    // An empty text takes away the tip of a cell before.
    QToolTip::showText(event.globalPos(), isCut ? brelt::plainToolTip(name) : QString(),
                       m_table->viewport(), cell);
    return true;
}

void NameColumn::measure()
{
    const QAbstractItemModel *model = m_table->model();
    const QFontMetrics metrics = m_table->fontMetrics();
    m_wantedWidth = 0;
    for (int row = 0, count = model->rowCount(); row < count; ++row) {
        const QString name = model->index(row, nameColumn).data().toString();
        m_wantedWidth = qMax(m_wantedWidth, metrics.horizontalAdvance(name) + cellMargins);
    }
}

void NameColumn::fit()
{
    if (m_isUsers || m_isFitting || m_wantedWidth == 0)
        return;
    const QScopedValueRollback<bool> rollback(m_isFitting, true);
    QHeaderView *header = m_table->horizontalHeader();
    const int width = header->sectionSize(nameColumn);
    // The room of the vertical bar is never given away, whether it is there yet or not.
    const int room = m_table->maximumViewportSize().width()
        - m_table->verticalScrollBar()->sizeHint().width() - (header->length() - width);
    const int fittingWidth = qMax(m_leastWidth, qMin(m_wantedWidth, room));
    if (fittingWidth != width)
        header->resizeSection(nameColumn, fittingWidth);
}
