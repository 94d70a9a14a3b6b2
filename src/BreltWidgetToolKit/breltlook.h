#pragma once

#include <QColor>

// The dark look of the kit's own controls, named once. Not part of the exported interface.
namespace brelt {
namespace look {

inline QColor surface()
{
    return QColor(0x16, 0x18, 0x1c);
}
inline QColor deep()
{
    return QColor(0x10, 0x11, 0x14);
}
inline QColor raised()
{
    return QColor(30, 33, 38);
}
inline QColor line()
{
    return QColor(0x24, 0x29, 0x31);
}
inline QColor border()
{
    return QColor(0x4a, 0x51, 0x5d);
}
inline QColor text()
{
    return QColor(0xf0, 0xf1, 0xf3);
}
inline QColor dimText()
{
    return QColor(0x9a, 0xa1, 0xac);
}
inline QColor disabledText()
{
    return QColor(0x7d, 0x84, 0x8f);
}
inline QColor defaultAccent()
{
    return QColor(0x26, 0x70, 0xd0);
}

} // namespace look
} // namespace brelt
