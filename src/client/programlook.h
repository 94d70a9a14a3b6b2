#pragma once

class QApplication;

// How the whole program looks, whatever it shows: scale, icon, font and style.
namespace programlook {

// Text and lines follow the scale of the screen, and windows are drawn without its OpenGL. Called
// before the application is made.
void followScreen();

// Gives the application its icon and the first font of this machine that draws Chinese. False where
// there is no such font, and the application keeps the one it had.
bool dress(QApplication &application);

// The style in the accent of the current platform; called anew when that is another.
void followPlatform(QApplication &application);

} // namespace programlook
