#include "client/clientoptions.h"
#include "client/display.h"
#include "client/embeddedexchange.h"
#include "client/mainwindow.h"
#include "client/plainnetwork.h"
#include "client/startscreen.h"
#include "client/windowplace.h"

#include "BreltWidgetToolKit/breltdarkstyle.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QApplication>
#include <QFontDatabase>
#include <QIcon>
#include <QTextStream>
#include <QTimer>

#include <memory>

namespace {

constexpr int exitUsage = 2;
constexpr int exitNoPicture = 1;

// The size of the window where there is no screen to fill: all columns of the table fit in.
constexpr QSize pictureSize(1760, 900);

// How long a picture waits for the first rows beyond the time that was asked for.
constexpr int longestWaitForRowsMs = 30000;

void complain(const QString &sentence)
{
    QTextStream(stderr) << "zvclient: " << sentence << '\n';
}

QStringList argumentsOf(int argc, char **argv)
{
    QStringList arguments;
    for (int i = 0; i < argc; ++i)
        arguments.append(QString::fromLocal8Bit(argv[i]));
    return arguments;
}

// Reads the options before there is an application: help and errors need no display. The parser
// wants an application object to ask for its name.
bool readOptions(ClientOptions &options, int argc, char **argv)
{
    QCoreApplication reader(argc, argv);
    return options.parse(argumentsOf(argc, argv));
}

// The first family that draws Chinese, one with tabular digits where there is a choice.
void chooseFont()
{
    const QFontDatabase fonts;
    const QStringList preferred{QStringLiteral("Noto Sans CJK SC"),
                                QStringLiteral("Source Han Sans SC"),
                                QStringLiteral("Microsoft YaHei"), QStringLiteral("微软雅黑")};
    const QStringList chinese = fonts.families(QFontDatabase::SimplifiedChinese);
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

// The accent of the style is the platform's.
void installStyle(QApplication &application)
{
    const ZvServerConfig *config = ZvServerConfig::getZvServerConfigInstance();
    BreltDarkStyle::setPictures(QStringLiteral(":/icons/controls/"));
    BreltDarkStyle::install(application, QColor(config->getStyleOf_MarketTableSelectRow()));
}

// False where the user would rather not choose one.
bool choosePlatform(const ClientOptions &options)
{
    if (options.platform)
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(*options.platform);
    else if (options.screenshotFile.isEmpty())
        return StartScreen::choosePlatform();
    return true;
}

// Opens the window where it stood, once the splash says so.
void openAfter(StartScreen &start, MainWindow &window)
{
    auto *place
        = new WindowPlace(&window, window.frame(), window.halves(), WindowPlace::usualFile());
    QObject::connect(&start, &StartScreen::over, place, [place, &start, &window] {
        place->show();
        window.activateWindow(); // the splash may have the keys, or nobody
        start.leaveTo(&window);
    });
}

// Writes the picture and leaves with 0, or with 1 where it cannot be written.
void leaveWithPicture(QWidget &window, const QString &file)
{
    const bool isSaved = window.grab().save(file, "PNG");
    if (!isSaved)
        complain(QStringLiteral("the picture cannot be written to %1").arg(file));
    QCoreApplication::exit(isSaved ? 0 : exitNoPicture);
}

// Takes the picture when the time has come and rows are there, or have not come for long.
void planPicture(MainWindow &window, const QString &file, int afterSeconds)
{
    QTimer::singleShot(afterSeconds * 1000, &window, [&window, file] {
        const auto leave = [&window, file] { leaveWithPicture(window, file); };
        if (window.hasMarket()) {
            leave();
            return;
        }
        QObject::connect(&window, &MainWindow::marketShown, &window, leave, Qt::QueuedConnection);
        QTimer::singleShot(longestWaitForRowsMs, &window, leave);
    });
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication::setApplicationName(QStringLiteral("zvclient"));
    QCoreApplication::setApplicationVersion(QStringLiteral(ZV_VERSION));
    ClientOptions options;
    if (!readOptions(options, argc, argv)) {
        complain(options.error);
        return exitUsage;
    }
    if (options.wantsHelp) {
        QTextStream(stdout) << options.helpText;
        return 0;
    }
    if (options.wantsVersion) {
        QTextStream(stdout) << "zvclient " ZV_VERSION "\n";
        return 0;
    }
    // A picture disturbs nobody who works at the screen.
    if (!options.screenshotFile.isEmpty() && !qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    if (!display::isThere()) {
        complain(QStringLiteral(
            "There is no display here to open a window on; "
            "./run --screenshot FILE --after SECONDS makes a picture of it instead."));
        return exitUsage;
    }

    // Text and lines follow the screen's own scale, 125 and 150 % included. Where there is no
    // screen there is no scale either, though Qt works one out from the size in millimetres.
    if (qgetenv("QT_QPA_PLATFORM") != "offscreen")
        QApplication::setAttribute(Qt::AA_EnableHighDpiScaling);
    QApplication::setAttribute(Qt::AA_UseHighDpiPixmaps);
    QApplication::setHighDpiScaleFactorRoundingPolicy(
        Qt::HighDpiScaleFactorRoundingPolicy::PassThrough);
    // Qt would take --platform for its own.
    int onlyProgram = 1;
    QApplication application(onlyProgram, argv);
    plainnetwork::leaveDevicesAlone();
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/icons/appicon.png")));
    chooseFont();
    installStyle(application);
    if (!choosePlatform(options))
        return 0;
    installStyle(application);

    // Declared before the window, which follows it to its end.
    std::unique_ptr<EmbeddedExchange> embedded;
    std::unique_ptr<StartScreen> start;
    const bool isPicture = !options.screenshotFile.isEmpty();
    if (!isPicture) {
        start = std::make_unique<StartScreen>();
        start->show();
    }
    MainWindow window;
    if (options.exchange.isEmpty()) {
        embedded = std::make_unique<EmbeddedExchange>(exchangeProgram(), options.stateFolder);
        window.followExchange(embedded.get());
        if (start)
            start->followExchange(embedded.get());
        embedded->start();
    } else {
        window.useExchange(options.exchange);
    }
    if (isPicture) {
        window.resize(pictureSize);
        window.show();
        planPicture(window, options.screenshotFile, options.screenshotAfterSeconds);
    } else {
        openAfter(*start, window);
    }

    const int code = QApplication::exec();
    ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
    return code;
}
