#pragma once

#include "exchange/core/event.h"

#include <string>
#include <string_view>

namespace zvx {

/** The first byte of every encoded event. Another version is refused. */
constexpr std::uint8_t kEventVersion = 1;

/** Appends the event's bytes to `out`. Encodings of several events may simply follow each other. */
void encode(const Event &event, std::string &out);

/**
 * Reads one event from the front of `bytes` and moves `bytes` past it. Returns false, with `bytes`
 * and `event` as they were, for anything that `encode` would not have written: another version, an
 * unknown type, a number out of its range, a longer form of a number, a cut. Takes hostile bytes.
 */
bool decode(std::string_view &bytes, Event &event);

/** Whether two events are of one kind with the same content. */
bool sameEvent(const Event &a, const Event &b);

/** One line for logs and tests: "Deal at=5 sequence=1 collection=7 ...". */
std::string describe(const Event &event);

} // namespace zvx
