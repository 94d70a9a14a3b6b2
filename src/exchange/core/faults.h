#pragma once

#include <string_view>
#ifdef ZVX_FAULTS
#include <string>
#include <vector>
#endif

namespace zvx {

/*
 * Fault points: places where a test build can plant a bug by name, to show that the checks around
 * the exchange would find it. Product builds have none; the calls fold to false.
 */
#ifdef ZVX_FAULTS

/** Plants one bug, or none with an empty name. Before that it is the one that the environment
 * variable ZVX_FAULT names, so that a bug can be planted in a program as well. */
void plantFault(std::string_view name);
bool fault(std::string_view name);
/** The names of all fault points that were passed so far. */
std::vector<std::string> faultPoints();

#else

constexpr bool fault(std::string_view)
{
    return false;
}

#endif

} // namespace zvx
