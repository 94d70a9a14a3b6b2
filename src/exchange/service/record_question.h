#pragma once

#include "exchange/core/types.h"

#include <cstdint>
#include <optional>
#include <string>
#include <variant>

namespace zvx {

class HttpParameters;

/// Which records of an account somebody asks for: a page, a period, a kind.
struct RecordQuestion {
    std::int64_t page = 1;
    std::int64_t size = 10;
    TradingDay first{TradingDay::least}; ///< both included
    TradingDay last{TradingDay::most};
    enum Kind : std::uint8_t {
        Outgoing = 0, ///< sells, or money out
        Incoming = 1, ///< buys, or money in
        All = 2,
    };
    Kind kind = All;
};

/// Reads `page`, `size`, `type`, `start` and `stop`, or gives the name of the first that is wrong.
std::variant<RecordQuestion, std::string> readRecordQuestion(const HttpParameters &parameters);

} // namespace zvx
