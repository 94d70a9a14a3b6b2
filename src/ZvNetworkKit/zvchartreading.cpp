#include "ZvNetworkKit/zvchartreading.h"

#include "ZvModelKit/zvubvalues.h"
#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvjsonreading.h"

#include <QDate>

#include <limits>

namespace zvread {

using Node = ZvJsonNode;

namespace {

constexpr std::size_t spanBound = 10000; // a market that is opened and closed by hand

const std::vector<Node> &tuple(const Node &node, std::size_t size, const char *key)
{
    const std::vector<Node> &entries = arrayIn(node, key);
    if (entries.size() != size)
        refuse("an entry of another length in", key);
    return entries;
}

const std::vector<Node> &entries(const Node &data, std::size_t most, const char *key)
{
    const std::vector<Node> &list = array(data, key);
    if (list.size() > most)
        refuse("too many entries in", key);
    return list;
}

// Something that is dealt in costs something.
qint64 price(const Node &node, const char *key)
{
    return integerIn(node, key, 1, figureBound);
}

QString day(const Node &node, const char *key)
{
    const QString read = textIn(node, key);
    if (read.size() != 10 || !QDate::fromString(read, Qt::ISODate).isValid())
        refuse("no date", key);
    return read;
}

int session(const Node &data)
{
    return static_cast<int>(integer(data, "session", 0, std::numeric_limits<int>::max()));
}

ZvUBTradingSpan span(const Node &node)
{
    const std::vector<Node> &pair = tuple(node, 2, "spans");
    ZvUBTradingSpan read;
    read.begin = integerIn(pair[0], "spans", 0, figureBound);
    if (pair[1].kind != Node::Null)
        read.end = integerIn(pair[1], "spans", read.begin + 1, figureBound);
    return read;
}

ZvUBMinute minute(const Node &node)
{
    const std::vector<Node> &fields = tuple(node, 4, "minutes");
    ZvUBMinute read;
    read.time = integerIn(fields[0], "minutes", 0, figureBound);
    read.price = zvub::yuan(price(fields[1], "minutes"));
    read.average = zvub::yuan(price(fields[2], "minutes"));
    read.volume = integerIn(fields[3], "minutes", 0, figureBound);
    return read;
}

ZvUBBar bar(const Node &node)
{
    const std::vector<Node> &fields = tuple(node, 7, "bars");
    const qint64 open = price(fields[1], "bars");
    const qint64 high = price(fields[2], "bars");
    const qint64 low = price(fields[3], "bars");
    const qint64 close = price(fields[4], "bars");
    if (low > open || low > close || high < open || high < close)
        refuse("prices out of order in", "bars");
    ZvUBBar read;
    read.day = day(fields[0], "bars");
    read.open = zvub::yuan(open);
    read.high = zvub::yuan(high);
    read.low = zvub::yuan(low);
    read.close = zvub::yuan(close);
    read.volume = integerIn(fields[5], "bars", 0, figureBound);
    read.amount = zvub::yuan(integerIn(fields[6], "bars", 0, figureBound));
    return read;
}

} // namespace

ZvUBTimeLine timeLine(const Node &data)
{
    ZvUBTimeLine read;
    read.collectionId = collectionId(data, "id");
    read.tradingDay = day(member(data, "tradingDay"), "tradingDay");
    read.session = session(data);
    read.previousClose = zvub::yuan(sum(data, "previousClose"));
    for (const Node &entry : entries(data, spanBound, "spans")) {
        const ZvUBTradingSpan next = span(entry);
        if (!read.spans.isEmpty()
            && (read.spans.last().end == 0 || read.spans.last().end > next.begin))
            refuse("out of order", "spans");
        read.spans.append(next);
    }
    const auto &minutes = entries(data, ZvChartFeed::mostMinutes, "minutes");
    read.minutes.reserve(static_cast<int>(minutes.size()));
    for (const Node &entry : minutes) {
        const ZvUBMinute next = minute(entry);
        if (!read.minutes.isEmpty() && read.minutes.last().time >= next.time)
            refuse("out of order", "minutes");
        read.minutes.append(next);
    }
    return read;
}

ZvUBKLine kLine(const Node &data)
{
    ZvUBKLine read;
    read.collectionId = collectionId(data, "id");
    read.session = session(data);
    const auto &bars = entries(data, ZvChartFeed::mostBars, "bars");
    read.bars.reserve(static_cast<int>(bars.size()));
    for (const Node &entry : bars) {
        const ZvUBBar next = bar(entry);
        // Dates of this form stand in the order of their texts.
        if (!read.bars.isEmpty() && read.bars.last().day >= next.day)
            refuse("out of order", "bars");
        read.bars.append(next);
    }
    return read;
}

} // namespace zvread
