#include "ZvWidgetKit/collectiontabledelegate.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QImage>
#include <QPainter>
#include <QPixmap>
#include <QPixmapCache>

namespace {

constexpr int TextGap = 3; // between the text's right end and the cell's edge
constexpr int TopShift = 2; // digits stand below the middle of the line

// The picture as a square of `side` pixels. There are two pictures and thousands of cells, so the
// scaled ones are kept; the cache empties itself when the application ends.
QPixmap scaledTriangle(const QVariant &picture, int side)
{
    const QImage image = picture.value<QImage>();
    if (image.isNull())
        return {};
    const QString key = QStringLiteral("zv.triangle.%1.%2").arg(image.cacheKey()).arg(side);
    QPixmap scaled;
    if (!QPixmapCache::find(key, &scaled)) {
        scaled = QPixmap::fromImage(image).scaled(side, side);
        QPixmapCache::insert(key, scaled);
    }
    return scaled;
}

} // namespace

CollectionTableDelegate::CollectionTableDelegate(QObject *parent) : TableCellDelegate(parent) { }

CollectionTableDelegate::~CollectionTableDelegate() = default;

void CollectionTableDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                                    const QModelIndex &index) const
{
    QStyleOptionViewItem cell = withoutFocusFrame(option);
    if (cell.state & QStyle::State_Selected) {
        keepForeground(&cell, index);
        painter->fillRect(
            option.rect,
            QColor(ZvServerConfig::getZvServerConfigInstance()->getStyleOf_MarketTableSelectRow()));
    }

    const QFontMetrics &metrics = option.fontMetrics;
    const QPixmap triangle = scaledTriangle(index.data(Qt::UserRole), metrics.averageCharWidth());
    if (!triangle.isNull()) {
        const int textWidth = metrics.horizontalAdvance(index.data(Qt::DisplayRole).toString());
        const QRect &rect = option.rect;
        const int left = rect.right() + 1 - (textWidth + TextGap) - triangle.width();
        const int top
            = rect.top() + TopShift + (rect.bottom() - rect.top() + 1 - triangle.height()) / 2;
        painter->drawPixmap(left, top, triangle);
    }
    TableCellDelegate::paint(painter, cell, index);
}

QSize CollectionTableDelegate::sizeHint(const QStyleOptionViewItem &option,
                                        const QModelIndex &index) const
{
    return TableCellDelegate::sizeHint(option, index);
}
