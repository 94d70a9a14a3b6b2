#include "client/connectionstrip.h"
#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/middleman.h"
#include "endtoend/people.h"
#include "endtoend/programs.h"
#include "endtoend/tradingpanel.h"
#include "endtoend/wiretrader.h"
#include "support/testregistry.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QCoreApplication>
#include <QProcess>
#include <QTextStream>
#include <QtTest/QtTest>

using endtoend::BoxReader;
using endtoend::Middleman;
using endtoend::patience;
using endtoend::TradingPanel;
using endtoend::WireTrader;

namespace {

const QString server = QStringLiteral("/ch/youbi/");
const QString code = QStringLiteral("111001");
const QString phone = QStringLiteral("13800000000");
const QString password = QStringLiteral("demo888888");
const char *const revokeTable = "DealWidget_Revoke_TableView";

// Names the exchange to a child that plays the client which is killed.
const char *const childVariable = "ZV_TEST_DYING_CLIENT";

QStringList notices()
{
    return BreltGlobalFunction::getBreltGlobalFunciton()->notices();
}

ZvActionChecks *checks()
{
    return ZvServerActionResult::getZvServerActionResultInstance()->checks();
}

// A window with the demo account in it, on an exchange.
class Desk
{
public:
    explicit Desk(const QUrl &exchange) : panel(window)
    {
        window.resize(1366, 768);
        window.show();
        window.activateWindow();
        window.useExchange(exchange);
    }
    ~Desk()
    {
        ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
    }

    bool open()
    {
        return endtoend::until([this] { return window.hasMarket(); })
            && endtoend::showWholeMarket(window) && endtoend::signInAt(window, phone, password)
            && endtoend::until([] {
                   return ZvServerCache::getZvServerCacheInstance()->capInfo.availableMoney() > 0;
               });
    }

    // Buys three pieces at a price at which nobody sells, by hand.
    bool buy()
    {
        const BoxReader boxes;
        if (!panel.choose(code))
            return false;
        panel.open("pushButton_purchase");
        // The ticket reckons anew at its price buttons how many can be bought.
        panel.type(QStringLiteral("9.19"), QStringLiteral("3"));
        panel.click("DealWidget_BuySell", "pushButton_price_add");
        panel.order();
        return boxes.texts().size() == 1 && boxes.texts().first().contains(code);
    }

    MainWindow window;
    TradingPanel panel;
};

} // namespace

// Orders whose answer never comes: the book holds exactly what was meant, and nobody is left in the
// dark. The steps build on each other, in the order in which they stand.
class LostAnswersTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        ZvServerConfig::getZvServerConfigInstance()->setCurrentPlatform(ZvServerConfig::ChengHu);
        if (qEnvironmentVariableIsSet(childVariable))
            return;
        QVERIFY(m_exchange.start(m_state, 0, 0,
                                 {QStringLiteral("--demo"), QStringLiteral("--catalogue"),
                                  QStringLiteral(ZV_SMALL_CATALOGUE)}));
        m_middleman = std::make_unique<Middleman>(m_exchange.port());
    }

    void cleanupTestCase() { m_desk.reset(); }

    void aKilledClientFindsItsOrderAgain()
    {
        if (qEnvironmentVariableIsSet(childVariable)) {
            die();
            return;
        }
        m_middleman->loseAnswers("trade/buy.html", 1, Middleman::Silent);
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QLatin1String(childVariable), m_middleman->address().toString());
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        child.start(
            QCoreApplication::applicationFilePath(),
            {QStringLiteral("lostanswers"), QStringLiteral("aKilledClientFindsItsOrderAgain")});
        QVERIFY2(endtoend::until([&] { return m_middleman->lost() == 1; }, 3 * patience),
                 child.readAllStandardOutput().constData());
        child.kill();
        QVERIFY(endtoend::until([&] { return child.state() == QProcess::NotRunning; }));

        m_desk = std::make_unique<Desk>(m_middleman->address());
        Desk &desk = *m_desk;
        QVERIFY(desk.open());
        desk.panel.open("pushButton_withdrawal");
        QTRY_COMPARE_WITH_TIMEOUT(desk.panel.column(revokeTable, 6), QStringList("9.20"), patience);
        QCOMPARE(desk.panel.column(revokeTable, 7), QStringList("3"));
        QCOMPARE(book().ordersOfToday().size(), 1);
        revokeAll();
    }

    void anAnswerThatIsLostAfterTheCommitIsFoundByItsKey()
    {
        Desk &desk = *m_desk;
        const int before = book().ordersOfToday().size();
        QStringList strip;
        QObject listener;
        connect(checks(), &ZvActionChecks::changed, &listener,
                [&strip, &desk] { strip << desk.window.connectionStrip()->text(); });
        // The answer, and two of those to the question what became of it.
        m_middleman->loseAnswers("trade/buy.html", 3);
        QVERIFY(desk.buy());
        QTRY_VERIFY_WITH_TIMEOUT(
            desk.window.connectionStrip()->text().contains(QStringLiteral("有1笔委托正在核对…")),
            patience);
        QVERIFY(notices().isEmpty());
        QTRY_COMPARE_WITH_TIMEOUT(notices(), QStringList(QStringLiteral("买入委托成功")), patience);
        QVERIFY(!desk.window.connectionStrip()->text().contains(QStringLiteral("核对")));
        QCOMPARE(m_middleman->lost(), 3);
        QCOMPARE(strip.size(), 2);
        QCOMPARE(book().ordersOfToday().size(), before + 1);
        revokeAll();
    }

    void ordersWaitBehindTheOneThatIsChecked()
    {
        Desk &desk = *m_desk;
        const int before = book().ordersOfToday().size();
        m_middleman->loseAnswers("trade/buy.html", 3);
        QVERIFY(desk.buy());
        QTRY_VERIFY_WITH_TIMEOUT(checks()->open().size() == 1, patience);
        ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_trade_sell(
            QStringLiteral("1100"), 11.0F, 1);
        QVERIFY2(desk.window.connectionStrip()->text().contains(
                     QStringLiteral("有1笔委托正在核对，另有1笔操作等待发送…")),
                 qPrintable(desk.window.connectionStrip()->text()));
        QTRY_COMPARE_WITH_TIMEOUT(book().ordersOfToday().size(), before + 2, patience);
        QTRY_VERIFY(checks()->open().isEmpty());
        revokeAll();
    }

private:
    // The child: sends an order, whose answer never comes, and waits for its end.
    static void die()
    {
        Desk desk(QUrl(qEnvironmentVariable(childVariable)));
        QVERIFY(desk.open());
        QVERIFY(desk.buy());
        QVERIFY(!endtoend::until([] { return false; }, 2 * patience));
    }

    // Looks into the book with the window's own session.
    WireTrader book() const
    {
        WireTrader trader(m_exchange.address(), server);
        trader.useSession(
            ZvServerAccessManager::getZvServerAccessManagerInstance()->link()->token());
        return trader;
    }

    void revokeAll() const
    {
        const QJsonArray orders = book().openOrders();
        for (const QJsonValue &order : orders)
            QVERIFY(book().revoke(order.toObject().value("order").toInt()));
        QTRY_VERIFY_WITH_TIMEOUT(notices().isEmpty(), patience);
    }

    endtoend::StateFolder m_state{endtoend::StateFolder::Empty};
    endtoend::Exchange m_exchange;
    std::unique_ptr<Middleman> m_middleman;
    std::unique_ptr<Desk> m_desk; // from the second start of the client on
};

ZV_TEST(LostAnswersTest)
#include "test_lostanswers.moc"
