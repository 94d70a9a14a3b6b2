#pragma once

// Whether a window can be opened here. Asked before the application object is made: Qt ends the
// process where it finds no display, with a page of advice that names the wrong cause.
namespace display {

// True where Qt is told what to draw on, or where something answers at DISPLAY or WAYLAND_DISPLAY.
bool isThere();

} // namespace display
