#include "exchange/core/faults.h"

#ifdef ZVX_FAULTS

#include <cstdlib>
#include <mutex>
#include <set>

namespace zvx {

namespace {

/** The threads of a service pass fault points at the same time. */
struct Faults {
    std::mutex mutex;
    std::string planted;
    std::set<std::string, std::less<>> passed;

    Faults()
    {
        if (const char *name = std::getenv("ZVX_FAULT"))
            planted = name;
    }
};

Faults &faults()
{
    static Faults instance;
    return instance;
}

} // namespace

void plantFault(std::string_view name)
{
    const std::lock_guard<std::mutex> guard(faults().mutex);
    faults().planted = name;
}

bool fault(std::string_view name)
{
    const std::lock_guard<std::mutex> guard(faults().mutex);
    if (faults().passed.find(name) == faults().passed.end())
        faults().passed.emplace(name);
    return faults().planted == name;
}

std::vector<std::string> faultPoints()
{
    const std::lock_guard<std::mutex> guard(faults().mutex);
    return {faults().passed.begin(), faults().passed.end()};
}

} // namespace zvx

#endif
