#include "exchange/service/chart_figures.h"

#include "exchange/store/marketreader.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace zvx;

constexpr std::int64_t minute = 60'000;

/// Minutes of price, volume and amount, of a session that came to their sums and what `before`
/// them was dealt.
SessionMinutes session(const std::vector<std::array<std::int64_t, 3>> &minutes,
                       std::int64_t volumeBefore = 0, std::int64_t amountBefore = 0)
{
    SessionMinutes made;
    std::int64_t volume = volumeBefore;
    std::int64_t amount = amountBefore;
    for (const auto &[price, pieces, fen] : minutes) {
        MinuteRow row;
        row.begin = TimeMs(static_cast<std::int64_t>(made.minutes.size()) * minute);
        row.last = Fen(price);
        row.volume = Quantity(pieces);
        row.amount = Fen(fen);
        made.minutes.push_back(row);
        volume += pieces;
        amount += fen;
    }
    made.running.volume = Quantity(volume);
    made.running.amount = Fen(amount);
    return made;
}

std::vector<std::int64_t> averages(const SessionMinutes &made)
{
    std::vector<std::int64_t> found;
    for (const MinuteFigures &figures : minuteFigures(made))
        found.push_back(figures.average.value());
    return found;
}

using Numbers = std::vector<std::int64_t>;

TEST(ChartFigures, TheAverageIsOfTheSessionUpToTheMinute)
{
    EXPECT_EQ(averages(session({{100, 10, 1'000}, {200, 10, 2'000}, {100, 20, 2'000}})),
              (Numbers{100, 150, 125}));
    EXPECT_EQ(averages(session({{200, 10, 2'000}}, 10, 1'000)), (Numbers{150}))
        << "of the minutes that were not asked for as well";
    EXPECT_TRUE(averages(session({})).empty());
}

TEST(ChartFigures, TheAverageIsRoundedHalvesUp)
{
    EXPECT_EQ(averages(session({{1, 2, 3}})), (Numbers{2}));
    EXPECT_EQ(averages(session({{1, 3, 4}})), (Numbers{1}));
    EXPECT_EQ(averages(session({{1, 3, 5}})), (Numbers{2}));
    EXPECT_EQ(averages(session({{1, 1'000'001, 1'500'001}})), (Numbers{1}));
    EXPECT_EQ(averages(session({{1, 1'000'000, 1'500'000}})), (Numbers{2}));
}

TEST(ChartFigures, SumsAtTheirBoundGiveAPriceAllTheSame)
{
    SessionMinutes made = session(
        {{100, kAmountBound / 2, kAmountBound / 2}, {100, kAmountBound / 2, 5}, {7, 1, 7}});
    made.running.volume = Quantity(kAmountBound);
    made.running.amount = Fen(kAmountBound);
    made.minutes[1].volume = Quantity(kAmountBound);
    for (const MinuteFigures &figures : minuteFigures(made)) {
        EXPECT_GE(figures.average, Fen(1));
        EXPECT_LT(figures.average, Fen(kPriceBound));
    }
    made = session({{9, 1, 9}, {9, 1, 9}});
    made.running.volume = Quantity(1);
    made.running.amount = Fen(kAmountBound);
    EXPECT_EQ(averages(made), (Numbers{9, kPriceBound - 1}));
}

/// "open 5" and "closed 90" in milliseconds, and the spans that come of it in seconds.
std::vector<std::pair<std::int64_t, std::int64_t>>
spans(const std::vector<std::pair<bool, std::int64_t>> &phases,
      std::optional<std::int64_t> first = {})
{
    SessionMinutes made;
    for (const auto &[open, at] : phases)
        made.phases.push_back({Sequence(1), TimeMs(at), open});
    if (first)
        made.first = TimeMs(*first);
    std::vector<std::pair<std::int64_t, std::int64_t>> found;
    for (const OpenSpan &span : openSpans(made))
        found.emplace_back(span.begin.value() / 1000, span.end ? span.end->value() / 1000 : -1);
    return found;
}

using Spans = std::vector<std::pair<std::int64_t, std::int64_t>>;

TEST(ChartFigures, SpansAreWholeMinutes)
{
    EXPECT_EQ(spans({}), Spans());
    EXPECT_EQ(spans({{true, 61'500}}), (Spans{{60, -1}}));
    EXPECT_EQ(spans({{true, 60'000}, {false, 120'000}}), (Spans{{60, 120}}));
    EXPECT_EQ(spans({{true, 60'001}, {false, 120'001}}), (Spans{{60, 180}}));
    EXPECT_EQ(spans({{true, 60'000}, {false, 120'000}, {true, 300'000}}),
              (Spans{{60, 120}, {300, -1}}));
    EXPECT_EQ(spans({{false, 5}, {true, 60'000}}), (Spans{{60, -1}}));
}

TEST(ChartFigures, SpansThatTouchAreOne)
{
    EXPECT_EQ(spans({{true, 0}, {false, 70'000}, {true, 110'000}}), (Spans{{0, -1}}));
    EXPECT_EQ(spans({{true, 0}, {false, 120'000}, {true, 125'000}, {false, 200'000}}),
              (Spans{{0, 240}}));
    EXPECT_EQ(spans({{true, 600'000}, {false, 60'000}, {true, 30'000}}), (Spans{{600, -1}}))
        << "a clock that was set back";
}

TEST(ChartFigures, TheFirstSpanBeginsNoLaterThanTheFirstMinute)
{
    EXPECT_EQ(spans({{true, 600'000}}, 60'000), (Spans{{60, -1}}));
    EXPECT_EQ(spans({{true, 600'000}}, 660'000), (Spans{{600, -1}}));
}

} // namespace
