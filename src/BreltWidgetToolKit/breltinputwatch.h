#pragma once

#include "BreltWidgetToolKit/breltdoubleclicks.h"
#include "BreltWidgetToolKit/breltheldkeys.h"

namespace brelt {

// What every field and dialog of the kit wants of the keys and the mouse. Not part of the exported
// interface.
inline void watchInput()
{
    BreltHeldKeys::watch();
    BreltDoubleClicks::watch();
}

} // namespace brelt
