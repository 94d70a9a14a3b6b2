#pragma once

#include <QKeyEvent>

// What the kit's fields share about the Return key. Not part of the exported interface.
namespace brelt {

// True for Return and for the keypad's Enter.
inline bool isReturnKey(const QKeyEvent *event)
{
    return event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
}

// Gives a Return press to a field: `interpret` runs first, so that the field holds the value of
// what was typed, then `tell`. The event always ends here, since a dialog's default button must
// not take the same press for its own. A repeat of a held key does nothing at all: one press of
// Return is one order, never a chain of them.
template <typename Interpret, typename Tell>
void takeReturnKey(QKeyEvent *event, Interpret interpret, Tell tell)
{
    const bool repeated = event->isAutoRepeat();
    if (!repeated)
        interpret();
    event->accept();
    if (!repeated)
        tell();
}

} // namespace brelt
