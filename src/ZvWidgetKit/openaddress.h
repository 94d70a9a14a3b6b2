#pragma once

#include "BreltWidgetToolKit/breltglobalfunction.h"

#include <QDesktopServices>
#include <QString>
#include <QUrl>

// Opens an address in the system's browser, and says so where there is none.
inline void openAddress(const QString &address)
{
    if (!QDesktopServices::openUrl(QUrl(address)))
        BreltGlobalFunction::getBreltGlobalFunciton()->alertMessage(
            QStringLiteral("无法打开浏览器，请检查系统的默认浏览器"));
}
