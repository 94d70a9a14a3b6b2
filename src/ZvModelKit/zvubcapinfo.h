#pragma once

#include "ZvModelKit/zvmodelkit_export.h"
#include "ZvModelKit/zvubcapitem.h"
#include "ZvModelKit/zvubshared.h"
#include "ZvModelKit/zvubvalues.h"

#include <QHash>
#include <QList>
#include <QString>

#include <tuple>

// Where the account stands: its money in yuan, and its holdings.
class ZVMODELKIT_EXPORT ZvUBCapInfo
{
public:
    struct Data {
        qint64 heldMarketValue = 0; // fen, as all of them
        qint64 profit = 0;
        qint64 availableMoney = 0;
        qint64 frozenMoney = 0;
        qint64 totalAssets = 0;
        QList<ZvUBCapItem> items;

        auto fields() const
        {
            return std::tie(heldMarketValue, profit, availableMoney, frozenMoney, totalAssets,
                            items);
        }
        bool operator==(const Data &other) const { return fields() == other.fields(); }
        bool operator!=(const Data &other) const { return !(*this == other); }
    };

    ZvUBCapInfo();
    explicit ZvUBCapInfo(const Data &data);

    const Data &data() const { return m_index->data; }
    bool operator==(const ZvUBCapInfo &other) const
    {
        return m_index.isSameAs(other.m_index) || data() == other.data();
    }
    bool operator!=(const ZvUBCapInfo &other) const { return !(*this == other); }

    // Yuan.
    double heldMarketValue() const { return zvub::yuan(data().heldMarketValue); }
    double profit() const { return zvub::yuan(data().profit); }
    double availableMoney() const { return zvub::yuan(data().availableMoney); }
    double frozenMoney() const { return zvub::yuan(data().frozenMoney); }
    double totalAssets() const { return zvub::yuan(data().totalAssets); }

    // The holdings, in the server's order.
    QList<ZvUBCapItem> items() const { return data().items; }

    // The holding of a collection's code; an item with quantity 0 where there is none.
    ZvUBCapItem getCapItem(const QString &code) const;

private:
    struct Index {
        Data data;
        QHash<QString, int> byCode;
    };
    static Index makeIndex(const Data &data);

    ZvUBShared<Index> m_index;
};

Q_DECLARE_TYPEINFO(ZvUBCapInfo, Q_MOVABLE_TYPE);
