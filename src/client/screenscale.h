#pragma once

#include <QtGlobal>

class QApplication;

// At which scale the program is drawn.
namespace screenscale {

// True for a scale so near to 1 that nobody has chosen it. It comes from the size of a screen in
// whole millimetres, or from one that has none; it would make nothing easier to read, and all of it
// blurred.
bool isByChance(qreal scale);

// True where the screens of the application have such a scale, whatever the user adds to it by
// QT_SCALE_FACTOR. The application has to be made anew then, after ignore().
bool isByChance(const QApplication &application);

// Leaves the scale of the screens out of account for applications made from now on.
void ignore();

} // namespace screenscale
