#include "shownwindows.h"
#include "support/testregistry.h"
#include "windowbench.h"

#include "BreltWidgetToolKit/breltframlessmessagebox.h"
#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/establishaccountdialog.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/small_money_inout.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/transaction_widget.h"
#include "ZvWidgetKit/zvguidetabitem.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QAbstractEventDispatcher>
#include <QAbstractSpinBox>
#include <QProgressBar>
#include <QPushButton>
#include <QTimer>
#include <QtTest/QtTest>

#include <functional>

using zvtest::WindowBench;

namespace {

const QString firstId = QStringLiteral("1001");

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerActionResult *actions()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

ZvUBTopFive quote()
{
    ZvUBTopFive::Data data;
    data.collectionId = firstId;
    data.code = firstId;
    data.name = QStringLiteral("藏品");
    data.latest = 1000;
    data.previousClose = 1000;
    data.lowerLimit = 900;
    data.upperLimit = 1100;
    return ZvUBTopFive(data);
}

// "OWNER INTERVAL", with "once" behind it for a single shot and "runs" where it does.
QString described(const QTimer *timer)
{
    QString text = QStringLiteral("%1 %2").arg(timer->parent()->metaObject()->className(),
                                               QString::number(timer->interval()));
    if (timer->isSingleShot())
        text += QStringLiteral(" once");
    if (timer->isActive())
        text += QStringLiteral(" runs");
    return text;
}

// The waits that QTimer::singleShot() has under way are objects of the event dispatcher.
QObjectList waits()
{
    QObjectList found;
    for (QObject *each : QAbstractEventDispatcher::instance()->children()) {
        if (qstrcmp(each->metaObject()->className(), "QSingleShotTimer") == 0)
            found << each;
    }
    return found;
}

// The lengths of the waits that `cause` begins, in milliseconds and in their order.
QList<int> waitsOf(const std::function<void()> &cause)
{
    const QObjectList before = waits();
    cause();
    QList<int> lengths;
    for (QObject *each : waits()) {
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(each);
        if (!before.contains(each) && !timers.isEmpty())
            lengths << timers.first().interval;
    }
    std::sort(lengths.begin(), lengths.end());
    return lengths;
}

// Runs `open`, which returns when its dialog has closed, and `use` while that is up.
template <typename Dialog>
bool useDialog(const std::function<void()> &open, const std::function<void(Dialog *)> &use)
{
    bool wasUsed = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
        const QPointer<Dialog> dialog = zvtest::shownWindow<Dialog>();
        if (!dialog)
            return;
        watch.stop();
        wasUsed = true;
        use(dialog);
        if (dialog)
            dialog->close();
    });
    watch.start(10);
    open();
    return wasUsed;
}

} // namespace

// All timers of the library in the window that they work in: whose they are, how long, and that
// none of them stops where its owner is out of sight.
class TimersTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<WindowBench> m_bench;
    MainWindow *m_window = nullptr;

    QWidget *part(const char *className) const
    {
        for (QWidget *widget : m_window->findChildren<QWidget *>()) {
            if (qstrcmp(widget->metaObject()->className(), className) == 0)
                return widget;
        }
        return nullptr;
    }
    // The one timer of a part.
    QTimer *timerOf(const char *className) const { return timerOf(part(className)); }
    static QTimer *timerOf(const QObject *owner)
    {
        const auto timers = owner->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        return timers.size() == 1 ? timers.first() : nullptr;
    }
    ZvGuideTabItem *item(int place) const
    {
        return m_window->findChildren<ZvGuideTabItem *>().value(place);
    }
    template <typename Widget = QWidget>
    Widget *inTicket(const char *name) const
    {
        return part("DealWidget_BuySell")->findChild<Widget *>(QLatin1String(name));
    }

    // All timers in the window that belong to widgets of the library, sorted.
    QStringList all() const
    {
        QStringList found;
        for (const QTimer *timer : m_window->findChildren<QTimer *>()) {
            // The chart, the pictures of addresses and the window have theirs besides.
            static const QStringList others{"Zv_CollectionCharts", "BreltLabelURL",
                                            "ConnectionStrip", "SpareMemory"};
            if (!others.contains(QLatin1String(timer->parent()->metaObject()->className())))
                found << described(timer);
        }
        found.sort();
        return found;
    }

    void open()
    {
        m_bench->show();
        cache()->storeMarketInfo({{QStringLiteral("邮票"), access()->urlPrefix()},
                                  {QStringLiteral("钱币"), QStringLiteral("/timers/other/")}});
        WindowBench::fill();
    }

private slots:
    void init()
    {
        m_bench = std::make_unique<WindowBench>(QSize(1366, 768));
        m_window = m_bench->window.get();
    }
    void cleanup() { m_bench.reset(); }

    void fromTheStartThreeOfThemRun()
    {
        const QStringList atFirst{"Collection_TableView 1000 runs", "Market_KTimeWidget 1000 runs",
                                  "Market_Widget 0", "Status_Message_ScrollArea 100 runs",
                                  "ZvGuideTabPage 0"};
        QCOMPARE(all(), atFirst);
        open();
        QStringList withServers = atFirst;
        withServers << "ZvGuideTabItem 0"
                    << "ZvGuideTabItem 0";
        withServers.sort();
        QCOMPARE(all(), withServers);
    }

    void theyNeverStop_data()
    {
        QTest::addColumn<QString>("state");
        for (const char *state : {"never shown", "on the table", "on the chart",
                                  "without the trading half", "minimised", "hidden"})
            QTest::newRow(state) << state;
    }
    void theyNeverStop()
    {
        QFETCH(QString, state);
        if (state != QLatin1String("never shown"))
            open();
        if (state == QLatin1String("on the chart"))
            QTest::keyClick(m_window->focusWidget(), Qt::Key_F5);
        if (state == QLatin1String("without the trading half"))
            part("Transaction_Widget")->hide();
        if (state == QLatin1String("minimised"))
            m_window->showMinimized();
        if (state == QLatin1String("hidden"))
            m_window->hide();
        const bool isTableSeen = part("Collection_TableView")->isVisible();
        const bool isChartSeen = part("Market_KTimeWidget")->isVisible();
        QCOMPARE(isChartSeen, state == QLatin1String("on the chart"));
        QCOMPARE(isTableSeen,
                 state == QLatin1String("on the table")
                     || state == QLatin1String("without the trading half")
                     || state == QLatin1String("minimised"));
        const std::pair<const char *, int> running[] = {{"Collection_TableView", 1000},
                                                        {"Market_KTimeWidget", 1000},
                                                        {"Status_Message_ScrollArea", 100}};
        for (const auto &[owner, interval] : running) {
            const QTimer *timer = timerOf(owner);
            QVERIFY2(timer, owner);
            QVERIFY2(timer->isActive() && !timer->isSingleShot(), owner);
            QCOMPARE(timer->interval(), interval);
            QSignalSpy ticks(timer, &QTimer::timeout);
            QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= 2, 10000);
            QVERIFY2(timer->isActive(), owner);
        }
    }

    void aChangeOfServerBlocksTheButtons_data()
    {
        QTest::addColumn<bool>("isHidden");
        QTest::newRow("in sight") << false;
        QTest::newRow("the window is hidden meanwhile") << true;
    }
    void aChangeOfServerBlocksTheButtons()
    {
        QFETCH(bool, isHidden);
        open();
        QTimer *block = timerOf("ZvGuideTabPage");
        QTimer *progress = timerOf(item(1));
        auto *button = item(1)->findChild<QPushButton *>();
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(described(block), QStringLiteral("ZvGuideTabPage 1500 runs"));
        QCOMPARE(described(progress), QStringLiteral("ZvGuideTabItem 150 runs"));
        QVERIFY(!timerOf(item(0))->isActive());
        QVERIFY(!button->isEnabled());
        if (isHidden)
            m_window->hide();
        QSignalSpy blocks(block, &QTimer::timeout);
        QTRY_VERIFY(button->isEnabled());
        QCOMPARE(blocks.count(), 1);
        QTRY_VERIFY(!progress->isActive());
        QVERIFY(item(1)->findChild<QProgressBar *>()->isHidden());
        // The block's own goes on.
        QVERIFY(blocks.wait());
        QCOMPARE(described(block), QStringLiteral("ZvGuideTabPage 1500 runs"));
    }

    void aResizeSettlesTheMarketHalf()
    {
        open();
        QCOMPARE(waitsOf([this] { m_window->resize(1400, 780); }), QList<int>{500});
        // The panel beside the chart measures when it comes up, and with each resize.
        // A low window that grows high enough for all levels gives the panel two of them.
        const auto areHalfSeconds = [](const QList<int> &wait) {
            return !wait.isEmpty() && wait.count(500) == wait.size();
        };
        QVERIFY(areHalfSeconds(
            waitsOf([this] { QTest::keyClick(m_window->focusWidget(), Qt::Key_F5); })));
        QVERIFY(part("Collection_DetailWidget")->isVisible());
        QVERIFY(areHalfSeconds(waitsOf([this] { m_window->resize(1500, 800); })));
    }

    void aChangedCellFlashes()
    {
        open();
        QCOMPARE(waitsOf([] { cache()->storeMarketList(WindowBench::rows(1000)); }), QList<int>());
        QCOMPARE(waitsOf([] { cache()->storeMarketList(WindowBench::rows(1010)); }),
                 QList<int>{1000});
    }

    void anOrderThrottlesAndLooksAfterItself()
    {
        open();
        pool()->slot_collectionTableView_clicked(firstId);
        cache()->storeTopFive(firstId, quote());
        ZvUBCapInfo::Data money;
        money.availableMoney = 100000;
        cache()->storeCapInfo(ZvUBCapInfo(money));
        QTest::mouseClick(inTicket("label_latest_value"), Qt::LeftButton);
        QTest::keyClicks(inTicket<QAbstractSpinBox>("spinBox_buysellNumber"), "1");
        const QList<int> wait = waitsOf([this] {
            QVERIFY(useDialog<BreltFramlessMessageBox>(
                [this] { QTest::mouseClick(inTicket("pushButton_buysell"), Qt::LeftButton); },
                [](BreltFramlessMessageBox *box) {
                    QTest::mouseClick(box->findChild<QPushButton *>(), Qt::LeftButton);
                }));
        });
        QCOMPARE(wait.count(1000), 1);
        QCOMPARE(waitsOf([] { emit actions()->signal_trade_buy_succeed(); }), QList<int>{700});
    }

    void aMissingCardIsAskedForEachHalfMinute()
    {
        open();
        QTimer *timer
            = part("Market_Widget")->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(!timer->isActive());
        QVERIFY(useDialog<EstablishAccountDialog>(
            [] { cache()->storeNoMyBankcard(QStringLiteral("abc")); },
            [&](EstablishAccountDialog *) {
                QCOMPARE(described(timer), QStringLiteral("Market_Widget 30000 runs"));
                m_window->showMinimized();
                QVERIFY(timer->isActive());
            }));
        QVERIFY(!timer->isActive());
    }

    void codesAreCountedDown()
    {
        open();
        for (auto *button : m_window->findChild<TitleBar *>()->findChildren<QPushButton *>()) {
            if (button->text() == QStringLiteral("登录"))
                QTest::mouseClick(button, Qt::LeftButton);
        }
        auto *dialog = m_window->findChild<LoginDialog *>();
        QVERIFY(dialog);
        const auto timers = dialog->findChildren<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QCOMPARE(timers.size(), 2);
        QVERIFY(!timers.at(0)->isActive() && !timers.at(1)->isActive());
        emit actions()->signal_register_sendCode_succeed();
        emit actions()->signal_changePasswd_sendCode_succeed();
        m_window->showMinimized();
        for (const QTimer *timer : timers)
            QCOMPARE(described(timer), QStringLiteral("LoginDialog 1000 runs"));
        auto *button = dialog->findChild<QPushButton *>("pushButton_register_getVerificationCode");
        QCOMPARE(button->text(), QStringLiteral("重新发送(60)"));
        QTRY_COMPARE(button->text(), QStringLiteral("重新发送(58)"));
        dialog->close();

        QVERIFY(useDialog<Small_Money_InOut>(
            [] { emit cache()->signal_cache_MyBankcard_finded(); },
            [](Small_Money_InOut *money) {
                QTimer *timer = timerOf(money);
                QVERIFY(timer && !timer->isActive());
                emit actions()->signal_inMoney_sendCode_succeed(QStringLiteral("a"),
                                                                QStringLiteral("b"));
                QCOMPARE(described(timer), QStringLiteral("Small_Money_InOut 1000 runs"));
                auto *code = money->findChild<QPushButton *>("pushButton_getValidataCode");
                QTRY_COMPARE(code->text(), QStringLiteral("重新发送(59)"));
                // On the other page the count goes on.
                QTest::mouseClick(money->findChild<QPushButton *>("pushButton_out"),
                                  Qt::LeftButton);
                QTRY_COMPARE(code->text(), QStringLiteral("重新发送(58)"));
            }));
    }
};

ZV_TEST(TimersTest)
#include "test_timers.moc"
