#include "ZvNetworkKit/zvchartmerge.h"

#include "ZvNetworkKit/zvchartfeed.h"

#include <QDate>

#include <algorithm>
#include <optional>

namespace zvchart {

namespace {

// A number that is the same for all days of a period and rises with time.
qint64 periodOf(const ZvUBBar &bar, Period period)
{
    const QDate day = QDate::fromString(bar.day, Qt::ISODate);
    switch (period) {
    case Period::Week:
        return day.toJulianDay() / 7; // the number of a Monday is a multiple of 7
    case Period::Month:
        return qint64(day.year()) * 12 + day.month();
    case Period::Day:
        break;
    }
    return day.toJulianDay();
}

std::optional<Laid> outOfSession(int held, int told)
{
    if (held == told)
        return std::nullopt;
    return Laid{told < held ? Laid::Older : Laid::Gap, 0};
}

// Puts `tail` at `held` from `index` on; gives the first place that differs.
template <typename Entry>
int replaceFrom(QVector<Entry> &held, int index, const QVector<Entry> &tail)
{
    const auto differing
        = std::mismatch(held.cbegin() + index, held.cend(), tail.cbegin(), tail.cend());
    const int same = static_cast<int>(differing.second - tail.cbegin());
    const bool isSame = same == tail.size() && index + same == held.size();
    if (!isSame) {
        held.resize(index + same);
        held += tail.mid(same);
    }
    return index + same;
}

} // namespace

Laid layTail(ZvUBTimeLine &held, const ZvUBTimeLine &tail)
{
    if (const auto other = outOfSession(held.session, tail.session))
        return *other;
    const bool isMet = !tail.minutes.isEmpty()
        && tail.minutes.first().time == held.minutes.last().time
        && tail.tradingDay == held.tradingDay && tail.previousClose == held.previousClose;
    // A session without an end is not held from its first minute on.
    const int mostHeld = 2 * ZvChartFeed::mostMinutes;
    if (!isMet || held.minutes.size() + tail.minutes.size() > mostHeld)
        return {Laid::Gap, 0};

    const bool hasOtherHours = tail.spans != held.spans;
    held.spans = tail.spans;
    const int last = held.minutes.size() - 1;
    const int first = replaceFrom(held.minutes, last, tail.minutes);
    if (first < held.minutes.size())
        return {Laid::Grown, first};
    return hasOtherHours ? Laid{Laid::Grown, last} : Laid{Laid::Same, 0};
}

Laid layTail(ZvUBKLine &held, const ZvUBKLine &tail, Period period)
{
    if (const auto other = outOfSession(held.session, tail.session))
        return *other;
    if (tail.bars.isEmpty())
        return {Laid::Gap, 0};
    const qint64 first = periodOf(tail.bars.first(), period);
    int index = held.bars.size() - 1;
    while (index >= 0 && periodOf(held.bars.at(index), period) > first)
        --index;
    if (index < 0 || index + tail.bars.size() < held.bars.size())
        return {Laid::Gap, 0};
    for (int i = index; i < held.bars.size(); ++i) {
        if (periodOf(held.bars.at(i), period) != periodOf(tail.bars.at(i - index), period))
            return {Laid::Gap, 0};
    }
    const int changed = replaceFrom(held.bars, index, tail.bars);
    if (changed == held.bars.size())
        return {Laid::Same, 0};
    return {Laid::Grown, changed};
}

int layFront(ZvUBKLine &held, const ZvUBKLine &front, Period period)
{
    const qint64 first = periodOf(held.bars.first(), period);
    int count = front.bars.size();
    while (count > 0 && periodOf(front.bars.at(count - 1), period) == first)
        --count;
    if (count > 0 && periodOf(front.bars.at(count - 1), period) > first)
        return -1;
    held.bars = front.bars.mid(0, count) + held.bars;
    return count;
}

} // namespace zvchart
