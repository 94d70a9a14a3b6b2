#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QProcess>
#include <QTcpServer>
#include <QtTest/QtTest>

namespace {

// What the child does while everything is under way.
const char *const childMode = "ZV_ENDORDER_CHILD";

// Everything the kit has is made and busy: polls, queries and actions over real connections to
// somebody who never answers, and an answer in the decoder.
void makeTheKitBusy(QTcpServer &nobody)
{
    nobody.listen(QHostAddress::LocalHost);
    auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
    access->setExchangeAddress(
        QUrl(QStringLiteral("http://127.0.0.1:%1").arg(nobody.serverPort())));
    access->setUrlPrefix(QStringLiteral("/ch/youbika/"));
    access->start();
    access->link()->setToken("t1");
    ZvServerEngine::getZvServerEngineInstance()->startLoggedEngine();
    ZvServerEngine::getZvServerEngineInstance()->sendRequest_Market_List();
    auto *actions = ZvServerActionResult::getZvServerActionResultInstance();
    actions->sendRequest_trade_buy(QStringLiteral("1001"), 1.0F, 1);
    actions->sendRequest_trade_sell(QStringLiteral("1001"), 1.0F, 1);
    actions->sendRequest_addOption(QStringLiteral("1001"));
    ZvServerCache::getZvServerCacheInstance()->setMarketListOption({}, QString());
    QCoreApplication::processEvents();
}

} // namespace

// How the process ends with the kit in full work. The child is this program itself, so that its
// leaks and its exit are seen as they are.
class EndOrderTest : public QObject
{
    Q_OBJECT

private slots:
    void childEndsCleanly_data()
    {
        QTest::addColumn<QByteArray>("mode");
        QTest::newRow("after the event loop, with aboutToQuit") << QByteArray("quit");
        QTest::newRow("without an event loop") << QByteArray("return");
        QTest::newRow("with a transport of its own") << QByteArray("scripted");
        QTest::newRow("with the answer in the decoder") << QByteArray("decoding");
        QTest::newRow("nothing made but the cache") << QByteArray("cache");
        QTest::newRow("with a chart that asks and ends before") << QByteArray("chart");
        QTest::newRow("with a chart that lives longer than the kit") << QByteArray("late chart");
    }

    void childEndsCleanly()
    {
        if (qEnvironmentVariableIsSet(childMode)) {
            QSKIP("this is the child");
        }
        QFETCH(QByteArray, mode);
        QProcess child;
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        environment.insert(QString::fromLatin1(childMode), QString::fromLatin1(mode));
        child.setProcessEnvironment(environment);
        child.setProcessChannelMode(QProcess::MergedChannels);
        child.start(QCoreApplication::applicationFilePath(),
                    {QStringLiteral("endorder"), QStringLiteral("theChild")});
        QVERIFY(child.waitForFinished(60000));
        const QByteArray said = child.readAll();
        QCOMPARE(child.exitStatus(), QProcess::NormalExit);
        QVERIFY2(child.exitCode() == 0, said);
        QVERIFY2(said.contains("the kit is busy"), said);
        QVERIFY2(!said.contains("Sanitizer") && !said.contains("QThread"), said);
    }

    void theChild()
    {
        const QByteArray mode = qgetenv(childMode);
        if (mode.isEmpty())
            return;
        if (mode == "cache") {
            ZvServerCache::getZvServerCacheInstance();
        } else if (mode == "scripted" || mode == "decoding") {
            auto *script = new ZvScriptedTransport;
            auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
            access->setTransport(std::unique_ptr<ZvTransport>(script));
            access->setUrlPrefix(QStringLiteral("/ch/youbika/"));
            if (mode == "decoding") {
                // Long enough to be under way when the end comes; it is refused in the end.
                const QByteArray body
                    = "{\"protocol\": 1, \"x\": [" + QByteArray("1,").repeated(400000);
                script->answer(zvPath_market_list, body);
            }
            access->start();
            ZvServerEngine::getZvServerEngineInstance()->sendRequest_Market_List();
            ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_addOption(
                QStringLiteral("1"));
            QCoreApplication::sendPostedEvents();
        } else {
            makeTheKitBusy(m_nobody);
        }
        if (mode.endsWith("chart")) {
            // A static object goes after the application, which takes the kit with it.
            static std::unique_ptr<ZvChartFeed> late;
            late = std::make_unique<ZvChartFeed>();
            ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(
                QStringLiteral("1001"));
            late->setActive(true);
            QCoreApplication::processEvents();
            if (mode == "chart")
                late.reset();
        }
        if (mode == "quit") {
            QTimer::singleShot(0, qApp, &QCoreApplication::quit);
            QCoreApplication::exec();
        }
        qInfo("the kit is busy");
    }

private:
    QTcpServer m_nobody;
};

ZV_TEST(EndOrderTest)
#include "test_endorder.moc"
