#include "client/programlook.h"

#include "BreltWidgetToolKit/breltdarkstyle.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QApplication>
#include <QFontDatabase>
#include <QIcon>

namespace {

// The first family that draws Chinese, one with tabular digits where there is a choice.
QString chineseFamily()
{
    const QFontDatabase fonts;
    const QStringList preferred{QStringLiteral("Noto Sans CJK SC"),
                                QStringLiteral("Source Han Sans SC"),
                                QStringLiteral("Microsoft YaHei"), QStringLiteral("微软雅黑")};
    const QStringList chinese = fonts.families(QFontDatabase::SimplifiedChinese);
    for (const QString &name : preferred) {
        if (chinese.contains(name))
            return name;
    }
    return chinese.value(0);
}

} // namespace

// 125 and 150 % included. Where there is no screen there is no scale either, though Qt works one
// out from the size in millimetres.
void programlook::followScreen()
{
    if (qgetenv("QT_QPA_PLATFORM") != "offscreen")
        QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    // Nothing here is drawn by OpenGL. Where a window could be, X11 loads the driver for it, which
    // takes as much memory as all of the client.
    QApplication::setAttribute(Qt::AA_ForceRasterWidgets);
}

bool programlook::dress(QApplication &application)
{
    application.setWindowIcon(QIcon(QStringLiteral(":/icons/appicon.png")));
    const QString family = chineseFamily();
    if (family.isEmpty())
        return false;
    QFont font(family);
    font.setPixelSize(14);
    application.setFont(font);
    return true;
}

void programlook::followPlatform(QApplication &application)
{
    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    BreltDarkStyle::setPictures(QStringLiteral(":/icons/controls/"));
    BreltDarkStyle::install(application, QColor(config->getStyleOf_MarketTableSelectRow()));
}
