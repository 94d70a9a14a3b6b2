#pragma once

#include <QColor>
#include <QPalette>
#include <QWidget>

// Fills `widget` with one colour, whatever its state. Through the palette, since a style sheet
// would reach its children too.
inline void setBackground(QWidget *widget, const QColor &colour)
{
    QPalette palette;
    palette.setColor(QPalette::Window, colour);
    widget->setPalette(palette);
    widget->setAutoFillBackground(true);
}
