#pragma once

#include <QImage>
#include <QString>

class QWidget;

namespace zvtest {

// The client's look: its font, its style, no blinking.
void wearTheClientsLook();

// A shown widget as a screen of this scale would show it.
QImage picture(QWidget *widget, double scale);

// Empty when the picture is equal to pictures/NAME.png, to the pixel, else what is wrong and where
// the picture was left to be looked at. With ZV_RENEW_PICTURES in the environment it becomes the
// new one, and with ZV_SHOW_PICTURES=FOLDER it is left there in any case.
QString differenceFromPicture(const QImage &image, const QString &name);

// The same for a picture of which only the hash is kept, in pictures/hashes.txt.
QString differenceFromHash(const QImage &image, const QString &name);

// Both for a widget at the scales 1, 1.25, 1.5 and 2: the picture at scale 1 where it is kept,
// hashes named NAME@SCALE for the others.
QString differenceFromPictures(QWidget *widget, const QString &name, bool isKept = true);

// The same at scale 1 alone, for what is drawn by the scale of the screen.
QString differenceAtScaleOne(QWidget *widget, const QString &name, bool isKept = true);

} // namespace zvtest
