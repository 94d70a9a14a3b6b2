#include "equality.h"

#include "market.h"
#include "referenceview.h"

#include "ZvWidgetKit/collection_tableview.h"

#include <QImage>
#include <QItemSelectionModel>
#include <QScrollBar>

#include <algorithm>
#include <numeric>

namespace {

constexpr int IdColumn = 21;
constexpr int mostFailures = 20;

QString textOf(const QAbstractItemModel &model, int row, int column)
{
    return model.index(row, column).data().toString();
}

} // namespace

Equality::Equality(const Market &market, int sortColumn)
    : m_market(market), m_sortColumn(sortColumn), m_order(static_cast<std::size_t>(market.size()))
{
    std::iota(m_order.begin(), m_order.end(), 0);
    advance();
}

void Equality::fail(const QString &sentence)
{
    if (m_failures.size() < mostFailures)
        m_failures.append(sentence);
}

double Equality::number(int row) const
{
    return ZvUBObject(m_market.row(row)).editDataForModelUse(m_sortColumn);
}

void Equality::advance()
{
    std::vector<double> numbers;
    numbers.reserve(m_order.size());
    for (int row = 0; row < m_market.size(); ++row)
        numbers.push_back(number(row));
    std::stable_sort(m_order.begin(), m_order.end(), [&numbers](int left, int right) {
        return numbers[static_cast<std::size_t>(left)] < numbers[static_cast<std::size_t>(right)];
    });
}

void Equality::select(Collection_TableView &view)
{
    view.selectRow(7);
    m_selectedId = view.currentCollectionId();
    m_scrolledTo = view.verticalScrollBar()->value();
}

bool Equality::isSorted(const QAbstractItemModel &shown) const
{
    for (int row = 1; row < shown.rowCount(); ++row) {
        if (shown.index(row, m_sortColumn).data(Qt::EditRole).toFloat()
            < shown.index(row - 1, m_sortColumn).data(Qt::EditRole).toFloat())
            return false;
    }
    return true;
}

void Equality::check(const Collection_TableView &view, const QAbstractItemModel &stockRows)
{
    advance();
    const QAbstractItemModel &shown = *view.model();
    const QString tick = QStringLiteral("version %1: ").arg(m_market.version());
    if (shown.rowCount() != m_market.size()) {
        fail(tick + QStringLiteral("%1 rows").arg(shown.rowCount()));
        return;
    }
    if (!isSorted(shown))
        fail(tick + QStringLiteral("not sorted"));
    for (int row = 0; row < shown.rowCount(); ++row) {
        const int source = m_order[static_cast<std::size_t>(row)];
        if (textOf(shown, row, IdColumn) != m_market.row(source).collectionId) {
            fail(tick + QStringLiteral("row %1 holds another collection").arg(row));
            break;
        }
        for (int column = 1; column < shown.columnCount(); ++column) {
            const QString text = textOf(shown, row, column);
            const QString due = textOf(stockRows, source, column);
            if (text != due)
                fail(tick
                     + QStringLiteral("row %1, column %2: \"%3\" in place of \"%4\"")
                           .arg(row)
                           .arg(column)
                           .arg(text, due));
        }
    }
    const QModelIndexList selected = view.selectionModel()->selectedRows();
    if (selected.size() != 1 || textOf(shown, selected.first().row(), IdColumn) != m_selectedId
        || view.currentCollectionId() != m_selectedId)
        fail(tick + QStringLiteral("the selection has moved"));
    if (view.verticalScrollBar()->value() != m_scrolledTo)
        fail(tick + QStringLiteral("the table has scrolled"));
}

void Equality::checkFrame(Collection_TableView &view, const QString &state)
{
    ReferenceView reference(view, ReferenceView::Triangles);
    reference.setSelectionModel(view.selectionModel());
    // A widget with a style sheet is grabbed with an alpha channel.
    const auto frameOf = [](QTableView &shown) {
        return shown.viewport()->grab().toImage().convertToFormat(QImage::Format_ARGB32);
    };
    const QImage ours = frameOf(view);
    const QImage due = frameOf(reference);
    if (ours == due)
        return;
    int pixels = 0;
    QPoint first(-1, -1);
    for (int y = 0; y < qMin(ours.height(), due.height()); ++y) {
        for (int x = 0; x < qMin(ours.width(), due.width()); ++x) {
            if (ours.pixel(x, y) != due.pixel(x, y) && pixels++ == 0)
                first = QPoint(x, y);
        }
    }
    fail(QStringLiteral("%1: %2 pixels differ, the first at %3,%4 (%5x%6 and %7x%8)")
             .arg(state)
             .arg(pixels)
             .arg(first.x())
             .arg(first.y())
             .arg(ours.width())
             .arg(ours.height())
             .arg(due.width())
             .arg(due.height()));
}
