#pragma once

#include "ZvNetworkKit/zvserverconfig.h"

#include <QString>
#include <QStringList>
#include <QUrl>

#include <optional>

// What the command line asks of the client.
struct ClientOptions {
    QUrl exchange; // empty: start or attach to the embedded service
    std::optional<ZvServerConfig::Platform> platform; // none: ask the user
    QString stateFolder; // of the embedded service
    QString screenshotFile; // empty: stay open
    int screenshotAfterSeconds = 5;

    // Reads arguments (the program's name first). Where they are no good, returns false and sets
    // `error` to one sentence; `helpText` is set in all cases, and `wantsHelp`, `wantsVersion` when
    // they were asked for.
    bool parse(const QStringList &arguments);

    QString error;
    QString helpText;
    bool wantsHelp = false;
    bool wantsVersion = false;
};
