#include "client/plainnetwork.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>

// Plugins of Qt ask the system bus for every device, on a thread of their own, and let wireless
// ones look for other networks every few seconds, which delays what is under way; and they refuse a
// request where they believe that there is no network, though the exchange may serve on this very
// machine. Whether it can be reached is told here by the polls alone. There is no switch for these
// plugins, but they are looked for once, by the first manager.
void plainnetwork::leaveDevicesAlone()
{
    const QStringList paths = QCoreApplication::libraryPaths();
    QCoreApplication::setLibraryPaths(QStringList());
    QNetworkAccessManager();
    QCoreApplication::setLibraryPaths(paths);
}
