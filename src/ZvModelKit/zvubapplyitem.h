#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QString>
#include <QStringList>

#include <tuple>

// One application for a share of a newly issued collection.
class ZVMODELKIT_EXPORT ZvUBApplyItem
{
public:
    enum State { Pending = 0, Granted = 1, Missed = 2, Withdrawn = 3 };

    struct Data {
        QString code;
        QString name;
        qint64 price = zvub::noValue; // fen apiece
        qint64 quantity = zvub::noValue; // pieces applied for
        qint64 allotted = zvub::noValue; // pieces granted; none before the draw
        int state = Pending; // a State
        qint64 time = zvub::noValue; // of the application
        qint64 number = zvub::noValue; // of the application

        auto fields() const
        {
            return std::tie(code, name, price, quantity, allotted, state, time, number);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBApplyItem();
    explicit ZvUBApplyItem(const Data &data);

    const Data &data() const { return m_row->data; }
    bool operator==(const ZvUBApplyItem &other) const
    {
        return m_row.isSameAs(other.m_row) || data() == other.data();
    }
    bool operator!=(const ZvUBApplyItem &other) const { return !(*this == other); }

    // The header text of each column.
    static QStringList headerListForModelUse();

    // The text of a cell; an empty one outside the columns.
    QString displayDataForModelUse(int column) const;

    // The name of a state; "--" for a number that is none.
    static QString stateText(int state);

private:
    using Row = ZvUBRow<Data, 9>;
    ZvUBShared<Row> m_row;
};

Q_DECLARE_TYPEINFO(ZvUBApplyItem, Q_MOVABLE_TYPE);
