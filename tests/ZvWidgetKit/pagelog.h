#pragma once

#include <QStringList>

namespace zvtest {

// Collects in one list, while it lives, the debug lines of the pages and the calls of the kit, in
// their order. They do not reach the test's own log. One at a time, and not beside a CallTrace.
class PageLog
{
public:
    PageLog();
    ~PageLog();
    PageLog(const PageLog &) = delete;
    PageLog &operator=(const PageLog &) = delete;

    // The lines since the start or the last call.
    QStringList take();
};

} // namespace zvtest
