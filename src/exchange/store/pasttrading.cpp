#include "exchange/store/pasttrading.h"

#include "exchange/store/calendar.h"

#include <algorithm>
#include <cstdlib>

namespace zvx {
namespace {

constexpr TradingDay kFirstDay{20'160'104};
constexpr TradingDay kLastDay{20'191'231};

constexpr std::int64_t kMillion = 1'000'000;
/// Trading days between two turns of a collection's long way.
constexpr std::size_t kTurn = 62;
/// How low and how high the long way may lie, in parts per million of the last close.
constexpr std::int64_t kLowest = 250'000;
constexpr std::int64_t kHighest = 2'500'000;

/// Random numbers that are the same everywhere. The steps are those of splitmix64.
class Chance
{
public:
    explicit Chance(const IssueRow &issue)
    {
        for (const std::int64_t part :
             {issue.collection.value(), issue.previousClose.value(), issue.issued.value()})
            m_state = next() ^ static_cast<std::uint64_t>(part);
    }

    /// `least` to `most`, both included.
    std::int64_t between(std::int64_t least, std::int64_t most)
    {
        return least
            + static_cast<std::int64_t>(next() % static_cast<std::uint64_t>(most - least + 1));
    }

private:
    std::uint64_t next()
    {
        m_state += 0x9e3779b97f4a7c15;
        std::uint64_t bits = m_state;
        bits = (bits ^ bits >> 30) * 0xbf58476d1ce4e5b9;
        bits = (bits ^ bits >> 27) * 0x94d049bb133111eb;
        return bits ^ bits >> 31;
    }

    std::uint64_t m_state = 0;
};

const std::vector<TradingDay> &weekdays()
{
    static const std::vector<TradingDay> days = [] {
        std::vector<TradingDay> found;
        for (std::int64_t day = dayNumber(kFirstDay); day <= dayNumber(kLastDay); ++day) {
            if (weekday(dayOfNumber(day)) < 5)
                found.push_back(dayOfNumber(day));
        }
        return found;
    }();
    return days;
}

/// Prices, levels and rates of this file: their products stay far within 64 bits.
std::int64_t ppm(std::int64_t amount, std::int64_t rate)
{
    return amount * rate / kMillion;
}

std::int64_t priceWithin(std::int64_t price)
{
    return std::clamp<std::int64_t>(price, 1, kPriceBound - 1);
}

/// The price nearest to `wanted` that may have been the close before `close`.
Fen closeBefore(Fen close, std::int64_t wanted, PartsPerMillion limit)
{
    const std::int64_t parts = close.value() * kMillion;
    std::int64_t price = priceWithin(std::clamp(wanted, parts / (kMillion + limit.value()),
                                                parts / (kMillion - limit.value()) + 1));
    // Limits are rounded, so the last fen are found by looking.
    for (;; price += price < close.value() ? 1 : -1) {
        const PriceLimits range = priceLimits(Fen(price), limit);
        if (range.lower <= close && close <= range.upper)
            return Fen(price);
    }
}

/// Closes from the day before the first one to the last one, made from the end backwards.
std::vector<Fen> closesOf(const IssueRow &issue, Chance &chance)
{
    std::vector<Fen> closes(weekdays().size() + 1, issue.previousClose);
    std::int64_t level = kMillion; // of the long way, at its last turn
    std::int64_t earlier = level; // at the turn before
    std::int64_t sway = 0; // of the days around the long way
    for (std::size_t back = 1; back < closes.size(); ++back) {
        const std::size_t step = (back - 1) % kTurn;
        if (step == 0) {
            level = earlier;
            earlier = std::clamp(ppm(level, kMillion + chance.between(-210'000, 170'000)), kLowest,
                                 kHighest);
        }
        sway = sway * 7 / 8 + chance.between(-14'000, 14'000);
        const std::int64_t here
            = level + (earlier - level) * static_cast<std::int64_t>(step + 1) / std::int64_t(kTurn);
        const std::int64_t wanted = ppm(ppm(issue.previousClose.value(), here), kMillion + sway);
        Fen &close = closes[closes.size() - 1 - back];
        close = closeBefore(closes[closes.size() - back], priceWithin(wanted), issue.limit);
    }
    return closes;
}

/// The prices of a day between two closes.
void setPrices(Bar &bar, Fen before, Fen close, PartsPerMillion limit, Chance &chance)
{
    const PriceLimits range = priceLimits(before, limit);
    const auto allowed = [&range](std::int64_t price) {
        return Fen(std::clamp(price, range.lower.value(), range.upper.value()));
    };
    const std::int64_t restless = chance.between(2'000, 16'000);
    const auto away = [&](std::int64_t least, std::int64_t most) {
        return ppm(before.value(), chance.between(least, most));
    };
    bar.close = close;
    bar.open = allowed(before.value() + away(-restless / 2, restless / 2));
    bar.high = allowed(std::max(bar.open, close).value() + away(0, restless));
    bar.low = allowed(std::min(bar.open, close).value() - away(0, restless));
}

/// The pieces of a day: more of them when the price moves much.
void setVolume(Bar &bar, Fen before, Quantity issued, std::int64_t usualTurnover, Chance &chance)
{
    const std::int64_t move
        = std::abs(bar.close.value() - before.value()) * kMillion / before.value();
    const std::int64_t factor
        = chance.between(300'000, 1'700'000) + std::min(move * 40, 4 * kMillion);
    const Wide pieces = Wide(issued.value()) * ppm(usualTurnover, factor) / kMillion;
    bar.volume = Quantity(static_cast<std::int64_t>(std::max<Wide>(pieces, 1)));
    const std::int64_t average
        = (bar.open.value() + bar.high.value() + bar.low.value() + 2 * bar.close.value()) / 5;
    bar.amount = Fen(static_cast<std::int64_t>(
        std::min<Wide>(Wide(average) * bar.volume.value(), kAmountBound)));
}

} // namespace

std::vector<Bar> pastTrading(const IssueRow &issue)
{
    std::vector<Bar> bars;
    if (issue.issued <= Quantity(0))
        return bars;
    Chance chance(issue);
    const std::int64_t usualTurnover = chance.between(400, 5'000);
    const std::vector<Fen> closes = closesOf(issue, chance);
    bars.reserve(weekdays().size());
    for (std::size_t i = 0; i < weekdays().size(); ++i) {
        Bar &bar = bars.emplace_back();
        bar.day = weekdays()[i];
        setPrices(bar, closes[i], closes[i + 1], issue.limit, chance);
        setVolume(bar, closes[i], issue.issued, usualTurnover, chance);
    }
    return bars;
}

} // namespace zvx
