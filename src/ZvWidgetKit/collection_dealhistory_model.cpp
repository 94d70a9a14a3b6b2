#include "ZvWidgetKit/collection_dealhistory_model.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QColor>

#include <utility>

namespace {

// The first column is text, the others are figures.
int alignmentOf(int column)
{
    return int(Qt::AlignVCenter | (column == 0 ? Qt::AlignLeft : Qt::AlignRight));
}

} // namespace

Collection_DealHistory_model::Collection_DealHistory_model(QObject *parent)
    : QAbstractTableModel(parent), m_headers(ZvUBDealItem::headerListForModelUse()),
      m_columnCount(ZvUBDealItem::dataCountForModelUse())
{
}

Collection_DealHistory_model::~Collection_DealHistory_model() = default;

int Collection_DealHistory_model::rowCount(const QModelIndex &) const
{
    return m_deals.size();
}

int Collection_DealHistory_model::columnCount(const QModelIndex &) const
{
    return m_columnCount;
}

QVariant Collection_DealHistory_model::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= m_deals.size())
        return {};
    const int column = index.column();
    const ZvUBDealItem &deal = m_deals.at(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return deal.displayDataForModelUse(column);
    case Qt::ForegroundRole:
        return QColor(static_cast<Qt::GlobalColor>(deal.displayColorIdForModelUse(column)));
    case Qt::TextAlignmentRole:
        return alignmentOf(column);
    default:
        return {};
    }
}

QVariant Collection_DealHistory_model::headerData(int section, Qt::Orientation orientation,
                                                  int role) const
{
    if (orientation == Qt::Vertical || section < 0 || section >= m_headers.size())
        return {};
    switch (role) {
    case Qt::DisplayRole:
        return m_headers.at(section);
    case Qt::TextAlignmentRole:
        return alignmentOf(section);
    case Qt::BackgroundRole:
        return QColor(Qt::black);
    case Qt::ForegroundRole:
        return QColor(Qt::white);
    default:
        return {};
    }
}

void Collection_DealHistory_model::setDealList(QList<ZvUBDealItem> deals)
{
    beginResetModel();
    m_deals = std::move(deals);
    endResetModel();
}
