#pragma once

#include "campaign/campaign.h"

#include <functional>
#include <string>

namespace randomevents {

// What a life writes down where it outlives the process.
class Journal
{
public:
    virtual ~Journal() = default;

    // The next event; the last ones are told where the life fails.
    virtual void note(const std::string &event) = 0;

    // The end of a life that cannot go on. Does not return.
    [[noreturn]] virtual void fail(const std::string &why) = 0;
};

// Lives in a process of its own, so that it begins as a program does, and that its crash, its leaks
// and its hanging are ends like others. The counts are added to `counts`.
campaign::Failure liveApart(const std::function<void(Journal &, campaign::Counts &)> &life,
                            campaign::Counts &counts);

} // namespace randomevents
