#pragma once

#include "ZvModelKit/zvubtimeline.h"

#include <vector>

namespace zvplot {

// The minutes of a session as one row of places, without its breaks.
//
// A span with an end is there as a whole from the first minute on. An open one begins with its
// first minute in which something was dealt and grows, by `growth` minutes at a time; where nothing
// was dealt for longer than `longestPause`, the time in between is left out like a break.
class SessionAxis
{
public:
    static constexpr int growth = 30; // minutes
    static constexpr int shortestOpen = 60; // minutes that an open span shows at least
    static constexpr int longestPause = 60; // minutes
    static constexpr int mostMinutes = 50000; // of all spans together; later ones are left out

    struct Stretch {
        qint64 begin = 0; // UTC milliseconds
        int minutes = 0;
        int place = 0; // of its first minute
    };

    SessionAxis() = default;
    explicit SessionAxis(const ZvUBTimeLine &line);

    int places() const { return m_places; }
    const std::vector<Stretch> &stretches() const { return m_stretches; }

    // The place of the minute that holds `time`; of the nearest one before it where it falls into a
    // break, and -1 before the session and after it.
    int placeOf(qint64 time) const;

    // When the minute of a place begins.
    qint64 timeOf(int place) const;

    bool operator==(const SessionAxis &other) const;
    bool operator!=(const SessionAxis &other) const { return !(*this == other); }

private:
    void add(qint64 begin, int minutes);
    void addOpen(qint64 begin, const QVector<ZvUBMinute> &minutes);

    std::vector<Stretch> m_stretches;
    int m_places = 0;
};

} // namespace zvplot
