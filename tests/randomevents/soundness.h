#pragma once

#include <QHash>
#include <QString>
#include <QWidget>

namespace randomevents {

// What holds of the program's widgets at any moment, whatever has happened. Looks at all of them
// and gives a sentence about the first thing that does not hold; empty where all does.
class Soundness
{
public:
    // Between two events; `window` may be null.
    QString fault(const QWidget *window);

    // At rest: nothing modal is open, and no mouse is over a button.
    QString faultAtRest() const;

private:
    int m_usualObjects = 0; // of the window, when it was seen first
    QHash<QString, int> m_usualDialogs; // by class, at that time
};

} // namespace randomevents
