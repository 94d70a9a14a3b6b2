#include "ZvNetworkKit/zvmarketlist.h"

#include <algorithm>

ZvMarketList::ZvMarketList(const QList<ZvUBObject> &marketRows) : rows(marketRows)
{
    const qint64 nothing = 0;
    indexOf.reserve(rows.size());
    for (int i = 0; i < rows.size(); ++i) {
        const ZvUBObject &row = rows.at(i);
        const ZvUBObject::Data &data = row.data();
        byType[data.type].append(row);
        if (!indexOf.contains(data.collectionId))
            indexOf.insert(data.collectionId, i);

        quantity = zvub::sum(quantity, std::max(nothing, data.volume));
        amount = zvub::sum(amount, std::max(nothing, data.amount));
        const qint64 price = data.latest > 0 ? data.latest : std::max(nothing, data.previousClose);
        marketValue = zvub::sum(marketValue, zvub::product(price, std::max(nothing, data.listed)));
    }
}
