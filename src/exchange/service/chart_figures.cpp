#include "exchange/service/chart_figures.h"

#include "exchange/store/marketreader.h"
#include "exchange/store/minutes.h"

#include <algorithm>

namespace zvx {

namespace {

/// What a piece cost on average. Sums that stopped at their bound no longer fit each other.
Fen averagePrice(std::int64_t amount, std::int64_t volume, Fen price)
{
    if (amount <= 0 || volume <= 0)
        return price;
    const auto average
        = static_cast<std::int64_t>((Wide(amount) * 2 + volume) / (Wide(volume) * 2));
    return Fen(std::clamp<std::int64_t>(average, 1, kPriceBound - 1));
}

TimeMs minuteEnd(TimeMs at)
{
    return minuteOf(TimeMs(at.value() + kMinuteMs - 1));
}

} // namespace

std::vector<MinuteFigures> minuteFigures(const SessionMinutes &session)
{
    // What the session came to after its last minute is known, so the sums of the minutes that were
    // not read are never needed.
    std::int64_t amount = session.running.amount.value();
    std::int64_t volume = session.running.volume.value();
    std::vector<MinuteFigures> figures(session.minutes.size());
    for (std::size_t i = session.minutes.size(); i-- > 0;) {
        const MinuteRow &minute = session.minutes[i];
        figures[i]
            = {minute.begin, minute.last, averagePrice(amount, volume, minute.last), minute.volume};
        amount -= minute.amount.value();
        volume -= minute.volume.value();
    }
    return figures;
}

std::vector<OpenSpan> openSpans(const SessionMinutes &session)
{
    std::vector<OpenSpan> spans;
    for (const PhaseRow &phase : session.phases) {
        if (!phase.open) {
            if (!spans.empty() && !spans.back().end)
                spans.back().end = std::max(minuteEnd(phase.at), spans.back().begin);
        } else if (!spans.empty() && spans.back().end && minuteOf(phase.at) <= *spans.back().end) {
            spans.back().end.reset();
        } else {
            spans.push_back({minuteOf(phase.at), std::nullopt});
        }
    }
    if (!spans.empty() && session.first)
        spans.front().begin = std::min(spans.front().begin, *session.first);
    return spans;
}

} // namespace zvx
