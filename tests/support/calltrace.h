#pragma once

#include <QStringList>

namespace zvtest {

// Collects the lines of the kit's call trace while it lives, in the order of the calls. They do not
// reach the test's own log. One at a time.
class CallTrace
{
public:
    CallTrace();
    ~CallTrace();
    CallTrace(const CallTrace &) = delete;
    CallTrace &operator=(const CallTrace &) = delete;

    // The lines since the start or the last call, such as `ZvServerEngine::changedToTimeLine()`.
    QStringList take();
};

} // namespace zvtest
