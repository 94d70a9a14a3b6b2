#include "ZvNetworkKit/zvkitsingleton.h"

#include <QCoreApplication>

#include <map>
#include <utility>

namespace {

std::map<ZvKitEnd, std::function<void()>> &ends()
{
    // Never destroyed: a singleton that is made after the static objects have gone must not find a
    // dead map.
    static auto *map = new std::map<ZvKitEnd, std::function<void()>>;
    return *map;
}

void endKit()
{
    std::map<ZvKitEnd, std::function<void()>> now;
    now.swap(ends());
    for (const auto &entry : now)
        entry.second();
}

} // namespace

void zvEndWithApplication(ZvKitEnd when, std::function<void()> end)
{
    if (ends().empty())
        qAddPostRoutine(endKit);
    ends()[when] = std::move(end);
}
