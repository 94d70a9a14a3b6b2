#include "detailfigures.h"

namespace zvtest {

ZvUBTopFive::Data quoteData(const QString &id)
{
    ZvUBTopFive::Data data;
    data.collectionId = id;
    data.code = QStringLiteral("600137");
    data.name = QStringLiteral("庚申猴票");
    for (int level = 0; level < 5; ++level) {
        data.sells[std::size_t(level)] = {10003 + level, 31 + level};
        data.buys[std::size_t(level)] = {10001 - level, 51 + level};
    }
    data.latest = 10002;
    data.previousClose = 10000;
    data.lowerLimit = 9000;
    data.upperLimit = 11000;
    return data;
}

ZvUBProItem::Data dayData(const QString &id)
{
    ZvUBProItem::Data data;
    data.collectionId = id;
    data.open = 10010;
    data.high = 10900;
    data.low = 9100;
    data.volume = 700;
    data.amount = 7007000;
    data.listed = 100000;
    data.outer = 400;
    data.inner = 300;
    data.buyQuantity = 265;
    data.sellQuantity = 165;
    return data;
}

ZvUBTopFive::Data longestQuoteData(const QString &id)
{
    ZvUBTopFive::Data data = quoteData(id);
    for (std::size_t level = 0; level < 5; ++level) {
        data.sells[level] = {13107199, 9999999999};
        data.buys[level] = {13107199, 9999999999};
    }
    data.latest = 13107199;
    data.previousClose = 1;
    data.upperLimit = 13107199;
    return data;
}

ZvUBProItem::Data longestDayData(const QString &id)
{
    ZvUBProItem::Data data = dayData(id);
    data.open = data.high = data.low = 13107199;
    data.volume = 99999999999;
    data.amount = 900000000000000000;
    data.outer = data.inner = 99999999999;
    data.listed = 1000000000;
    data.sellQuantity = 0;
    return data;
}

} // namespace zvtest
