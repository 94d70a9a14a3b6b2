#include "client/namecolumn.h"

#include <QEvent>
#include <QFontMetrics>
#include <QHeaderView>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QTableView>

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
    return QObject::eventFilter(watched, event);
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
