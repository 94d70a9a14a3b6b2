#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// One holding of the account: how many pieces, what they cost and what they are worth.
//
// Columns that pages read: 0 code, 1 name, 3 sellable quantity, 8 profit, 9 profit rate, 10 the
// collection id. There are 12 headers and 13 texts: a page that puts a column of its own in front
// of the last one shows text 12 under the last header, so texts 11 and 12 are the same.
class ZVMODELKIT_EXPORT ZvUBCapItem
{
public:
    struct Data {
        QString collectionId;
        QString code;
        QString name;
        qint64 quantity = 0; // pieces held, frozen ones included
        qint64 sellable = 0; // pieces that may be sold or delivered
        qint64 cost = 0; // fen paid for the pieces held, fees included
        qint64 latest = zvub::noValue; // fen; the price that values the holding

        auto fields() const
        {
            return std::tie(collectionId, code, name, quantity, sellable, cost, latest);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBCapItem();
    explicit ZvUBCapItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBCapItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBCapItem &other) const { return !(*this == other); }

    // The header text of each column.
    static QStringList headerListForModelUse();

    // The text of a cell; an empty one outside the columns.
    QString displayDataForModelUse(int column) const;

    QString collectionId() const { return data().collectionId; }

    // Pieces held and pieces that may be sold, held at the ends of int. An item without a holding,
    // as a look-up of an unknown code gives, has 0 of both.
    int quantity() const { return zvub::cappedInt(data().quantity); }
    int sellableQuantity() const { return zvub::cappedInt(data().sellable); }

    // Fen that the pieces held are worth; their cost where no price is known.
    qint64 marketValue() const;

    // Yuan above (or, negative, below) the cost; 0 without a price.
    double getProfit() const;

    // Percent of the cost, as column 9 shows it; 0 without a price or a cost.
    double getProfit_rate() const;

private:
    using Row = ZvUBRow<Data, 13>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBCapItem, Q_MOVABLE_TYPE);
