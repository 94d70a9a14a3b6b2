#include "ZvModelKit/zvubgatherinfo.h"

ZvUBGatherInfo::ZvUBGatherInfo() : ZvUBGatherInfo(zvub::emptyItem<ZvUBGatherInfo>()) { }

ZvUBGatherInfo::ZvUBGatherInfo(const Data &data) : m_data(data) { }

ZvUBGatherInfo::Data ZvUBGatherInfo::sumOf(const QList<ZvUBGatherItem> &items)
{
    Data total;
    total.items = items;
    total.kindCount = items.size();
    for (const ZvUBGatherItem &item : items) {
        const ZvUBGatherItem::Data &part = item.data();
        total.buyQuantity = zvub::sum(total.buyQuantity, part.buyQuantity);
        total.buyFee = zvub::sum(total.buyFee, part.buyFee);
        total.sellQuantity = zvub::sum(total.sellQuantity, part.sellQuantity);
        total.sellFee = zvub::sum(total.sellFee, part.sellFee);
        total.sellProfit = zvub::sum(total.sellProfit, part.sellProfit);
    }
    total.totalQuantity = zvub::sum(total.buyQuantity, total.sellQuantity);
    total.totalFee = zvub::sum(total.buyFee, total.sellFee);
    total.positionChange = zvub::difference(total.buyQuantity, total.sellQuantity);
    return total;
}
