#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// One deal of a collection, as the latest-deals list shows it: time, price, quantity, and the side
// that came second, which the list hides.
class ZVMODELKIT_EXPORT ZvUBDealItem
{
public:
    struct Data {
        qint64 sequence = 0; // counts the deals of a collection
        qint64 time = zvub::noValue;
        qint64 price = zvub::noValue; // fen
        qint64 quantity = zvub::noValue; // pieces
        int direction = 0; // zvub::Direction of the side that came second; 0 for neither
        qint64 previousClose = zvub::noValue; // fen; the price that colours the deal's

        auto fields() const
        {
            return std::tie(sequence, time, price, quantity, direction, previousClose);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBDealItem();
    explicit ZvUBDealItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBDealItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBDealItem &other) const { return !(*this == other); }

    // The number of columns, hidden ones included.
    static int dataCountForModelUse();

    // The header text of each column.
    static QStringList headerListForModelUse();

    // The text of a cell; an empty one outside the columns.
    QString displayDataForModelUse(int column) const;

    // The number of a Qt::GlobalColor. The price is red above the previous close and green below
    // it; quantity and side are red when the buyer came second and green when the seller did; all
    // else is white.
    int displayColorIdForModelUse(int column) const;

private:
    using Row = ZvUBRow<Data, 4>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBDealItem, Q_MOVABLE_TYPE);
