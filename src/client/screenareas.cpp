#include "client/screenareas.h"

#include <QGuiApplication>
#include <QScreen>

namespace screenareas {

namespace {

constexpr QSize leastGrip(120, 24); // of the title bar on a screen
constexpr int bandHeight = 35; // of the title bar

qint64 pixelsOf(const QRect &rect)
{
    return rect.isEmpty() ? 0 : qint64(rect.width()) * rect.height();
}

// The area that shows most of the window, or where none shows any, whose middle is next to it.
QRect nearest(const QRect &window, const QList<QRect> &areas)
{
    QRect best;
    for (const QRect &area : areas) {
        const auto apart = [&window](const QRect &other) {
            return (other.center() - window.center()).manhattanLength();
        };
        const qint64 gain = pixelsOf(area & window) - pixelsOf(best & window);
        if (best.isNull() || gain > 0 || (gain == 0 && apart(area) < apart(best)))
            best = area;
    }
    return best;
}

} // namespace

QList<QRect> all()
{
    QList<QRect> areas;
    const QList<QScreen *> screens = QGuiApplication::screens();
    for (const QScreen *screen : screens)
        areas << screen->availableGeometry();
    return areas;
}

bool isWithinReach(const QRect &window, const QList<QRect> &areas)
{
    const QRect band(window.topLeft(), QSize(window.width(), bandHeight));
    for (const QRect &area : areas) {
        const QSize grip = (band & area).size();
        if (grip.width() >= qMin(leastGrip.width(), window.width())
            && grip.height() >= leastGrip.height())
            return true;
    }
    return false;
}

QPoint reachable(const QRect &window, const QList<QRect> &areas)
{
    const QRect area = nearest(window, areas);
    if (area.isEmpty())
        return window.topLeft();
    const int grip = qMin(leastGrip.width(), window.width());
    const int left = area.x() - window.width() + grip;
    const int right = qMax(left, area.x() + area.width() - grip);
    const int lowest = qMax(area.y(), area.y() + area.height() - bandHeight);
    return {qBound(left, window.x(), right), qBound(area.y(), window.y(), lowest)};
}

QRect rescued(const QRect &window, const QList<QRect> &areas)
{
    const QRect area = nearest(window, areas);
    if (area.isEmpty())
        return window;
    QRect place(window.topLeft(), window.size().boundedTo(area.size()));
    if (isWithinReach(place, areas))
        return place;
    const QPoint lowest = area.bottomRight() - QPoint(place.width() - 1, place.height() - 1);
    place.moveTopLeft(
        {qBound(area.x(), place.x(), lowest.x()), qBound(area.y(), place.y(), lowest.y())});
    return place;
}

} // namespace screenareas
