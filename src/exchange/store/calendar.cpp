#include "exchange/store/calendar.h"

namespace zvx {
namespace {

constexpr int kDaysBefore[12] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334};

bool isLeap(std::int64_t year)
{
    return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
}

/// Days from 1970-01-01 to the first day of a year.
std::int64_t daysTo(std::int64_t year)
{
    const auto leapsBefore
        = [](std::int64_t y) { return (y - 1) / 4 - (y - 1) / 100 + (y - 1) / 400; };
    return (year - 1970) * 365 + leapsBefore(year) - leapsBefore(1970);
}

/// Days of a year before a month, 1 to 12; month 13 gives the days of the year. What is no month is
/// kept within the year.
std::int64_t daysTo(std::int64_t year, std::int64_t month)
{
    if (month < 1)
        return 0;
    if (month > 12)
        return isLeap(year) ? 366 : 365;
    return kDaysBefore[month - 1] + (month > 2 && isLeap(year) ? 1 : 0);
}

} // namespace

bool isDate(TradingDay day)
{
    const std::int64_t year = day.value() / 10'000;
    const std::int64_t month = day.value() / 100 % 100;
    const std::int64_t ofMonth = day.value() % 100;
    return day.inRange() && month >= 1 && month <= 12 && ofMonth >= 1
        && ofMonth <= daysTo(year, month + 1) - daysTo(year, month);
}

std::int64_t dayNumber(TradingDay day)
{
    const std::int64_t year = day.value() / 10'000;
    return daysTo(year) + daysTo(year, day.value() / 100 % 100) + day.value() % 100 - 1;
}

TradingDay dayOfNumber(std::int64_t number)
{
    std::int64_t year = 1970 + number / 366;
    while (daysTo(year + 1) <= number)
        ++year;
    const std::int64_t ofYear = number - daysTo(year);
    std::int64_t month = ofYear / 31 + 1;
    while (daysTo(year, month + 1) <= ofYear)
        ++month;
    return TradingDay(year * 10'000 + month * 100 + ofYear - daysTo(year, month) + 1);
}

int weekday(TradingDay day)
{
    return static_cast<int>((dayNumber(day) + 3) % 7);
}

std::optional<TradingDay> readDay(std::string_view text, char separator)
{
    constexpr std::string_view shape = "dddd-dd-dd";
    if (text.size() != shape.size())
        return std::nullopt;
    std::int64_t value = 0;
    for (std::size_t i = 0; i < shape.size(); ++i) {
        if (shape[i] == '-') {
            if (text[i] != separator)
                return std::nullopt;
        } else {
            if (text[i] < '0' || text[i] > '9')
                return std::nullopt;
            value = value * 10 + (text[i] - '0');
        }
    }
    const TradingDay day(value);
    return isDate(day) ? std::optional<TradingDay>(day) : std::nullopt;
}

} // namespace zvx
