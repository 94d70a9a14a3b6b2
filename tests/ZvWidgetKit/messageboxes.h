#pragma once

#include <QList>
#include <QString>
#include <QStringList>

#include <functional>

namespace zvtest {

// What a framed message box showed while it ran.
struct ShownBox {
    QString text;
    QStringList buttons;
    QString title;
    int titleHeight = 0; // pixels
    bool hasParent = false;
};

// Runs `cause` and answers the message boxes that run inside it by a click on the button with the
// text `answer`. Each box is on the screen when `meanwhile` runs. Returns the boxes in the order in
// which they opened; `cause` has returned by then.
QList<ShownBox> boxesIn(const std::function<void()> &cause,
                        const std::function<void()> &meanwhile = {},
                        const QString &answer = QStringLiteral("确认"));

// For `meanwhile`: ends the box without a click on one of its buttons, by Escape otherwise.
void closeBox(bool byItsCross);

} // namespace zvtest
