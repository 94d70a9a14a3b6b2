#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// The day's figures of a collection beside its five levels.
//
// Properties: 0 average price, 1 turnover rate with "%", 2 open, 3 volume, 4 high, 5 balance of
// orders with "%", 6 low, 7 amount, 8 pieces bought by the side that came second, 9 pieces sold by
// it. 0, 2, 4, 6 and the quantities are plain numbers or "--".
class ZVMODELKIT_EXPORT ZvUBProItem
{
public:
    struct Data {
        QString collectionId; // negative for the composite, which has no average price
        qint64 open = zvub::noValue; // fen
        qint64 high = zvub::noValue; // fen
        qint64 low = zvub::noValue; // fen
        qint64 volume = 0; // pieces dealt since the session's start
        qint64 amount = 0; // fen dealt since the session's start
        qint64 listed = zvub::noValue; // pieces issued
        qint64 outer = 0; // pieces dealt where the buyer came second
        qint64 inner = 0; // pieces dealt where the seller came second
        qint64 buyQuantity = 0; // pieces of the five buy levels
        qint64 sellQuantity = 0; // pieces of the five sell levels

        auto fields() const
        {
            return std::tie(collectionId, open, high, low, volume, amount, listed, outer, inner,
                            buyQuantity, sellQuantity);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBProItem();
    explicit ZvUBProItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBProItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBProItem &other) const { return !(*this == other); }

    // The text of a property; an empty one outside 0 to 9.
    QString getPropertyString(int property) const;

private:
    using Row = ZvUBRow<Data, 10>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBProItem, Q_MOVABLE_TYPE);
