#include "exchange/store/bars.h"

#include "exchange/store/calendar.h"

#include <algorithm>

namespace zvx {
namespace {

/// The same number for all days of one span.
std::int64_t spanOf(TradingDay day, BarSpan span)
{
    constexpr std::int64_t mondayBeforeEpoch = 3; // days before 1970-01-01
    switch (span) {
    case BarSpan::Week:
        return (dayNumber(day) + mondayBeforeEpoch) / 7;
    case BarSpan::Month:
        return day.value() / 100;
    case BarSpan::Day:
        break;
    }
    return day.value();
}

template <class Amount>
Amount capped(Amount a, Amount b)
{
    return Amount(std::min(a.value() + b.value(), kAmountBound));
}

void join(Bar &bar, const Bar &later)
{
    bar.day = later.day;
    bar.high = std::max(bar.high, later.high);
    bar.low = std::min(bar.low, later.low);
    bar.close = later.close;
    bar.volume = capped(bar.volume, later.volume);
    bar.amount = capped(bar.amount, later.amount);
}

} // namespace

std::vector<Bar> folded(const std::vector<Bar> &bars, BarSpan span)
{
    std::vector<Bar> spans;
    std::int64_t last = 0;
    for (const Bar &bar : bars) {
        const std::int64_t current = spanOf(bar.day, span);
        if (!spans.empty() && current == last)
            join(spans.back(), bar);
        else
            spans.push_back(bar);
        last = current;
    }
    return spans;
}

void keepNewest(std::vector<Bar> &bars, const std::optional<TradingDay> &before, std::size_t count)
{
    if (before)
        bars.erase(std::lower_bound(bars.begin(), bars.end(), *before,
                                    [](const Bar &bar, TradingDay day) { return bar.day < day; }),
                   bars.end());
    if (bars.size() > count)
        bars.erase(bars.begin(), bars.end() - static_cast<std::ptrdiff_t>(count));
}

} // namespace zvx
