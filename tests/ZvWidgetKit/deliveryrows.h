#pragma once

#include "ZvModelKit/zvubcapinfo.h"

#include <QList>

namespace zvtest {

// Of a holding of `quantity` pieces, `sellable` can be sold or taken out.
struct Holding {
    int number;
    qint64 quantity;
    qint64 sellable;
    qint64 cost = 100000; // fen
    qint64 latest = 1000;
};

// The holding of a number: its collection is "1007", its code "C7" and its name "藏品7", for the
// number 7.
inline ZvUBCapItem capItem(const Holding &holding)
{
    ZvUBCapItem::Data data;
    data.collectionId = QString::number(1000 + holding.number);
    data.code = QStringLiteral("C%1").arg(holding.number);
    data.name = QStringLiteral("藏品%1").arg(holding.number);
    data.quantity = holding.quantity;
    data.sellable = holding.sellable;
    data.cost = holding.cost;
    data.latest = holding.latest;
    return ZvUBCapItem(data);
}

inline ZvUBCapInfo capOf(const QList<ZvUBCapItem> &items)
{
    ZvUBCapInfo::Data data;
    data.items = items;
    return ZvUBCapInfo(data);
}

inline ZvUBCapInfo capOf(const QList<Holding> &holdings)
{
    QList<ZvUBCapItem> items;
    for (const Holding &holding : holdings)
        items << capItem(holding);
    return capOf(items);
}

} // namespace zvtest
