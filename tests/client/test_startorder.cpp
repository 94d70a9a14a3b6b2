#include "client/mainwindow.h"

#include "support/calltrace.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/logindialog.h"
#include "ZvWidgetKit/statusbar.h"
#include "ZvWidgetKit/titlebar.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QRegularExpression>
#include <QtTest/QtTest>

namespace {

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

const char *const tradingPages[] = {
    "DealWidget_BuySell",
    "DealWidget_Revoke",
    "DealWidget_Delivery",
    "DealWidget_Select_DealRecord",
    "DealWidget_Select_ApplyRecord",
    "DealWidget_Select_DelegateToday",
    "DealWidget_Select_DelegateRecord",
    "DealWidget_Select_DeliveryRecord",
    "DealWidget_Select_MoneyFlow",
};

// Calls that ask for something of an account, or say that there is one.
QStringList ofAccounts(const QStringList &calls)
{
    static const QRegularExpression account(QStringLiteral(
        "sendRequest_(Select_|RevokeList|Cap|Gather|My|getOption|getURL)|startLoggedEngine|"
        "ZvServerActionResult"));
    return calls.filter(account);
}

} // namespace

// What the start of the window asks of the exchange, and what it leaves to the sign-in.
class StartOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void allPagesAreMadeAndNoneAsks()
    {
        KitBench kit;
        zvtest::CallTrace trace;
        MainWindow window;
        QStringList made;
        for (const QWidget *widget : window.findChildren<QWidget *>())
            made << widget->metaObject()->className();
        for (const char *page : tradingPages)
            QCOMPARE(made.count(QLatin1String(page)), 1);
        QCOMPARE(ofAccounts(trace.take()), QStringList());
        window.resize(1366, 768);
        window.show();
        QVERIFY(QTest::qWaitForWindowExposed(&window));
        const QStringList shown = trace.take();
        QCOMPARE(ofAccounts(shown), QStringList());
        // The market side is told what is on the screen.
        QVERIFY2(shown.contains(QStringLiteral("ZvServerEngine::changedToMarketList()")),
                 qPrintable(shown.join('\n')));
        QVERIFY(!window.findChild<LoginDialog *>());
    }

    void theMarketRunsUnsigned()
    {
        KitBench kit;
        MainWindow window;
        window.resize(1366, 768);
        window.show();
        kit.startOn(QStringLiteral("/ch/youbi/"));
        QVERIFY(!engine()->isLogged);
        QVERIFY(window.hasMarket());
        // And asks on in nobody's name.
        const ZvRequest poll = kit.exchange->lastRequest(zvPath_sync);
        QVERIFY(poll.token.isEmpty());
        QVERIFY(!poll.hasParameter("cap"));
        QVERIFY(!engine()->isLogged);
    }
};

ZV_TEST(StartOrderTest)
#include "test_startorder.moc"
