#include "client/clientoptions.h"
#include "client/connectionstrip.h"
#include "client/embeddedexchange.h"
#include "client/mainwindow.h"

#include "BreltWidgetToolKit/breltdarkstyle.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QApplication>
#include <QFontDatabase>
#include <QTextStream>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

constexpr int exitUsage = 2;
constexpr int exitNoPicture = 1;

void complain(const QString &sentence)
{
    QTextStream(stderr) << "zvclient: " << sentence << '\n';
}

// Qt itself ends the process where it finds no display, with a page of advice.
bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        || qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

QStringList argumentsOf(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

// The first family that draws Chinese, one with tabular digits where there is a choice.
void chooseFont()
{
    const QFontDatabase fonts;
    const QStringList preferred{QStringLiteral("Noto Sans CJK SC"),
                                QStringLiteral("Source Han Sans SC"),
                                QStringLiteral("Microsoft YaHei"), QStringLiteral("微软雅黑")};
    QStringList chinese = fonts.families(QFontDatabase::SimplifiedChinese);
    QString family = chinese.value(0);
    for (const QString &name : preferred) {
        if (chinese.contains(name)) {
            family = name;
            break;
        }
    }
    if (family.isEmpty()) {
        complain(QStringLiteral(
            "no font on this machine has Chinese characters; install fonts-noto-cjk"));
        return;
    }
    QFont font(family);
    font.setPixelSize(14);
    QApplication::setFont(font);
}

QString exchangeProgram()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/zvexchange");
}

// Writes the picture and leaves with 0, or with 1 where it cannot be written.
void leaveWithPicture(QWidget *window, const QString &file)
{
    const bool isSaved = window->grab().save(file);
    if (!isSaved)
        complain(QStringLiteral("the picture cannot be written to %1").arg(file));
    QCoreApplication::exit(isSaved ? 0 : exitNoPicture);
}

} // namespace

int main(int argc, char **argv)
{
    // Read before the application is made: help and errors need no display.
    QCoreApplication::setApplicationName(QStringLiteral("zvclient"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZV_VERSION));
    ClientOptions options;
    {
        // The parser asks the application for its name and arguments.
        QCoreApplication reader(argc, argv);
        if (!options.parse(argumentsOf(argc, argv))) {
            complain(options.error);
            return exitUsage;
        }
    }
    if (options.wantsHelp) {
        QTextStream(stdout) << options.helpText;
        return 0;
    }
    if (options.wantsVersion) {
        QTextStream(stdout) << "zvclient " ZV_VERSION "\n";
        return 0;
    }
    if (!options.screenshotFile.isEmpty() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM")
        && !hasDisplay())
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!hasDisplay()) {
        complain(QStringLiteral(
            "There is no display here to open a window on; "
            "./run --screenshot FILE --after SECONDS makes a picture of it instead."));
        return exitUsage;
    }

    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication application(argc, argv);
    chooseFont();
    ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    config->setCurrentPlatform(options.platform);
    BreltDarkStyle::install(application, QColor(config->getStyleOf_MarketTableSelectRow()));

    MainWindow window;
    window.setWindowTitle(QStringLiteral("藏品交易"));
    window.resize(1440, 860);
    window.show();

    ZvServerAccessManager *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
    std::unique_ptr<EmbeddedExchange> embedded;
    if (options.exchange.isEmpty()) {
        embedded = std::make_unique<EmbeddedExchange>(exchangeProgram(), options.stateFolder);
        QObject::connect(embedded.get(), &EmbeddedExchange::available, access,
                         [access, &window](const QUrl &address) {
                             window.connectionStrip()->setServiceNotice(QString());
                             access->setExchangeAddress(address);
                             access->start();
                         });
        QObject::connect(embedded.get(), &EmbeddedExchange::lost, &window,
                         [&window](const QString &reason) {
                             window.connectionStrip()->setServiceNotice(reason);
                         });
        embedded->start();
    } else {
        access->setExchangeAddress(options.exchange);
        access->start();
    }

    if (!options.screenshotFile.isEmpty()) {
        QTimer::singleShot(options.screenshotAfterSeconds * 1000, &window,
                           [&] { leaveWithPicture(&window, options.screenshotFile); });
    }
    const int code = QApplication::exec();
    access->stop();
    return code;
}
