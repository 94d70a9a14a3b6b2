#pragma once

#include <QtGlobal>

namespace randomevents {

// Holds the clocks of this process while it lives: Qt's timers, the kit's deadlines and its pauses
// then see only the time that pass() lets go by, and calendars a day of their own, so that a life
// is the same each time and a minute costs nothing. One at a time.
class HeldClock
{
public:
    HeldClock();
    ~HeldClock();
    Q_DISABLE_COPY(HeldClock)

    void pass(qint64 milliseconds);

    // Milliseconds since it was taken hold of.
    qint64 passed() const;
};

} // namespace randomevents
