#include "ZvNetworkKit/zvmarketlist.h"

#include <algorithm>

ZvMarketList::ZvMarketList(const QList<ZvUBObject> &marketRows) : rows(marketRows)
{
    indexOf.reserve(rows.size());
    for (int i = 0; i < rows.size(); ++i) {
        const QString &id = rows.at(i).data().collectionId;
        if (!indexOf.contains(id))
            indexOf.insert(id, i);
    }
    sortAndSum();
}

ZvMarketList ZvMarketList::withRows(const QList<ZvUBObject> &newRows) const
{
    Q_ASSERT(newRows.size() == rows.size());
    ZvMarketList list;
    list.rows = newRows;
    list.indexOf = indexOf;
    list.sortAndSum();
    return list;
}

void ZvMarketList::sortAndSum()
{
    const qint64 nothing = 0;
    for (const ZvUBObject &row : qAsConst(rows)) {
        const ZvUBObject::Data &data = row.data();
        byType[data.type].append(row);
        quantity = zvub::sum(quantity, std::max(nothing, data.volume));
        amount = zvub::sum(amount, std::max(nothing, data.amount));
        const qint64 price = data.latest > 0 ? data.latest : std::max(nothing, data.previousClose);
        marketValue = zvub::sum(marketValue, zvub::product(price, std::max(nothing, data.listed)));
    }
}
