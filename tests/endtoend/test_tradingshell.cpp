#include "client/mainwindow.h"

#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "endtoend/tradingpanel.h"
#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QAbstractButton>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRegularExpression>
#include <QStackedWidget>
#include <QtTest/QtTest>

using endtoend::BoxReader;
using endtoend::patience;
using endtoend::TradingPanel;

namespace {

const QString secondServer = QStringLiteral("/lc/chajiu/");
const QString phone = QStringLiteral("13800000000");
const QString password = QStringLiteral("demo888888");

// What is asked for when all pages start anew, in this order.
const QStringList reloads{
    QStringLiteral("RevokeList"),           QStringLiteral("Select_DealRecord"),
    QStringLiteral("Select_DelegateToday"), QStringLiteral("Select_DelegateRecord"),
    QStringLiteral("Select_ApplyRecord"),   QStringLiteral("Select_DeliveryRecord"),
    QStringLiteral("Select_MoneyFlow")};

QStringList listsAskedFor(const QStringList &trace)
{
    static const QRegularExpression request(
        QStringLiteral("^ZvServerEngine::sendRequest_(RevokeList|Select_\\w+)\\("));
    QStringList names;
    for (const QString &line : trace) {
        const QRegularExpressionMatch match = request.match(line);
        if (match.hasMatch())
            names << match.captured(1);
    }
    return names;
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

} // namespace

// The frame of the trading half in the real window: what a sign-in, the lock, a change of server
// and a sign-in from elsewhere do to it and to its pages. The steps build on each other, in the
// order in which they stand.
class TradingShellTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::LanChuan);
        QVERIFY(m_exchange.start(m_state, 0, 0,
                                 {QStringLiteral("--demo"), QStringLiteral("--catalogue"),
                                  QStringLiteral(ZV_SMALL_CATALOGUE)}));
        m_window = std::make_unique<MainWindow>();
        m_panel = std::make_unique<TradingPanel>(*m_window);
        m_window->resize(1366, 768);
        m_window->show();
        m_window->activateWindow();
        m_window->useExchange(m_exchange.address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void aSignInAsksForAllListsAndFillsThePages()
    {
        m_panel->open("pushButton_deliveryHandling");
        QCOMPARE(page(), QStringLiteral("DealWidget_Delivery"));
        QSignalSpy deals(cache(), &ZvServerCache::signal_cache_Select_DealRecord_changed);
        QSignalSpy orders(cache(), &ZvServerCache::signal_cache_RevokeList_changed);
        QSignalSpy money(cache(), &ZvServerCache::signal_cache_Select_MoneyFlow_changed);
        zvtest::CallTrace trace;
        QVERIFY(endtoend::signInAt(*m_window, phone, password));
        QCOMPARE(listsAskedFor(trace.take()), reloads);
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
        QTRY_VERIFY_WITH_TIMEOUT(deals.count() > 0, patience);
        QTRY_VERIFY_WITH_TIMEOUT(orders.count() > 0, patience);
        QTRY_VERIFY_WITH_TIMEOUT(money.count() > 0, patience);
        // The holdings come by themselves, and wait on the page that was in front.
        QTRY_VERIFY_WITH_TIMEOUT(!holdings().isEmpty(), patience);
    }

    void theLockOpensForThePasswordAlone()
    {
        m_panel->open("pushButton_select");
        m_panel->open("pushButton_select_inputOutputRecord");
        lock();
        QVERIFY(isLocked());
        zvtest::CallTrace trace;
        tryPassword(QStringLiteral("wrong-pass-1"));
        const QString askAgain = QStringLiteral(" 请重新输入密码");
        QVERIFY2(endtoend::until([&] { return hint().endsWith(askAgain); }), qPrintable(hint()));
        QVERIFY2(hint() != askAgain, "the service gave no reason");
        QVERIFY(isLocked());
        QVERIFY(engine()->isLogged);
        QCOMPARE(listsAskedFor(trace.take()), QStringList());

        QSignalSpy told(pool(), &ZvWidgetSignalSLotPool::signal_login_succeed);
        tryPassword(password);
        QVERIFY2(endtoend::until([&] { return !isLocked(); }), qPrintable(hint()));
        // The pool and the engine hear of it as of any sign-in.
        QTRY_COMPARE_WITH_TIMEOUT(told.count(), 1, patience);
        const QStringList calls = trace.take();
        QCOMPARE(listsAskedFor(calls), reloads);
        QVERIFY(calls.contains(QStringLiteral("ZvServerEngine::startLoggedEngine()")));
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
        QTRY_VERIFY_WITH_TIMEOUT(!holdings().isEmpty(), patience);
    }

    void aChangeOfServerAsksAnewAndLeavesThePage()
    {
        m_panel->open("pushButton_deliveryHandling");
        QTRY_VERIFY_WITH_TIMEOUT(!holdings().isEmpty(), patience);
        const QStringList before = holdings();
        QAbstractButton *button = endtoend::serverButton(*m_window, secondServer);
        QVERIFY(button);
        zvtest::CallTrace trace;
        QTest::mouseClick(button, Qt::LeftButton);
        QCOMPARE(listsAskedFor(trace.take()), reloads);
        QCOMPARE(page(), QStringLiteral("DealWidget_Delivery"));
        // What the account has there are other collections.
        QTRY_VERIFY_WITH_TIMEOUT(!holdings().isEmpty() && holdings() != before, patience);
        for (const QString &code : holdings())
            QVERIFY2(!before.contains(code), qPrintable(code));
    }

    void aSignInElsewhereStopsThePollThenTellsThenThePool()
    {
        QStringList order;
        zvtest::CallTrace trace;
        QObject scope;
        connect(pool(), &ZvWidgetSignalSLotPool::signal_loggedOtherPlace, &scope,
                [&] { order << QStringLiteral("pool"); });
        const BoxReader boxes([&] {
            for (const QString &line : trace.take()) {
                if (line.contains(QStringLiteral("startUnloggedEngine")))
                    order << QStringLiteral("poll stopped");
            }
            order << QStringLiteral("box");
        });
        QVERIFY(!endtoend::signIn(m_exchange.address(), secondServer, phone, password).isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(order.count(QStringLiteral("pool")), 1, patience);
        QCOMPARE(order.join(QStringLiteral(", ")), QStringLiteral("poll stopped, box, pool"));
        QCOMPARE(boxes.texts().size(), 1);
        QVERIFY(!engine()->isLogged);
        // The panel is left as it stood.
        QVERIFY(!isLocked());
        QCOMPARE(page(), QStringLiteral("DealWidget_Delivery"));
    }

    void theNextSignInBringsTheBuyPageBack()
    {
        zvtest::CallTrace trace;
        QVERIFY(endtoend::signInAt(*m_window, phone, password));
        QCOMPARE(listsAskedFor(trace.take()), reloads);
        QCOMPARE(page(), QStringLiteral("DealWidget_BuySell"));
    }

private:
    QWidget *half() const
    {
        for (QWidget *widget : m_window->findChildren<QWidget *>()) {
            if (qstrcmp(widget->metaObject()->className(), "Transaction_Widget") == 0)
                return widget;
        }
        return nullptr;
    }
    QStackedWidget *stackOf(const char *parentClass) const
    {
        for (auto *stack : half()->findChildren<QStackedWidget *>()) {
            if (qstrcmp(stack->parentWidget()->metaObject()->className(), parentClass) == 0
                || qstrcmp(stack->metaObject()->className(), parentClass) == 0)
                return stack;
        }
        return nullptr;
    }
    QString page() const
    {
        const QWidget *front = stackOf("DealWidget_AllWidgets")->currentWidget();
        return QString::fromLatin1(front->metaObject()->className());
    }
    bool isLocked() const { return stackOf("Transaction_Widget")->currentIndex() == 1; }
    void lock() { QVERIFY(QMetaObject::invokeMethod(half(), "slot_showTransctionLock")); }
    QWidget *locked() const { return stackOf("Transaction_Widget")->widget(1); }
    QString hint() const { return locked()->findChild<QLabel *>()->text(); }
    void tryPassword(const QString &text)
    {
        QTest::keyClicks(locked()->findChild<QLineEdit *>(), text);
        QTest::mouseClick(locked()->findChild<QPushButton *>(), Qt::LeftButton);
    }
    QStringList holdings() const { return m_panel->column("DealWidget_Delivery_TableView", 0); }

    endtoend::StateFolder m_state{endtoend::StateFolder::Empty};
    endtoend::Exchange m_exchange;
    std::unique_ptr<MainWindow> m_window;
    std::unique_ptr<TradingPanel> m_panel;
};

ZV_TEST(TradingShellTest)
#include "test_tradingshell.moc"
