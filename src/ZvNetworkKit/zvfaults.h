#pragma once

// Fault points: places where a test build can plant a bug by name, to show that the checks around
// the kit would find it. Product builds have none; the calls fold to false.
#ifdef ZV_FAULTS

// Whether this bug is planted; the program that plants bugs defines it.
bool zvFault(const char *name);

#else

constexpr bool zvFault(const char *)
{
    return false;
}

#endif
