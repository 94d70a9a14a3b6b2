#include "client/clientoptions.h"
#include "client/display.h"
#include "client/embeddedexchange.h"
#include "client/mainwindow.h"
#include "client/plainnetwork.h"
#include "client/programlook.h"
#include "client/qtwords.h"
#include "client/screenscale.h"
#include "client/startscreen.h"
#include "client/windowplace.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"

#include <QApplication>
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

QString exchangeProgram()
{
    return QCoreApplication::applicationDirPath() + QStringLiteral("/zvexchange");
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

    programlook::followScreen();
    // Qt would take --platform for its own.
    int onlyProgram = 1;
    auto application = std::make_unique<QApplication>(onlyProgram, argv);
    if (screenscale::isByChance(*application)) {
        application.reset();
        screenscale::ignore();
        application = std::make_unique<QApplication>(onlyProgram, argv);
    }
    plainnetwork::leaveDevicesAlone();
    if (!qtwords::speakChinese(*application))
        complain(QStringLiteral("menus of fields stay English without qttranslations5-l10n"));
    if (!programlook::dress(*application))
        complain(QStringLiteral(
            "no font on this machine has Chinese characters; install fonts-noto-cjk"));
    programlook::followPlatform(*application);
    if (!choosePlatform(options))
        return 0;
    programlook::followPlatform(*application);

    // Declared before the window, which follows it to its end.
    std::unique_ptr<EmbeddedExchange> embedded;
    std::unique_ptr<StartScreen> start;
    const bool isPicture = !options.screenshotFile.isEmpty();
    if (!isPicture) {
        start = std::make_unique<StartScreen>();
        start->show();
    }
    // The exchange has its answer ready by the time that there is a window to show it.
    if (!options.exchange.isEmpty())
        MainWindow::useExchange(options.exchange);
    MainWindow window;
    if (options.exchange.isEmpty()) {
        embedded = std::make_unique<EmbeddedExchange>(exchangeProgram(), options.stateFolder);
        window.followExchange(embedded.get());
        if (start)
            start->followExchange(embedded.get());
        embedded->start();
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
