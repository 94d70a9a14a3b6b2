#include "kitbench.h"
#include "listeners.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvaccountwatch.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvmarketpoller.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

namespace {

using Cache = ZvServerCache;

Cache *cache()
{
    return Cache::getZvServerCacheInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

qint64 money()
{
    return cache()->capInfo.data().availableMoney;
}

const QString here = QStringLiteral("/ch/youbika/");
const QString there = QStringLiteral("/ch/baoyushi/");
const QByteArray gap = QByteArrayLiteral("\"cap\": {\"version\": 9, \"gap\": true}");

} // namespace

// Account, money, holdings and the day's sums of the user who is signed in.
class AccountTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        access()->setUrlPrefix(QStringLiteral("/ch/elsewhere/"));
        engine()->setGlobalCollectionID(QString());
        engine()->changedToMarketList();
        m_bench->startOn(here);
    }

    void cleanup()
    {
        m_bench->endActions();
        m_bench.reset();
        cache()->storeSignIn(ZvUBMyAcount());
    }

    void signInAsksForAllAndTellsIt();
    void signInTellsEqualContentToo();
    void watchedOnlyWhileSignedIn();
    void pollHoldsTheVersion();
    void gapAsksForMoneyAndSums();
    void equalContentIsSilent();
    void sumsAreAskedForBehindTheMoney();
    void tradingAccountIsNotAskedForAllTheTime();
    void refusalIsNotAskedForInACircle_data();
    void refusalIsNotAskedForInACircle();
    void sumsThatAreRefusedComeLater();
    void whatFailedComesWithTheConnection();
    void brokenAnswerLeavesTheCache_data();
    void brokenAnswerLeavesTheCache();
    void newerQuestionCounts();
    void pageIsToldWithoutADifference();
    void pageMayAskWithoutASignIn();
    void otherServerHasMoneyOfItsOwn();
    void lateAnswerOfTheLastServerDies();
    void otherUserSeesNothingOfTheFirst();
    void sameUserKeepsWhatIsShown();
    void endOfTheSessionEndsTheWatch();
    void newRunStartsAnew();
    void stopAndStart();

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    ZvRequest poll() const { return exchange()->lastRequest(zvPath_sync); }

    int asked(const QString &path) const { return exchange()->requestedPaths().count(path); }

    void signInWith(qint64 available, qint64 version)
    {
        m_bench->signIn("t1");
        m_bench->answerAccount(KitBench::cap(available), version);
        exchange()->takeRequests();
    }

    std::unique_ptr<KitBench> m_bench;
};

void AccountTest::signInAsksForAllAndTellsIt()
{
    m_bench->signIn("t1");
    QCOMPARE(exchange()->openCount(zvPath_myaccount), 1);
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
    for (const QString &path : {zvPath_myaccount, zvPath_cap}) {
        const ZvRequest request = exchange()->lastRequest(path);
        QCOMPARE(request.prefix, here);
        QCOMPARE(request.token, QByteArray("t1"));
        QVERIFY(!request.isAction);
    }
    QSignalSpy account(cache(), &Cache::signal_cache_Myaccount_changed);
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    QSignalSpy gatherInfo(cache(), &Cache::signal_cache_GatherInfo_changed);
    exchange()->answer(zvPath_myaccount, ZvScriptedTransport::ok(KitBench::account()));
    exchange()->answer(
        zvPath_cap,
        ZvScriptedTransport::ok(
            KitBench::cap(500000, {KitBench::holding("1001"), KitBench::holding("1002", 7)}), 3));
    exchange()->answer(zvPath_myaccount_gather,
                       ZvScriptedTransport::ok(KitBench::gather({"1001", "1002"})));
    m_bench->settle();
    QCOMPARE(account.count(), 1);
    QCOMPARE(capInfo.count(), 1);
    QCOMPARE(gatherInfo.count(), 1);
    QCOMPARE(cache()->capInfo.availableMoney(), 5000.0);
    QCOMPARE(cache()->capInfo.profit(), -3.0);
    QCOMPARE(cache()->capInfo.getCapItem(QStringLiteral("101001")).quantity(), 30);
    QCOMPARE(cache()->capInfo.getCapItem(QStringLiteral("101001")).sellableQuantity(), 15);
    QCOMPARE(cache()->gatherInfo.kindCount(), 2);
    QCOMPARE(cache()->gatherInfo.buyCount(), 10);
    QCOMPARE(cache()->gatherInfo.sellProfit(), -2.4);
}

void AccountTest::signInTellsEqualContentToo()
{
    signInWith(500000, 3);
    m_bench->signIn("t2");
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    QSignalSpy gatherInfo(cache(), &Cache::signal_cache_GatherInfo_changed);
    m_bench->answerAccount(KitBench::cap(500000), 3);
    QCOMPARE(capInfo.count(), 1);
    QCOMPARE(gatherInfo.count(), 1);
}

void AccountTest::watchedOnlyWhileSignedIn()
{
    QVERIFY(!poll().hasParameter("cap"));
    // A token alone: the engine does not run for a user yet.
    access()->link()->setToken("t0");
    m_bench->settle();
    QCOMPARE(poll().token, QByteArray("t0"));
    QVERIFY(!poll().hasParameter("cap"));
    QCOMPARE(exchange()->openCount(zvPath_cap), 0);
    // The engine alone: there is nobody to ask for.
    engine()->startUnloggedEngine();
    engine()->startLoggedEngine();
    m_bench->settle();
    QVERIFY(poll().token.isEmpty());
    QVERIFY(!poll().hasParameter("cap"));
    QCOMPARE(exchange()->openCount(zvPath_cap), 0);
    // Both, but what is being asked for is not watched.
    access()->link()->setToken("t1");
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
    QVERIFY(!poll().hasParameter("cap"));
    m_bench->answerAccount(KitBench::cap(500000), 3);
    QCOMPARE(poll().parameter("cap"), QStringLiteral("3"));
}

void AccountTest::pollHoldsTheVersion()
{
    QSignalSpy cancelled(exchange(), &ZvScriptedTransport::cancelled);
    m_bench->signIn("t1");
    cancelled.clear();
    m_bench->answerAccount(KitBench::cap(500000), 41);
    // The poll that was held back is given up for one that names the version.
    QCOMPARE(cancelled.count(), 1);
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(poll().parameter("cap"), QStringLiteral("41"));
    QCOMPARE(poll().parameter("wait"), QString::number(ZvMarketPoller::longWait));
}

void AccountTest::gapAsksForMoneyAndSums()
{
    signInWith(500000, 8);
    m_bench->answerPoll(gap);
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
    QVERIFY(!poll().hasParameter("cap"));
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    QSignalSpy gatherInfo(cache(), &Cache::signal_cache_GatherInfo_changed);
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(490000), 9));
    exchange()->answer(zvPath_myaccount_gather, ZvScriptedTransport::ok(KitBench::gather({"7"})));
    m_bench->settle();
    QCOMPARE(capInfo.count(), 1);
    QCOMPARE(gatherInfo.count(), 1);
    QCOMPARE(money(), qint64(490000));
    QCOMPARE(poll().parameter("cap"), QStringLiteral("9"));
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(asked(zvPath_myaccount), 0);
}

void AccountTest::equalContentIsSilent()
{
    signInWith(500000, 8);
    m_bench->answerPoll(gap);
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    QSignalSpy gatherInfo(cache(), &Cache::signal_cache_GatherInfo_changed);
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(500000), 9));
    exchange()->answer(zvPath_myaccount_gather, ZvScriptedTransport::ok(KitBench::gather()));
    m_bench->settle();
    QCOMPARE(capInfo.count(), 0);
    QCOMPARE(gatherInfo.count(), 0);
    QCOMPARE(poll().parameter("cap"), QStringLiteral("9"));
}

// The sums have no version: asked for beside the money they might be older than what the version
// stands for, and no poll would ever say so.
void AccountTest::sumsAreAskedForBehindTheMoney()
{
    signInWith(500000, 8);
    m_bench->answerPoll(gap);
    QCOMPARE(asked(zvPath_myaccount_gather), 0);
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(490000), 9));
    m_bench->settle();
    QCOMPARE(asked(zvPath_myaccount_gather), 1);
    // Before they come the money is another one again.
    m_bench->clock.advance(ZvAccountWatch::shortestDistance);
    m_bench->answerPoll("\"cap\": {\"version\": 10, \"gap\": true}");
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(480000), 10));
    m_bench->settle();
    QCOMPARE(asked(zvPath_myaccount_gather), 2);
    QCOMPARE(exchange()->openCount(zvPath_myaccount_gather), 1);
}

void AccountTest::tradingAccountIsNotAskedForAllTheTime()
{
    signInWith(500000, 1);
    int version = 1;
    const auto trade = [&] {
        ++version;
        m_bench->answerPoll("\"cap\": {\"version\": " + QByteArray::number(version)
                            + ", \"gap\": true}");
    };
    const auto answerCap = [&] {
        while (exchange()->openCount(zvPath_cap) > 0) {
            exchange()->answer(zvPath_cap,
                               ZvScriptedTransport::ok(KitBench::cap(500000 - version), version));
            exchange()->answer(zvPath_myaccount_gather,
                               ZvScriptedTransport::ok(KitBench::gather()));
            m_bench->settle();
        }
    };
    trade();
    const int seconds = 2;
    for (int passed = 0; passed < seconds * 1000; passed += 10) {
        answerCap();
        if (poll().hasParameter("cap") && exchange()->openCount(zvPath_sync) == 1)
            trade();
        m_bench->clock.advance(10);
        m_bench->settle();
    }
    m_bench->clock.advance(ZvAccountWatch::shortestDistance);
    m_bench->settle();
    answerCap();
    const int most = seconds * 1000 / ZvAccountWatch::shortestDistance + 2;
    QVERIFY2(asked(zvPath_cap) <= most && asked(zvPath_cap) >= most - 2,
             qPrintable(QString::number(asked(zvPath_cap))));
    QCOMPARE(money(), qint64(500000 - version));
}

void AccountTest::refusalIsNotAskedForInACircle_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::newRow("busy") << QByteArray("busy");
    QTest::newRow("unserved") << QByteArray("unserved");
    QTest::newRow("failed") << QByteArray("failed");
}

void AccountTest::refusalIsNotAskedForInACircle()
{
    QFETCH(QByteArray, status);
    const auto refuse = [status](const ZvRequest &) {
        return ZvScriptedTransport::refusal(status, QStringLiteral("稍后"));
    };
    for (const QString &path :
         {zvPath_myaccount, zvPath_cap, zvPath_myaccount_gather, zvPath_myaccount_optional})
        exchange()->always(path, refuse);
    const LogLines log;
    m_bench->signIn("t1");
    exchange()->takeRequests();
    QSignalSpy connection(access(), &ZvServerAccessManager::signal_connection_changed);
    for (int second = 0; second < 60; ++second) {
        m_bench->clock.advance(1000);
        m_bench->settle();
        // The exchange is there all the while, and would say gap to whoever asked.
        if (exchange()->openCount(zvPath_sync) > 0)
            m_bench->answerPoll(poll().hasParameter("cap") ? gap : QByteArray());
    }
    QCOMPARE(connection.count(), 0);
    for (const QString &path : {zvPath_myaccount, zvPath_cap, zvPath_myaccount_optional}) {
        QVERIFY2(asked(path) >= 4 && asked(path) <= 7, qPrintable(path));
        int lines = 0;
        for (const QString &line : LogLines::lines())
            lines += line.startsWith(path) ? 1 : 0;
        QCOMPARE(lines, path == zvPath_myaccount_optional ? 0 : 1);
    }
    QCOMPARE(asked(zvPath_myaccount_gather), 0);
    QCOMPARE(LogLines::lines().size(), 3);

    // And served in the end, all is well.
    exchange()->always(zvPath_cap, [](const ZvRequest &) {
        return ZvScriptedTransport::ok(KitBench::cap(77), 2);
    });
    m_bench->clock.advance(30000);
    m_bench->settle();
    QCOMPARE(money(), qint64(77));
}

void AccountTest::sumsThatAreRefusedComeLater()
{
    m_bench->signIn("t1");
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(500000), 3));
    exchange()->answer(zvPath_myaccount_gather,
                       ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙")), 503);
    m_bench->settle();
    // The money is watched meanwhile.
    QCOMPARE(poll().parameter("cap"), QStringLiteral("3"));
    QSignalSpy gatherInfo(cache(), &Cache::signal_cache_GatherInfo_changed);
    m_bench->clock.advance(1000);
    exchange()->answer(zvPath_myaccount_gather, ZvScriptedTransport::ok(KitBench::gather()));
    m_bench->settle();
    QCOMPARE(gatherInfo.count(), 1);
}

void AccountTest::whatFailedComesWithTheConnection()
{
    m_bench->signIn("t1");
    const auto failAll = [this] {
        for (const QString &path : {zvPath_sync, zvPath_cap, zvPath_myaccount}) {
            while (exchange()->openCount(path) > 0)
                exchange()->fail(path, ZvAnswer::NotSent);
        }
        m_bench->settle();
    };
    for (int i = 0; i < 8; ++i) {
        failAll();
        m_bench->clock.advance(10000);
        m_bench->settle();
    }
    failAll();
    QVERIFY(!access()->isConnected());
    QCOMPARE(exchange()->openCount(zvPath_cap), 0);
    for (int i = 0; i < 100 && exchange()->openCount(zvPath_sync) == 0; ++i) {
        m_bench->clock.advance(100);
        m_bench->settle();
    }
    exchange()->takeRequests();
    m_bench->answerPoll("");
    QVERIFY(access()->isConnected());
    QCOMPARE(asked(zvPath_cap), 1);
    QCOMPARE(asked(zvPath_myaccount), 1);
    m_bench->answerAccount(KitBench::cap(500000), 3);
    QCOMPARE(money(), qint64(500000));
}

void AccountTest::brokenAnswerLeavesTheCache_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("body");
    const QByteArray cap = ZvScriptedTransport::ok(KitBench::cap(1, {KitBench::holding("1")}), 9);
    QTest::newRow("money is a text") << zvPath_cap << QByteArray(cap).replace("700", "\"700\"");
    QTest::newRow("no version") << zvPath_cap << QByteArray(cap).replace("\"version\": 9, ", "");
    QTest::newRow("version 0") << zvPath_cap
                               << QByteArray(cap).replace("\"version\": 9", "\"version\": 0");
    QTest::newRow("cut off") << zvPath_cap << cap.chopped(2);
    QTest::newRow("sums are no list")
        << zvPath_myaccount_gather << ZvScriptedTransport::ok("{\"items\": {}}");
    QTest::newRow("nobody") << zvPath_myaccount << ZvScriptedTransport::ok("{}");
}

void AccountTest::brokenAnswerLeavesTheCache()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, body);
    signInWith(500000, 8);
    const ZvUBMyAcount account = cache()->myAccount;
    const ZvUBCapInfo capInfo = cache()->capInfo;
    const ZvUBGatherInfo gatherInfo = cache()->gatherInfo;
    engine()->startLoggedEngine(); // asks for all of it once more
    m_bench->settle();
    exchange()->takeRequests();
    const Ear ear(cache());
    zvtest::expectMessage(QStringLiteral("The answer of ") + path);
    const LogLines log;
    exchange()->answer(path, body);
    if (path == zvPath_myaccount_gather)
        exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(500000), 9));
    m_bench->settle();
    QCOMPARE(LogLines::lines().size(), 1);
    QVERIFY(LogLines::lines().first().contains(QStringLiteral("is refused")));
    QVERIFY(cache()->myAccount == account);
    QVERIFY(cache()->capInfo == capInfo);
    QVERIFY(cache()->gatherInfo == gatherInfo);
    QCOMPARE(ear.count(), path == zvPath_myaccount_gather ? 1 : 0);
    QVERIFY(access()->isConnected());
    const int before = asked(path);
    m_bench->clock.advance(1000);
    m_bench->settle();
    QCOMPARE(asked(path), before + 1);
}

void AccountTest::newerQuestionCounts()
{
    signInWith(500000, 8);
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    engine()->sendRequest_Cap();
    // The older answer is in the decoder when the page asks again.
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(1), 9));
    QCoreApplication::sendPostedEvents();
    engine()->sendRequest_Cap();
    m_bench->settle();
    QCOMPARE(capInfo.count(), 0);
    QCOMPARE(money(), qint64(500000));
    // And a question that waits is given up for the newer one.
    engine()->sendRequest_Cap();
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(2), 10));
    m_bench->settle();
    QCOMPARE(capInfo.count(), 1);
    QCOMPARE(money(), qint64(2));
}

void AccountTest::pageIsToldWithoutADifference()
{
    signInWith(500000, 8);
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    engine()->sendRequest_Cap();
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(500000), 8));
    QCOMPARE(capInfo.count(), 0);
    m_bench->settle();
    QCOMPARE(capInfo.count(), 1);
}

void AccountTest::pageMayAskWithoutASignIn()
{
    const LogLines log;
    engine()->sendRequest_Cap();
    exchange()->answer(zvPath_cap,
                       ZvScriptedTransport::refusal("session", QStringLiteral("请先登录")), 401);
    m_bench->settle();
    QCOMPARE(LogLines::lines().size(), 1);
    exchange()->takeRequests();
    m_bench->clock.advance(4000);
    m_bench->settle();
    QCOMPARE(asked(zvPath_cap), 0);
}

void AccountTest::otherServerHasMoneyOfItsOwn()
{
    signInWith(500000, 8);
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    QSignalSpy gatherInfo(cache(), &Cache::signal_cache_GatherInfo_changed);
    cache()->storeMoneyUrls(QStringLiteral("http://a"), QStringLiteral("http://b"));
    access()->setUrlPrefix(there);
    // Nothing of the one is shown as the other's, from the first moment.
    QVERIFY(cache()->capInfo == ZvUBCapInfo());
    QVERIFY(cache()->gatherInfo == ZvUBGatherInfo());
    QVERIFY(cache()->urlInMoney.isEmpty());
    QVERIFY(cache()->urlOutMoney.isEmpty());
    QCOMPARE(capInfo.count(), 0);
    m_bench->settle();
    QCOMPARE(capInfo.count(), 1);
    QCOMPARE(gatherInfo.count(), 1);
    QCOMPARE(exchange()->lastRequest(zvPath_cap).prefix, there);
    QCOMPARE(exchange()->lastRequest(zvPath_myaccount).prefix, there);
    m_bench->answerAccount(KitBench::cap(123), 2);
    QCOMPARE(money(), qint64(123));
    QCOMPARE(poll().prefix, there);
    QCOMPARE(poll().parameter("cap"), QStringLiteral("2"));
    QCOMPARE(cache()->myAccount.accountNumber(), QStringLiteral("80001"));
}

void AccountTest::lateAnswerOfTheLastServerDies()
{
    signInWith(500000, 8);
    m_bench->answerPoll(gap);
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(1), 9));
    QCoreApplication::sendPostedEvents();
    access()->setUrlPrefix(there);
    m_bench->settle();
    QVERIFY(cache()->capInfo == ZvUBCapInfo());
    QVERIFY(!poll().hasParameter("cap"));
}

void AccountTest::otherUserSeesNothingOfTheFirst()
{
    m_bench->signIn("t1");
    m_bench->answerAccount(KitBench::cap(500000, {KitBench::holding("1001")}), 8);
    // Questions of the first user are under way and in the decoder.
    engine()->sendRequest_Cap();
    m_bench->settle();
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("t2", "80002")));
    ZvServerActionResult::getZvServerActionResultInstance()->sendRequest_login(
        QStringLiteral("13900000000"), QStringLiteral("secret2"));
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(1), 9));
    QSignalSpy succeeded(ZvServerActionResult::getZvServerActionResultInstance(),
                         &ZvServerActionResult::signal_login_succeed);
    QObject guard;
    connect(ZvServerActionResult::getZvServerActionResultInstance(),
            &ZvServerActionResult::signal_login_succeed, &guard, [] {
                QVERIFY(cache()->capInfo == ZvUBCapInfo());
                QVERIFY(cache()->gatherInfo == ZvUBGatherInfo());
                QCOMPARE(cache()->myAccount.accountNumber(), QStringLiteral("80002"));
                engine()->startLoggedEngine();
            });
    QSignalSpy capInfo(cache(), &Cache::signal_cache_CapInfo_changed);
    connect(cache(), &Cache::signal_cache_CapInfo_changed, &guard,
            [] { QVERIFY(cache()->capInfo == ZvUBCapInfo() || money() == 42); });
    m_bench->settle();
    QCOMPARE(succeeded.count(), 1);
    QVERIFY(capInfo.count() >= 1); // what was on view goes
    QVERIFY(!poll().hasParameter("cap"));
    m_bench->answerAccount(KitBench::cap(42), 1, {}, "80002");
    QCOMPARE(money(), qint64(42));
    QCOMPARE(poll().token, QByteArray("t2"));
    QCOMPARE(poll().parameter("cap"), QStringLiteral("1"));
}

void AccountTest::sameUserKeepsWhatIsShown()
{
    signInWith(500000, 8);
    m_bench->signIn("t2");
    QCOMPARE(money(), qint64(500000));
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
}

void AccountTest::endOfTheSessionEndsTheWatch()
{
    signInWith(500000, 8);
    m_bench->answerPoll(gap);
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
    engine()->startUnloggedEngine();
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_cap), 0);
    QVERIFY(!poll().hasParameter("cap"));
    exchange()->takeRequests();
    m_bench->clock.advance(4000);
    m_bench->settle();
    QCOMPARE(exchange()->requestedPaths(), QStringList());
    // What is on view stays until another user comes.
    QCOMPARE(money(), qint64(500000));
}

void AccountTest::newRunStartsAnew()
{
    signInWith(500000, 8);
    m_bench->answerPoll("\"list\": {\"version\": 1, \"gap\": true}", "b002");
    QCOMPARE(poll().parameter("boot"), QStringLiteral("b002"));
    QCOMPARE(poll().parameter("cap"), QStringLiteral("0"));
    m_bench->answerPoll("\"cap\": {\"version\": 1, \"gap\": true}", "b002");
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(3), 1, "b002"));
    m_bench->settle();
    QCOMPARE(money(), qint64(3));
    QCOMPARE(poll().parameter("cap"), QStringLiteral("1"));
}

void AccountTest::stopAndStart()
{
    signInWith(500000, 8);
    access()->stop();
    engine()->sendRequest_Cap();
    m_bench->settle();
    exchange()->fail(zvPath_cap, ZvAnswer::NotSent);
    m_bench->settle();
    exchange()->takeRequests();
    m_bench->clock.advance(4000);
    m_bench->settle();
    QCOMPARE(exchange()->requestedPaths(), QStringList());
    access()->start();
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
    QCOMPARE(exchange()->lastRequest(zvPath_cap).token, QByteArray("t1"));
}

ZV_TEST(AccountTest)
#include "test_account.moc"
