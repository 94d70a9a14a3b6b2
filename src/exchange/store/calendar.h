#pragma once

#include "exchange/core/types.h"

#include <cstdint>
#include <optional>
#include <string_view>

namespace zvx {

/// Whether there is such a day in the calendar, in the range of TradingDay.
bool isDate(TradingDay day);

/// Days since 1970-01-01, a Thursday, of a day that is a date.
std::int64_t dayNumber(TradingDay day);
/// The way back, for numbers of the range of TradingDay.
TradingDay dayOfNumber(std::int64_t number);

/// 0 on a Monday to 6 on a Sunday.
int weekday(TradingDay day);

/// Reads "2019-12-31" with `separator` in its two places; nothing for anything else, and for days
/// that the calendar does not have.
std::optional<TradingDay> readDay(std::string_view text, char separator = '-');

} // namespace zvx
