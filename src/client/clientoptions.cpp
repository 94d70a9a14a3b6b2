#include "client/clientoptions.h"

#include <QCommandLineParser>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>

namespace {

// A picture that takes longer than a day is a mistake in the unit.
constexpr int maximumSeconds = 86400;

} // namespace

bool ClientOptions::parse(const QStringList &arguments)
{
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral(
        "The desktop client of the exchange of collectibles. Without --exchange it starts an\n"
        "exchange service of its own, or joins the one that already runs on the state folder."));
    const QCommandLineOption help = parser.addHelpOption();
    const QCommandLineOption version = parser.addVersionOption();
    const QCommandLineOption exchangeOption(
        QStringLiteral("exchange"),
        QStringLiteral("Address of a running service, such as http://127.0.0.1:8080."),
        QStringLiteral("URL"));
    const QCommandLineOption platformOption(
        QStringLiteral("platform"),
        QStringLiteral(
            "Platform to trade on, ch (澄湖) or lc (岚川); without it a dialog asks, and\n"
            "a picture is one of ch."),
        QStringLiteral("ch|lc"));
    const QCommandLineOption stateOption(
        QStringLiteral("state"),
        QStringLiteral("Folder of the embedded service's state; by default in the user's data."),
        QStringLiteral("DIR"));
    const QCommandLineOption screenshotOption(
        QStringLiteral("screenshot"),
        QStringLiteral("Write a picture of the window to FILE and leave; needs no display."),
        QStringLiteral("FILE"));
    const QCommandLineOption afterOption(
        QStringLiteral("after"),
        QStringLiteral("How long to wait before the picture, in seconds (default 5)."),
        QStringLiteral("SECONDS"), QStringLiteral("5"));
    parser.addOptions({exchangeOption, platformOption, stateOption, screenshotOption, afterOption});

    const bool understood = parser.parse(arguments);
    helpText = parser.helpText();
    wantsHelp = understood && parser.isSet(help);
    wantsVersion = understood && parser.isSet(version);
    if (wantsHelp || wantsVersion)
        return true;
    if (!understood) {
        error = parser.errorText();
        return false;
    }
    if (!parser.positionalArguments().isEmpty()) {
        error = QStringLiteral("Unexpected argument: %1").arg(parser.positionalArguments().first());
        return false;
    }

    if (parser.isSet(exchangeOption)) {
        const QString text = parser.value(exchangeOption);
        exchange = QUrl(text, QUrl::StrictMode);
        const QString scheme = exchange.scheme();
        const bool isAddress = exchange.isValid() && !exchange.host().isEmpty()
            && (scheme == QLatin1String("http") || scheme == QLatin1String("https"));
        if (!isAddress) {
            error
                = QStringLiteral("--exchange wants an address like http://127.0.0.1:8080, not: %1")
                      .arg(text);
            return false;
        }
    }

    const QString platformName = parser.value(platformOption);
    if (platformName == QLatin1String("ch")) {
        platform = ZvServerConfig::ChengHu;
    } else if (platformName == QLatin1String("lc")) {
        platform = ZvServerConfig::LanChuan;
    } else if (parser.isSet(platformOption)) {
        error = QStringLiteral("--platform is ch or lc, not: %1").arg(platformName);
        return false;
    }

    stateFolder = parser.isSet(stateOption)
        ? QDir(parser.value(stateOption)).absolutePath()
        : QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)
            + QStringLiteral("/zvclient/exchange");

    if (parser.isSet(screenshotOption)) {
        const QFileInfo file(parser.value(screenshotOption));
        screenshotFile = file.absoluteFilePath();
        if (file.fileName().isEmpty() || !file.absoluteDir().exists()) {
            error = QStringLiteral("--screenshot wants a file in a folder that exists, not: %1")
                        .arg(parser.value(screenshotOption));
            return false;
        }
    } else if (parser.isSet(afterOption)) {
        error = QStringLiteral("--after goes with --screenshot FILE");
        return false;
    }
    bool isNumber = false;
    screenshotAfterSeconds = parser.value(afterOption).toInt(&isNumber);
    if (!isNumber || screenshotAfterSeconds < 0 || screenshotAfterSeconds > maximumSeconds) {
        error = QStringLiteral("--after wants whole seconds from 0 to %1, not: %2")
                    .arg(maximumSeconds)
                    .arg(parser.value(afterOption));
        return false;
    }
    return true;
}
