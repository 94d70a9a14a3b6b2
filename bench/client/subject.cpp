#include "subject.h"

#include "crowd.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/market_tablewidget.h"
#include "ZvWidgetKit/status_message_scrollarea.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "client/mainwindow.h"
#include "client/plainnetwork.h"
#include "client/programlook.h"
#include "client/startscreen.h"
#include "support/stopwatch.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QTableView>
#include <QTimer>

#include <cstdio>
#include <functional>

#include <sys/resource.h>

namespace subject {
namespace {

constexpr int patience = 60000; // milliseconds
constexpr int settling = 5000; // until answers and frames that are under way have come
constexpr QSize windowSize(1760, 900);
const char *const demoPhone = "13800000000";
const char *const demoPassword = "demo888888";

void say(const char *word, qint64 figure)
{
    std::printf("%s %lld\n", word, static_cast<long long>(figure));
    std::fflush(stdout);
}

void wait(int milliseconds)
{
    QEventLoop loop;
    QTimer::singleShot(milliseconds, &loop, &QEventLoop::quit);
    loop.exec();
}

bool until(const std::function<bool()> &isSo)
{
    QElapsedTimer elapsed;
    elapsed.start();
    while (!isSo() && !elapsed.hasExpired(patience))
        wait(10);
    return isSo();
}

qint64 residentKib()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmRSS:"))
            return line.mid(6).simplified().split(' ').first().toLongLong();
    }
    return 0;
}

qint64 busyMilliseconds()
{
    rusage used{};
    getrusage(RUSAGE_SELF, &used);
    const auto milliseconds
        = [](const timeval &time) { return time.tv_sec * 1000LL + time.tv_usec / 1000; };
    return milliseconds(used.ru_utime) + milliseconds(used.ru_stime);
}

// Hears of each paint event in the program.
class PaintEar : public QObject
{
public:
    explicit PaintEar(std::function<void(QWidget *)> heard) : m_heard(std::move(heard))
    {
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && object->isWidgetType())
            m_heard(static_cast<QWidget *>(object));
        return false;
    }

private:
    std::function<void(QWidget *)> m_heard;
};

void tellWhenPainted()
{
    // The event is heard of before the widget is; the loop comes back when the frame is done.
    QTimer::singleShot(0, qApp, [] { say("painted", Stopwatch::nanoseconds(CLOCK_MONOTONIC)); });
}

QTableView *tableOf(const QWidget &window)
{
    return window.findChild<Market_TableWidget *>()->findChild<QTableView *>();
}

int tellOfFirstRows(MainWindow &window)
{
    const QWidget *rows = tableOf(window)->viewport();
    bool isPainted = false;
    const PaintEar ear([&](const QWidget *widget) {
        if (isPainted || widget != rows || tableOf(window)->model()->rowCount() == 0)
            return;
        isPainted = true;
        tellWhenPainted();
    });
    if (!until([&] { return isPainted; }))
        return 1;
    wait(0);
    return 0;
}

bool signIn(MainWindow &window)
{
    emit ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->signal_statusLogin_clicked();
    const QPointer<LoginDialog> dialog = window.findChild<LoginDialog *>();
    if (!dialog)
        return false;
    dialog->findChild<QLineEdit *>(QStringLiteral("lineEdit_login_phoneNumber"))
        ->setText(demoPhone);
    dialog->findChild<QLineEdit *>(QStringLiteral("lineEdit_login_password"))
        ->setText(demoPassword);
    dialog->findChild<QPushButton *>(QStringLiteral("pushButton_login"))->click();
    return until([&] { return dialog.isNull(); });
}

void press(QWidget *widget, Qt::Key key)
{
    QKeyEvent event(QEvent::KeyPress, key, Qt::NoModifier);
    QCoreApplication::sendEvent(widget, &event);
}

int tellOfMemory(MainWindow &window)
{
    if (!signIn(window))
        return 1;
    QTableView *table = tableOf(window);
    table->setCurrentIndex(table->model()->index(0, 1));
    press(table, Qt::Key_Return);
    wait(settling);
    say("resident", residentKib());
    return 0;
}

bool isTickerOrClock(const QWidget &window, const QWidget *widget)
{
    const auto *ticker = window.findChild<Status_Message_ScrollArea *>();
    if (ticker == widget || ticker->isAncestorOf(widget))
        return true;
    // The bar itself paints the ground below its clock.
    const auto *bar = window.findChild<StatusBar *>();
    return widget == bar || widget->parentWidget() == bar;
}

int tellOfPaints(MainWindow &window, int seconds)
{
    wait(settling);
    qint64 count = 0;
    const PaintEar ear([&](const QWidget *widget) {
        if (isTickerOrClock(window, widget) || widget == &window)
            return;
        ++count;
        std::printf("painting %s\n", widget->metaObject()->className());
    });
    wait(seconds * 1000);
    say("paints", count);
    return 0;
}

int tellOfLoad(int seconds)
{
    wait(settling);
    const qint64 before = busyMilliseconds();
    wait(seconds * 1000);
    say("busy", busyMilliseconds() - before);
    return 0;
}

int carryOut(Task task, MainWindow &window, int seconds)
{
    if (task == Task::FirstRows)
        return tellOfFirstRows(window);
    if (!until([&] { return window.hasMarket(); }))
        return 1;
    switch (task) {
    case Task::Resident:
        return tellOfMemory(window);
    case Task::Idle:
        return tellOfPaints(window, seconds);
    default:
        return tellOfLoad(seconds);
    }
}

int showBare(QWidget &window)
{
    window.resize(windowSize);
    bool isPainted = false;
    const PaintEar ear([&](const QWidget *) {
        if (!isPainted)
            tellWhenPainted();
        isPainted = true;
    });
    window.show();
    if (!until([&] { return isPainted; }))
        return 1;
    wait(0);
    say("resident", residentKib());
    return 0;
}

} // namespace

int runBare(int argc, char **argv)
{
    const QApplication application(argc, argv);
    QWidget window;
    return showBare(window);
}

int runCrowd(int argc, char **argv, bool isStyled)
{
    programlook::followScreen();
    QApplication application(argc, argv);
    programlook::dress(application);
    Crowd window(isStyled);
    return showBare(window);
}

int runClient(int argc, char **argv, Task task, const QUrl &exchange, int seconds)
{
    programlook::followScreen();
    QApplication application(argc, argv);
    plainnetwork::leaveDevicesAlone();
    programlook::dress(application);
    ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::ChengHu);
    programlook::followPlatform(application);
    MainWindow::useExchange(exchange);
    MainWindow window;
    window.resize(windowSize);
    // As behind the splash, which is left out, the window opens when the market is there.
    const StartScreen start;
    QObject::connect(&start, &StartScreen::over, &window, &QWidget::show);
    const int code = carryOut(task, window, seconds);
    ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
    return code;
}

} // namespace subject
