#include "client/mainwindow.h"

#include "shownwindows.h"
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

#include <QLineEdit>
#include <QPushButton>
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

    // The tree of widgets says who ends with whom.
    void eachPartEndsWithItsOwner()
    {
        KitBench kit;
        const MainWindow window;
        QHash<QString, QList<const QWidget *>> parts; // by their class
        for (const QWidget *each : window.findChildren<QWidget *>())
            parts[QString::fromLatin1(each->metaObject()->className())] << each;
        const auto endsWith = [&parts](const QString &name, const QString &owner) {
            if (parts.value(name).size() != 1 || parts.value(owner).size() != 1)
                return false;
            const QWidget *part = parts.value(name).first();
            const QWidget *whole = parts.value(owner).first();
            // One that is a window lies in no other.
            return whole->isAncestorOf(part) || part->parentWidget() == whole;
        };
        const std::pair<const char *, QStringList> owners[] = {
            {"Market_Widget",
             {"Market_TableWidget", "Market_KTimeWidget", "Market_DetailWidget",
              "EstablishAccountDialog"}},
            {"Market_TableWidget", {"Collection_TableView", "ZvGuideTabPage"}},
            {"Market_KTimeWidget", {"Collection_DetailWidget", "Zv_CollectionCharts"}},
            {"Transaction_Widget", {"Transaction_Deal", "Transaction_Lock"}},
            {"Transaction_Deal", {"DealWidget_AllWidgets"}},
        };
        for (const auto &[owner, names] : owners) {
            for (const QString &name : names)
                QVERIFY2(endsWith(name, QLatin1String(owner)), qPrintable(name));
        }
        for (const char *page : tradingPages)
            QVERIFY2(endsWith(QLatin1String(page), QStringLiteral("DealWidget_AllWidgets")), page);
    }

    void theTradingPagesAskAfterTheSignIn()
    {
        KitBench kit;
        MainWindow window;
        window.resize(1366, 768);
        window.show();
        kit.startOn(QStringLiteral("/ch/first/"));
        ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_statusLogin_clicked();
        const QPointer<LoginDialog> dialog = zvtest::shownWindow<LoginDialog>();
        QVERIFY(dialog);
        zvtest::CallTrace trace;
        QTest::keyClicks(dialog->findChild<QLineEdit *>("lineEdit_login_phoneNumber"),
                         "13900000001");
        QTest::keyClicks(dialog->findChild<QLineEdit *>("lineEdit_login_password"), "secret1");
        QTest::mouseClick(dialog->findChild<QPushButton *>("pushButton_login"), Qt::LeftButton);
        QCOMPARE(ofAccounts(trace.take()).size(), 1); // the sign-in itself
        kit.exchange->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("token-a")));
        kit.settle();
        const QStringList calls = ofAccounts(trace.take());
        const QString all = calls.join('\n');
        QVERIFY2(calls.count(QStringLiteral("ZvServerEngine::startLoggedEngine()")) == 1,
                 qPrintable(all));
        // Each page that asks does so once.
        QVERIFY2(calls.filter(QStringLiteral("RevokeList")).size() == 1, qPrintable(all));
        QVERIFY2(calls.filter(QStringLiteral("Select_")).size() == 6, qPrintable(all));
        QTRY_VERIFY(!dialog);
        kit.endActions();
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
