#pragma once

#include <string_view>
#ifdef ZVX_FAULTS
#include <set>
#endif

namespace zvx {

/*
 * Fault points: places where a test build can plant a bug by name, to show that the checks around
 * the core would find it. Product builds have none; the calls fold to false.
 */
#ifdef ZVX_FAULTS

/** Plants one bug, or none with an empty name. */
void plantFault(std::string_view name);
bool fault(std::string_view name);
/** The names of all fault points that were passed so far. */
const std::set<std::string_view> &faultPoints();

#else

constexpr bool fault(std::string_view)
{
    return false;
}

#endif

} // namespace zvx
