#include "ZvWidgetKit/pageturn.h"

#include "ZvNetworkKit/serverpaths.h"

#include <QDebug>
#include <QLocale>
#include <QTime>

namespace pageturn {
namespace {

constexpr int TurningDelta = 480; // a page takes more of the wheel than this

void logWithTime(const QString &text)
{
    const QString time = QLocale::c().toString(QTime::currentTime(), QStringLiteral("hh:ss:zzz"));
    qDebug().noquote() << time + text;
}

} // namespace

Direction byWheel(int delta, int &gathered)
{
    const bool turnsUp = delta >= 0;
    if (turnsUp ? gathered < 0 : gathered > 0) {
        gathered = 0;
        return None;
    }
    // More than one page turns is lost anyway, and so nothing can overflow.
    gathered += qBound(-TurningDelta - 1, delta, TurningDelta + 1);
    if (gathered <= TurningDelta && gathered >= -TurningDelta)
        return None;
    gathered = 0;
    return turnsUp ? Up : Down;
}

void log(Direction direction, int requestedPage)
{
    logWithTime(direction == Up ? QStringLiteral(" ==> Up") : QStringLiteral(" ==> Down"));
    logWithTime(QStringLiteral(" ==> RequestPage: ") + QString::number(requestedPage));
}

} // namespace pageturn
