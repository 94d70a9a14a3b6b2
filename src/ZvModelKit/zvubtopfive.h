#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QList>
#include <QString>

#include <array>
#include <tuple>

// The quote of a collection: five levels a side and the prices that frame them.
//
// Properties: 0 name, 1 code, 2 collection id; price and quantity in pairs, sell 5 to sell 1 from
// 3 to 12, buy 1 to buy 5 from 13 to 22; 23 previous close, 24 latest, 25 change, 26 change rate
// with "%", 27 upper limit, 28 lower limit. 3 to 28 are plain numbers, or "--" without a value.
class ZVMODELKIT_EXPORT ZvUBTopFive
{
public:
    struct Level {
        qint64 price = zvub::noValue; // fen
        qint64 quantity = zvub::noValue; // pieces

        bool operator==(const Level &other) const
        {
            return price == other.price && quantity == other.quantity;
        }
        bool operator!=(const Level &other) const { return !(*this == other); }
    };
    using Levels = std::array<Level, 5>;

    struct Data {
        QString collectionId;
        QString code;
        QString name;
        Levels sells; // the best first, empty levels last
        Levels buys;
        qint64 latest = zvub::noValue; // fen, as all prices
        qint64 previousClose = zvub::noValue;
        qint64 lowerLimit = zvub::noValue;
        qint64 upperLimit = zvub::noValue;

        auto fields() const
        {
            return std::tie(sells, buys, latest, previousClose, lowerLimit, upperLimit,
                            collectionId, code, name);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBTopFive();
    explicit ZvUBTopFive(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBTopFive &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBTopFive &other) const { return !(*this == other); }

    // The text of a property; an empty one outside 0 to 28.
    QString getPropertyString(int property) const { return m_row->text(property); }

    // The price of the fifth level in yuan: an order at this price or a better one is seen in the
    // five levels. An empty level is seen at any price, so it counts as 0 among the buys and as the
    // largest float among the sells.
    float getBuy5Price() const;
    float getSell5Price() const;

    // Five prices a side in yuan, the best first; 0 for an empty level.
    QList<double> buyPrices() const;
    QList<double> sellPrices() const;

    // Yuan and percent; 0 where there is no value.
    double latestPrice() const;
    double change() const;
    double lowerLimitPrice() const;
    double upperLimitPrice() const;
    double referencePrice() const; // the previous close, against which prices are coloured
    double changeRate() const;

private:
    using Row = ZvUBRow<Data, 29>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBTopFive, Q_MOVABLE_TYPE);
