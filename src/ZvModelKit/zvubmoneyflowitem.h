#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// One movement of money between a bank card and the account.
class ZVMODELKIT_EXPORT ZvUBMoneyFlowItem
{
public:
    enum State { Pending = 0, Done = 1, Failed = 2 };

    struct Data {
        qint64 number = zvub::noValue; // of the movement
        int moneyIn = 0; // not 0 for money in, 0 for money out
        qint64 amount = zvub::noValue; // fen
        qint64 time = zvub::noValue;
        QString note; // such as the bank and the tail of its card
        int state = Done; // a State

        auto fields() const { return std::tie(number, moneyIn, amount, time, note, state); }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBMoneyFlowItem();
    explicit ZvUBMoneyFlowItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBMoneyFlowItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBMoneyFlowItem &other) const { return !(*this == other); }

    // The header text of each column.
    static QStringList headerListForModelUse();

    // The text of a cell; an empty one outside the columns.
    QString displayDataForModelUse(int column) const;

    // Not 0 for money in, 0 for money out.
    int moneyIn() const { return data().moneyIn; }

    // The name of a state; "--" for a number that is none.
    static QString stateText(int state);

private:
    using Row = ZvUBRow<Data, 6>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBMoneyFlowItem, Q_MOVABLE_TYPE);
