#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvWidgetKit/zvguidetabitem.h"
#include "ZvWidgetKit/zvguidetabpage.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "buttonclicks.h"
#include "record.h"
#include "support/testregistry.h"
#include "wheel.h"

#include <QApplication>
#include <QEventLoop>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <functional>
#include <memory>

using zvtest::click;
using zvtest::ClickWay;
using Pool = ZvWidgetSignalSLotPool;
using Servers = QList<QPair<QString, QString>>;

namespace {

const QString stamps = QStringLiteral("/lc/youbika/");
const QString gems = QStringLiteral("/lc/baoyushi/");
const QString jade = QStringLiteral("/lc/hetianyu/");

Servers threeServers()
{
    return {{QStringLiteral("邮币"), stamps},
            {QStringLiteral("宝玉石"), gems},
            {QStringLiteral("和田玉2"), jade}};
}

Pool *pool()
{
    return Pool::getSignalSlotPoolInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

// Notes, beside the debug lines and the calls of the kit, the signals of a page and the pool.
class Record : public zvtest::Record
{
public:
    explicit Record(ZvGuideTabPage *page)
    {
        QObject::connect(page, &ZvGuideTabPage::signal_updateCollectionTypes, &m_context,
                         [this](const QString &server) {
                             note(QStringLiteral("signal_updateCollectionTypes(%1)").arg(server));
                         });
        noteSignal(pool(), &Pool::signal_loadTradeData_fromServer,
                   QStringLiteral("signal_loadTradeData_fromServer()"));
    }
};

QString logOfAClick(const QString &before, const QString &after)
{
    return QStringLiteral("old server： \"%1\"\nwant turn to： \"%2\"").arg(before, after);
}

QString recordOfAChange(const QString &before, const QString &after)
{
    return logOfAClick(before, after)
        + QStringLiteral("\nZvServerAccessManager::setUrlPrefix(\"%1\")"
                         "\nZvServerEngine::sendRequest_Market_Collection()"
                         "\nZvServerEngine::sendRequest_Message()"
                         "\nsignal_updateCollectionTypes(%1)"
                         "\nsignal_loadTradeData_fromServer()")
              .arg(after);
}

// From where a listener reaches back into the page while a change of server is under way.
enum Place { InPageSignal, InPoolSignal, InItemSignal };

void addPlacesAndWays()
{
    QTest::addColumn<Place>("place");
    QTest::addColumn<ClickWay>("way");
    const char *const places[] = {"page's signal", "pool's signal", "item's signal"};
    for (const Place place : {InPageSignal, InPoolSignal, InItemSignal}) {
        for (const auto &each : zvtest::clickWays)
            QTest::addRow("%s, %s", places[place], each.name) << place << each.way;
    }
}

} // namespace

Q_DECLARE_METATYPE(Place)

class ZvGuideTabPageTest : public QObject
{
    Q_OBJECT

protected:
    // Time stands still for the timers of the page but in the tests that wait for them: on a slow
    // machine they would go on between two lines of a test.
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        return event->type() == QEvent::Timer && m_isTimeStill && qobject_cast<QTimer *>(watched)
            && m_page
            && (watched->parent() == m_page
                || m_page->isAncestorOf(qobject_cast<QWidget *>(watched->parent())));
    }

private:
    std::unique_ptr<QWidget> m_window;
    QPointer<ZvGuideTabPage> m_page; // a child of the window
    bool m_isTimeStill = true;

    QPushButton *switchButton() const
    {
        return m_page->findChild<QPushButton *>(QString(), Qt::FindDirectChildrenOnly);
    }
    QWidget *itemsWidget() const { return m_page->layout()->itemAt(1)->widget(); }
    QVBoxLayout *itemsLayout() const
    {
        return qobject_cast<QVBoxLayout *>(itemsWidget()->layout());
    }
    QTimer *disableTimer() const
    {
        return m_page->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    }
    ZvGuideTabItem *item(int i) const
    {
        return qobject_cast<ZvGuideTabItem *>(itemsLayout()->itemAt(i)->widget());
    }
    QPushButton *button(int i) const { return item(i)->findChild<QPushButton *>(); }
    QProgressBar *bar(int i) const { return item(i)->findChild<QProgressBar *>(); }
    QTimer *barTimer(int i) const { return item(i)->findChild<QTimer *>(); }
    static void fire(QTimer *timer) { QVERIFY(QMetaObject::invokeMethod(timer, "timeout")); }

    // Each server on a line: its text, prefix, look, whether it is blocked and runs its bar.
    QString shown() const
    {
        QStringList lines;
        for (int i = 0; i < itemsLayout()->count(); ++i) {
            const QString sheet = button(i)->styleSheet();
            QStringList words{button(i)->text().remove(QLatin1Char('\n')),
                              item(i)->getServerPrefix()};
            words << (sheet == config()->getStyleOf_ZvGuideTabItemButtonEnable()        ? "in use"
                          : sheet == config()->getStyleOf_ZvGuideTabItemButtonDisable() ? "other"
                                                                                        : "?");
            if (!button(i)->isEnabled())
                words << QStringLiteral("blocked");
            if (!bar(i)->isHidden() || barTimer(i)->isActive())
                words << QStringLiteral("%1 at %2 every %3")
                             .arg(bar(i)->isHidden() ? "hidden" : "bar")
                             .arg(bar(i)->value())
                             .arg(barTimer(i)->isActive() ? barTimer(i)->interval() : -1);
            lines << words.join(QLatin1Char(' '));
        }
        return lines.join(QLatin1Char('\n'));
    }

    QList<QPointer<ZvGuideTabItem>> items() const
    {
        QList<QPointer<ZvGuideTabItem>> all;
        for (int i = 0; i < itemsLayout()->count(); ++i)
            all << item(i);
        return all;
    }

    // How many items there are anywhere in the process.
    static int livingItems()
    {
        const QWidgetList widgets = QApplication::allWidgets();
        return int(std::count_if(widgets.begin(), widgets.end(), [](QWidget *widget) {
            return qobject_cast<ZvGuideTabItem *>(widget);
        }));
    }

    // Runs `reaction` once, inside the signal that `place` names, after the page's own slots.
    void reactOnce(Place place, QObject *context, const std::function<void()> &reaction)
    {
        auto done = std::make_shared<bool>(false);
        const auto once = [done, reaction] {
            if (std::exchange(*done, true))
                return;
            reaction();
        };
        if (place == InPageSignal)
            connect(m_page, &ZvGuideTabPage::signal_updateCollectionTypes, context, once);
        else if (place == InPoolSignal)
            connect(pool(), &Pool::signal_loadTradeData_fromServer, context, once);
        else
            connect(item(1), &ZvGuideTabItem::signal_ServerButtonClicked, context, once);
    }

private slots:
    void initTestCase()
    {
        // The exchange stays silent: what the strip does must not wait for an answer.
        access()->setTransport(std::make_unique<ZvScriptedTransport>());
        qApp->installEventFilter(this);
    }

    void init()
    {
        m_isTimeStill = true;
        access()->setUrlPrefix(QStringLiteral("/lc/before/"));
        m_window = std::make_unique<QWidget>();
        m_window->resize(300, 520);
        m_page = new ZvGuideTabPage(m_window.get());
        m_window->show();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
    }

    void cleanup()
    {
        m_window.reset();
        QVERIFY(!m_page);
        QCOMPARE(livingItems(), 0);
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
    }

    void isMadeAsRequired()
    {
        QCOMPARE(m_page->minimumSize(), QSize(28, 500));
        QCOMPARE(m_page->maximumSize(), QSize(28, 500));
        auto *layout = qobject_cast<QVBoxLayout *>(m_page->layout());
        QVERIFY(layout);
        QCOMPARE(layout->contentsMargins(), QMargins());
        QCOMPARE(layout->spacing(), 1);
        QCOMPARE(layout->count(), 3);
        QCOMPARE(layout->itemAt(0)->widget(), switchButton());
        QVERIFY(layout->itemAt(1)->widget());
        QVERIFY(layout->itemAt(2)->spacerItem());
        QCOMPARE(layout->stretch(0), 0);
        QCOMPARE(layout->stretch(1), 0);
        QCOMPARE(layout->stretch(2), 1);

        QVERIFY(itemsWidget()->isVisible());
        QVERIFY(itemsLayout());
        QCOMPARE(itemsLayout()->contentsMargins(), QMargins());
        QCOMPARE(itemsLayout()->spacing(), 1);
        QCOMPARE(itemsLayout()->count(), 0);

        QVERIFY(disableTimer());
        QVERIFY(!disableTimer()->isActive());
        QVERIFY(!disableTimer()->isSingleShot());
        QCOMPARE(m_page->getCurrentServer(), QString());
    }

    void switchIsMadeAsRequired()
    {
        QVERIFY(switchButton()->isCheckable());
        QVERIFY(switchButton()->isChecked());
        QCOMPARE(switchButton()->minimumHeight(), 30);
        QCOMPARE(switchButton()->maximumWidth(), 30);
        QCOMPARE(switchButton()->geometry(), QRect(0, 0, 28, 30));
        for (const auto platform : {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}) {
            config()->setCurrentPlatform(platform);
            ZvGuideTabPage page;
            QCOMPARE(page.findChild<QPushButton *>()->styleSheet(),
                     config()->getStyleOf_MarketOpenButton());
        }
    }

    void switchHidesAndShowsTheItems()
    {
        m_page->setServerList(threeServers());
        QTRY_VERIFY(item(0)->isVisible());
        const QRect place = switchButton()->geometry();
        for (int i = 0; i < 2; ++i) {
            click(switchButton());
            QVERIFY(!switchButton()->isChecked());
            QVERIFY(itemsWidget()->isHidden());
            QVERIFY(!item(0)->isVisible());
            QCoreApplication::processEvents();
            QVERIFY(switchButton()->isVisible());
            QCOMPARE(switchButton()->geometry(), place);
            QCOMPARE(m_page->size(), QSize(28, 500));
            click(switchButton());
            QVERIFY(switchButton()->isChecked());
            QVERIFY(itemsWidget()->isVisible());
            QVERIFY(item(0)->isVisible());
        }
    }

    void tableBelowTakesTheMouseWhereNothingIsShown()
    {
        delete m_page.data();
        QPushButton table(m_window.get()); // stands for what lies below the strip
        table.resize(m_window->size());
        table.show();
        m_page = new ZvGuideTabPage(m_window.get());
        m_page->show();
        m_page->setServerList(threeServers());
        const auto widgetAt = [this](int y) { return m_window->childAt(14, y); };
        const int switchAt = 15, secondAt = 150, thirdAt = 230, belowAt = 300;
        QTRY_COMPARE(widgetAt(thirdAt), button(2));
        QTRY_COMPARE(widgetAt(belowAt), &table);
        QSignalSpy pressed(&table, &QPushButton::clicked);
        QTest::mouseClick(m_window->windowHandle(), Qt::LeftButton, Qt::NoModifier,
                          QPoint(14, belowAt));
        QTRY_COMPARE(pressed.count(), 1);

        click(switchButton());
        QTRY_COMPARE(widgetAt(secondAt), &table);
        QCOMPARE(widgetAt(switchAt), switchButton());
        click(switchButton());
        QTRY_COMPARE(widgetAt(secondAt), button(1));

        m_page->setServerList(threeServers().mid(0, 2));
        QTRY_COMPARE(widgetAt(thirdAt), &table);
        QCOMPARE(widgetAt(secondAt), button(1));
        Servers servers = threeServers() + threeServers();
        m_page->setServerList(servers.mid(0, 4));
        QTRY_COMPARE(widgetAt(belowAt), button(3));
        m_page->setServerList({});
        QTRY_COMPARE(widgetAt(50), &table);
        QCOMPARE(widgetAt(switchAt), switchButton());

        // A hidden strip that gets a list shows it later.
        for (QWidget *hidden : {static_cast<QWidget *>(m_page), m_window.get()}) {
            m_page->setServerList({});
            QTRY_COMPARE(widgetAt(secondAt), &table);
            hidden->hide();
            m_page->setServerList(threeServers());
            QCoreApplication::processEvents();
            hidden->show();
            QTRY_COMPARE(widgetAt(secondAt), button(1));
            QTRY_COMPARE(widgetAt(belowAt), &table);
        }
    }

    // Beside a low table, as in a window of 768 pixels with five servers.
    void wheelBringsTheLastServerUp()
    {
        const Servers servers = threeServers() + threeServers();
        m_page->setServerList(servers.mid(0, 5));
        QTRY_VERIFY(item(4)->isVisible());
        const auto bottom = [this] {
            return button(4)->mapTo(m_window.get(), QPoint(0, button(4)->height())).y();
        };
        const int content = bottom();
        zvtest::turnWheel(button(1), -120);
        QCOMPARE(m_page->y(), 0); // all of it is seen

        m_window->resize(300, 393);
        QVERIFY(content > m_window->height());
        zvtest::turnWheel(button(1), -15); // of a wheel without notches
        QCOMPARE(m_page->y(), -10);
        for (int i = 0; i < 3; ++i)
            QVERIFY(zvtest::turnWheel(button(1), -120));
        QCOMPARE(bottom(), m_window->height());
        zvtest::turnWheel(button(1), 120);
        zvtest::turnWheel(button(1), 120);
        QCOMPARE(m_page->y(), 0);

        // The switch never goes out of reach.
        zvtest::turnWheel(button(1), -120);
        QVERIFY(m_page->y() < 0);
        m_page->slot_kaiguan_clicked(false);
        QCOMPARE(m_page->y(), 0);
    }

    void switchSlotTakesItsArgument()
    {
        m_page->slot_kaiguan_clicked(false);
        QVERIFY(itemsWidget()->isHidden());
        QVERIFY(switchButton()->isChecked());
        m_page->slot_kaiguan_clicked(false);
        QVERIFY(itemsWidget()->isHidden());
        m_page->slot_kaiguan_clicked(true);
        QVERIFY(itemsWidget()->isVisible());
    }

    void closedStripTakesAListAndStaysClosed()
    {
        click(switchButton());
        m_page->setServerList(threeServers());
        QCoreApplication::processEvents();
        QVERIFY(!item(0)->isVisible());
        click(switchButton());
        QTRY_VERIFY(item(0)->isVisible());
    }

    void listBecomesItemsInItsOrder()
    {
        m_page->setServerList(threeServers());
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 in use\n宝玉石 %2 other\n和田玉 %3 other")
                     .arg(stamps, gems, jade));
        QCOMPARE(m_page->getCurrentServer(), stamps);
        QCOMPARE(button(0)->font().pixelSize(), 12);
        QCOMPARE(button(2)->font().pixelSize(), 10);
        QCOMPARE(button(2)->text(), QStringLiteral("和\n田\n玉\n"));
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(item(i)->parentWidget(), itemsWidget());
            item(i)->startProgress();
            QCOMPARE(barTimer(i)->interval(), 150);
        }
        QTRY_COMPARE(item(2)->geometry(), QRect(0, 162, 28, 80));
        QVERIFY(!disableTimer()->isActive());
    }

    void emptyListLeavesTheSwitchOnly()
    {
        m_page->setServerList({});
        QCOMPARE(itemsLayout()->count(), 0);
        QCOMPARE(m_page->getCurrentServer(), QString());

        m_page->setServerList(threeServers());
        m_page->setServerList({});
        QCOMPARE(itemsLayout()->count(), 0);
        QCOMPARE(livingItems(), 0);
        QVERIFY(switchButton()->isVisible());
        // No server has taken the place of the one in use.
        QCOMPARE(m_page->getCurrentServer(), stamps);
    }

    void firstServerIsTakenForTheOneInUseAndNobodyIsTold()
    {
        m_page->setServerList(threeServers());
        click(button(1));
        QCOMPARE(m_page->getCurrentServer(), gems);
        {
            Record record(m_page);
            m_page->setServerList(
                {{QStringLiteral("和田玉2"), jade}, {QStringLiteral("宝玉石"), gems}});
            QCOMPARE(record.take(), QString());
        }
        QCOMPARE(m_page->getCurrentServer(), jade);
        QCOMPARE(access()->urlPrefix(), gems);
        QCOMPARE(shown(), QStringLiteral("和田玉 %1 in use\n宝玉石 %2 other").arg(jade, gems));
    }

    void namesWithoutChineseCharactersGiveEmptyButtons()
    {
        m_page->setServerList({{QStringLiteral("ABC"), stamps}, {QString(), gems}});
        QCOMPARE(button(0)->text(), QString());
        QCOMPARE(button(1)->text(), QString());
        click(button(1));
        QCOMPARE(m_page->getCurrentServer(), gems);
    }

    void clickOnTheServerInUseLogsAndDoesNothingMore()
    {
        m_page->setServerList(threeServers());
        const QString before = shown();
        Record record(m_page);
        click(button(0));
        QCOMPARE(record.take(), logOfAClick(stamps, stamps));
        QCOMPARE(shown(), before);
        QVERIFY(!disableTimer()->isActive());
        QCOMPARE(access()->urlPrefix(), QStringLiteral("/lc/before/"));
    }

    void changeTellsAllInItsOrder_data() { zvtest::addClickWays(); }
    void changeTellsAllInItsOrder()
    {
        QFETCH(ClickWay, way);
        m_page->setServerList(threeServers());
        Record record(m_page);
        // What a listener sees: the new server, the old looks, and no button blocked yet.
        QString seen;
        QObject context;
        connect(pool(), &Pool::signal_loadTradeData_fromServer, &context, [&] {
            seen = m_page->getCurrentServer() + ' ' + access()->urlPrefix() + '\n' + shown();
        });
        click(button(1), way);
        QTRY_COMPARE(m_page->getCurrentServer(), gems);
        QCOMPARE(record.take(), recordOfAChange(stamps, gems));
        QCOMPARE(seen,
                 QStringLiteral("%2 %2\n邮币 %1 in use\n宝玉石 %2 other\n和田玉 %3 other")
                     .arg(stamps, gems, jade));
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 other blocked\n"
                                "宝玉石 %2 in use blocked bar at 24 every 150\n"
                                "和田玉 %3 other blocked")
                     .arg(stamps, gems, jade));
        QVERIFY(disableTimer()->isActive());
        QCOMPARE(disableTimer()->interval(), 1500);
    }

    void blockedButtonsTakeNoClick()
    {
        m_page->setServerList(threeServers());
        click(button(1));
        Record record(m_page);
        for (const ClickWay way : {ClickWay::Mouse, ClickWay::WindowMouse, ClickWay::Call}) {
            for (int i = 0; i < 3; ++i)
                click(button(i), way);
        }
        QCOMPARE(record.take(), QString());
        QCOMPARE(m_page->getCurrentServer(), gems);
    }

    void secondClickOfADoubleClickIsBlocked()
    {
        m_page->setServerList(threeServers());
        Record record(m_page);
        click(button(1));
        QTest::mouseDClick(button(1), Qt::LeftButton);
        QCOMPARE(record.take(), recordOfAChange(stamps, gems));
    }

    void blockEndsWithTheTimer()
    {
        m_page->setServerList(threeServers());
        click(button(1));
        fire(disableTimer());
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 other\n"
                                "宝玉石 %2 in use bar at 24 every 150\n"
                                "和田玉 %3 other")
                     .arg(stamps, gems, jade));
        Record record(m_page);
        click(button(2));
        QCOMPARE(record.take(), recordOfAChange(gems, jade));
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 other blocked\n"
                                "宝玉石 %2 other blocked bar at 24 every 150\n"
                                "和田玉 %3 in use blocked bar at 24 every 150")
                     .arg(stamps, gems, jade));
    }

    void disableTimerKeepsFiring()
    {
        m_page->setServerList(threeServers());
        click(button(1));
        for (int i = 0; i < 3; ++i) {
            fire(disableTimer());
            QVERIFY(disableTimer()->isActive());
            QCOMPARE(disableTimer()->interval(), 1500);
            QCOMPARE(m_page->getCurrentServer(), gems);
            QVERIFY(button(0)->isEnabled());
        }
        QVERIFY(!disableTimer()->isSingleShot());
        m_isTimeStill = false;
        disableTimer()->setInterval(5);
        QSignalSpy fired(disableTimer(), &QTimer::timeout);
        QTRY_VERIFY(fired.count() >= 3);
        // It finds no items, too.
        m_page->setServerList({});
        fire(disableTimer());
        QVERIFY(disableTimer()->isActive());
    }

    void laterChangeIsBlockedForTheFullTime()
    {
        m_page->setServerList(threeServers());
        click(button(1));
        QTRY_VERIFY(disableTimer()->remainingTime() < 1300);
        fire(disableTimer());
        click(button(2));
        QVERIFY(disableTimer()->remainingTime() > 1350);
    }

    void barRunsAsLongAsTheBlock()
    {
        m_page->setServerList(threeServers());
        bar(1)->setValue(0);
        m_isTimeStill = false;
        click(button(1));
        QElapsedTimer clock;
        clock.start();
        QTRY_VERIFY_WITH_TIMEOUT(button(0)->isEnabled(), 10000);
        QVERIFY2(clock.elapsed() >= 1400, QByteArray::number(clock.elapsed()));
        QTRY_VERIFY_WITH_TIMEOUT(bar(1)->isHidden(), 10000);
        QVERIFY2(clock.elapsed() >= 1400, QByteArray::number(clock.elapsed()));
        QCOMPARE(bar(1)->value(), 0);
    }

    void firstRunOfAServerTakesEightTicksAndTheNextTen()
    {
        m_page->setServerList(threeServers());
        const auto ticks = [this](int i) {
            int count = 0;
            for (; barTimer(i)->isActive() && count < 100; ++count)
                fire(barTimer(i));
            return count;
        };
        click(button(1));
        QCOMPARE(ticks(1), 8);
        fire(disableTimer());
        click(button(0));
        QCOMPARE(ticks(0), 8);
        fire(disableTimer());
        click(button(1));
        QCOMPARE(ticks(1), 10);
    }

    void slotTakesAServerThatIsNotInTheList()
    {
        m_page->setServerList(threeServers());
        Record record(m_page);
        m_page->slot_ServerType_clicked(QStringLiteral("/lc/other/"));
        QCOMPARE(record.take(), recordOfAChange(stamps, QStringLiteral("/lc/other/")));
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 other blocked\n宝玉石 %2 other blocked\n"
                                "和田玉 %3 other blocked")
                     .arg(stamps, gems, jade));
    }

    void everyItemOfTheChosenServerRuns()
    {
        Servers servers = threeServers();
        servers[2].second = gems;
        m_page->setServerList(servers);
        click(button(2));
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 other blocked\n"
                                "宝玉石 %2 in use blocked bar at 24 every 150\n"
                                "和田玉 %2 in use blocked bar at 24 every 150")
                     .arg(stamps, gems));
    }

    void slotWorksWithoutItems()
    {
        Record record(m_page);
        m_page->slot_ServerType_clicked(gems);
        QCOMPARE(record.take(), recordOfAChange(QString(), gems));
        QVERIFY(disableTimer()->isActive());
    }

    void rebuildDuringARunEndsTheRun()
    {
        m_page->setServerList(threeServers());
        click(button(1));
        const auto before = items();
        m_page->setServerList(threeServers());
        for (const QPointer<ZvGuideTabItem> &old : before)
            QVERIFY(!old);
        QCOMPARE(livingItems(), 3);
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 in use\n宝玉石 %2 other\n和田玉 %3 other")
                     .arg(stamps, gems, jade));
        QCOMPARE(m_page->getCurrentServer(), stamps);
        // The timer of the block goes on and finds the new items.
        QVERIFY(disableTimer()->isActive());
        fire(disableTimer());
        QVERIFY(button(0)->isEnabled());
        // The kit is still with the other server, and a click on it is a change again.
        Record record(m_page);
        click(button(1));
        QCOMPARE(record.take(), recordOfAChange(stamps, gems));
    }

    void rebuildBetweenPressAndReleaseLosesTheClick()
    {
        m_page->setServerList(threeServers());
        const QPoint middle(14, 150);
        QTRY_COMPARE(m_window->childAt(middle), button(1));
        QWindow *window = m_window->windowHandle();
        Record record(m_page);
        QTest::mousePress(window, Qt::LeftButton, Qt::NoModifier, middle);
        QVERIFY(button(1)->isDown());
        m_page->setServerList(threeServers());
        QCoreApplication::processEvents();
        QTest::mouseRelease(window, Qt::LeftButton, Qt::NoModifier, middle);
        QCOMPARE(record.take(), QString());
        // And the next one finds its button.
        QTest::mouseClick(window, Qt::LeftButton, Qt::NoModifier, middle);
        QTRY_COMPARE(m_page->getCurrentServer(), gems);
    }

    void rebuildInsideTheChange_data() { addPlacesAndWays(); }
    void rebuildInsideTheChange()
    {
        QFETCH(Place, place);
        QFETCH(ClickWay, way);
        m_page->setServerList(threeServers());
        const auto before = items();
        bool rebuilt = false;
        QObject context;
        reactOnce(place, &context, [&] {
            m_page->setServerList(threeServers());
            rebuilt = true;
        });
        Record record(m_page);
        click(button(1), way);
        QTRY_VERIFY(rebuilt);
        QCoreApplication::processEvents();
        for (const QPointer<ZvGuideTabItem> &old : before)
            QVERIFY(!old);
        QCOMPARE(livingItems(), 3);
        QCOMPARE(record.take(), recordOfAChange(stamps, gems));
        QCOMPARE(access()->urlPrefix(), gems);
        // The change goes on with the items that are there now.
        if (place == InItemSignal)
            QCOMPARE(shown(),
                     QStringLiteral("邮币 %1 in use\n宝玉石 %2 other\n和田玉 %3 other")
                         .arg(stamps, gems, jade));
        else
            QCOMPARE(shown(),
                     QStringLiteral("邮币 %1 other blocked\n"
                                    "宝玉石 %2 in use blocked bar at 24 every 150\n"
                                    "和田玉 %3 other blocked")
                         .arg(stamps, gems, jade));
        QCOMPARE(m_page->getCurrentServer(), stamps);
        fire(disableTimer());
        click(button(2));
        QCOMPARE(m_page->getCurrentServer(), jade);
    }

    void emptyListInsideTheChange()
    {
        m_page->setServerList(threeServers());
        QObject context;
        reactOnce(InPageSignal, &context, [&] { m_page->setServerList({}); });
        Record record(m_page);
        click(button(1));
        QCOMPARE(record.take(), recordOfAChange(stamps, gems));
        QCOMPARE(livingItems(), 0);
        QVERIFY(disableTimer()->isActive());
    }

    void endOfThePageInsideTheChange_data() { addPlacesAndWays(); }
    void endOfThePageInsideTheChange()
    {
        QFETCH(Place, place);
        QFETCH(ClickWay, way);
        m_page->setServerList(threeServers());
        QObject context;
        Record record(m_page);
        reactOnce(place, &context, [&] { delete m_page.data(); });
        click(button(1), way);
        QTRY_VERIFY(!m_page);
        QCoreApplication::processEvents();
        // The trading side has been told all the same.
        QCOMPARE(record.take(), recordOfAChange(stamps, gems));
        QCOMPARE(livingItems(), 0);
    }

    void endOfTheWindowInsideTheChange_data() { zvtest::addClickWays(); }
    void endOfTheWindowInsideTheChange()
    {
        QFETCH(ClickWay, way);
        m_page->setServerList(threeServers());
        QObject context;
        reactOnce(InPageSignal, &context, [&] { m_window.release()->deleteLater(); });
        click(button(1), way);
        QTRY_VERIFY(!m_page);
    }

    void eventLoopInsideTheChangeLetsAListIn()
    {
        m_page->setServerList(threeServers());
        QObject context;
        reactOnce(InPoolSignal, &context, [&] {
            QEventLoop loop;
            QTimer::singleShot(0, &loop, [&] {
                m_page->setServerList(threeServers());
                loop.quit();
            });
            loop.exec();
        });
        click(button(1));
        QCOMPARE(livingItems(), 3);
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 other blocked\n"
                                "宝玉石 %2 in use blocked bar at 24 every 150\n"
                                "和田玉 %3 other blocked")
                     .arg(stamps, gems, jade));
    }

    // The buttons are blocked only after the listeners, so one that runs an event loop may let a
    // second change through. The look must tell where the client has gone.
    void eventLoopInsideTheChangeLetsAClickIn_data()
    {
        QTest::addColumn<Place>("place");
        QTest::newRow("page's signal") << InPageSignal;
        QTest::newRow("pool's signal") << InPoolSignal;
    }
    void eventLoopInsideTheChangeLetsAClickIn()
    {
        QFETCH(Place, place);
        m_page->setServerList(threeServers());
        QObject context;
        reactOnce(place, &context, [&] {
            QEventLoop loop;
            QTimer::singleShot(0, &loop, [&] {
                click(button(2));
                loop.quit();
            });
            loop.exec();
        });
        click(button(1));
        QCOMPARE(access()->urlPrefix(), jade);
        QCOMPARE(m_page->getCurrentServer(), jade);
        QCOMPARE(shown(),
                 QStringLiteral("邮币 %1 other blocked\n宝玉石 %2 other blocked\n"
                                "和田玉 %3 in use blocked bar at 24 every 150")
                     .arg(stamps, gems, jade));
        QVERIFY(disableTimer()->isActive());
    }

    void thousandRebuildsLeaveNothingBehind()
    {
        m_page->setServerList(threeServers());
        QCoreApplication::processEvents();
        const auto objects = [this] { return m_window->findChildren<QObject *>().size(); };
        const int before = objects();
        const Record record(m_page); // keeps four thousand lines out of the test's log
        for (int i = 0; i < 1000; ++i) {
            m_page->setServerList(threeServers());
            m_page->slot_ServerType_clicked(i % 2 ? gems : jade);
        }
        QCOMPARE(objects(), before);
        QCOMPARE(itemsLayout()->count(), 3);
        QCOMPARE(livingItems(), 3);
        QCoreApplication::processEvents();
        QCOMPARE(objects(), before);
    }

    void listBelongsToTheCallerNoMore()
    {
        // The caller's list may be the kit's own, which changes while the strip is built.
        Servers servers = threeServers();
        m_page->setServerList(servers);
        servers.clear();
        QCOMPARE(itemsLayout()->count(), 3);
        QCOMPARE(item(1)->getServerPrefix(), gems);
    }

    void switchLooksOtherwiseWhenItIsClosed()
    {
        for (const auto platform : {ZvServerConfig::ChengHu, ZvServerConfig::LanChuan}) {
            config()->setCurrentPlatform(platform);
            ZvGuideTabPage page;
            auto *button = page.findChild<QPushButton *>();
            const QImage open = button->grab().toImage();
            button->setChecked(false);
            QVERIFY(button->grab().toImage() != open);
        }
    }

    void runningBarGoesOnWhileTheStripIsClosed()
    {
        m_page->setServerList(threeServers());
        click(button(1));
        click(switchButton());
        for (int i = 0; i < 8; ++i)
            fire(barTimer(1));
        QVERIFY(!barTimer(1)->isActive());
        click(switchButton());
        QVERIFY(bar(1)->isHidden());
    }
};

ZV_TEST(ZvGuideTabPageTest)
#include "test_zvguidetabpage.moc"
