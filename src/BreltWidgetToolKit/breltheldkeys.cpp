#include "BreltWidgetToolKit/breltheldkeys.h"

#include <QCoreApplication>

namespace {

// In milliseconds. Every system waits longer before it begins to repeat a key, and a key that a
// program or a scanner strikes is down for less.
constexpr ulong c_shortestHold = 100;

// In milliseconds, how long the second half of a repeat may be under way. What comes later is known
// for a repeat all the same, but its release has been told as one.
constexpr int c_longestWay = 10;

// 0 where nobody told the time, as with keys that a program makes up.
bool hasTime(const QKeyEvent &event)
{
    return event.timestamp() != 0;
}

std::unique_ptr<QKeyEvent> copyOf(const QKeyEvent &event, bool isRepeat)
{
    auto copy = std::make_unique<QKeyEvent>(event.type(), event.key(), event.modifiers(),
                                            event.nativeScanCode(), event.nativeVirtualKey(),
                                            event.nativeModifiers(), event.text(), isRepeat,
                                            ushort(event.count()));
    copy->setTimestamp(event.timestamp());
    return copy;
}

} // namespace

void BreltHeldKeys::watch()
{
    static QPointer<BreltHeldKeys> watcher;
    if (!watcher && qApp)
        watcher = new BreltHeldKeys;
}

BreltHeldKeys::BreltHeldKeys() : QObject(qApp)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(c_longestWay);
    connect(&m_patience, &QTimer::timeout, this, [this] { sendHeldBack(false); });
    qApp->installEventFilter(this);
}

BreltHeldKeys::~BreltHeldKeys() = default;

// Keys reach the window first, and go on from there to the widget that has them.
bool BreltHeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (!watched->isWindowType())
        return false;
    if (event->type() == QEvent::KeyRelease)
        return takeRelease(watched, *static_cast<QKeyEvent *>(event));
    if (event->type() == QEvent::KeyPress)
        return takePress(watched, *static_cast<QKeyEvent *>(event));
    return false;
}

bool BreltHeldKeys::takeRelease(QObject *window, const QKeyEvent &release)
{
    if (release.isAutoRepeat() || release.key() != m_key || m_releaseTime != 0)
        return false;
    m_releaseTime = release.timestamp();
    if (!hasTime(release) || !wasHeld())
        return false;
    m_heldBack = copyOf(release, false);
    m_heldBackFrom = window;
    m_patience.start();
    return true;
}

// Until its release: it may have begun to repeat.
bool BreltHeldKeys::wasHeld() const
{
    return m_isRepeat || m_releaseTime - m_pressTime >= c_shortestHold;
}

bool BreltHeldKeys::takePress(QObject *window, const QKeyEvent &press)
{
    const bool isHidden = !press.isAutoRepeat() && hasTime(press) && press.key() == m_key
        && press.timestamp() == m_releaseTime && wasHeld();
    m_key = press.key();
    m_pressTime = press.timestamp();
    m_isRepeat = isHidden || press.isAutoRepeat();
    m_releaseTime = 0;

    const QPointer<QObject> target(window);
    sendHeldBack(isHidden);
    if (isHidden && target)
        QCoreApplication::sendEvent(target, copyOf(press, true).get());
    return isHidden || !target;
}

void BreltHeldKeys::sendHeldBack(bool isRepeat)
{
    m_patience.stop();
    const std::unique_ptr<QKeyEvent> release = std::move(m_heldBack);
    if (release && m_heldBackFrom)
        QCoreApplication::sendEvent(m_heldBackFrom, copyOf(*release, isRepeat).get());
}
