#include "ZvChartKit/sessionaxis.h"

#include <algorithm>

namespace zvplot {

namespace {
constexpr qint64 minute = 60 * 1000;
} // namespace

SessionAxis::SessionAxis(const ZvUBTimeLine &line)
{
    for (const ZvUBTradingSpan &span : line.spans) {
        if (span.end == 0)
            addOpen(span.begin, line.minutes);
        else if (span.end > span.begin)
            add(span.begin,
                static_cast<int>(
                    std::min<qint64>((span.end - span.begin + minute - 1) / minute, mostMinutes)));
    }
    if (line.spans.isEmpty() && !line.minutes.isEmpty())
        addOpen(line.minutes.first().time, line.minutes);
}

int SessionAxis::placeOf(qint64 time) const
{
    const auto after = std::upper_bound(
        m_stretches.begin(), m_stretches.end(), time,
        [](qint64 sought, const Stretch &stretch) { return sought < stretch.begin; });
    if (after == m_stretches.begin())
        return -1;
    const Stretch &stretch = *(after - 1);
    const qint64 within = (time - stretch.begin) / minute;
    if (within < stretch.minutes)
        return stretch.place + static_cast<int>(within);
    return after == m_stretches.end() ? -1 : stretch.place + stretch.minutes - 1;
}

qint64 SessionAxis::timeOf(int place) const
{
    if (m_stretches.empty())
        return 0;
    const auto after = std::upper_bound(
        m_stretches.begin(), m_stretches.end(), place,
        [](int sought, const Stretch &stretch) { return sought < stretch.place; });
    const Stretch &stretch = after == m_stretches.begin() ? *after : *(after - 1);
    return stretch.begin + (place - stretch.place) * minute;
}

bool SessionAxis::operator==(const SessionAxis &other) const
{
    return std::equal(m_stretches.begin(), m_stretches.end(), other.m_stretches.begin(),
                      other.m_stretches.end(), [](const Stretch &one, const Stretch &two) {
                          return one.begin == two.begin && one.minutes == two.minutes;
                      });
}

void SessionAxis::add(qint64 begin, int minutes)
{
    const int taken = std::min(minutes, mostMinutes - m_places);
    if (taken <= 0)
        return;
    m_stretches.push_back({begin, taken, m_places});
    m_places += taken;
}

void SessionAxis::addOpen(qint64 begin, const QVector<ZvUBMinute> &minutes)
{
    const auto first
        = std::find_if(minutes.begin(), minutes.end(),
                       [begin](const ZvUBMinute &dealt) { return dealt.time + minute > begin; });
    if (first == minutes.end()) {
        add(begin - begin % minute, shortestOpen);
        return;
    }
    qint64 from = first->time;
    qint64 last = from;
    const int before = m_places;
    for (auto dealt = first; dealt != minutes.end(); ++dealt) {
        if (dealt->time - last > longestPause * minute) {
            add(from, static_cast<int>((last - from) / minute) + 1);
            from = dealt->time;
        }
        last = std::max(last, dealt->time);
    }
    const int taken = m_places - before;
    const int needed = static_cast<int>((last - from) / minute) + 1;
    const int room = (taken + needed + growth - 1) / growth * growth;
    add(from, std::max(room, shortestOpen) - taken);
}

} // namespace zvplot
