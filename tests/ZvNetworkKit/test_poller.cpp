#include "kitbench.h"
#include "listeners.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubobject.h"
#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvmarketpoller.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
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

} // namespace

// The client says this, the exchange says that.
class PollerTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        // Versions of one server never go back within a run of the service, so each dialogue has
        // servers of its own.
        ++m_dialogue;
        here = QStringLiteral("/ch/here%1/").arg(m_dialogue);
        there = QStringLiteral("/ch/there%1/").arg(m_dialogue);
        access()->setUrlPrefix(QStringLiteral("/ch/elsewhere/"));
        engine()->setGlobalCollectionID(QString());
        engine()->changedToMarketList();
        engine()->setDealLatestLimit(10);
        m_bench->settle();
        m_bench->exchange->takeRequests();
    }

    void cleanup() { m_bench.reset(); }

    void startAsksThePlatformForItsServers()
    {
        access()->setUrlPrefix(QString());
        access()->start();
        const ZvRequest first = exchange()->lastRequest(zvPath_market);
        QCOMPARE(first.prefix, QStringLiteral("/ch/"));
        QCOMPARE(first.parameter(QStringLiteral("protocol")), QStringLiteral("1"));
        exchange()->answer(zvPath_market,
                           ZvScriptedTransport::ok(
                               "{\"servers\": [{\"name\": \"邮币\", \"prefix\": \"/ch/youbika/\"}, "
                               "{\"name\": \"玉石\", \"prefix\": \"/ch/baoyushi/\"}]}"));
        m_bench->settle();
        QCOMPARE(access()->urlPrefix(), QStringLiteral("/ch/youbika/"));
        QCOMPARE(cache()->marketInfoList.size(), 2);
        const ZvRequest poll = exchange()->lastRequest(zvPath_sync);
        QCOMPARE(poll.prefix, QStringLiteral("/ch/youbika/"));
        QCOMPARE(exchange()->openCount(zvPath_market_list), 1);
        QCOMPARE(exchange()->openCount(zvPath_market_collection), 1);
        QCOMPARE(exchange()->openCount(zvPath_collection_type), 1);
        // What is asked for beside the poll is not in it.
        QVERIFY(!poll.hasParameter(QStringLiteral("list")));
        QCOMPARE(poll.parameter(QStringLiteral("check")), QStringLiteral("0"));
    }

    void startFillsTheCacheAndHoldsALongPoll()
    {
        QSignalSpy check(cache(), &Cache::signal_cache_MarketCheck_changed);
        QSignalSpy brief(cache(), &Cache::signal_cache_briefInfo_changed);
        m_bench->startOn(here);
        QVERIFY(access()->isConnected());
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).size(), 2);
        QCOMPARE(cache()->getCurrentBriefInfo().getIDList(), QStringList({"1001", "1002"}));
        QCOMPARE(cache()->getCollectionTypeList(QString()).size(), 2);
        QCOMPARE(brief.count(), 1);
        QVERIFY(check.count() <= 1);

        QCOMPARE(exchange()->openCount(), 1);
        access()->stop();
        access()->start();
        m_bench->settle();
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("wait"), QStringLiteral("0"));
    }

    void pollHoldsTheVersions()
    {
        m_bench->startOn(here);
        m_bench->answerPoll("\"check\": {\"version\": 4, \"data\": " + KitBench::check(false)
                            + "}");
        const ZvRequest poll = exchange()->lastRequest(zvPath_sync);
        QCOMPARE(poll.parameter("wait"), QString::number(ZvMarketPoller::longWait));
        QCOMPARE(poll.deadline, ZvMarketPoller::longWait + ZvMarketPoller::waitMargin);
        QCOMPARE(poll.parameter("check"), QStringLiteral("4"));
        QCOMPARE(poll.parameter("list"), QStringLiteral("5"));
        QCOMPARE(poll.parameter("brief"), QStringLiteral("1"));
        QCOMPARE(poll.parameter("boot"), QStringLiteral("b001"));
        QVERIFY(!poll.hasParameter("collection"));
        QVERIFY(!poll.hasParameter("item"));
    }

    void changesAreLaidOverTheRows()
    {
        m_bench->startOn(here);
        const QList<ZvUBObject> before = cache()->getMarketListByTypeId(-1, QString());
        QSignalSpy told(cache(), &Cache::signal_cache_MarketList_changed);
        m_bench->answerPoll("\"list\": {\"version\": 6, \"base\": 5, \"changes\": "
                            "[[1, {\"latest\": 1234, \"bid\": null}]]}");
        QCOMPARE(told.count(), 1);
        const QList<ZvUBObject> after = cache()->getMarketListByTypeId(-1, QString());
        QCOMPARE(after.size(), 2);
        QVERIFY(after.at(0).sharesWith(before.at(0)));
        QCOMPARE(after.at(1).data().latest, qint64(1234));
        QCOMPARE(after.at(1).data().bid, zvub::noValue);
        QCOMPARE(after.at(1).data().previousClose, qint64(990));
        QCOMPARE(cache()->getMarketListByTypeId(2, QString()).first().data().latest, qint64(1234));
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("list"), QStringLiteral("6"));
    }

    void changesOnAnotherBaseAskForTheRows()
    {
        m_bench->startOn(here);
        m_bench->answerPoll(
            "\"list\": {\"version\": 9, \"base\": 8, \"changes\": [[0, {\"latest\": 1}]]}");
        QCOMPARE(exchange()->openCount(zvPath_market_list), 1);
        QVERIFY(!exchange()->lastRequest(zvPath_sync).hasParameter("list"));
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).first().data().latest, qint64(1000));
        exchange()->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(
                KitBench::rows({KitBench::row("1001", 1, 1), KitBench::row("1002")}), 9));
        m_bench->settle();
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).first().data().latest, qint64(1));
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("list"), QStringLiteral("9"));
        QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    }

    void gapIsAskedForAndToldOnlyWhenItDiffers()
    {
        m_bench->startOn(here);
        QSignalSpy brief(cache(), &Cache::signal_cache_briefInfo_changed);
        QSignalSpy type(cache(), &Cache::signal_cache_CollectionType_Changed);
        m_bench->answerPoll("\"brief\": {\"version\": 2, \"gap\": true}, "
                            "\"type\": {\"version\": 2, \"gap\": true}");
        QCOMPARE(exchange()->openCount(zvPath_market_collection), 1);
        exchange()->answer(zvPath_market_collection,
                           ZvScriptedTransport::ok(KitBench::brief({"1001", "1002"}), 2));
        exchange()->answer(
            zvPath_collection_type,
            ZvScriptedTransport::ok("{\"types\": [{\"id\": 9, \"name\": \"新\"}]}", 2));
        m_bench->settle();
        QCOMPARE(brief.count(), 0);
        QCOMPARE(type.count(), 1);
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("brief"), QStringLiteral("2"));
    }

    void equalContentIsSilentInAPollAndToldToAQuery()
    {
        m_bench->startOn(here);
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        QSignalSpy message(cache(), &Cache::signal_cache_MessageList_changed);
        QSignalSpy type(cache(), &Cache::signal_cache_CollectionType_Changed);
        m_bench->answerPoll("\"list\": {\"version\": 6, \"base\": 5, \"changes\": []}, "
                            "\"message\": {\"version\": 1, \"data\": {\"messages\": []}}");
        QCOMPARE(list.count(), 0);
        QCOMPARE(message.count(), 0);

        engine()->sendRequest_Market_List();
        engine()->sendRequest_Message();
        engine()->sendRequest_Collection_Type();
        exchange()->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(
                KitBench::rows({KitBench::row("1001", 1), KitBench::row("1002", 2)}), 6));
        exchange()->answer(zvPath_message, ZvScriptedTransport::ok("{\"messages\": []}", 1));
        exchange()->answer(zvPath_collection_type,
                           ZvScriptedTransport::ok("{\"types\": [{\"id\": 1, \"name\": \"邮票\"},"
                                                   " {\"id\": 2, \"name\": \"钱币\"}]}"));
        QCOMPARE(list.count(), 0);
        m_bench->settle();
        QCOMPARE(list.count(), 1);
        QCOMPARE(message.count(), 1);
        QCOMPARE(type.count(), 1);
    }

    void queryThatIsRefusedStaysSilent()
    {
        m_bench->startOn(here);
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        engine()->sendRequest_Market_List();
        exchange()->answer(zvPath_market_list,
                           ZvScriptedTransport::refusal("busy", QStringLiteral("请稍后")), 503);
        m_bench->settle();
        QCOMPARE(list.count(), 0);
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).size(), 2);
        QVERIFY(access()->isConnected());
    }

    void collectionIsWatchedAndToldTogether()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        engine()->setDealLatestLimit(5);
        m_bench->settle();
        // Both setters in one turn make one new poll, and the old one is gone.
        QCOMPARE(exchange()->takeRequests().size(), 1);
        QCOMPARE(exchange()->openCount(zvPath_sync), 1);
        QSignalSpy item(cache(), &Cache::signal_cache_CollectionItem_changed);
        QSignalSpy trade(cache(), &Cache::signal_cache_CollectionTrade_changed);
        QSignalSpy deals(cache(), &Cache::signal_cache_CollectionLatestDeal_changed);
        m_bench->answerPoll("\"item\": {\"version\": 3, \"data\": " + KitBench::item("1001")
                            + "}, \"trade\": {\"version\": 4, \"data\": " + KitBench::trade("1001")
                            + "}, \"latest\": {\"version\": 5, \"data\": "
                            + KitBench::latest("1001", 3) + "}");
        QCOMPARE(item.count(), 1);
        QCOMPARE(item.first().first().toString(), QStringLiteral("1001"));
        QCOMPARE(trade.count(), 1);
        QCOMPARE(deals.count(), 1);
        const QList<ZvUBDealItem> list = cache()->getLatestDealList("1001");
        QCOMPARE(list.size(), 3);
        QCOMPARE(list.first().data().sequence, qint64(1));
        QCOMPARE(list.first().data().previousClose, qint64(990));
        QCOMPARE(cache()->getTopFive("1001").data().sells[1].price, qint64(1002));
        QCOMPARE(cache()->getTopFive("1001").data().buys[1].price, zvub::noValue);
        const ZvRequest poll = exchange()->lastRequest(zvPath_sync);
        QCOMPARE(poll.parameter("collection"), QStringLiteral("1001"));
        QCOMPARE(poll.parameter("limit"), QStringLiteral("5"));
        QCOMPARE(poll.parameter("trade"), QStringLiteral("4"));

        engine()->setGlobalCollectionID(QStringLiteral("1002"));
        m_bench->settle();
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("trade"), QStringLiteral("0"));
        QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    }

    void answerAboutTheLastCollectionIsDropped()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        // The answer is in the decoder when the collection changes.
        exchange()->answer(zvPath_sync,
                           ZvScriptedTransport::ok("{\"topics\": {\"trade\": {\"version\": 7, "
                                                   "\"data\": "
                                                   + KitBench::trade("1001") + "}}}"));
        QCoreApplication::sendPostedEvents();
        engine()->setGlobalCollectionID(QStringLiteral("1002"));
        QSignalSpy trade(cache(), &Cache::signal_cache_CollectionTrade_changed);
        m_bench->settle();
        for (const QList<QVariant> &told : trade)
            QCOMPARE(told.first().toString(), QStringLiteral("1002"));
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("collection"),
                 QStringLiteral("1002"));
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("trade"), QStringLiteral("0"));
    }

    void unknownCollectionIsNotAskedForInACircle()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("77"));
        m_bench->settle();
        const QByteArray unknown("{\"version\": 0, \"unknown\": true}");
        m_bench->answerPoll("\"item\": " + unknown + ", \"trade\": " + unknown
                            + ", \"latest\": " + unknown);
        m_bench->clock.advance(ZvMarketPoller::shortestPause);
        m_bench->settle();
        QVERIFY(!exchange()->lastRequest(zvPath_sync).hasParameter("collection"));
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("collection"),
                 QStringLiteral("1001"));
    }

    void compositeIsNotWatchedAsACollection()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("-1"));
        m_bench->settle();
        QVERIFY(!exchange()->lastRequest(zvPath_sync).hasParameter("collection"));
    }

    void tableOffViewIsNotPolled()
    {
        m_bench->startOn(here);
        engine()->changedToTimeLine();
        m_bench->settle();
        QVERIFY(!exchange()->lastRequest(zvPath_sync).hasParameter("list"));
        QVERIFY(!exchange()->lastRequest(zvPath_sync).hasParameter("composite"));
        engine()->changedToMarketList();
        m_bench->settle();
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("list"), QStringLiteral("5"));
    }

    void rowsAndCompositeAreOneTick()
    {
        m_bench->startOn(here);
        QSignalSpy told(cache(), &Cache::signal_cache_MarketList_changed);
        m_bench->answerPoll("\"list\": {\"version\": 6, \"base\": 5, \"changes\": [[0, "
                            "{\"volume\": 99}]]}, \"composite\": {\"version\": 2, \"data\": "
                            + KitBench::row("-1", 0) + "}");
        QCOMPARE(told.count(), 1);
        ZvUBObject composite;
        QVERIFY(cache()->getCompsite(composite, QString()));
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).first().data().volume, qint64(99));
    }

    void newRunOfTheServiceResetsTheVersions()
    {
        m_bench->startOn(here);
        QSignalSpy brief(cache(), &Cache::signal_cache_briefInfo_changed);
        m_bench->answerPoll("\"list\": {\"version\": 1, \"gap\": true}, "
                            "\"brief\": {\"version\": 1, \"gap\": true}",
                            "b002");
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("boot"), QStringLiteral("b002"));
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("check"), QStringLiteral("0"));
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("type"), QStringLiteral("0"));
        exchange()->answer(zvPath_market_collection,
                           ZvScriptedTransport::ok(KitBench::brief({"1001", "1002"}), 1, "b002"));
        exchange()->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(
                KitBench::rows({KitBench::row("1001", 1, 7), KitBench::row("1002")}), 1, "b002"));
        m_bench->settle();
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).first().data().latest, qint64(7));
        QCOMPARE(brief.count(), 0);
    }

    void backOffNeverExceedsItsBound()
    {
        m_bench->startOn(here);
        QSignalSpy connection(access(), &ZvServerAccessManager::signal_connection_changed);
        exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        QVERIFY(!access()->isConnected());
        QCOMPARE(connection.count(), 1);
        qint64 pause = m_bench->clock.untilNext();
        QCOMPARE(pause, qint64(ZvMarketPoller::shortestPause));
        for (int i = 0; i < 12; ++i) {
            exchange()->takeRequests();
            m_bench->clock.advance(pause - 1);
            m_bench->settle();
            QCOMPARE(exchange()->requestedPaths(), QStringList());
            m_bench->clock.advance(1);
            m_bench->settle();
            QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_sync));
            QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("wait"), QStringLiteral("0"));
            QCOMPARE(exchange()->lastRequest(zvPath_sync).deadline,
                     ZvMarketPoller::recoveryDeadline);
            exchange()->fail(zvPath_sync, ZvAnswer::NotSent);
            m_bench->settle();
            const qint64 next = m_bench->clock.untilNext();
            QVERIFY2(next >= ZvMarketPoller::shortestPause && next <= ZvMarketPoller::longestPause,
                     qPrintable(QString::number(next)));
            if (i > 5)
                QVERIFY(next >= ZvMarketPoller::longestPause * 3 / 4);
            pause = next;
        }
        QCOMPARE(connection.count(), 1);
        QVERIFY(access()->awayFor() > 0);
        QVERIFY(access()->dataAge() >= access()->awayFor());

        m_bench->clock.advance(pause);
        m_bench->settle();
        m_bench->answerPoll("");
        QVERIFY(access()->isConnected());
        QCOMPARE(access()->awayFor(), qint64(0));
        QCOMPARE(access()->dataAge(), qint64(0));
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("wait"),
                 QString::number(ZvMarketPoller::longWait));
    }

    void silentExchangeIsAwayAfterTheDeadline()
    {
        m_bench->startOn(here);
        m_bench->clock.advance(ZvMarketPoller::longWait + ZvMarketPoller::waitMargin - 1);
        m_bench->settle();
        QVERIFY(access()->isConnected());
        m_bench->clock.advance(1);
        m_bench->settle();
        QVERIFY(!access()->isConnected());
        QCOMPARE(exchange()->openCount(), 0);
    }

    void brokenAnswerLeavesTheCacheAsItWas()
    {
        m_bench->startOn(here);
        zvtest::expectMessage(QStringLiteral("The answer of sync.html"));
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        m_bench->answerPoll("\"list\": {\"version\": 6, \"base\": 5, \"changes\": [[0, "
                            "{\"latest\": 5}], [1, {\"latest\": 1.5}]]}");
        QCOMPARE(list.count(), 0);
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).first().data().latest, qint64(1000));
        m_bench->clock.advance(ZvMarketPoller::shortestPause);
        m_bench->settle();
        m_bench->answerPoll("\"list\": {\"version\": 6, \"base\": 5, \"changes\": [[0, "
                            "{\"latest\": 6}]]}");
        QCOMPARE(cache()->getMarketListByTypeId(-1, QString()).first().data().latest, qint64(6));
        QVERIFY(access()->isConnected());
    }

    void answerWithoutNewsIsNotAskedForInACircle()
    {
        m_bench->startOn(here);
        exchange()->takeRequests();
        m_bench->answerPoll("");
        QCOMPARE(exchange()->requestedPaths(), QStringList());
        m_bench->clock.advance(ZvMarketPoller::shortestPause);
        m_bench->settle();
        QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_sync));
    }

    void lateAnswersOfAnotherServerDie()
    {
        m_bench->startOn(here);
        engine()->sendRequest_Market_List();
        exchange()->answer(zvPath_market_list,
                           ZvScriptedTransport::ok(KitBench::rows({KitBench::row("1", 1)}), 9));
        exchange()->answer(zvPath_sync,
                           ZvScriptedTransport::ok("{\"topics\": {\"message\": {\"version\": 2, "
                                                   "\"data\": {\"messages\": [{\"text\": \"旧\", "
                                                   "\"link\": \"\"}]}}}}"));
        QCoreApplication::sendPostedEvents();
        QSignalSpy message(cache(), &Cache::signal_cache_MessageList_changed);
        access()->setUrlPrefix(there);
        m_bench->settle();
        QVERIFY(cache()->getMarketListByTypeId(-1, QString()).isEmpty());
        QCOMPARE(message.count(), 0);
        QCOMPARE(exchange()->lastRequest(zvPath_sync).prefix, there);
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("check"), QStringLiteral("0"));
        QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    }

    void whatIsKnownOfACollectionGoesWithItsServer()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        m_bench->answerPoll("\"trade\": {\"version\": 2, \"data\": " + KitBench::trade("1001")
                            + "}");
        m_bench->settle();
        QVERIFY(cache()->getTopFive(QStringLiteral("1001")) != ZvUBTopFive());
        QSignalSpy trade(cache(), &Cache::signal_cache_CollectionTrade_changed);
        QSignalSpy item(cache(), &Cache::signal_cache_CollectionItem_changed);
        QSignalSpy deals(cache(), &Cache::signal_cache_CollectionLatestDeal_changed);
        access()->setUrlPrefix(there);
        m_bench->settle();
        for (const QSignalSpy *told : {&trade, &item, &deals}) {
            QCOMPARE(told->count(), 1);
            QCOMPARE(told->first().first().toString(), QStringLiteral("1001"));
        }
        QVERIFY(cache()->getTopFive(QStringLiteral("1001")) == ZvUBTopFive());
    }

    void askingForTheMarketTellsNamesAndRows()
    {
        m_bench->startOn(here);
        QSignalSpy brief(cache(), &Cache::signal_cache_briefInfo_changed);
        QSignalSpy type(cache(), &Cache::signal_cache_CollectionType_Changed);
        QSignalSpy market(cache(), &Cache::signal_cache_MarketInfo_changed);
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        engine()->sendRequest_Market_Collection();
        exchange()->answer(zvPath_market_collection,
                           ZvScriptedTransport::ok(KitBench::brief({"1001", "1002"})));
        exchange()->answer(zvPath_collection_type,
                           ZvScriptedTransport::ok("{\"types\": [{\"id\": 1, \"name\": \"邮票\"},"
                                                   " {\"id\": 2, \"name\": \"钱币\"}]}"));
        exchange()->answer(
            zvPath_market_list,
            ZvScriptedTransport::ok(
                KitBench::rows({KitBench::row("1001", 1), KitBench::row("1002", 2)}), 5));
        m_bench->settle();
        QCOMPARE(brief.count(), 1);
        QCOMPARE(brief.first().first().toString(), here);
        QCOMPARE(list.count(), 1);
        QCOMPARE(type.count(), 0);
        QCOMPARE(market.count(), 0);
    }

    void unchangedPollIsSilentAboutAll()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        const auto poll = [this](int version) {
            const QByteArray v = QByteArray::number(version);
            const auto part = [&v](const char *name, const QByteArray &data) {
                return QByteArray("\"") + name + "\": {\"version\": " + v + ", \"data\": " + data
                    + "}";
            };
            m_bench->answerPoll(
                part("market",
                     "{\"servers\": [{\"name\": \"邮币\", \"prefix\": \"/ch/youbika/\"}]}")
                + ", " + part("message", "{\"messages\": [{\"text\": \"闻\", \"link\": \"\"}]}")
                + ", " + part("check", KitBench::check(true)) + ", "
                + part("composite", KitBench::row("-1", 0)) + ", "
                + part("brief", KitBench::brief({"1001", "1002"})) + ", "
                + part("type", "{\"types\": [{\"id\": 1, \"name\": \"邮票\"}]}") + ", "
                + part("list", KitBench::rows({KitBench::row("1001", 1), KitBench::row("1002", 2)}))
                + ", " + part("item", KitBench::item("1001")) + ", "
                + part("trade", KitBench::trade("1001")) + ", "
                + part("latest", KitBench::latest("1001")));
        };
        poll(11);
        const Ear ear(cache());
        poll(12);
        QCOMPARE(ear.heard(), QStringList());
        QCOMPARE(exchange()->lastRequest(zvPath_sync).parameter("latest"), QStringLiteral("12"));
    }

    void questionBeforeTheFirstServerIsAnswered()
    {
        access()->setUrlPrefix(QString());
        access()->start();
        engine()->sendRequest_Message();
        engine()->sendRequest_Market_List();
        m_bench->settle();
        QCOMPARE(exchange()->openCount(zvPath_message), 0);
        QSignalSpy message(cache(), &Cache::signal_cache_MessageList_changed);
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        exchange()->answer(
            zvPath_market,
            ZvScriptedTransport::ok(
                "{\"servers\": [{\"name\": \"邮币\", \"prefix\": \"/ch/youbika/\"}]}"));
        m_bench->settle();
        QCOMPARE(exchange()->lastRequest(zvPath_message).prefix, QStringLiteral("/ch/youbika/"));
        exchange()->answer(zvPath_message, ZvScriptedTransport::ok("{\"messages\": []}"));
        exchange()->answer(zvPath_market_list, ZvScriptedTransport::ok(KitBench::rows({})));
        m_bench->settle();
        QCOMPARE(message.count(), 1);
        QCOMPARE(list.count(), 1);
    }

    void otherCollectionIsNotTold()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        const ZvUBTopFive before = cache()->getTopFive(QStringLiteral("1002"));
        const Ear ear(cache());
        m_bench->answerPoll(
            "\"item\": {\"version\": 2, \"data\": " + KitBench::item("1002")
            + "}, \"trade\": {\"version\": 2, \"data\": " + KitBench::trade("1002", 777)
            + "}, \"latest\": {\"version\": 2, \"data\": " + KitBench::latest("1002") + "}");
        QCOMPARE(ear.heard(), QStringList());
        QCOMPARE(cache()->getTopFive(QStringLiteral("1002")), before);
    }

    void setUrlPrefixHidesNoChange()
    {
        m_bench->startOn(here);
        exchange()->answer(zvPath_market_list,
                           ZvScriptedTransport::ok(KitBench::rows(
                               {KitBench::row("2001", 1), KitBench::row("2002", 2)})));
        access()->setUrlPrefix(there);
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        m_bench->settle();
        QCOMPARE(list.count(), 1);
        // Back again: equal rows of the first server are told, for they were dropped.
        exchange()->answer(zvPath_market_list,
                           ZvScriptedTransport::ok(KitBench::rows(
                               {KitBench::row("1001", 1), KitBench::row("1002", 2)})));
        access()->setUrlPrefix(here);
        QVERIFY(cache()->getMarketListByTypeId(-1, QString()).isEmpty());
        m_bench->settle();
        QCOMPARE(list.count(), 2);
    }

    void flushedQuoteHasItsOwnSignal()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        QSignalSpy trade(cache(), &Cache::signal_cache_CollectionTrade_changed);
        QSignalSpy flushed(cache(), &Cache::signal_cache_SellbuyTrade_changed);
        engine()->flushCurrentTop5();
        QCOMPARE(exchange()->lastRequest(zvPath_collection_trade).parameter("collection"),
                 QStringLiteral("1001"));
        exchange()->answer(zvPath_collection_trade,
                           ZvScriptedTransport::ok(KitBench::trade("1001", 1011), 3));
        m_bench->settle();
        QCOMPARE(flushed.count(), 1);
        QCOMPARE(trade.count(), 0);
        QCOMPARE(cache()->getTopFive("1001").data().latest, qint64(1011));
    }

    void pagesOfDealsAreAskedForAndTheOlderQuestionDropped()
    {
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        QSignalSpy told(cache(), &Cache::signal_cache_Market_Detail_changed);
        engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, 1200);
        engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 2, 1200);
        QCOMPARE(exchange()->openCount(zvPath_market_detail), 1);
        QCOMPARE(exchange()->lastRequest(zvPath_market_detail).parameter("page"),
                 QStringLiteral("2"));
        exchange()->answer(zvPath_market_detail,
                           ZvScriptedTransport::ok(KitBench::detail("1001", 2, 1100)));
        m_bench->settle();
        QCOMPARE(told.count(), 1);
        QCOMPARE(cache()->getMarketDetail().size(), 1100);
    }

    void exchangeTimeIsToldOnceASecond()
    {
        QSignalSpy told(cache(), &Cache::signal_cache_globalTime_Changed);
        m_bench->startOn(here);
        QVERIFY(told.count() >= 1);
        told.clear();
        m_bench->clock.advance(3000);
        QCOMPARE(told.count(), 3);
        QCOMPARE(told.at(2).first().toInt() - told.at(1).first().toInt(), 1);
        // 2020-01-01 01:00 UTC is nine o'clock at the exchange, on its business date.
        const QDateTime shown = QDateTime::fromSecsSinceEpoch(qint64(told.first().first().toInt()));
        QCOMPARE(shown.date(), QDate(2020, 1, 1));
        QCOMPARE(shown.time().hour(), 9);
        exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        told.clear();
        m_bench->clock.advance(100);
        QCOMPARE(told.count(), 0);
    }

    void withoutATransportTheKitIsSilent()
    {
        access()->setTransport(nullptr);
        m_bench->exchange = nullptr;
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        engine()->sendRequest_Market_List();
        engine()->sendRequest_Cap();
        engine()->flushCurrentTop5();
        QCoreApplication::processEvents();
        QCOMPARE(list.count(), 0);
    }

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    std::unique_ptr<KitBench> m_bench;
    int m_dialogue = 0;
    QString here;
    QString there;
};

ZV_TEST(PollerTest)
#include "test_poller.moc"
