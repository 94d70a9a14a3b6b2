#pragma once

#include <QString>

// How the pages of a list on the exchange are turned, by the wheel or by a caller.
namespace pageturn {

enum Direction { None, Up, Down };

// Gathers in `gathered` what the wheel turns, so that a fast turn does not run through many pages:
// more than four notches of one direction turn one page. A change of direction begins anew, and
// what brought it does not count. `delta` is the vertical angle of a wheel event; 0 counts as up.
Direction byWheel(int delta, int &gathered);

// Tells the debug log, with the time of day, which way a page is turned and which one is asked for.
void log(Direction direction, int requestedPage);

} // namespace pageturn
