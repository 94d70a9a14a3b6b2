#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// The deals of the account in one collection, summed. Column 12, the collection id, is hidden.
class ZVMODELKIT_EXPORT ZvUBGatherItem
{
public:
    struct Data {
        QString collectionId;
        QString code;
        QString name;
        qint64 buyQuantity = 0; // pieces
        qint64 buyAmount = 0; // fen, without fees
        qint64 buyFee = 0; // fen
        qint64 sellQuantity = 0; // pieces
        qint64 sellAmount = 0; // fen, without fees
        qint64 sellFee = 0; // fen
        qint64 sellProfit = 0; // fen won, or negative, lost by the sales

        auto fields() const
        {
            return std::tie(collectionId, code, name, buyQuantity, buyAmount, buyFee, sellQuantity,
                            sellAmount, sellFee, sellProfit);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBGatherItem();
    explicit ZvUBGatherItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBGatherItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBGatherItem &other) const { return !(*this == other); }

    // The number of columns, hidden ones included.
    static int dataCountForModelUse();

    // The header text of each column.
    static QStringList headerListForModelUse();

    // The text of a cell; an empty one outside the columns.
    QString displayDataForModelUse(int column) const;

    QString collectionId() const { return data().collectionId; }

    // Pieces bought less pieces sold, held at the ends of int.
    int positionChange() const;

    // Yuan won, or negative, lost by the sales.
    double sellProfit() const { return zvub::yuan(data().sellProfit); }

private:
    using Row = ZvUBRow<Data, 13>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBGatherItem, Q_MOVABLE_TYPE);
