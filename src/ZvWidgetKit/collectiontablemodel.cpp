#include "ZvWidgetKit/collectiontablemodel.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/collectioncolumns.h"

#include <QColor>
#include <QTimer>
#include <QVector>

#include <utility>

namespace {

constexpr int FlashMilliseconds = 1000;
constexpr int CodeColumn = 1;
constexpr int NameColumn = 2;
constexpr int IntroductionColumn = 20;
constexpr int CollectionIdColumn = 21;

const QLatin1String NoValue("--");

// Colours travel as shared variants: painting a cell allocates none.
const QVariant &colour(Qt::GlobalColor name)
{
    static const QVariant white = QColor(Qt::white);
    static const QVariant yellow = QColor(Qt::yellow);
    static const QVariant red = QColor(Qt::red);
    static const QVariant green = QColor(Qt::green);
    static const QVariant blue = QColor(Qt::blue);
    switch (name) {
    case Qt::yellow:
        return yellow;
    case Qt::red:
        return red;
    case Qt::green:
        return green;
    case Qt::blue:
        return blue;
    default:
        return white;
    }
}

// Red is up and green is down on this exchange.
const QVariant &colourOfDirection(int comparison)
{
    return colour(comparison == 1 ? Qt::red : comparison == 2 ? Qt::green : Qt::white);
}

int cellAlignment(int column)
{
    if (column <= CodeColumn)
        return int(Qt::AlignHCenter | Qt::AlignVCenter);
    if (column == NameColumn)
        return int(Qt::AlignLeft | Qt::AlignVCenter);
    return int(Qt::AlignRight | Qt::AlignVCenter);
}

} // namespace

CollectionTableModel::CollectionTableModel(QObject *parent)
    : QAbstractTableModel(parent), m_headers(ZvUBObject::headerListForModelUse()),
      m_imageUp(QStringLiteral(":/icons/TriangleUpRed.png")),
      m_imageDown(QStringLiteral(":/icons/TriangleDownGreen.png"))
{
}

CollectionTableModel::~CollectionTableModel() = default;

int CollectionTableModel::rowCount(const QModelIndex &) const
{
    return m_items.size();
}

int CollectionTableModel::columnCount(const QModelIndex &) const
{
    return ZvUBObject::dataCountForModelUse();
}

QVariant CollectionTableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_items.size())
        return {};
    const int column = index.column();
    const ZvUBObject &item = m_items.at(index.row());
    switch (role) {
    case Qt::BackgroundRole:
        return isFlashing(index) ? colour(Qt::blue) : QVariant();
    case Qt::ForegroundRole:
        return foreground(item, column);
    case Qt::TextAlignmentRole:
        return cellAlignment(column);
    case Qt::UserRole:
        return triangle(item, column);
    case Qt::DisplayRole:
        if (column == 0)
            return index.row() + 1;
        return item.displayDataForModelUse(column);
    case Qt::EditRole:
        if (CollectionColumns::all().isNumber(column))
            return item.editDataForModelUse(column);
        return {};
    default:
        return {};
    }
}

QVariant CollectionTableModel::foreground(const ZvUBObject &item, int column) const
{
    if (item.displayDataForModelUse(column) == NoValue)
        return colour(Qt::white);
    switch (CollectionColumns::all().colour(column)) {
    case CollectionColumns::Colour::White:
        return colour(Qt::white);
    case CollectionColumns::Colour::YellowByInt: {
        const bool isYellow = (item.resultCompareIntWithZero(column) & 0xff) == 0;
        return colour(isYellow ? Qt::yellow : Qt::white);
    }
    case CollectionColumns::Colour::SignOfValue:
        return colourOfDirection(item.resultCompareFloatWithZero(column));
    case CollectionColumns::Colour::AgainstLast:
        return colourOfDirection(item.resultCompareFloatWithLast(column));
    case CollectionColumns::Colour::Yellow:
        break;
    }
    return colour(Qt::yellow);
}

QVariant CollectionTableModel::triangle(const ZvUBObject &item, int column) const
{
    if (!CollectionColumns::all().hasTriangle(column))
        return {};
    if (item.displayDataForModelUse(column) == NoValue)
        return QImage();
    switch (item.resultCompareFloatWithZero(column)) {
    case 1:
        return m_imageUp;
    case 2:
        return m_imageDown;
    default:
        return QImage();
    }
}

bool CollectionTableModel::isFlashing(const QModelIndex &index) const
{
    if (m_flashMap.isEmpty() || index.model() != this || index.internalPointer())
        return false;
    return m_flashMap.testBit(index.row() * columnCount() + index.column());
}

QVariant CollectionTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Vertical || section < 0 || section >= m_headers.size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return m_headers.at(section);
    case Qt::TextAlignmentRole:
        return int((section <= NameColumn ? Qt::AlignHCenter : Qt::AlignRight) | Qt::AlignVCenter);
    case Qt::ForegroundRole:
        return QColor(ZvServerConfig::getZvServerConfigInstance()->getStyleOf_MarketTableHeader());
    case Qt::BackgroundRole:
        return QColor(Qt::black);
    default:
        return {};
    }
}

void CollectionTableModel::setMarketList(QList<ZvUBObject> newList)
{
    if (newList.size() != m_items.size()) {
        beginResetModel();
        m_items = std::move(newList);
        // Indexes of the old rows would leave blue cells behind.
        m_flashIndexes.clear();
        m_flashMap.clear();
        endResetModel();
        return;
    }

    collectChanges(newList);
    if (m_flashIndexes.isEmpty())
        return;
    m_items = std::move(newList);

    if (m_emissionWrapper)
        m_emissionWrapper(m_flashIndexes, [this] { announceChanges(); });
    else
        announceChanges();
    QTimer::singleShot(FlashMilliseconds, this, [this] { endFlash(); });
}

void CollectionTableModel::setEmissionWrapper(EmissionWrapper wrapper)
{
    m_emissionWrapper = std::move(wrapper);
}

void CollectionTableModel::collectChanges(const QList<ZvUBObject> &newList)
{
    const QList<int> columns = ZvUBObject::ColumnIdsForFloatSort();
    const int width = columnCount();
    for (int row = 0, count = newList.size(); row < count; ++row) {
        const ZvUBObject &before = m_items.at(row);
        const ZvUBObject &after = newList.at(row);
        if (before.sharesWith(after))
            continue;
        for (const int column : columns) {
            if (before.editDataForModelUse(column) == after.editDataForModelUse(column))
                continue;
            if (m_flashMap.isEmpty())
                m_flashMap.resize(count * width);
            m_flashMap.setBit(row * width + column);
            m_flashIndexes.append(createIndex(row, column));
        }
    }
}

void CollectionTableModel::announceChanges()
{
    static const QVector<int> roles{Qt::EditRole, Qt::DisplayRole, Qt::BackgroundRole};
    const QList<QModelIndex> indexes = m_flashIndexes;
    for (const QModelIndex &index : indexes)
        emit dataChanged(index, index, roles);
}

void CollectionTableModel::endFlash()
{
    static const QVector<int> roles{Qt::BackgroundRole};
    const QList<QModelIndex> ended = std::exchange(m_flashIndexes, {});
    m_flashMap.clear();
    for (const QModelIndex &index : ended)
        emit dataChanged(index, index, roles);
}

QString CollectionTableModel::collectionId(const QModelIndex &index) const
{
    return text(index, CollectionIdColumn);
}

QString CollectionTableModel::introductionUrl(const QModelIndex &index) const
{
    return text(index, IntroductionColumn);
}

QString CollectionTableModel::text(const QModelIndex &index, int column) const
{
    if (!index.isValid())
        return {};
    return data(this->index(index.row(), column), Qt::DisplayRole).toString();
}
