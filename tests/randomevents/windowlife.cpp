#include "randomevents/windowlife.h"

#include "randomevents/names.h"

#include "client/mainwindow.h"
#include "client/programlook.h"
#include "client/startscreen.h"
#include "client/windowplace.h"

#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvmarketpoller.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/moneyoverviewdialog.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDialog>
#include <QEventLoop>
#include <QFontDatabase>
#include <QMetaMethod>
#include <QPalette>
#include <QStackedWidget>
#include <QThread>
#include <QTimerEvent>
#include <QWindow>

#include <algorithm>
#include <limits>
#include <utility>

namespace randomevents {

namespace {

constexpr int mostClosings = 60; // of one loop
const auto roomPrefix = QStringLiteral("event in ");

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

int loopLevel()
{
    return QThread::currentThread()->loopLevel();
}

// Of QStackedWidgets, the object name of the page in front tells which one it is.
QString roomOf(const QWidget *window)
{
    QString room = QString::fromLatin1(window->metaObject()->className());
    if (room == QLatin1String("LoginDialog")) {
        const auto *pages = window->findChild<QStackedWidget *>();
        if (pages && pages->currentWidget())
            room += QLatin1Char(' ') + pages->currentWidget()->objectName();
    }
    return room;
}

} // namespace

QStringList expectedRooms()
{
    QStringList rooms{QStringLiteral("MainWindow"),
                      QStringLiteral("ZvPlatformSelectDialog"),
                      QStringLiteral("ZvSplashScreen"),
                      QStringLiteral("LoginDialog page_login"),
                      QStringLiteral("LoginDialog page_register"),
                      QStringLiteral("LoginDialog page_updatePasswd"),
                      QStringLiteral("MoneyOverviewDialog"),
                      QStringLiteral("Small_Money_Overview"),
                      QStringLiteral("Small_Money_InOut"),
                      QStringLiteral("EstablishAccountDialog"),
                      QStringLiteral("Small_DeliveryHandling_Dialog"),
                      QStringLiteral("BreltFramlessMessageBox"),
                      QStringLiteral("KeyboardSprite"),
                      QStringLiteral("QMenu")};
    for (QString &room : rooms)
        room.prepend(roomPrefix);
    return rooms;
}

WindowLife::WindowLife(quint64 seed, int events, HeldClock &clock, Journal &journal,
                       campaign::Counts &counts)
    : m_chance(seed), m_clock(clock), m_journal(journal), m_counts(counts), m_left(events),
      m_hands(m_chance, counts, clock, [this](const QString &event) { note(event); }),
      m_other(std::make_unique<QWidget>())
{
    m_other->setGeometry(10, 10, 50, 50);
}

WindowLife::~WindowLife() = default;

void WindowLife::live()
{
    for (const char *scheme : {"http", "https"})
        QDesktopServices::setUrlHandler(QLatin1String(scheme), this, "openPage");
    wake();
    choosePlatform();
    open();
    QEventLoop outer;
    m_outer = &outer;
    outer.exec();
    m_outer = nullptr;
    close();
    for (const char *scheme : {"http", "https"})
        QDesktopServices::unsetUrlHandler(QLatin1String(scheme));
}

void WindowLife::choosePlatform()
{
    if (m_chance.happens(50) && StartScreen::choosePlatform())
        return;
    config()->setCurrentPlatform(
        m_chance.oneOf({ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}));
}

void WindowLife::open()
{
    programlook::followPlatform(*qApp);
    auto exchange = std::make_unique<RandomExchange>(m_chance, m_counts);
    m_exchange = exchange.get();
    access()->setTransport(std::move(exchange));
    m_start = std::make_unique<StartScreen>();
    m_start->show();
    m_window = std::make_unique<MainWindow>();
    auto *place = new WindowPlace(m_window.get(), m_window->frame(), m_window->halves(),
                                  m_folder.filePath(QStringLiteral("window.ini")));
    connect(m_start.get(), &StartScreen::over, place, [this, place] {
        place->show();
        m_isOpen = true;
        m_start->leaveTo(m_window.get());
    });
    check(m_soundness.fault(m_window.get()));
    ZvServerEngine::getZvServerEngineInstance()->poller()->setJitterSeed(m_chance.below(1'000));
    m_window->useExchange(QUrl(QStringLiteral("http://127.0.0.1:9")));
    // A network has a clock of its own: pictures come from the program, or are none.
    config()->setServiceAddress(QStringLiteral("qrc:"));
    if (m_chance.happens(70))
        signIn();
}

void WindowLife::close()
{
    m_window->show();
    m_window->activateWindow();
    m_hands.letGo(m_window.get());
    // The mouse goes away, and what is on its way comes to rest.
    QEvent leave(QEvent::WindowDeactivate);
    for (QWidget *widget : m_window->findChildren<QWidget *>())
        QCoreApplication::sendEvent(widget, &leave);
    // Qt leaks a date that is still being typed where its calendar ends.
    for (QWidget *days :
         m_window->findChildren<QWidget *>(QStringLiteral("qt_calendar_calendarview"))) {
        QKeyEvent escape(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier);
        QCoreApplication::sendEvent(days, &escape);
    }
    hearAnswers();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    check(m_soundness.faultAtRest());
    m_start.reset();
    m_window.reset();
    access()->stop();
    access()->setTransport(nullptr);
    m_exchange = nullptr;
    hearAnswers();
    check(m_soundness.faultAtRest());
}

void WindowLife::openPage(const QUrl &url)
{
    note(QStringLiteral("page %1 opened").arg(url.toString()));
    ++m_counts[kPage];
}

// One turn of the event loop that is the innermost by then.
void WindowLife::wake()
{
    if (m_timer == 0)
        m_timer = startTimer(0);
}

void WindowLife::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_timer)
        return;
    killTimer(std::exchange(m_timer, 0));
    // Not a loop of its own, but somebody who lets events pass in between.
    if (loopLevel() <= m_busy) {
        wake();
        return;
    }
    const int outer = std::exchange(m_busy, loopLevel());
    wake(); // for the loop of a dialog that this turn may open
    turn();
    m_busy = outer;
}

void WindowLife::turn()
{
    const auto level = static_cast<std::size_t>(loopLevel());
    while (m_loops.size() > level)
        m_loops.pop_back();
    while (m_loops.size() < level)
        m_loops.push_back({m_chance.between(5, 40)});

    letTimePass();
    hearAnswers();
    // A host would end with its window; here its user thinks better of it.
    if (m_isOpen && !windowInUse())
        m_window->show();
    Loop loop = m_loops.back();
    if (isToBeEnded(loop)) {
        endLoop(loop);
    } else {
        // A user is at times faster than the screen.
        for (int i = m_chance.between(1, 4); i > 0 && m_left > 0; --i) {
            --loop.events;
            happen();
        }
    }
    // Loops may have come and gone meanwhile.
    if (m_loops.size() >= level)
        m_loops[level - 1] = loop;
}

// A loop of a dialog that has had its events, or of all when the life is over. A modal dialog that
// was shown without a loop of its own counts like one.
bool WindowLife::isToBeEnded(Loop &loop)
{
    const bool isOuter = m_loops.size() == 1 && m_outer;
    if (!isOuter)
        return m_left <= 0 || loop.events <= 0;
    QWidget *modal = QApplication::activeModalWidget();
    if (modal != m_modal) {
        m_modal = modal;
        m_modalEvents = m_chance.between(10, 70);
        loop.closings = 0;
    }
    return m_left <= 0 || (modal && --m_modalEvents <= 0);
}

// As a user would at first, then as the window system does, at last as the program can.
void WindowLife::endLoop(Loop &loop)
{
    QWidget *window = QApplication::activePopupWidget();
    if (!window)
        window = QApplication::activeModalWidget();
    const bool isOuter = m_loops.size() == 1 && m_outer;
    if (!window && isOuter) {
        m_outer->quit();
        return;
    }
    ++loop.closings;
    note(QStringLiteral("attempt %1 to close %2")
             .arg(loop.closings)
             .arg(window ? QString::fromLatin1(window->metaObject()->className())
                         : QStringLiteral("nothing")));
    if (loop.closings > mostClosings)
        m_journal.fail(window ? QStringLiteral("%1 does not close")
                                    .arg(QString::fromLatin1(window->metaObject()->className()))
                                    .toStdString()
                              : std::string("an event loop does not end"));
    if (!window)
        window = windowInUse();
    if (!window)
        return;
    m_hands.letGo(window);
    if (loop.closings % 3 == 1) {
        m_hands.press(window, Qt::Key_Escape);
    } else {
        ++m_counts[kCloseEvent];
        window->close();
    }
}

QWidget *WindowLife::windowInUse() const
{
    if (QWidget *popup = QApplication::activePopupWidget())
        return popup;
    if (QWidget *modal = QApplication::activeModalWidget())
        return modal;
    if (m_window && m_window->isVisible())
        return m_window.get();
    for (QWidget *window : QApplication::topLevelWidgets()) {
        if (window->isVisible() && window != m_other.get()
            && !(window->windowFlags() & Qt::WindowDoesNotAcceptFocus))
            return window;
    }
    return nullptr;
}

void WindowLife::noteRoom(const QWidget *window)
{
    ++m_counts[(roomPrefix + roomOf(window)).toStdString()];
    for (const QWidget *at = QApplication::focusWidget(); at; at = at->parentWidget()) {
        if (at->inherits("KeyboardSprite") && window == m_window.get())
            ++m_counts[(roomPrefix + QStringLiteral("KeyboardSprite")).toStdString()];
    }
}

void WindowLife::letTimePass()
{
    const int kind = m_chance.below(100);
    int milliseconds = m_chance.below(40);
    if (kind < 20)
        milliseconds = m_chance.below(600);
    else if (kind < 23)
        milliseconds = m_chance.below(6'000);
    else if (kind < 24)
        milliseconds = m_chance.below(70'000);
    m_counts[kTime] += milliseconds > 0 ? 1 : 0;
    m_clock.pass(milliseconds);
}

// One answer after the other, since each may open a dialog in which the others are heard.
void WindowLife::hearAnswers()
{
    waitForDecoder();
    if (!m_exchange)
        return;
    for (const ZvCallId id : m_exchange->waiting()) {
        if (m_exchange->mayAnswer(id))
            waitForDecoder();
    }
}

// What was said is decoded on a thread of its own; to wait for it, and for what it leads to at
// once, keeps the order of events the same each time.
void WindowLife::waitForDecoder()
{
    constexpr int mostSteps = 3; // from one event of the link to the next
    ZvExchangeLink *link = access()->link();
    const auto handOver = [link] { QCoreApplication::sendPostedEvents(link, QEvent::MetaCall); };
    handOver(); // an answer takes its way to the decoder
    const auto isDone = std::make_shared<bool>(false);
    link->afterDecoding([isDone] { *isDone = true; });
    while (!*isDone) {
        QThread::usleep(20);
        handOver();
    }
    for (int step = 0; step < mostSteps; ++step)
        handOver();
}

void WindowLife::happen()
{
    check(m_soundness.fault(m_window.get()));
    --m_left;
    QWidget *window = windowInUse();
    if (window)
        noteRoom(window);
    const int what = m_chance.below(100);
    if (what < 72 && window)
        m_hands.act(window);
    else if (what < 78)
        happenToWindow();
    else if (what < 79)
        happenToProgram();
    else if (what < 84)
        callAsHost();
    else if (what < 88)
        emitSignal(ZvServerCache::getZvServerCacheInstance(), kCacheSignal);
    else if (what < 92)
        emitSignal(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(), kPoolSignal);
    else if (what < 94)
        happenAtExchange();
    else
        note(QStringLiteral("nothing"));
}

// By the window system.
void WindowLife::happenToWindow()
{
    QWidget *window = windowInUse();
    if (!window)
        return;
    const bool isMain = window == m_window.get();
    switch (m_chance.below(8)) {
    case 0:
    case 1:
        if (!isMain)
            return;
        note(QStringLiteral("window resized"));
        // Seldom a large one: to paint it takes its time.
        window->resize(QSize(m_chance.between(200, 1'300), m_chance.between(200, 800))
                       * (m_chance.happens(10) ? 2 : 1));
        ++m_counts[kResized];
        break;
    case 2:
        if (!isMain)
            return;
        note(QStringLiteral("window minimised and back"));
        window->setWindowState(m_chance.oneOf<Qt::WindowState>(
            {Qt::WindowMinimized, Qt::WindowMaximized, Qt::WindowFullScreen, Qt::WindowNoState}));
        ++m_counts[kHidden];
        break;
    case 3:
        if (!isMain)
            return;
        note(QStringLiteral("window hidden and shown"));
        window->hide();
        QCoreApplication::sendPostedEvents();
        window->show();
        ++m_counts[kHidden];
        break;
    case 4:
        note(QStringLiteral("window asked to close"));
        ++m_counts[kCloseEvent];
        window->close();
        break;
    default:
        note(QStringLiteral("another window activated"));
        m_other->show();
        m_other->activateWindow();
        QCoreApplication::sendPostedEvents();
        m_other->hide();
        if (QWidget *inUse = windowInUse())
            inUse->activateWindow();
        ++m_counts[kActivation];
    }
}

// By the desktop's settings.
void WindowLife::happenToProgram()
{
    ++m_counts[kLook];
    switch (m_chance.below(3)) {
    case 0: {
        QFont font = QApplication::font();
        font.setPointSize(m_chance.between(7, 18));
        note(QStringLiteral("font of %1 points").arg(font.pointSize()));
        QApplication::setFont(font);
        break;
    }
    case 1: {
        note(QStringLiteral("another palette"));
        QPalette palette = QApplication::palette();
        palette.setColor(QPalette::Window, QColor(m_chance.below(256), m_chance.below(256), 90));
        palette.setColor(QPalette::Text, QColor(m_chance.below(256), 200, m_chance.below(256)));
        QApplication::setPalette(palette);
        break;
    }
    default: {
        note(QStringLiteral("another language"));
        QEvent change(QEvent::LanguageChange);
        for (QWidget *window : QApplication::topLevelWidgets())
            QCoreApplication::sendEvent(window, &change);
    }
    }
}

void WindowLife::happenAtExchange()
{
    if (!m_exchange)
        return;
    switch (m_chance.below(6)) {
    case 0:
        note(QStringLiteral("exchange goes away"));
        m_exchange->goAway(m_chance.between(1, 20));
        break;
    case 1:
        note(QStringLiteral("exchange begins anew"));
        m_exchange->market().beginAnew();
        ++m_counts[kReboot];
        break;
    case 2:
        note(QStringLiteral("kit stopped and started"));
        access()->stop();
        access()->start();
        ++m_counts[kReboot];
        break;
    default:
        note(QStringLiteral("another server"));
        access()->setUrlPrefix(m_chance.oneOf(RandomMarket::prefixes()));
        ++m_counts[kServer];
    }
}

// What chance alone would seldom come by, by the roads that a host has.
void WindowLife::callAsHost()
{
    // Below a dialog none of its buttons can be reached.
    if (!m_window || windowInUse() != m_window.get())
        return;
    ++m_counts[kHostCall];
    auto *market = m_window->findChild<Market_Widget *>();
    auto *engine = ZvServerEngine::getZvServerEngineInstance();
    switch (m_chance.below(engine->isLogged ? 6 : 10)) {
    case 0:
        note(QStringLiteral("host asks for money in and out"));
        market->slot_inputoutput_clicked();
        break;
    case 1:
        note(QStringLiteral("host shows the money"));
        market->slot_moneyOverview_clicked();
        break;
    case 2:
        note(QStringLiteral("host asks for applications"));
        market->slot_purchaseApply_clicked();
        break;
    case 3: {
        note(QStringLiteral("host shows the older money overview"));
        MoneyOverviewDialog dialog(m_window.get());
        dialog.exec();
        break;
    }
    case 4:
        note(QStringLiteral("host chooses a collection"));
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_collectionTableView_clicked(
            m_exchange->market().anyId());
        break;
    case 5:
        note(QStringLiteral("host opens a page of money"));
        if (m_chance.happens(50))
            market->slot_gotoUrl_input();
        else
            market->slot_gotoUrl_output();
        break;
    default:
        signIn();
    }
}

// As if the dialog had been closed before the answer came.
void WindowLife::signIn()
{
    note(QStringLiteral("somebody signs in"));
    ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_login(
        QStringLiteral("13800000000"), QStringLiteral("secret1"));
}

void WindowLife::emitSignal(QObject *object, const char *name)
{
    QList<QMetaMethod> found;
    const QMetaObject *meta = object->metaObject();
    for (int i = meta->methodOffset(); i < meta->methodCount(); ++i) {
        if (meta->method(i).methodType() == QMetaMethod::Signal)
            found << meta->method(i);
    }
    const QMetaMethod signal = m_chance.oneOf(found);
    QString text = m_exchange ? m_exchange->market().anyId() : QString();
    int number = m_chance.oneOf({0, 1, -1, 120, -120, int(Qt::Key_1), int(Qt::Key_A), 86'399,
                                 std::numeric_limits<int>::max()});
    bool truth = m_chance.happens(50);
    QSize size(m_chance.between(0, 3'000), m_chance.between(0, 2'000));
    note(QString::fromLatin1(signal.methodSignature()));
    ++m_counts[name];
    switch (signal.parameterCount() == 0 ? int(QMetaType::Void) : signal.parameterType(0)) {
    case QMetaType::Void:
        signal.invoke(object, Qt::DirectConnection);
        break;
    case QMetaType::QString:
        signal.invoke(object, Qt::DirectConnection, Q_ARG(QString, text));
        break;
    case QMetaType::Int:
        signal.invoke(object, Qt::DirectConnection, Q_ARG(int, number));
        break;
    case QMetaType::Bool:
        signal.invoke(object, Qt::DirectConnection, Q_ARG(bool, truth));
        break;
    case QMetaType::QSize:
        signal.invoke(object, Qt::DirectConnection, Q_ARG(QSize, size));
        break;
    default:
        m_journal.fail("no value for " + signal.methodSignature().toStdString());
    }
}

void WindowLife::check(const QString &fault)
{
    if (!fault.isEmpty())
        m_journal.fail(fault.toStdString());
}

void WindowLife::note(const QString &event)
{
    m_journal.note(event.toStdString());
}

} // namespace randomevents
