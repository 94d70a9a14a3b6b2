#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// One deal of the account.
class ZVMODELKIT_EXPORT ZvUBDealRecordItem
{
public:
    struct Data {
        int direction = 0; // zvub::Direction; 1 is a buy
        QString code;
        QString name;
        qint64 price = zvub::noValue; // fen
        qint64 quantity = zvub::noValue; // pieces
        qint64 fee = zvub::noValue; // fen
        qint64 time = zvub::noValue;
        qint64 number = zvub::noValue; // of the deal

        auto fields() const
        {
            return std::tie(direction, code, name, price, quantity, fee, time, number);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBDealRecordItem();
    explicit ZvUBDealRecordItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBDealRecordItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBDealRecordItem &other) const { return !(*this == other); }

    // The header text of each column.
    static QStringList headerListForModelUse();

    // The text of a cell; an empty one outside the columns.
    QString displayDataForModelUse(int column) const;

    // 1 for a buy, 2 for a sale.
    int direction() const { return data().direction; }

private:
    using Row = ZvUBRow<Data, 9>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBDealRecordItem, Q_MOVABLE_TYPE);
