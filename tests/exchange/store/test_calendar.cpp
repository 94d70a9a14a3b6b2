#include "exchange/store/calendar.h"

#include "exchange/store/snapshot.h"

#include <gtest/gtest.h>

#include <array>

namespace zvx {
namespace {

/// The day after, by the rules that one learns at school.
TradingDay next(TradingDay day)
{
    std::int64_t year = day.value() / 10'000;
    std::int64_t month = day.value() / 100 % 100;
    std::int64_t ofMonth = day.value() % 100;
    std::array<std::int64_t, 12> days = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    if ((year % 4 == 0 && year % 100 != 0) || year % 400 == 0)
        days[1] = 29;
    if (++ofMonth > days[static_cast<std::size_t>(month - 1)]) {
        ofMonth = 1;
        if (++month > 12) {
            month = 1;
            ++year;
        }
    }
    return TradingDay(year * 10'000 + month * 100 + ofMonth);
}

TEST(Calendar, CountsEveryDayOfFiveHundredYears)
{
    TradingDay day(19'700'101);
    for (std::int64_t number = 0; day < TradingDay(24'700'101); ++number, day = next(day)) {
        ASSERT_TRUE(isDate(day)) << day.value();
        ASSERT_EQ(dayNumber(day), number) << day.value();
        ASSERT_EQ(dayOfNumber(number), day) << number;
        ASSERT_EQ(weekday(day), (3 + number) % 7) << day.value();
        ASSERT_EQ(readDay(dayText(day)), day);
    }
    EXPECT_EQ(dayOfNumber(dayNumber(TradingDay(99'991'231))), TradingDay(99'991'231));
}

TEST(Calendar, KnowsTheWeekdays)
{
    EXPECT_EQ(weekday(TradingDay(20'160'104)), 0);
    EXPECT_EQ(weekday(TradingDay(20'191'231)), 1);
    EXPECT_EQ(weekday(TradingDay(20'200'101)), 2);
    EXPECT_EQ(weekday(TradingDay(20'200'229)), 5);
    EXPECT_EQ(weekday(TradingDay(20'261'122)), 6);
}

TEST(Calendar, ReadsDatesAndNothingElse)
{
    EXPECT_EQ(readDay("2019-12-31"), TradingDay(20'191'231));
    EXPECT_EQ(readDay("2019/12/31", '/'), TradingDay(20'191'231));
    EXPECT_EQ(readDay("2020-02-29"), TradingDay(20'200'229));
    EXPECT_EQ(readDay("9999-12-31"), TradingDay(99'991'231));
    for (const char *text :
         {"", "2019-12-3", "2019-12-311", "2019-13-01", "2019-00-10", "2019-01-00", "2019-04-31",
          "2019-02-29", "1900-01-01", "1969-12-31", "2019/12/31", "2019-12/31", "20191231",
          " 2019-12-31", "2019-12-31 ", "+019-12-31", "2019-1a-31", "２０１９-12-31", "----------"})
        EXPECT_FALSE(readDay(text)) << text;
    EXPECT_FALSE(readDay("2019-12-31", '/'));
    EXPECT_FALSE(isDate(TradingDay(20'209'999)));
    EXPECT_FALSE(isDate(TradingDay(20'200'001)));
    EXPECT_FALSE(isDate(TradingDay(0)));
}

} // namespace
} // namespace zvx
