#pragma once

#include <QList>
#include <QPoint>
#include <QRect>

// Where a window may stand, in device-independent pixels. It is within reach while enough of its
// title bar is on a screen to be caught by the mouse.
namespace screenareas {

// What the screens that are there leave to windows, the first screen's area first.
QList<QRect> all();

bool isWithinReach(const QRect &window, const QList<QRect> &areas);

// The top left corner nearest to that of `window` at which it is within reach.
QPoint reachable(const QRect &window, const QList<QRect> &areas);

// `window` where it stands when it is within reach, or else wholly on the nearest screen; never
// larger than the screen.
QRect rescued(const QRect &window, const QList<QRect> &areas);

} // namespace screenareas
