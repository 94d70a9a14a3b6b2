#include "stocktable.h"

#include <QColor>
#include <QHeaderView>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>

namespace {

// Columns of ZvUBObject.
enum {
    Code = 1,
    Name,
    Latest,
    Change,
    ChangeRate,
    Bid,
    Ask,
    BidQuantity,
    AskQuantity,
    Volume,
    Amount,
    Open,
    High,
    Low,
    PreviousClose,
    TurnoverRate,
    MarketValue,
    AveragePrice,
    Listed,
    Introduction,
    CollectionId
};

qint64 figure(const ZvUBObject::Data &row, int column)
{
    switch (column) {
    case Latest:
        return row.latest;
    case Change:
        return row.latest - row.previousClose;
    case ChangeRate:
        return zvub::roundedRatio(row.latest - row.previousClose, row.previousClose, 10000);
    case Bid:
        return row.bid;
    case Ask:
        return row.ask;
    case BidQuantity:
        return row.bidQuantity;
    case AskQuantity:
        return row.askQuantity;
    case Volume:
        return row.volume;
    case Amount:
        return row.amount;
    case Open:
        return row.open;
    case High:
        return row.high;
    case Low:
        return row.low;
    case PreviousClose:
        return row.previousClose;
    case TurnoverRate:
        return zvub::roundedRatio(row.volume, row.listed, 10000);
    case MarketValue:
        return row.latest * row.listed;
    case AveragePrice:
        return zvub::roundedRatio(row.amount, row.volume, 1);
    case Listed:
        return row.listed;
    default:
        return 0;
    }
}

bool isQuantity(int column)
{
    return column == BidQuantity || column == AskQuantity || column == Volume || column == Listed;
}

QString text(const ZvUBObject::Data &row, int column)
{
    switch (column) {
    case Code:
        return row.code;
    case Name:
        return row.name;
    case Introduction:
        return row.introduction;
    case CollectionId:
        return row.collectionId;
    case Amount:
    case MarketValue:
        return zvub::shortMoneyText(figure(row, column));
    default:
        return isQuantity(column) ? zvub::quantityText(figure(row, column))
                                  : zvub::moneyText(figure(row, column));
    }
}

float number(const ZvUBObject::Data &row, int column)
{
    const qint64 value = figure(row, column);
    return isQuantity(column) ? static_cast<float>(value) : static_cast<float>(zvub::yuan(value));
}

QColor colour(const ZvUBObject::Data &row, int column)
{
    qint64 direction = 0;
    if (column == Change || column == ChangeRate)
        direction = row.latest - row.previousClose;
    else if (ZvUBObject::columnIdsForAdjustColor().contains(column))
        direction = figure(row, column) - row.previousClose;
    else if (column != PreviousClose && column != MarketValue)
        return Qt::yellow;
    return direction > 0 ? Qt::red : direction < 0 ? Qt::green : Qt::white;
}

std::vector<ZvUBObject::Data> rowsOf(const QByteArray &body)
{
    const QJsonObject root = QJsonDocument::fromJson(body).object();
    const QJsonArray entries
        = root.value(QLatin1String("data")).toObject().value(QLatin1String("rows")).toArray();
    std::vector<ZvUBObject::Data> rows;
    rows.reserve(static_cast<std::size_t>(entries.size()));
    for (const QJsonValue &entry : entries) {
        const QJsonObject object = entry.toObject();
        const auto number = [&object](const char *key) {
            return static_cast<qint64>(object.value(QLatin1String(key)).toDouble());
        };
        const auto string
            = [&object](const char *key) { return object.value(QLatin1String(key)).toString(); };
        ZvUBObject::Data row;
        row.collectionId = string("id");
        row.code = string("code");
        row.name = string("name");
        row.introduction = string("introduction");
        row.type = static_cast<int>(number("type"));
        row.listed = number("listed");
        row.latest = number("latest");
        row.previousClose = number("previousClose");
        row.open = number("open");
        row.high = number("high");
        row.low = number("low");
        row.bid = number("bid");
        row.ask = number("ask");
        row.bidQuantity = number("bidQuantity");
        row.askQuantity = number("askQuantity");
        row.volume = number("volume");
        row.amount = number("amount");
        rows.push_back(row);
    }
    return rows;
}

} // namespace

int StockModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int StockModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : ZvUBObject::dataCountForModelUse();
}

QVariant StockModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const ZvUBObject::Data &row = m_rows[static_cast<std::size_t>(index.row())];
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        return column == 0 ? QVariant(index.row() + 1) : QVariant(text(row, column));
    case Qt::EditRole:
        return column > Name && column < Introduction ? QVariant(number(row, column))
                                                      : QVariant(text(row, column));
    case Qt::ForegroundRole:
        return colour(row, column);
    case Qt::TextAlignmentRole:
        return int((column <= Code       ? Qt::AlignHCenter
                        : column == Name ? Qt::AlignLeft
                                         : Qt::AlignRight)
                   | Qt::AlignVCenter);
    default:
        return {};
    }
}

QVariant StockModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return ZvUBObject::headerListForModelUse().value(section);
    return {};
}

void StockModel::setRows(std::vector<ZvUBObject::Data> rows)
{
    if (rows.size() != m_rows.size()) {
        beginResetModel();
        m_rows = std::move(rows);
        endResetModel();
        return;
    }
    const std::vector<ZvUBObject::Data> before = std::exchange(m_rows, std::move(rows));
    const QList<int> columns = ZvUBObject::ColumnIdsForFloatSort();
    for (std::size_t row = 0; row < m_rows.size(); ++row) {
        for (const int column : columns) {
            if (figure(before[row], column) == figure(m_rows[row], column))
                continue;
            const QModelIndex cell = index(static_cast<int>(row), column);
            emit dataChanged(cell, cell);
        }
    }
}

StockTable::StockTable(QSize size, int sortColumn)
{
    m_proxy.setSourceModel(&m_model);
    m_proxy.setSortRole(Qt::EditRole);
    m_proxy.setDynamicSortFilter(true);
    m_view.setModel(&m_proxy);
    m_view.setStyleSheet(QStringLiteral("QTableView {background-color: rgb(21,21,21);border: none;"
                                        "selection-background-color: rgb(40,40,60);}"));
    m_view.setSelectionBehavior(QAbstractItemView::SelectRows);
    m_view.setSelectionMode(QAbstractItemView::SingleSelection);
    m_view.setShowGrid(false);
    m_view.verticalHeader()->hide();
    QFont font = m_view.font();
    font.setPixelSize(16);
    m_view.setFont(font);
    m_view.setSortingEnabled(true);
    m_view.sortByColumn(sortColumn, Qt::AscendingOrder);
    for (const int column : {0, 19, 20, 21})
        m_view.setColumnHidden(column, true);
    m_view.resize(size);
    m_view.show();
}

Cost StockTable::take(const QByteArray &body, double *parsing)
{
    const PaintCounter paints(m_view.viewport());
    Cost cost;
    const Stopwatch watch;
    std::vector<ZvUBObject::Data> rows = rowsOf(body);
    *parsing = watch.cpu();
    m_model.setRows(std::move(rows));
    cost.settled = watch.cpu();
    turnUntilQuiet();
    cost.painted = watch.cpu();
    cost.wall = watch.wall();
    cost.paints = paints.count();
    return cost;
}
