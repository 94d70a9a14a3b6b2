#pragma once

#include "ZvModelKit/zvubobject.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QHash>
#include <QList>
#include <QString>

// The rows of a market with everything that the pages look up in them, made once where the rows
// are made. Copies share.
class ZVNETWORKKIT_EXPORT ZvMarketList
{
public:
    ZvMarketList() = default;
    explicit ZvMarketList(const QList<ZvUBObject> &rows);

    // New rows of the same collections in the same order, as a tick brings them: shares `indexOf`,
    // which costs more to make and to free than all else here.
    ZvMarketList withRows(const QList<ZvUBObject> &newRows) const;

    QList<ZvUBObject> rows; // in the server's order, the composite not among them
    QHash<int, QList<ZvUBObject>> byType; // the same rows in the same order
    QHash<QString, int> indexOf; // collection id to index in `rows`

    qint64 quantity = 0; // pieces dealt; all three sums stop at the ends of qint64
    qint64 amount = 0; // fen dealt
    qint64 marketValue = 0; // fen: listed pieces at their latest price, or their previous close

private:
    void sortAndSum();
};
