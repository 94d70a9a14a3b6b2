#include "ZvModelKit/zvubobject.h"

#include <algorithm>
#include <limits>

namespace {

enum Column {
    RowNumber,
    Code,
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
    CollectionId,
    ColumnCount
};

// The whole number behind each cell: fen, hundredths of a percent or pieces.
using ColumnFigures = std::array<qint64, ColumnCount>;

// Changes may be negative, so the missing figure is one that no arithmetic here gives.
constexpr qint64 missing = std::numeric_limits<qint64>::min();

bool isComposite(const ZvUBObject::Data &data)
{
    return data.collectionId.startsWith(QLatin1Char('-'));
}

qint64 orMissing(qint64 value)
{
    return value < 0 ? missing : value;
}

ColumnFigures figuresOf(const ZvUBObject::Data &data)
{
    ColumnFigures figures;
    figures.fill(missing);
    figures[Latest] = orMissing(data.latest);
    figures[Bid] = orMissing(data.bid);
    figures[Ask] = orMissing(data.ask);
    figures[BidQuantity] = orMissing(data.bidQuantity);
    figures[AskQuantity] = orMissing(data.askQuantity);
    figures[Volume] = orMissing(data.volume);
    figures[Amount] = orMissing(data.amount);
    figures[Open] = orMissing(data.open);
    figures[High] = orMissing(data.high);
    figures[Low] = orMissing(data.low);
    figures[PreviousClose] = orMissing(data.previousClose);
    figures[Listed] = orMissing(data.listed);

    if (data.latest >= 0 && data.previousClose > 0) {
        figures[Change] = data.latest - data.previousClose;
        figures[ChangeRate] = zvub::roundedRatio(figures[Change], data.previousClose, 10000);
    }
    if (data.volume >= 0 && data.listed > 0) {
        figures[TurnoverRate] = zvub::roundedRatio(data.volume, data.listed, 10000);
    }
    // The composite's prices are points of an index: pieces do not multiply them into money.
    if (!isComposite(data)) {
        const qint64 price = data.latest >= 0 ? data.latest : data.previousClose;
        if (price >= 0 && data.listed >= 0) {
            figures[MarketValue] = zvub::product(price, data.listed);
        }
        if (data.volume > 0 && data.amount >= 0) {
            figures[AveragePrice] = zvub::roundedRatio(data.amount, data.volume, 1);
        }
    }
    return figures;
}

const QList<int> &columnsAgainstLast()
{
    static const QList<int> columns{Latest, Bid, Ask, Open, High, Low, AveragePrice};
    return columns;
}

bool isQuantity(int column)
{
    return column == BidQuantity || column == AskQuantity || column == Volume || column == Listed;
}

QString figureText(int column, qint64 figure)
{
    if (figure == missing) {
        return zvub::missingText();
    }
    if (isQuantity(column)) {
        return zvub::quantityText(figure);
    }
    if (column == Amount || column == MarketValue) {
        return zvub::shortMoneyText(figure);
    }
    return zvub::moneyText(figure);
}

float figureValue(int column, qint64 figure)
{
    if (figure == missing) {
        return 0.0F;
    }
    return static_cast<float>(isQuantity(column) ? static_cast<double>(figure)
                                                 : zvub::yuan(figure));
}

// A text that did not change keeps standing on the memory of the row before.
void keepIfEqual(QString &text, const QString &before)
{
    if (text == before) {
        text = before;
    }
}

// 1 for above, 2 for below, 0 for equal or not to be compared.
template <typename Number>
int compareCode(Number value, Number reference)
{
    if (value == reference) {
        return 0;
    }
    return value > reference ? 1 : 2;
}

} // namespace

ZvUBObject::ZvUBObject() : ZvUBObject(zvub::emptyItem<ZvUBObject>()) { }

ZvUBObject::ZvUBObject(const Data &data) : ZvUBObject(makeRow(data, nullptr)) { }

ZvUBObject::ZvUBObject(Row row) : m_row(std::move(row)) { }

ZvUBObject ZvUBObject::updated(const Data &newData) const
{
    return newData == data() ? *this : ZvUBObject(makeRow(newData, &*m_row));
}

ZvUBObject::Row ZvUBObject::makeRow(const Data &data, const Row *previous)
{
    static_assert(FirstFigure == Latest && LastFigure == Listed);
    Row made{data, {}, {}, {}};
    const ColumnFigures figures = figuresOf(data);
    ColumnFigures before;
    if (previous) {
        before = figuresOf(previous->data);
        keepIfEqual(made.data.collectionId, previous->data.collectionId);
        keepIfEqual(made.data.code, previous->data.code);
        keepIfEqual(made.data.name, previous->data.name);
        keepIfEqual(made.data.introduction, previous->data.introduction);
    }
    for (int column = FirstFigure; column <= LastFigure; ++column) {
        const auto at = static_cast<std::size_t>(column);
        made.values[place(column)] = figureValue(column, figures[at]);
        if (previous && figures[at] == before[at]) {
            made.texts[place(column)] = previous->texts[place(column)];
        }
    }
    // Prices of a row are often equal, and then share one text.
    const QList<int> &prices = columnsAgainstLast();
    for (int column : prices) {
        const auto at = static_cast<std::size_t>(column);
        QString &text = made.texts[place(column)];
        const auto isTwin = [&](int other) {
            return figures[static_cast<std::size_t>(other)] == figures[at]
                && !made.texts[place(other)].isNull();
        };
        const auto twin = std::find_if(prices.begin(), prices.end(), isTwin);
        if (text.isNull() && twin != prices.end()) {
            text = made.texts[place(*twin)];
        }
        if (text.isNull()) {
            text = figureText(column, figures[at]);
        }
        if (figures[at] != missing && figures[PreviousClose] != missing) {
            made.againstLast[place(column)]
                = static_cast<qint8>(compareCode(figures[at], figures[PreviousClose]));
        }
    }
    for (int column = FirstFigure; column <= LastFigure; ++column) {
        QString &text = made.texts[place(column)];
        if (text.isNull()) {
            text = figureText(column, figures[static_cast<std::size_t>(column)]);
        }
    }
    return made;
}

int ZvUBObject::dataCountForModelUse()
{
    return ColumnCount;
}

QStringList ZvUBObject::headerListForModelUse()
{
    static const QStringList headers{
        QStringLiteral("序号"),     QStringLiteral("代码"),   QStringLiteral("名称"),
        QStringLiteral("最新"),     QStringLiteral("涨跌"),   QStringLiteral("涨幅%"),
        QStringLiteral("买入价"),   QStringLiteral("卖出价"), QStringLiteral("买量"),
        QStringLiteral("卖量"),     QStringLiteral("成交量"), QStringLiteral("成交额"),
        QStringLiteral("今开"),     QStringLiteral("最高"),   QStringLiteral("最低"),
        QStringLiteral("昨收"),     QStringLiteral("换手%"),  QStringLiteral("市值"),
        QStringLiteral("均价"),     QStringLiteral("发行量"), QStringLiteral("藏品介绍"),
        QStringLiteral("藏品编号"),
    };
    return headers;
}

QList<int> ZvUBObject::ColumnIdsForFloatSort()
{
    static const QList<int> columns{
        Latest, Change, ChangeRate, Bid, Ask,           BidQuantity,  AskQuantity, Volume,
        Amount, Open,   High,       Low, PreviousClose, TurnoverRate, MarketValue, AveragePrice};
    return columns;
}

QList<int> ZvUBObject::avgWidthColumnIDList()
{
    static const QList<int> columns{
        Code,        Latest,        Change,       ChangeRate,  Bid,         Ask,
        BidQuantity, AskQuantity,   Volume,       Amount,      Open,        High,
        Low,         PreviousClose, TurnoverRate, MarketValue, AveragePrice};
    return columns;
}

QList<int> ZvUBObject::columnIdsForWhiteColor()
{
    static const QList<int> columns{PreviousClose, MarketValue};
    return columns;
}

QList<int> ZvUBObject::columnIdsForYellowColor()
{
    static const QList<int> columns{Code,   Name,   BidQuantity, AskQuantity,
                                    Volume, Amount, TurnoverRate};
    return columns;
}

QList<int> ZvUBObject::columnIdsForZhengFuColor()
{
    static const QList<int> columns{Change, ChangeRate};
    return columns;
}

QList<int> ZvUBObject::columnIdsForAdjustColor()
{
    return columnsAgainstLast();
}

QList<int> ZvUBObject::columnIdsForTriangleDecorate()
{
    static const QList<int> columns{ChangeRate};
    return columns;
}

QString ZvUBObject::displayDataForModelUse(int column) const
{
    if (hasFigure(column)) {
        return m_row->texts[place(column)];
    }
    switch (column) {
    case Code:
        return data().code;
    case Name:
        return data().name;
    case Introduction:
        return data().introduction;
    case CollectionId:
        return data().collectionId;
    default:
        return {};
    }
}

int ZvUBObject::resultCompareFloatWithZero(int column) const
{
    // A figure other than zero never rounds to a float of zero.
    return compareCode(editDataForModelUse(column), 0.0F);
}

int ZvUBObject::resultCompareFloatWithLast(int column) const
{
    return hasFigure(column) ? m_row->againstLast[place(column)] : 0;
}

int ZvUBObject::resultCompareIntWithZero(int column) const
{
    return hasFigure(column) && resultCompareFloatWithZero(column) == 0 ? 1 : 0;
}
