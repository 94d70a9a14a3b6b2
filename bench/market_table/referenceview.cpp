#include "referenceview.h"

#include "ZvNetworkKit/zvserverconfig.h"

#include <QHeaderView>
#include <QPainter>
#include <QStyledItemDelegate>

namespace {

class TriangleDelegate : public QStyledItemDelegate
{
public:
    void paint(QPainter *painter, const QStyleOptionViewItem &option,
               const QModelIndex &index) const override
    {
        QStyleOptionViewItem cell = option;
        cell.state &= ~QStyle::State_HasFocus;
        if (cell.state & QStyle::State_Selected) {
            const QVariant foreground = index.data(Qt::ForegroundRole);
            if (foreground.canConvert<QColor>())
                cell.palette.setBrush(QPalette::All, QPalette::HighlightedText,
                                      QBrush(foreground.value<QColor>()));
            painter->fillRect(option.rect,
                              QColor(ZvServerConfig::getZvServerConfigInstance()
                                         ->getStyleOf_MarketTableSelectRow()));
        }
        const QPixmap picture = index.data(Qt::UserRole).value<QPixmap>();
        if (!picture.isNull()) {
            const int side = option.fontMetrics.averageCharWidth();
            const QPixmap scaled = picture.scaled(side, side);
            const int width = option.fontMetrics.horizontalAdvance(index.data().toString());
            const QRect &rect = option.rect;
            painter->drawPixmap(
                rect.right() + 1 - (width + 3) - scaled.width(),
                rect.top() + 2 + (rect.bottom() - rect.top() + 1 - scaled.height()) / 2, scaled);
        }
        QStyledItemDelegate::paint(painter, cell, index);
    }
};

} // namespace

ReferenceView::ReferenceView(QTableView &other, Cells cells)
{
    if (cells == Triangles) {
        m_delegate = std::make_unique<TriangleDelegate>();
        setItemDelegate(m_delegate.get());
    }
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setShowGrid(false);
    setPalette(other.palette());
    setFont(other.font());
    setModel(other.model());
    horizontalHeader()->hide();
    verticalHeader()->hide();
    verticalHeader()->setDefaultSectionSize(other.verticalHeader()->defaultSectionSize());
    for (int column = 0; column < model()->columnCount(); ++column) {
        setColumnHidden(column, other.isColumnHidden(column));
        if (!isColumnHidden(column))
            setColumnWidth(column, other.columnWidth(column));
    }
    setSelectionBehavior(other.selectionBehavior());
    setSelectionMode(other.selectionMode());
    resize(other.viewport()->size());
    show();
}

ReferenceView::~ReferenceView() = default;
