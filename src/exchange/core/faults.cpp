#include "exchange/core/faults.h"

#ifdef ZVX_FAULTS

#include <string>

namespace zvx {

namespace {
std::string planted;
std::set<std::string_view> passed;
} // namespace

void plantFault(std::string_view name)
{
    planted = name;
}

bool fault(std::string_view name)
{
    passed.insert(name);
    return planted == name;
}

const std::set<std::string_view> &faultPoints()
{
    return passed;
}

} // namespace zvx

#endif
