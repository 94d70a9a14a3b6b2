#include "exchange/core/faults.h"

#ifdef ZVX_FAULTS

#include <string>

namespace zvx {

namespace {
std::string planted;
}

void plantFault(std::string_view name)
{
    planted = name;
}

bool fault(std::string_view name)
{
    return planted == name;
}

} // namespace zvx

#endif
