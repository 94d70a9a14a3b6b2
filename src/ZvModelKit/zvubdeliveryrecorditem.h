#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// One application for the delivery of pieces. Column 13 is the page's own: it draws a button there.
class ZVMODELKIT_EXPORT ZvUBDeliveryRecordItem
{
public:
    // Only an application under review can still be cancelled.
    enum State { Unknown = 0, Cancelled = 1, Reviewing = 2, Preparing = 3, Sent = 4, Refused = 5 };

    struct Data {
        QString deliveryId; // what a cancellation names; empty when there is nothing to cancel
        QString orderNumber;
        QString collectionId;
        QString code;
        QString name;
        qint64 quantity = zvub::noValue; // pieces
        qint64 fee = zvub::noValue; // fen
        qint64 time = zvub::noValue; // of the application
        QString consignee;
        QString phone;
        QString address;
        int state = Unknown; // a State

        auto fields() const
        {
            return std::tie(deliveryId, orderNumber, collectionId, code, name, quantity, fee, time,
                            consignee, phone, address, state);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBDeliveryRecordItem();
    explicit ZvUBDeliveryRecordItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBDeliveryRecordItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBDeliveryRecordItem &other) const { return !(*this == other); }

    // The header text of each column.
    static QStringList headerList();

    // The text of a cell; an empty one outside the columns.
    QString displayData(int column) const;

    // A State; another number is shown as missing and cannot be cancelled.
    int state() const { return data().state; }

    QString deliveryId() const { return data().deliveryId; }
    QString orderNumber() const { return data().orderNumber; }
    QString collectionName() const { return data().name; }

    // The text of the quantity, a plain number.
    QString quantity() const { return zvub::quantityText(data().quantity); }

    // The name of a state; "--" for a number that is none.
    static QString stateText(int state);

private:
    using Row = ZvUBRow<Data, 14>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBDeliveryRecordItem, Q_MOVABLE_TYPE);
