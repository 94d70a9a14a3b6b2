#include "exchange/store/bars.h"

#include "exchange/store/calendar.h"
#include "exchange/store/snapshot.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <random>
#include <string>

namespace zvx {
namespace {

Bar bar(std::int64_t day, std::int64_t open, std::int64_t high, std::int64_t low,
        std::int64_t close, std::int64_t volume, std::int64_t amount)
{
    return {TradingDay(day), Fen(open),        Fen(high),  Fen(low),
            Fen(close),      Quantity(volume), Fen(amount)};
}

std::string text(const std::vector<Bar> &bars)
{
    std::string all;
    for (const Bar &one : bars) {
        all += dayText(one.day);
        for (const std::int64_t figure :
             {one.open.value(), one.high.value(), one.low.value(), one.close.value(),
              one.volume.value(), one.amount.value()})
            all += " " + std::to_string(figure);
        all += "\n";
    }
    return all;
}

TEST(Bars, SessionsOfADayAreOneBar)
{
    const std::vector<Bar> sessions = {
        bar(20'191'231, 10, 12, 9, 11, 5, 55),
        bar(20'200'101, 11, 13, 10, 12, 1, 12),
        bar(20'200'101, 12, 20, 12, 15, 2, 30),
        bar(20'200'101, 15, 15, 4, 5, 3, 21),
    };
    EXPECT_EQ(text(folded(sessions, BarSpan::Day)),
              "2019-12-31 10 12 9 11 5 55\n2020-01-01 11 20 4 5 6 63\n");
}

TEST(Bars, AWeekGoesOnOverTheTurnOfTheYear)
{
    const std::vector<Bar> days = {
        bar(20'181'228, 10, 10, 10, 10, 1, 10), // a Friday
        bar(20'181'231, 11, 15, 11, 12, 1, 11), // a Monday
        bar(20'190'102, 12, 14, 9, 13, 2, 24),
        bar(20'190'104, 13, 13, 13, 14, 3, 39), // the Friday after
        bar(20'190'107, 15, 15, 15, 15, 4, 60),
        bar(20'191'231, 16, 18, 16, 17, 5, 80), // a Tuesday
        bar(20'200'101, 17, 19, 17, 18, 6, 102),
    };
    EXPECT_EQ(text(folded(days, BarSpan::Week)),
              "2018-12-28 10 10 10 10 1 10\n2019-01-04 11 15 9 14 6 74\n"
              "2019-01-07 15 15 15 15 4 60\n2020-01-01 16 19 16 18 11 182\n");
    EXPECT_EQ(text(folded(days, BarSpan::Month)),
              "2018-12-31 10 15 10 12 2 21\n2019-01-07 12 15 9 15 9 123\n"
              "2019-12-31 16 18 16 17 5 80\n2020-01-01 17 19 17 18 6 102\n");
}

TEST(Bars, ASundayEndsTheWeekAndAMondayBeginsTheNext)
{
    const std::vector<Bar> days
        = {bar(20'200'104, 1, 1, 1, 1, 1, 1), bar(20'200'105, 2, 2, 2, 2, 1, 2),
           bar(20'200'106, 3, 3, 3, 3, 1, 3)};
    EXPECT_EQ(text(folded(days, BarSpan::Week)),
              "2020-01-05 1 2 1 2 2 3\n2020-01-06 3 3 3 3 1 3\n");
}

TEST(Bars, SumsStopAtTheirBound)
{
    const std::vector<Bar> sessions = {bar(20'200'101, 1, 1, 1, 1, kAmountBound - 1, 7),
                                       bar(20'200'101, 1, 1, 1, 1, 5, kAmountBound)};
    EXPECT_EQ(folded(sessions, BarSpan::Day).front().volume, Quantity(kAmountBound));
    EXPECT_EQ(folded(sessions, BarSpan::Day).front().amount, Fen(kAmountBound));
}

TEST(Bars, NothingFoldsToNothing)
{
    for (const BarSpan span : {BarSpan::Day, BarSpan::Week, BarSpan::Month})
        EXPECT_TRUE(folded({}, span).empty());
}

/// The Monday of a day's week, found by walking back.
std::int64_t mondayOf(TradingDay day)
{
    std::int64_t number = dayNumber(day);
    while (weekday(dayOfNumber(number)) != 0)
        --number;
    return number;
}

TEST(Bars, FoldLikeASlowReference)
{
    std::mt19937 random(20'200'101);
    const auto pick = [&random](std::int64_t least, std::int64_t most) {
        return std::uniform_int_distribution<std::int64_t>(least, most)(random);
    };
    for (int round = 0; round < 200; ++round) {
        std::vector<Bar> days;
        std::int64_t number = pick(10'000, 20'000);
        for (std::int64_t i = pick(0, 400); i > 0; --i) {
            number += pick(0, 9) < 2 ? 0 : pick(1, 5);
            const std::int64_t low = pick(100, 200);
            const std::int64_t high = low + pick(0, 50);
            days.push_back(bar(dayOfNumber(number).value(), pick(low, high), high, low,
                               pick(low, high), pick(1, 1'000), pick(1, 100'000)));
        }
        for (const BarSpan span : {BarSpan::Day, BarSpan::Week, BarSpan::Month}) {
            std::map<std::int64_t, std::vector<Bar>> groups;
            for (const Bar &one : days) {
                const std::int64_t key = span == BarSpan::Day ? one.day.value()
                    : span == BarSpan::Week                   ? mondayOf(one.day)
                                                              : one.day.value() / 100;
                groups[key].push_back(one);
            }
            std::vector<Bar> expected;
            for (const auto &[key, group] : groups) {
                Bar all = group.front();
                for (const Bar &one : group) {
                    all.high = std::max(all.high, one.high);
                    all.low = std::min(all.low, one.low);
                }
                all.day = group.back().day;
                all.close = group.back().close;
                all.volume = Quantity(0);
                all.amount = Fen(0);
                for (const Bar &one : group) {
                    all.volume += one.volume;
                    all.amount += one.amount;
                }
                expected.push_back(all);
            }
            ASSERT_EQ(text(folded(days, span)), text(expected));
        }
    }
}

TEST(Bars, KeepsTheNewestBeforeADay)
{
    const std::vector<Bar> all
        = {bar(20'191'227, 1, 1, 1, 1, 1, 1), bar(20'191'230, 2, 2, 2, 2, 2, 2),
           bar(20'191'231, 3, 3, 3, 3, 3, 3), bar(20'200'101, 4, 4, 4, 4, 4, 4)};
    const auto kept = [&all](std::optional<TradingDay> before, std::size_t count) {
        std::vector<Bar> bars = all;
        keepNewest(bars, before, count);
        std::string opens;
        for (const Bar &one : bars)
            opens += std::to_string(one.open.value());
        return opens;
    };
    EXPECT_EQ(kept({}, 10), "1234");
    EXPECT_EQ(kept({}, 2), "34");
    EXPECT_EQ(kept(TradingDay(20'191'231), 10), "12");
    EXPECT_EQ(kept(TradingDay(20'191'229), 10), "1");
    EXPECT_EQ(kept(TradingDay(20'200'102), 1), "4");
    EXPECT_EQ(kept(TradingDay(20'191'227), 5), "");
}

} // namespace
} // namespace zvx
