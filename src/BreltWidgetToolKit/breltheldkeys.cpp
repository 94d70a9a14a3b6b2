#include "BreltWidgetToolKit/breltheldkeys.h"

#include <QCoreApplication>
#include <QKeyEvent>
#include <QPointer>

namespace {

// The shortest time after which any system begins to repeat a key is longer, and a key that a
// program or a scanner strikes is down for less.
constexpr ulong c_shortestHold = 100; // milliseconds

} // namespace

void BreltHeldKeys::watch()
{
    static QPointer<BreltHeldKeys> watcher;
    if (!watcher && qApp)
        watcher = new BreltHeldKeys;
}

BreltHeldKeys::BreltHeldKeys() : QObject(qApp)
{
    qApp->installEventFilter(this);
}

BreltHeldKeys::~BreltHeldKeys() = default;

// Keys reach the window first, and go on from there to the widget that has them.
bool BreltHeldKeys::eventFilter(QObject *watched, QEvent *event)
{
    if (!watched->isWindowType())
        return false;
    if (event->type() == QEvent::KeyRelease) {
        const auto *release = static_cast<QKeyEvent *>(event);
        if (release->key() == m_key)
            m_releaseTime = release->timestamp();
        return false;
    }
    if (event->type() != QEvent::KeyPress)
        return false;

    const auto *press = static_cast<QKeyEvent *>(event);
    const bool isHidden = this->isHidden(press);
    m_key = press->key();
    m_isRepeat = isHidden || press->isAutoRepeat();
    m_pressTime = press->timestamp();
    m_releaseTime = 0;
    if (!isHidden)
        return false;

    QKeyEvent repeat(QEvent::KeyPress, press->key(), press->modifiers(), press->nativeScanCode(),
                     press->nativeVirtualKey(), press->nativeModifiers(), press->text(), true,
                     ushort(press->count()));
    repeat.setTimestamp(press->timestamp());
    QCoreApplication::sendEvent(watched, &repeat);
    event->setAccepted(repeat.isAccepted());
    return true;
}

bool BreltHeldKeys::isHidden(const QKeyEvent *press) const
{
    return !press->isAutoRepeat() && press->key() == m_key && m_releaseTime != 0
        && press->timestamp() == m_releaseTime
        && (m_isRepeat || m_releaseTime - m_pressTime >= c_shortestHold);
}
