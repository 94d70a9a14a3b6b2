#pragma once

#include "BreltWidgetToolKit/breltframlessmessagebox.h"

#include <QString>

// What the library's message boxes share.
namespace framedmessage {

constexpr int TitleHeight = 40; // pixels

// `text`, which may be rich text, as one centred paragraph.
inline QString paragraph(const QString &text)
{
    return QStringLiteral("<p align='center'>%1</p>").arg(text);
}

// Shows `html` in a framed message box with the button "确认" and, unless `secondButton` is empty,
// a second one. Returns after the user's answer, true when it was "确认". Until then events go on,
// so the caller itself may be gone when this returns.
inline bool show(const QString &html, const QString &title, const QString &secondButton = QString())
{
    BreltFramlessMessageBox box(html, QStringLiteral("确认"), secondButton, title, TitleHeight,
                                nullptr);
    return box.exec() == QDialog::Accepted;
}

} // namespace framedmessage
