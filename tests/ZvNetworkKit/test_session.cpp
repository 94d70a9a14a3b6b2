#include "kitbench.h"
#include "listeners.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionqueue.h"
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
using Result = ZvServerActionResult;

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

Result *actions()
{
    return Result::getZvServerActionResultInstance();
}

QByteArray token()
{
    return access()->link()->token();
}

const QString here = QStringLiteral("/ch/youbika/");
const QString phone = QStringLiteral("13800000000");
const QString password = QStringLiteral("secret1");
const QString sentence = QStringLiteral("您的账号已在别处登录，如非本人操作请修改密码");

QByteArray elsewhere()
{
    return ZvScriptedTransport::refusal("elsewhere", sentence);
}

// A page that opens a box when it hears of the session's end, and stays in it.
class Box : public QObject
{
public:
    explicit Box(std::function<void()> whileOpen) : m_whileOpen(std::move(whileOpen))
    {
        connect(cache(), &Cache::signal_cache_LoggedOtherPlace, this,
                [this](const QString &message) {
                    messages.append(message);
                    engine()->startUnloggedEngine();
                    ++open;
                    deepest = std::max(deepest, open);
                    m_whileOpen();
                    --open;
                });
    }

    QStringList messages;
    int open = 0;
    int deepest = 0;

private:
    std::function<void()> m_whileOpen;
};

} // namespace

// A session begins with a sign-in and ends when the exchange says so.
class SessionTest : public QObject
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

    // Signing in.
    void sessionIsInPlaceBeforeItIsTold();
    void unusableSignInFailsWithASentence_data();
    void unusableSignInFailsWithASentence();
    void signInWithoutAnAccountGoesOn();
    void refusedSignInLeavesTheSession();
    void clientNameStaysTheSame();
    void tokenTravelsInTheHeaderAlone();
    void secretsStayOutOfTheLog();
    void lostSignInIsResolvedByItsKey();
    void twoSignInsBothEnd();
    void nothingIsDoneForAnotherUser();
    void keyIsNotAskedForByAnotherUser();

    // The poll.
    void pollFollowsTheToken();
    void pollFollowsTheTokenOutOfItsPause();
    void endIsToldByThePoll_data();
    void endIsToldByThePoll();
    void endWithoutASentenceHasOne();
    void pollOfTheLastTokenSaysNothing();
    void refusalWithoutATokenIsAFailure();
    void endWhileTheExchangeComesBack();

    // The end.
    void manyRefusalsAreOneEnd();
    void actionThatIsRefusedEndsTheSession();
    void signInThatComesFirstIsNotEnded();
    void pollsGoOnWhileThePageStaysInABox();
    void signInFromWithinTheAnnouncement();
    void secondSessionMayEndWithinTheBoxOfTheFirst();

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    QByteArray polledToken() const { return exchange()->lastRequest(zvPath_sync).token; }

    std::unique_ptr<KitBench> m_bench;
};

void SessionTest::sessionIsInPlaceBeforeItIsTold()
{
    QByteArray tokenWhenTold;
    QString numberWhenTold;
    QObject guard;
    QSignalSpy account(cache(), &Cache::signal_cache_Myaccount_changed);
    connect(actions(), &Result::signal_login_succeed, &guard, [&] {
        tokenWhenTold = token();
        numberWhenTold = cache()->myAccount.accountNumber();
    });
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("t1")));
    actions()->sendRequest_login(phone, password);
    const ZvRequest request = exchange()->lastRequest(zvPath_login);
    QVERIFY(request.isAction);
    QCOMPARE(request.prefix, here);
    QCOMPARE(request.parameter("phone"), phone);
    QCOMPARE(request.parameter("password"), password);
    m_bench->settle();
    QCOMPARE(tokenWhenTold, QByteArray("t1"));
    QCOMPARE(numberWhenTold, QStringLiteral("80001"));
    QCOMPARE(account.count(), 1);
    QCOMPARE(cache()->myAccount.phone(), phone);
    QCOMPARE(cache()->myAccount.name(), QStringLiteral("张三"));
    QCOMPARE(cache()->myAccount.getPoundageRage(QStringLiteral("1001")), 0.003);
    QCOMPARE(cache()->myAccount.getPoundageRage(QStringLiteral("1002")), 0.0015);
}

void SessionTest::unusableSignInFailsWithASentence_data()
{
    QTest::addColumn<QByteArray>("data");
    const auto withAccount = [](const QByteArray &account) {
        return "{\"token\": \"t1\", \"account\": " + account + "}";
    };
    const auto changed = [](const QByteArray &before, const QByteArray &after) {
        return KitBench::account().replace(before, after);
    };
    QTest::newRow("no token") << QByteArray("{}");
    QTest::newRow("empty") << QByteArray("{\"token\": \"\"}");
    QTest::newRow("zero") << QByteArray("{\"token\": 0}");
    QTest::newRow("null") << QByteArray("{\"token\": null}");
    QTest::newRow("a header in it") << QByteArray("{\"token\": \"a\\r\\nX: y\"}");
    QTest::newRow("beyond Latin") << QByteArray("{\"token\": \"令牌\"}");
    QTest::newRow("too long") << "{\"token\": \"" + QByteArray(513, 'a') + "\"}";
    QTest::newRow("account is nothing") << withAccount("null");
    QTest::newRow("account is empty") << withAccount("{}");
    QTest::newRow("rate is a text") << withAccount(changed("3000", "\"3000\""));
    QTest::newRow("rate above all") << withAccount(changed("3000", "1000001"));
}

void SessionTest::unusableSignInFailsWithASentence()
{
    QFETCH(QByteArray, data);
    m_bench->signIn("kept");
    const ZvUBMyAcount before = cache()->myAccount;
    QSignalSpy succeeded(actions(), &Result::signal_login_succeed);
    QSignalSpy failed(actions(), &Result::signal_login_failed);
    zvtest::expectMessage(QStringLiteral("The answer of login.html is refused"));
    actions()->sendRequest_login(phone, password);
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(data));
    m_bench->settle();
    QCOMPARE(succeeded.count(), 0);
    QCOMPARE(failed.count(), 1);
    QVERIFY(!failed.first().first().toString().isEmpty());
    QCOMPARE(token(), QByteArray("kept"));
    QVERIFY(cache()->myAccount == before);
}

void SessionTest::signInWithoutAnAccountGoesOn()
{
    m_bench->signIn("t1");
    m_bench->answerAccount(KitBench::cap(500000));
    QSignalSpy succeeded(actions(), &Result::signal_login_succeed);
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok("{\"token\": \"t2\"}"));
    actions()->sendRequest_login(phone, password);
    m_bench->settle();
    QCOMPARE(succeeded.count(), 1);
    // It may be another account, so nothing of the one before is left.
    QVERIFY(cache()->myAccount == ZvUBMyAcount());
    QVERIFY(cache()->capInfo == ZvUBCapInfo());
}

void SessionTest::refusedSignInLeavesTheSession()
{
    m_bench->signIn("t1");
    QSignalSpy failed(actions(), &Result::signal_login_failed);
    QSignalSpy ended(cache(), &Cache::signal_cache_LoggedOtherPlace);
    const auto refuse = [&](const QByteArray &status, int httpStatus) {
        actions()->sendRequest_login(phone, password);
        exchange()->answer(zvPath_login,
                           ZvScriptedTransport::refusal(status, QStringLiteral("手机号或密码错误")),
                           httpStatus);
        m_bench->settle();
    };
    refuse("refused", 200);
    refuse("session", 401);
    QCOMPARE(failed.count(), 2);
    QCOMPARE(failed.first().first().toString(), QStringLiteral("手机号或密码错误"));
    QCOMPARE(failed.last().first().toString(), QStringLiteral("手机号或密码错误"));
    QCOMPARE(token(), QByteArray("t1"));
    QCOMPARE(ended.count(), 0);
}

void SessionTest::clientNameStaysTheSame()
{
    QStringList names;
    for (const char *each : {"t1", "t2"}) {
        m_bench->signIn(each);
        names.append(exchange()->lastRequest(zvPath_login).parameter("client"));
    }
    QCOMPARE(names.first(), names.last());
    QVERIFY(
        QRegularExpression(QStringLiteral("\\A[0-9a-f]{16}\\z")).match(names.first()).hasMatch());
    QVERIFY(names.first() != QString(16, QLatin1Char('0')));
}

void SessionTest::tokenTravelsInTheHeaderAlone()
{
    m_bench->signIn("thetoken");
    exchange()->takeRequests();
    for (const QString &path : {zvPath_login, zvPath_reg, zvPath_reg_send, zvPath_forget_send,
                                zvPath_forget_validate, zvPath_trade_buy}) {
        exchange()->always(path, [](const ZvRequest &) {
            return ZvScriptedTransport::refusal("refused", QStringLiteral("不行"));
        });
    }
    actions()->sendRequest_login(phone, password);
    actions()->sendRequest_register(QString(), phone, password, QStringLiteral("1234"));
    actions()->sendRequest_register_sendCode(phone);
    actions()->sendRequest_changePasswd_sendCode(phone);
    actions()->sendRequest_changePasswd(phone, password, QStringLiteral("1234"));
    actions()->sendRequest_trade_buy(QStringLiteral("1001"), 1.0F, 1);
    actions()->sendRequest_addOption(QStringLiteral("1001"));
    engine()->sendRequest_Cap();
    engine()->sendRequest_RevokeList(1, 10);
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    m_bench->settle();

    // Those who sign in or register need no session, and a dead one must not get in their way.
    const QStringList unsignedPaths{zvPath_login, zvPath_reg, zvPath_reg_send, zvPath_forget_send,
                                    zvPath_forget_validate};
    QStringList seen;
    for (const ZvRequest &request : exchange()->requests()) {
        seen.append(request.path);
        const bool isUnsigned = unsignedPaths.contains(request.path);
        QCOMPARE(request.token, isUnsigned ? QByteArray() : QByteArray("thetoken"));
        QVERIFY(!(request.prefix + request.path).contains(QLatin1String("thetoken")));
        for (const auto &parameter : request.parameters)
            QVERIFY2(!parameter.second.contains(QLatin1String("thetoken")),
                     qPrintable(request.path));
        // And a secret leaves in a body alone.
        for (const char *name : {"password", "code"})
            QVERIFY(request.isAction || !request.hasParameter(QString::fromLatin1(name)));
    }
    for (const QString &path : unsignedPaths + QStringList{zvPath_trade_buy, zvPath_sync})
        QVERIFY2(seen.contains(path), qPrintable(path));
}

void SessionTest::secretsStayOutOfTheLog()
{
    const LogLines log(LogLines::Keep);
    const QString secret = QStringLiteral("hidden1");
    const QString code = QStringLiteral("9481");
    const std::vector<std::function<void()>> requests{
        [&] { actions()->sendRequest_login(phone, secret); },
        [&] { actions()->sendRequest_register(QString(), phone, secret, code); },
        [&] { actions()->sendRequest_changePasswd(phone, secret, code); },
    };
    const QStringList paths{zvPath_login, zvPath_reg, zvPath_forget_validate};
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const QString &path = paths.at(static_cast<int>(i));
        requests[i]();
        exchange()->fail(path, ZvAnswer::Failed);
        m_bench->settle();
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        exchange()->answer(path, "{\"protocol\": 1, \"password\": \"hidden1\"}");
        m_bench->settle();
        m_bench->clock.advance(2 * ZvActionQueue::shortestPause);
        exchange()->answer(path, ZvScriptedTransport::refusal("refused", QStringLiteral("不行")));
        m_bench->settle();
    }
    QVERIFY2(LogLines::lines().size() >= 6, qPrintable(LogLines::lines().join('\n')));
    for (const QString &line : LogLines::lines())
        QVERIFY2(!line.contains(secret) && !line.contains(code), qPrintable(line));
}

void SessionTest::lostSignInIsResolvedByItsKey()
{
    QSignalSpy succeeded(actions(), &Result::signal_login_succeed);
    QSignalSpy failed(actions(), &Result::signal_login_failed);
    actions()->sendRequest_login(phone, password);
    const ZvRequest first = exchange()->lastRequest(zvPath_login);
    exchange()->fail(zvPath_login, ZvAnswer::TimedOut);
    m_bench->settle();
    m_bench->clock.advance(ZvActionQueue::shortestPause);
    const ZvRequest question = exchange()->lastRequest(zvPath_login);
    QCOMPARE(question.parameter("resolve"), QStringLiteral("1"));
    for (const char *name : {"key", "phone", "password", "client"}) {
        QCOMPARE(question.parameter(QString::fromLatin1(name)),
                 first.parameter(QString::fromLatin1(name)));
    }
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("t1")));
    m_bench->settle();
    QCOMPARE(succeeded.count(), 1);
    QCOMPARE(failed.count(), 0);
    QCOMPARE(token(), QByteArray("t1"));
    QCOMPARE(cache()->myAccount.accountNumber(), QStringLiteral("80001"));
}

void SessionTest::twoSignInsBothEnd()
{
    QSignalSpy succeeded(actions(), &Result::signal_login_succeed);
    QSignalSpy failed(actions(), &Result::signal_login_failed);
    actions()->sendRequest_login(phone, QStringLiteral("wrong11"));
    actions()->sendRequest_login(phone, password);
    actions()->sendRequest_login(phone, password);
    QCOMPARE(exchange()->openCount(zvPath_login), 1);
    exchange()->answer(zvPath_login,
                       ZvScriptedTransport::refusal("refused", QStringLiteral("密码错误")));
    m_bench->settle();
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("t1")));
    m_bench->settle();
    engine()->startLoggedEngine();
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("t2")));
    m_bench->settle();
    QCOMPARE(failed.count(), 1);
    QCOMPARE(succeeded.count(), 2);
    QCOMPARE(token(), QByteArray("t2"));
}

// What waits behind a sign-in was meant for the user before it.
void SessionTest::nothingIsDoneForAnotherUser()
{
    m_bench->signIn("t1");
    QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
    actions()->sendRequest_login(QStringLiteral("13900000000"), password);
    actions()->sendRequest_trade_buy(QStringLiteral("1001"), 1.0F, 1);
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("t2", "80002")));
    m_bench->settle();
    QCOMPARE(token(), QByteArray("t2"));
    QCOMPARE(failed.count(), 1);
    QVERIFY(failed.first().first().toString().contains(QStringLiteral("未发送")));
    QVERIFY(!exchange()->requestedPaths().contains(zvPath_trade_buy));
    // The next one is the new user's.
    actions()->sendRequest_trade_buy(QStringLiteral("1001"), 1.0F, 1);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_buy).token, QByteArray("t2"));
}

void SessionTest::keyIsNotAskedForByAnotherUser()
{
    m_bench->signIn("t1");
    m_bench->answerAccount(KitBench::cap(500000));
    QSignalSpy failed(actions(), &Result::signal_addOption_failed);
    actions()->sendRequest_addOption(QStringLiteral("1001"));
    exchange()->fail(zvPath_myaccount_append, ZvAnswer::Failed);
    m_bench->settle();
    m_bench->signIn("t2", "80002");
    exchange()->takeRequests();
    m_bench->clock.advance(ZvActionQueue::shortestPause);
    m_bench->settle();
    QVERIFY(!exchange()->requestedPaths().contains(zvPath_myaccount_append));
    QCOMPARE(failed.count(), 1);
    QVERIFY(failed.first().first().toString().contains(QStringLiteral("结果未知")));
}

void SessionTest::pollFollowsTheToken()
{
    QSignalSpy cancelled(exchange(), &ZvScriptedTransport::cancelled);
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    m_bench->signIn("t1");
    QCOMPARE(cancelled.count(), 1);
    QCOMPARE(cancelled.first().first().toString(), zvPath_sync);
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(polledToken(), QByteArray("t1"));
    QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("wait"),
             QString::number(ZvMarketPoller::longWait));
    engine()->startUnloggedEngine();
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QVERIFY(polledToken().isEmpty());
    QVERIFY(access()->isConnected());
}

void SessionTest::pollFollowsTheTokenOutOfItsPause()
{
    m_bench->answerPoll(""); // without news: the next one waits a moment
    QCOMPARE(exchange()->openCount(zvPath_sync), 0);
    m_bench->signIn("t1");
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(polledToken(), QByteArray("t1"));
}

void SessionTest::endIsToldByThePoll_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::addColumn<QString>("message");
    QTest::newRow("elsewhere") << QByteArray("elsewhere") << sentence;
    QTest::newRow("session") << QByteArray("session") << QStringLiteral("登录已过期");
}

void SessionTest::endIsToldByThePoll()
{
    QFETCH(QByteArray, status);
    QFETCH(QString, message);
    m_bench->signIn("t1");
    m_bench->answerAccount(KitBench::cap(500000));
    exchange()->takeRequests();
    QSignalSpy ended(cache(), &Cache::signal_cache_LoggedOtherPlace);
    QSignalSpy connection(access(), &ZvServerAccessManager::signal_connection_changed);
    const LogLines log;
    exchange()->answer(zvPath_sync, ZvScriptedTransport::refusal(status, message), 401);
    m_bench->settle();
    QCOMPARE(ended.count(), 1);
    QCOMPARE(ended.first().first().toString(), message);
    QVERIFY(token().isEmpty());
    // The market goes on as if nothing had been.
    QVERIFY(access()->isConnected());
    QCOMPARE(connection.count(), 0);
    QCOMPARE(LogLines::lines(), QStringList());
    QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_sync));
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    const ZvRequest poll = exchange()->lastRequest(zvPath_sync);
    QVERIFY(poll.token.isEmpty());
    QVERIFY(!poll.hasParameter("cap"));
    QCOMPARE(poll.parameter("wait"), QString::number(ZvMarketPoller::longWait));
    QCOMPARE(poll.parameter("list"), QStringLiteral("5"));
    engine()->startUnloggedEngine();
    m_bench->settle();
    QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_sync));
    QCOMPARE(ended.count(), 1);
}

void SessionTest::endWithoutASentenceHasOne()
{
    QSignalSpy ended(cache(), &Cache::signal_cache_LoggedOtherPlace);
    for (const char *status : {"elsewhere", "session"}) {
        m_bench->signIn(status);
        exchange()->answer(zvPath_sync, ZvScriptedTransport::refusal(status, QString()), 401);
        m_bench->settle();
        engine()->startUnloggedEngine();
        m_bench->settle();
    }
    QCOMPARE(ended.count(), 2);
    QCOMPARE(ended.at(0).first().toString(), QStringLiteral("您的账号已在别处登录"));
    QCOMPARE(ended.at(1).first().toString(), QStringLiteral("登录已失效，请重新登录"));
}

void SessionTest::pollOfTheLastTokenSaysNothing()
{
    m_bench->signIn("t1");
    QSignalSpy ended(cache(), &Cache::signal_cache_LoggedOtherPlace);
    QSignalSpy connection(access(), &ZvServerAccessManager::signal_connection_changed);
    // The answer is in the decoder when the next session begins.
    exchange()->answer(zvPath_sync, elsewhere(), 401);
    QCoreApplication::sendPostedEvents();
    access()->link()->setToken("t2");
    m_bench->settle();
    QCOMPARE(ended.count(), 0);
    QCOMPARE(connection.count(), 0);
    QCOMPARE(token(), QByteArray("t2"));
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(polledToken(), QByteArray("t2"));
}

void SessionTest::refusalWithoutATokenIsAFailure()
{
    exchange()->takeRequests();
    exchange()->answer(zvPath_sync,
                       ZvScriptedTransport::refusal("session", QStringLiteral("请先登录")), 401);
    m_bench->settle();
    QVERIFY(!access()->isConnected());
    QCOMPARE(exchange()->requestedPaths(), QStringList());
    m_bench->clock.advance(ZvMarketPoller::shortestPause);
    m_bench->settle();
    QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_sync));
}

// The service has come back on another state, and knows the session no more.
void SessionTest::endWhileTheExchangeComesBack()
{
    m_bench->signIn("t1");
    QSignalSpy ended(cache(), &Cache::signal_cache_LoggedOtherPlace);
    exchange()->fail(zvPath_sync, ZvAnswer::Failed);
    m_bench->settle();
    QVERIFY(!access()->isConnected());
    m_bench->clock.advance(ZvMarketPoller::shortestPause);
    m_bench->settle();
    exchange()->answer(zvPath_sync,
                       ZvScriptedTransport::refusal("session", QStringLiteral("登录已失效")), 401);
    m_bench->settle();
    QCOMPARE(ended.count(), 1);
    QVERIFY(!access()->isConnected());
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QVERIFY(polledToken().isEmpty());
    m_bench->answerPoll("\"list\": {\"version\": 1, \"gap\": true}", "b002");
    QVERIFY(access()->isConnected());
    QCOMPARE(ended.count(), 1);
}

void SessionTest::manyRefusalsAreOneEnd()
{
    m_bench->signIn("t1");
    QSignalSpy ended(cache(), &Cache::signal_cache_LoggedOtherPlace);
    QSignalSpy failed(actions(), &Result::signal_trade_sell_failed);
    QSignalSpy favourites(actions(), &Result::signal_getOption_failed);
    actions()->sendRequest_trade_sell(QStringLiteral("1001"), 1.0F, 1);
    actions()->sendRequest_getOptions(1, 100);
    engine()->sendRequest_Mybankcard();
    engine()->sendRequest_RevokeList(1, 10);
    m_bench->settle();
    int refused = 0;
    for (const QString &path : {zvPath_trade_sell, zvPath_myaccount_optional, zvPath_pay_hx,
                                zvPath_revoke, zvPath_myaccount, zvPath_cap, zvPath_sync}) {
        while (exchange()->openCount(path) > 0) {
            exchange()->answer(path, elsewhere(), 401);
            ++refused;
        }
    }
    QCOMPARE(refused, 7);
    m_bench->settle();
    QCOMPARE(ended.count(), 1);
    QCOMPARE(ended.first().first().toString(), sentence);
    QCOMPARE(failed.count(), 1);
    QCOMPARE(failed.first().first().toString(), sentence);
    QCOMPARE(favourites.count(), 1);
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(exchange()->openCount(), 1);
}

void SessionTest::actionThatIsRefusedEndsTheSession()
{
    m_bench->signIn("t1");
    QSignalSpy ended(cache(), &Cache::signal_cache_LoggedOtherPlace);
    QSignalSpy bought(actions(), &Result::signal_trade_buy_failed);
    QSignalSpy sold(actions(), &Result::signal_trade_sell_failed);
    actions()->sendRequest_trade_buy(QStringLiteral("1001"), 1.0F, 1);
    actions()->sendRequest_trade_sell(QStringLiteral("1001"), 1.0F, 1);
    exchange()->answer(zvPath_trade_buy, elsewhere(), 401);
    m_bench->settle();
    QCOMPARE(ended.count(), 1);
    QCOMPARE(bought.count(), 1);
    QCOMPARE(bought.first().first().toString(), sentence);
    // The next one has no session to go with.
    QCOMPARE(sold.count(), 1);
    QVERIFY(!exchange()->requestedPaths().contains(zvPath_trade_sell));
    QVERIFY(polledToken().isEmpty());
}

// A sign-in may be told between the refusal and the announcement, and a page would end the new
// session when it hears of the old one's end.
void SessionTest::signInThatComesFirstIsNotEnded()
{
    m_bench->signIn("t1");
    Box box([] {});
    QObject guard;
    connect(access()->link(), &ZvExchangeLink::sessionChanged, &guard, [&guard] {
        if (!token().isEmpty())
            return;
        QMetaObject::invokeMethod(
            &guard,
            [] {
                access()->link()->setToken("t2");
                engine()->startLoggedEngine();
            },
            Qt::QueuedConnection);
    });
    exchange()->answer(zvPath_sync, elsewhere(), 401);
    m_bench->settle();
    guard.disconnect();
    access()->link()->disconnect(&guard);
    QCOMPARE(token(), QByteArray("t2"));
    QVERIFY(engine()->isLogged);
    QCOMPARE(box.messages, QStringList());
    QCOMPARE(polledToken(), QByteArray("t2"));
}

void SessionTest::pollsGoOnWhileThePageStaysInABox()
{
    m_bench->signIn("t1");
    m_bench->answerAccount(KitBench::cap(500000));
    QList<qint64> prices;
    Box box([&] {
        m_bench->settle();
        QCOMPARE(exchange()->openCount(zvPath_sync), 1);
        QVERIFY(polledToken().isEmpty());
        for (int tick = 0; tick < 3; ++tick) {
            m_bench->answerPoll("\"list\": {\"version\": " + QByteArray::number(6 + tick)
                                + ", \"base\": " + QByteArray::number(5 + tick)
                                + ", \"changes\": [[0, {\"latest\": "
                                + QByteArray::number(2000 + tick) + "}]]}");
            prices.append(cache()->getMarketListByTypeId(-1, QString()).first().data().latest);
        }
    });
    exchange()->answer(zvPath_sync, elsewhere(), 401);
    m_bench->settle();
    QCOMPARE(box.messages, QStringList(sentence));
    QCOMPARE(box.open, 0);
    QCOMPARE(prices, QList<qint64>({2000, 2001, 2002}));
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
}

void SessionTest::signInFromWithinTheAnnouncement()
{
    m_bench->signIn("t1");
    m_bench->answerAccount(KitBench::cap(500000), 4);
    engine()->sendRequest_Mybankcard();
    Box box([&] {
        m_bench->signIn("t2");
        m_bench->answerAccount(KitBench::cap(600000), 5);
    });
    exchange()->answer(zvPath_sync, elsewhere(), 401);
    m_bench->settle();
    QCOMPARE(box.messages, QStringList(sentence));
    QCOMPARE(token(), QByteArray("t2"));
    QVERIFY(engine()->isLogged);
    QCOMPARE(cache()->capInfo.data().availableMoney, qint64(600000));
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(polledToken(), QByteArray("t2"));
    QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("cap"), QStringLiteral("5"));
    // Later words about the first session are none about the second.
    engine()->sendRequest_Mybankcard();
    m_bench->answerPoll("\"cap\": {\"version\": 6, \"gap\": true}");
    QCOMPARE(exchange()->openCount(zvPath_cap), 1);
    QCOMPARE(box.messages.size(), 1);
}

void SessionTest::secondSessionMayEndWithinTheBoxOfTheFirst()
{
    m_bench->signIn("t1");
    int depth = 0;
    Box box([&] {
        if (++depth > 1)
            return;
        m_bench->signIn("t2");
        exchange()->answer(zvPath_sync, elsewhere(), 401);
        m_bench->settle();
    });
    exchange()->answer(zvPath_sync, elsewhere(), 401);
    m_bench->settle();
    QCOMPARE(box.messages, QStringList({sentence, sentence}));
    QCOMPARE(box.deepest, 2);
    QVERIFY(token().isEmpty());
    QVERIFY(!engine()->isLogged);
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
}

ZV_TEST(SessionTest)
#include "test_session.moc"
