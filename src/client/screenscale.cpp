#include "client/screenscale.h"

#include <QApplication>
#include <QScreen>

#include <algorithm>

namespace {

// The least that desktops offer is 1.25; a tenth is what the sizes in millimetres are wrong by.
constexpr qreal nearness = 0.1;

// What the user adds to the scale of every screen.
qreal userScale()
{
    const qreal scale = qgetenv("QT_SCALE_FACTOR").toDouble();
    return scale > 0 ? scale : 1;
}

} // namespace

bool screenscale::isByChance(qreal scale)
{
    return !qFuzzyCompare(scale, 1) && qAbs(scale - 1) < nearness;
}

bool screenscale::isByChance(const QApplication &application)
{
    const QList<QScreen *> screens = application.screens();
    const qreal user = userScale();
    const auto scaleOf
        = [user](const QScreen *screen) { return screen->devicePixelRatio() / user; };
    return std::any_of(screens.cbegin(), screens.cend(),
                       [&](const QScreen *screen) { return isByChance(scaleOf(screen)); })
        && std::all_of(screens.cbegin(), screens.cend(),
                       [&](const QScreen *screen) { return qAbs(scaleOf(screen) - 1) < nearness; });
}

void screenscale::ignore()
{
    QApplication::setAttribute(Qt::AA_EnableHighDpiScaling, false);
}
