#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// One order of the account, open or done. Columns 0, 10 and 13 are for machines and hidden.
class ZVMODELKIT_EXPORT ZvUBEntrustItem
{
public:
    enum State {
        Unknown = 0,
        Open = 1,
        PartlyFilled = 2,
        Filled = 3,
        Withdrawn = 4, // nothing dealt
        PartlyWithdrawn = 5, // some dealt, the rest taken back
        Refused = 6
    };

    struct Data {
        int orderNumber = 0; // unique within a server
        int direction = 0; // zvub::Direction; 1 is a buy
        QString collectionId;
        QString code;
        QString name;
        QString key; // made by the client that sent the order
        qint64 price = zvub::noValue; // fen
        qint64 quantity = zvub::noValue; // pieces ordered
        qint64 filled = 0; // pieces dealt
        qint64 withdrawn = 0; // pieces taken back
        qint64 amount = 0; // fen dealt, without fees
        qint64 fee = 0; // fen paid so far
        qint64 frozen = 0; // fen held for what is open
        int state = Unknown; // a State
        qint64 time = zvub::noValue; // of the order

        auto fields() const
        {
            return std::tie(orderNumber, direction, collectionId, code, name, key, price, quantity,
                            filled, withdrawn, amount, fee, frozen, state, time);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBEntrustItem();
    explicit ZvUBEntrustItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBEntrustItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBEntrustItem &other) const { return !(*this == other); }

    // The header text of each column.
    static QStringList headerList();

    // The text of a cell; an empty one outside the columns.
    QString displayData(int column) const;

    // 1 for a buy, 2 for a sale.
    int direction() const { return data().direction; }

    // Pieces that are still open; 0 for an order that is done.
    qint64 openQuantity() const;
    static qint64 openQuantityOf(const Data &data);

    // The name of a state; "--" for a number that is none.
    static QString stateText(int state);

private:
    using Row = ZvUBRow<Data, 16>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBEntrustItem, Q_MOVABLE_TYPE);
