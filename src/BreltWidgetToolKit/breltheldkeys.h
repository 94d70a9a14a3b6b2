#pragma once

#include <QObject>

class QKeyEvent;

// Makes the repeats of a held key known as such before any widget sees them. Not part of the
// exported interface.
//
// An X server writes a repeat as a release and a press at one time, and Qt takes it for one only
// where both have arrived when it looks. Where the press comes a moment later, each repeat seems to
// be a key of its own, and a Return that is held would order, confirm and order again.
class BreltHeldKeys : public QObject
{
    Q_OBJECT

public:
    // Watches the keys of the application from now on. May be called again.
    static void watch();

    ~BreltHeldKeys() override;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    BreltHeldKeys();
    bool isHidden(const QKeyEvent *press) const;

    // The key that went down last. Times are those of the window system, 0 where it told none.
    int m_key = 0;
    bool m_isRepeat = false;
    ulong m_pressTime = 0;
    ulong m_releaseTime = 0; // 0 while the key is down
};
