#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QList>
#include <QString>
#include <QStringList>

#include <array>
#include <tuple>

// A row of the market table: one collection, or the composite of a market.
//
// Columns: 0 the row number (no text here), 1 code, 2 name, 3 latest, 4 change, 5 change rate,
// 6 bid, 7 ask, 8 bid quantity, 9 ask quantity, 10 volume, 11 amount, 12 open, 13 high, 14 low,
// 15 previous close, 16 turnover rate, 17 market value, 18 average price, 19 listed quantity,
// 20 introduction address, 21 collection id.
//
// A figure that does not exist is shown as "--" and has the numeric value 0.
class ZVMODELKIT_EXPORT ZvUBObject
{
public:
    struct Data {
        QString collectionId; // negative for the composite
        QString code;
        QString name;
        QString introduction; // address of the page about the collection, or empty
        int type = 0; // id of the collection's type; shown nowhere
        qint64 latest = zvub::noValue; // fen, as all prices; index hundredths in the composite
        qint64 previousClose = zvub::noValue;
        qint64 open = zvub::noValue;
        qint64 high = zvub::noValue;
        qint64 low = zvub::noValue;
        qint64 bid = zvub::noValue;
        qint64 ask = zvub::noValue;
        qint64 bidQuantity = zvub::noValue; // pieces
        qint64 askQuantity = zvub::noValue;
        qint64 volume = zvub::noValue; // pieces dealt since the session's start
        qint64 amount = zvub::noValue; // fen dealt since the session's start
        qint64 listed = zvub::noValue; // pieces issued

        auto fields() const
        {
            return std::tie(latest, volume, amount, bid, ask, bidQuantity, askQuantity, high, low,
                            open, previousClose, listed, type, collectionId, code, name,
                            introduction);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBObject();

    // Works out change, rates, market value and average, and formats all texts.
    explicit ZvUBObject(const Data &data);

    const Data &data() const { return m_row->data; }

    // The row for `newData` in place of this one, as ZvUBObject(newData) would make it: only what
    // differs is formatted, all other texts are shared. Equal data give this very row.
    ZvUBObject updated(const Data &newData) const;

    // True when both stand on the same memory, as copies do.
    bool sharesWith(const ZvUBObject &other) const { return m_row.isSameAs(other.m_row); }

    bool operator==(const ZvUBObject &other) const
    {
        return sharesWith(other) || data() == other.data();
    }
    bool operator!=(const ZvUBObject &other) const { return !(*this == other); }

    // The number of columns, hidden ones included.
    static int dataCountForModelUse();

    // The header text of each column.
    static QStringList headerListForModelUse();

    // Column numbers. The lists are shared: taking one copies a pointer.
    static QList<int> ColumnIdsForFloatSort(); // sorted by value; all visible numbers
    static QList<int> avgWidthColumnIDList(); // share the screen's width
    static QList<int> columnIdsForWhiteColor();
    static QList<int> columnIdsForYellowColor(); // by resultCompareIntWithZero()
    static QList<int> columnIdsForZhengFuColor(); // by resultCompareFloatWithZero()
    static QList<int> columnIdsForAdjustColor(); // by resultCompareFloatWithLast()
    static QList<int> columnIdsForTriangleDecorate();

    // The text of a cell; "--" where the cell has no value, an empty text outside the columns.
    QString displayDataForModelUse(int column) const;

    // The number behind a cell, made a float once: yuan, percent or pieces. 0 where the cell has no
    // value or the column no number. Above 16,777,216 neighbouring numbers may be one float.
    float editDataForModelUse(int column) const
    {
        return hasFigure(column) ? m_row->values[place(column)] : 0.0F;
    }

    // 1 when the number of the cell is above zero, 2 when below, 0 when neither or missing.
    int resultCompareFloatWithZero(int column) const;

    // The same code for the price of the cell against the previous close, compared in fen; 0 for a
    // column that holds no price.
    int resultCompareFloatWithLast(int column) const;

    // 0 for a yellow cell, 1 for a white one: code and name are yellow, a number unless it is zero.
    int resultCompareIntWithZero(int column) const;

private:
    // The columns from here to there hold figures; the texts of the others stand in the data.
    static constexpr int FirstFigure = 3;
    static constexpr int LastFigure = 19;
    static constexpr std::size_t Figures = LastFigure - FirstFigure + 1;

    static constexpr bool hasFigure(int column)
    {
        return column >= FirstFigure && column <= LastFigure;
    }
    static constexpr std::size_t place(int column)
    {
        return static_cast<std::size_t>(column - FirstFigure);
    }

    struct Row {
        Data data;
        std::array<QString, Figures> texts;
        std::array<float, Figures> values;
        std::array<qint8, Figures> againstLast; // the codes of resultCompareFloatWithLast()
    };

    static Row makeRow(const Data &data, const Row *previous);
    explicit ZvUBObject(Row row);

    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBObject, Q_MOVABLE_TYPE);
