#include "kitbench.h"
#include "listeners.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvexchangelink.h"
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

QStringList favourites(const QString &server = QString())
{
    return cache()->getMarketListOption(server);
}

const QString here = QStringLiteral("/ch/youbika/");
const QString there = QStringLiteral("/ch/baoyushi/");

// What the market's table does with the favourites.
class Table : public QObject
{
public:
    Table()
    {
        connect(actions(), &Result::signal_getOption_succeed, this, [this](const QStringList &ids) {
            told.append(ids.join(QLatin1Char(' ')));
            cache()->setMarketListOption(ids, QString());
        });
        connect(actions(), &Result::signal_getOption_failed, this,
                [this](const QString &message) { failures.append(message); });
        connect(actions(), &Result::signal_addOption_succeed, this, &Table::ask);
        connect(actions(), &Result::signal_removeOption_succeed, this, &Table::ask);
    }

    void ask()
    {
        ++asked;
        actions()->sendRequest_getOptions(1, 100);
    }

    int ended() const { return told.size() + failures.size(); }

    int asked = 0;
    QStringList told;
    QStringList failures;
};

} // namespace

// Favourites belong to a user and a server; without a user, to this client and a server.
class FavouritesTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        access()->setUrlPrefix(QStringLiteral("/ch/elsewhere/"));
        engine()->setGlobalCollectionID(QString());
        for (const QString &server : {here, there})
            cache()->setMarketListOption({}, server);
        m_bench->startOn(here);
        m_table = std::make_unique<Table>();
    }

    void cleanup()
    {
        m_table.reset();
        m_bench->endActions();
        m_bench.reset();
        cache()->storeSignIn(ZvUBMyAcount());
    }

    void withoutASignInTheyStayHere();
    void signInBringsThoseOfTheExchange();
    void changeOfServerBringsItsOwn();
    void equalListIsSilent();
    void questionFollowsTheServer();
    void answerThatIsDecodedTooLateIsAskedForAgain();
    void waitingQuestionIsAboutTheServerInView();
    void thereAndBack_data();
    void thereAndBack();
    void actionOfTheLastServerEndsAndDoesNotMix();
    void olderListDoesNotFollowANewerOne();
    void changeOfServerWhileAway();
    void signInDuringAChangeOfServer();
    void endOfTheSessionEndsTheQuestion_data();
    void endOfTheSessionEndsTheQuestion();
    void questionOfTheFirstUserIsAskedForTheSecond();
    void otherUserSeesNoneOfTheFirst();
    void brokenListChangesNothing_data();
    void brokenListChangesNothing();
    void noOrderWaitsForThem();

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    int open() const { return exchange()->openCount(zvPath_myaccount_optional); }

    ZvRequest question() const { return exchange()->lastRequest(zvPath_myaccount_optional); }

    void answer(const QList<QByteArray> &ids)
    {
        exchange()->answer(zvPath_myaccount_optional,
                           ZvScriptedTransport::ok(KitBench::favourites(ids)));
    }

    // Answers every question with the list of its server, until none is left.
    void answerAll()
    {
        exchange()->always(zvPath_myaccount_optional, [](const ZvRequest &request) {
            return ZvScriptedTransport::ok(
                KitBench::favourites(request.prefix == here ? QList<QByteArray>{"1001", "1002"}
                                                            : QList<QByteArray>{"2001"}));
        });
        while (open() > 0) {
            const bool isHere = question().prefix == here;
            answer(isHere ? QList<QByteArray>{"1001", "1002"} : QList<QByteArray>{"2001"});
        }
        m_bench->settle();
    }

    void signIn(const QList<QByteArray> &ids)
    {
        m_bench->signIn("t1");
        m_bench->answerAccount(KitBench::cap(500000), 1, ids);
        exchange()->takeRequests();
    }

    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<Table> m_table;
};

void FavouritesTest::withoutASignInTheyStayHere()
{
    cache()->setMarketListOption({"1001"}, QString());
    access()->setUrlPrefix(there);
    m_bench->settle();
    QCOMPARE(favourites(), QStringList());
    cache()->setMarketListOption({"2001", "2002"}, QString());
    access()->setUrlPrefix(here);
    m_bench->settle();
    QCOMPARE(favourites(), QStringList("1001"));
    QCOMPARE(favourites(there), QStringList({"2001", "2002"}));
    QVERIFY(!exchange()->requestedPaths().contains(zvPath_myaccount_optional));
}

void FavouritesTest::signInBringsThoseOfTheExchange()
{
    cache()->setMarketListOption({"1"}, here);
    cache()->setMarketListOption({"2"}, there);
    m_bench->settle();
    m_bench->signIn("t1");
    QCOMPARE(favourites(), QStringList("1")); // until the exchange has told
    QCOMPARE(open(), 1);
    QCOMPARE(question().prefix, here);
    QCOMPARE(question().token, QByteArray("t1"));
    QCOMPARE(question().parameter("page"), QStringLiteral("1"));
    QCOMPARE(question().parameter("size"), QStringLiteral("100"));
    QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
    answer({"1003", "1001"});
    m_bench->settle();
    QCOMPARE(favourites(), QStringList({"1003", "1001"}));
    QCOMPARE(list.count(), 1);
    QCOMPARE(favourites(there), QStringList("2"));
    // The page has asked for nothing, and is told nothing.
    QCOMPARE(m_table->ended(), 0);
}

void FavouritesTest::changeOfServerBringsItsOwn()
{
    signIn({"1001"});
    cache()->setMarketListOption({"7"}, there);
    access()->setUrlPrefix(there);
    m_bench->settle();
    QCOMPARE(question().prefix, there);
    answer({"2001"});
    m_bench->settle();
    QCOMPARE(favourites(), QStringList("2001"));
    QCOMPARE(favourites(here), QStringList("1001"));
    // An empty list is a list.
    access()->setUrlPrefix(here);
    m_bench->settle();
    answer({});
    m_bench->settle();
    QCOMPARE(favourites(), QStringList());
    QCOMPARE(favourites(there), QStringList("2001"));
    QCOMPARE(m_table->ended(), 0);
}

void FavouritesTest::equalListIsSilent()
{
    signIn({"1001"});
    exchange()->answer(zvPath_market_list,
                       ZvScriptedTransport::ok(KitBench::rows({KitBench::row("1001")}), 5));
    access()->setUrlPrefix(there);
    m_bench->settle();
    QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
    answer({});
    m_bench->settle();
    QCOMPARE(list.count(), 0);
}

void FavouritesTest::questionFollowsTheServer()
{
    signIn({"1001"});
    m_table->ask();
    m_bench->settle();
    QCOMPARE(question().prefix, here);
    access()->setUrlPrefix(there);
    // The old question is given up, and the new one is under way at once.
    QCOMPARE(open(), 1);
    QCOMPARE(question().prefix, there);
    answerAll();
    QCOMPARE(m_table->told, QStringList("2001"));
    QCOMPARE(m_table->ended(), 1);
    QCOMPARE(favourites(), QStringList("2001"));
    QCOMPARE(favourites(here), QStringList("1001"));
}

void FavouritesTest::answerThatIsDecodedTooLateIsAskedForAgain()
{
    signIn({"1001"});
    m_table->ask();
    answer({"1001", "1002"});
    QCoreApplication::sendPostedEvents(); // into the decoder
    access()->setUrlPrefix(there);
    QCOMPARE(question().prefix, here);
    m_bench->settle();
    QCOMPARE(m_table->ended(), 0);
    QCOMPARE(favourites(there), QStringList());
    QCOMPARE(question().prefix, there);
    answerAll();
    QCOMPARE(m_table->told, QStringList("2001"));
    QCOMPARE(m_table->ended(), 1);
    QCOMPARE(favourites(), QStringList("2001"));
    QCOMPARE(favourites(here), QStringList("1001"));
}

void FavouritesTest::waitingQuestionIsAboutTheServerInView()
{
    signIn({"1001"});
    actions()->sendRequest_removeOption(QStringLiteral("1001"));
    m_table->ask(); // waits behind the removal
    access()->setUrlPrefix(there);
    exchange()->answer(zvPath_myaccount_remove, ZvScriptedTransport::ok("{}"));
    m_bench->settle();
    QCOMPARE(exchange()->lastRequest(zvPath_myaccount_remove).prefix, here);
    QCOMPARE(question().prefix, there);
    answerAll();
    QCOMPARE(m_table->asked, 2);
    QCOMPARE(m_table->told, QStringList({"2001", "2001"}));
    QCOMPARE(favourites(), QStringList("2001"));
    QCOMPARE(favourites(here), QStringList("1001"));
}

void FavouritesTest::thereAndBack_data()
{
    QTest::addColumn<bool>("answeredBefore"); // while the first server is in view
    QTest::addColumn<bool>("answeredBetween"); // while the second one is
    for (const bool before : {false, true}) {
        for (const bool between : {false, true})
            QTest::addRow("%d %d", before, between) << before << between;
    }
}

// The user is back before the answers are; they end in whatever order.
void FavouritesTest::thereAndBack()
{
    QFETCH(bool, answeredBefore);
    QFETCH(bool, answeredBetween);
    signIn({"1001"});
    m_table->ask();
    if (answeredBefore) {
        answer({"1001"});
        QCoreApplication::sendPostedEvents();
    }
    access()->setUrlPrefix(there);
    m_table->ask();
    if (answeredBetween && open() > 0) {
        answer({"2001"});
        QCoreApplication::sendPostedEvents();
    }
    access()->setUrlPrefix(here);
    m_table->ask();
    m_bench->settle();
    answerAll();
    QCOMPARE(m_table->ended(), 3);
    QCOMPARE(m_table->failures, QStringList());
    for (const QString &ids : m_table->told)
        QVERIFY2(ids == QLatin1String("1001 1002") || ids == QLatin1String("1001"),
                 qPrintable(ids));
    QCOMPARE(favourites(), QStringList({"1001", "1002"}));
    QVERIFY(!favourites(there).contains(QStringLiteral("1001")));
}

void FavouritesTest::actionOfTheLastServerEndsAndDoesNotMix()
{
    signIn({"1001"});
    QSignalSpy added(actions(), &Result::signal_addOption_succeed);
    QSignalSpy refused(actions(), &Result::signal_removeOption_failed);
    actions()->sendRequest_addOption(QStringLiteral("1005"));
    actions()->sendRequest_removeOption(QStringLiteral("1001"));
    access()->setUrlPrefix(there);
    m_bench->settle();
    exchange()->answer(zvPath_myaccount_append, ZvScriptedTransport::ok("{}"));
    m_bench->settle();
    QCOMPARE(added.count(), 1);
    exchange()->answer(zvPath_myaccount_remove,
                       ZvScriptedTransport::refusal("refused", QStringLiteral("稍后再试")));
    m_bench->settle();
    QCOMPARE(refused.count(), 1);
    QCOMPARE(exchange()->lastRequest(zvPath_myaccount_append).prefix, here);
    QCOMPARE(exchange()->lastRequest(zvPath_myaccount_remove).prefix, here);
    answerAll();
    QCOMPARE(m_table->told, QStringList("2001"));
    QCOMPARE(favourites(), QStringList("2001"));
    // Back again, the exchange tells what has become of them.
    access()->setUrlPrefix(here);
    m_bench->settle();
    QCOMPARE(favourites(), QStringList({"1001", "1002"}));
}

// The kit's own question waits its turn, so what it brings is never older than what is there.
void FavouritesTest::olderListDoesNotFollowANewerOne()
{
    signIn({"1001"});
    access()->setUrlPrefix(there);
    m_bench->settle();
    QCOMPARE(open(), 1);
    actions()->sendRequest_addOption(QStringLiteral("2009"));
    QCOMPARE(exchange()->openCount(zvPath_myaccount_append), 0);
    answer({"2001"});
    m_bench->settle();
    QCOMPARE(favourites(), QStringList("2001"));
    exchange()->answer(zvPath_myaccount_append, ZvScriptedTransport::ok("{}"));
    m_bench->settle();
    answer({"2001", "2009"});
    m_bench->settle();
    QCOMPARE(m_table->told, QStringList("2001 2009"));
    QCOMPARE(favourites(), QStringList({"2001", "2009"}));
    QCOMPARE(open(), 0);
}

void FavouritesTest::changeOfServerWhileAway()
{
    signIn({"1001"});
    exchange()->fail(zvPath_sync, ZvAnswer::Failed);
    m_bench->settle();
    QVERIFY(!access()->isConnected());
    const LogLines log;
    access()->setUrlPrefix(there);
    m_table->ask();
    for (int i = 0; i < 20; ++i) {
        for (const QString &path : {zvPath_myaccount_optional, zvPath_sync}) {
            while (exchange()->openCount(path) > 0) {
                exchange()->fail(path, ZvAnswer::NotSent);
                m_bench->settle();
            }
        }
        m_bench->clock.advance(500);
        m_bench->settle();
    }
    // The page has its one answer, and the kit goes on by itself.
    QCOMPARE(m_table->failures.size(), 1);
    QCOMPARE(m_table->told, QStringList());
    int lines = 0;
    for (const QString &line : LogLines::lines())
        lines += line.contains(QLatin1String("favourites")) ? 1 : 0;
    QCOMPARE(lines, 1);
    QCOMPARE(favourites(here), QStringList("1001"));
    for (int i = 0; i < 10 && exchange()->openCount(zvPath_sync) == 0; ++i) {
        m_bench->clock.advance(500);
        m_bench->settle();
    }
    m_bench->answerPoll("");
    QVERIFY(access()->isConnected());
    answerAll();
    QCOMPARE(favourites(), QStringList("2001"));
    QCOMPARE(favourites(here), QStringList("1001"));
    QCOMPARE(m_table->ended(), 1);
}

void FavouritesTest::signInDuringAChangeOfServer()
{
    cache()->setMarketListOption({"1"}, here);
    cache()->setMarketListOption({"2"}, there);
    actions()->sendRequest_login(QStringLiteral("13800000000"), QStringLiteral("secret1"));
    access()->setUrlPrefix(there);
    QObject guard;
    connect(actions(), &Result::signal_login_succeed, &guard, [this] {
        engine()->startLoggedEngine();
        m_table->ask();
    });
    exchange()->answer(zvPath_login, ZvScriptedTransport::ok(KitBench::signedIn("t1")));
    m_bench->settle();
    QCOMPARE(exchange()->lastRequest(zvPath_login).prefix, here);
    QCOMPARE(question().prefix, there);
    QCOMPARE(question().token, QByteArray("t1"));
    // And back, while the questions are under way.
    access()->setUrlPrefix(here);
    m_bench->settle();
    QCOMPARE(question().prefix, here);
    answerAll();
    QCOMPARE(favourites(), QStringList({"1001", "1002"}));
    QCOMPARE(favourites(there), QStringList("2"));
    QCOMPARE(m_table->told, QStringList("1001 1002"));
}

void FavouritesTest::endOfTheSessionEndsTheQuestion_data()
{
    QTest::addColumn<QString>("end");
    for (const char *end : {"under way", "being decoded", "refused"})
        QTest::newRow(end) << QString::fromLatin1(end);
}

void FavouritesTest::endOfTheSessionEndsTheQuestion()
{
    QFETCH(QString, end);
    signIn({"1001"});
    m_table->ask();
    m_bench->settle();
    exchange()->takeRequests();
    if (end == QLatin1String("refused")) {
        exchange()->answer(
            zvPath_myaccount_optional,
            ZvScriptedTransport::refusal("elsewhere", QStringLiteral("已在别处登录")), 401);
    } else {
        if (end == QLatin1String("being decoded")) {
            answer({"9"});
            QCoreApplication::sendPostedEvents();
        }
        engine()->startUnloggedEngine();
    }
    m_bench->settle();
    QCOMPARE(m_table->ended(), 1);
    QCOMPARE(m_table->failures, QStringList(QStringLiteral("登录已失效，请重新登录")));
    QCOMPARE(favourites(), QStringList("1001"));
    QVERIFY(!exchange()->requestedPaths().contains(zvPath_myaccount_optional));
}

void FavouritesTest::questionOfTheFirstUserIsAskedForTheSecond()
{
    signIn({"1001"});
    m_table->ask();
    m_bench->settle();
    QCOMPARE(question().token, QByteArray("t1"));
    m_bench->signIn("t2", "80002");
    QCOMPARE(open(), 1);
    QCOMPARE(question().token, QByteArray("t2"));
    answerAll();
    QCOMPARE(m_table->told, QStringList("1001 1002"));
    QCOMPARE(m_table->ended(), 1);
}

void FavouritesTest::otherUserSeesNoneOfTheFirst()
{
    signIn({"1001"});
    access()->setUrlPrefix(there);
    m_bench->settle();
    answer({"2001"});
    m_bench->settle();
    QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
    m_bench->signIn("t2", "80002");
    QCOMPARE(favourites(here), QStringList());
    QCOMPARE(favourites(there), QStringList());
    QCOMPARE(list.count(), 1);
}

void FavouritesTest::brokenListChangesNothing_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::newRow("none") << QByteArray("{}");
    QTest::newRow("null") << QByteArray("{\"collections\": null}");
    QTest::newRow("numbers") << QByteArray("{\"collections\": [1001]}");
    QTest::newRow("twice") << QByteArray("{\"collections\": [\"1001\", \"1001\"]}");
    QTest::newRow("composite") << QByteArray("{\"collections\": [\"-1\"]}");
    QTest::newRow("words") << QByteArray("{\"collections\": [\"abc\"]}");
}

void FavouritesTest::brokenListChangesNothing()
{
    QFETCH(QByteArray, data);
    signIn({"1001"});
    m_table->ask();
    zvtest::expectMessage(QStringLiteral("The answer of myaccount/optional.html"));
    exchange()->answer(zvPath_myaccount_optional, ZvScriptedTransport::ok(data));
    m_bench->settle();
    QCOMPARE(m_table->failures.size(), 1);
    QCOMPARE(m_table->told, QStringList());
    QCOMPARE(favourites(), QStringList("1001"));
}

void FavouritesTest::noOrderWaitsForThem()
{
    signIn({"1001"});
    m_table->ask();
    actions()->sendRequest_addOption(QStringLiteral("1005"));
    actions()->sendRequest_trade_buy(QStringLiteral("1001"), 1.0F, 1);
    QCOMPARE(exchange()->openCount(zvPath_trade_buy), 1);
    QCOMPARE(exchange()->openCount(zvPath_myaccount_append), 0);
}

ZV_TEST(FavouritesTest)
#include "test_favourites.moc"
