#pragma once

#include <QDesktopServices>
#include <QObject>
#include <QStringList>
#include <QUrl>

namespace zvtest {

// Catches the addresses that would be opened in a browser, while it lives.
class LinkCatcher : public QObject
{
    Q_OBJECT

public:
    LinkCatcher() { QDesktopServices::setUrlHandler(QStringLiteral("http"), this, "take"); }
    ~LinkCatcher() override { QDesktopServices::unsetUrlHandler(QStringLiteral("http")); }

    QStringList opened; // as they would be sent

public slots:
    void take(const QUrl &url) { opened << url.toString(QUrl::FullyEncoded); }
};

} // namespace zvtest
