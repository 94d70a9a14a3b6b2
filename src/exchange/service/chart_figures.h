#pragma once

#include "exchange/core/types.h"

#include <optional>
#include <vector>

namespace zvx {

struct SessionMinutes;

/// One minute as a chart has it.
struct MinuteFigures {
    TimeMs begin;
    Fen price; ///< the last one
    Fen average; ///< of all pieces of the session up to the minute's end, rounded, halves up
    Quantity volume;
};

/// When the market was open, in whole minutes.
struct OpenSpan {
    TimeMs begin;
    std::optional<TimeMs> end; ///< nothing while it is open
};

std::vector<MinuteFigures> minuteFigures(const SessionMinutes &session);

/// The spans of the running session, none of which touches the next. The first one begins no later
/// than the first minute, wherever the clock stood when the market was opened.
std::vector<OpenSpan> openSpans(const SessionMinutes &session);

} // namespace zvx
