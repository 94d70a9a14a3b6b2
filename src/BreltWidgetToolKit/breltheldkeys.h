#pragma once

#include <QKeyEvent>
#include <QObject>
#include <QPointer>
#include <QTimer>

#include <memory>

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
    bool takeRelease(QObject *window, const QKeyEvent &release);
    bool takePress(QObject *window, const QKeyEvent &press);
    bool wasHeld() const;
    void sendHeldBack(bool isRepeat);

    // The key that went down last, and when by the window system's time.
    int m_key = 0;
    ulong m_pressTime = 0;
    bool m_isRepeat = false;
    ulong m_releaseTime = 0; // 0 while the key is down

    // A release that may be the first half of a repeat, until it is known.
    std::unique_ptr<QKeyEvent> m_heldBack;
    QPointer<QObject> m_heldBackFrom;
    QTimer m_patience;
};
