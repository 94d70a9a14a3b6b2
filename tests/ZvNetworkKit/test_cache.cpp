#include "kitbench.h"
#include "listeners.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubobject.h"
#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvmarketlist.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

#include <limits>

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

ZvServerActionResult *actions()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

ZvUBMyAcount account(const QString &number)
{
    ZvUBMyAcount::Data data;
    data.accountNumber = number;
    return ZvUBMyAcount(data);
}

ZvUBCapInfo money(qint64 fen)
{
    ZvUBCapInfo::Data data;
    data.availableMoney = fen;
    return ZvUBCapInfo(data);
}

ZvUBObject row(const QString &id, int type, qint64 volume = 1)
{
    ZvUBObject::Data data;
    data.collectionId = id;
    data.code = QStringLiteral("C") + id;
    data.type = type;
    data.latest = 1000;
    data.listed = 10;
    data.volume = volume;
    data.amount = 1000 * volume;
    return ZvUBObject(data);
}

QStringList idsOf(const QList<ZvUBObject> &rows)
{
    QStringList ids;
    for (const ZvUBObject &each : rows)
        ids.append(each.data().collectionId);
    return ids;
}

const QString here = QStringLiteral("/lc/youbika/");
const QString there = QStringLiteral("/lc/feicui/");

} // namespace

// What the cache holds, and what it says about it when.
class CacheTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        access()->setUrlPrefix(here);
        cache()->setCurrentServer(here);
        cache()->storeMarketList(QList<ZvUBObject>(), here);
        cache()->storeMarketList(QList<ZvUBObject>(), there);
    }

    void rowsByTypeAndById()
    {
        cache()->storeMarketList({row("1", 1), row("2", 2), row("3", 1)});
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(-1, QString())),
                 QStringList({"1", "2", "3"}));
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(1, QString())), QStringList({"1", "3"}));
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(7, QString())), QStringList());
        QCOMPARE(idsOf(cache()->getMarketList({"3", "9", "1"}, QString())),
                 QStringList({"3", "1"}));
    }

    void serversAreKeptApart()
    {
        cache()->storeMarketList({row("1", 1)}, here);
        cache()->storeMarketList({row("8", 1), row("9", 1)}, there);
        cache()->storeCollectionTypeList({{QStringLiteral("邮票"), 1}}, there);
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(-1, QString())), QStringList({"1"}));
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(-1, there)), QStringList({"8", "9"}));
        QVERIFY(cache()->getCollectionTypeList(QString()).isEmpty());
        QCOMPARE(cache()->getCollectionTypeList(there).size(), 1);
        cache()->setCurrentServer(there);
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(-1, QString())), QStringList({"8", "9"}));
    }

    void listOfThousandsIsSharedNotCopied()
    {
        QList<ZvUBObject> rows;
        for (int i = 0; i < 5000; ++i)
            rows.append(row(QString::number(i), i % 5));
        cache()->storeMarketList(rows);
        const QList<ZvUBObject> first = cache()->getMarketListByTypeId(3, QString());
        const QList<ZvUBObject> second = cache()->getMarketListByTypeId(3, QString());
        QCOMPARE(first.size(), 1000);
        QVERIFY(first.isSharedWith(second));
        QVERIFY(cache()
                    ->getMarketListByTypeId(-1, QString())
                    .isSharedWith(cache()->getMarketListByTypeId(-5, QString())));
    }

    void composite()
    {
        ZvUBObject composite = row("keep", 1);
        cache()->storeNoComposite();
        QVERIFY(!cache()->getCompsite(composite, QString()));
        QCOMPARE(composite.data().collectionId, QStringLiteral("keep"));
        QSignalSpy told(cache(), &Cache::signal_cache_MarketList_changed);
        cache()->storeMarketTick(ZvMarketList({row("1", 1)}), row("-1", 0));
        QCOMPARE(told.count(), 1);
        QVERIFY(cache()->getCompsite(composite, QString()));
        QCOMPARE(composite.data().collectionId, QStringLiteral("-1"));
    }

    void totalsStopAtTheEndOfInt()
    {
        int quantity = -1;
        double amount = -1;
        double value = -1;
        cache()->getTotalQtyAndAmount(quantity, amount, value);
        QCOMPARE(quantity, 0);
        QCOMPARE(amount, 0.0);
        cache()->storeMarketList({row("1", 1, 3), row("2", 1, 4)});
        cache()->getTotalQtyAndAmount(quantity, amount, value);
        QCOMPARE(quantity, 7);
        QCOMPARE(amount, 70.0);
        QCOMPARE(value, 200.0); // two times ten pieces at ten yuan
        cache()->storeMarketList({row("1", 1, 2000000000), row("2", 1, 2000000000)});
        cache()->getTotalQtyAndAmount(quantity, amount, value);
        QCOMPARE(quantity, std::numeric_limits<int>::max());
        QCOMPARE(amount, 40000000000.0);
    }

    void storingSaysSoEvenWithEqualContent()
    {
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        QSignalSpy brief(cache(), &Cache::signal_cache_briefInfo_changed);
        for (int i = 0; i < 2; ++i) {
            cache()->storeMarketList({row("1", 1)});
            cache()->storeBriefInfo(ZvUBBriefInfo());
        }
        QCOMPARE(list.count(), 2);
        QCOMPARE(brief.count(), 2);
        QCOMPARE(brief.last().first().toString(), here);
    }

    void unknownIsEmpty()
    {
        QVERIFY(cache()->getLatestDealList("77").isEmpty());
        QCOMPARE(cache()->getProItem("77"), ZvUBProItem());
        QCOMPARE(cache()->getTopFive("77"), ZvUBTopFive());
        QVERIFY(cache()->getBriefInfo("/ch/none/").getIDList().isEmpty());
        QVERIFY(cache()->getMarketListByTypeId(-1, "/ch/none/").isEmpty());
        QVERIFY(cache()->getMarketListOption("/ch/none/").isEmpty());
    }

    void favouritesAreToldOnceAndLater()
    {
        QSignalSpy told(cache(), &Cache::signal_cache_MarketList_changed);
        cache()->setMarketListOption({"1"}, QString());
        cache()->setMarketListOption({"1", "2"}, QString());
        QCOMPARE(told.count(), 0);
        QCOMPARE(cache()->getMarketListOption(here), QStringList({"1", "2"}));
        QTRY_COMPARE(told.count(), 1);
        QCoreApplication::processEvents();
        QCOMPARE(told.count(), 1);
    }

    // What one user had is none of the next one's business; the same user finds it again.
    void otherAccountForgetsWhatTheFirstHad()
    {
        const auto fill = [] {
            cache()->storeCapInfo(money(5));
            cache()->storeMoneyUrls(QStringLiteral("http://in"), QStringLiteral("http://out"));
            cache()->storeMyBankcard("a", "b", "c", "1234");
            cache()->storeRevokeList({ZvUBRevokeItem()});
            cache()->storeDelegateToday({ZvUBEntrustItem()});
            cache()->setMarketListOption({"1"}, here);
            cache()->setMarketListOption({"2"}, there);
            QCoreApplication::processEvents();
        };
        const auto holds = [] {
            return cache()->capInfo == money(5) && !cache()->urlInMoney.isEmpty()
                && !cache()->bankCardTail.isEmpty() && cache()->getRevokeList().size() == 1
                && cache()->getDelegateToday().size() == 1
                && cache()->getMarketListOption(there) == QStringList("2");
        };
        cache()->storeSignIn(ZvUBMyAcount());
        fill();
        cache()->storeSignIn(account("1"));
        // The favourites of nobody were this client's own.
        QCOMPARE(cache()->getMarketListOption(there), QStringList("2"));
        QVERIFY(cache()->capInfo == ZvUBCapInfo());
        fill();
        cache()->storeSignIn(account("1"));
        QVERIFY(holds());
        QSignalSpy told(cache(), &Cache::signal_cache_Myaccount_changed);
        QSignalSpy list(cache(), &Cache::signal_cache_MarketList_changed);
        cache()->storeSignIn(account("2"));
        QCOMPARE(told.count(), 1);
        QVERIFY(!holds());
        QVERIFY(cache()->capInfo == ZvUBCapInfo());
        QVERIFY(cache()->urlInMoney.isEmpty() && cache()->urlOutMoney.isEmpty());
        QVERIFY(cache()->bankPicturePrefix.isEmpty() && cache()->bankCardTail.isEmpty());
        QVERIFY(cache()->getRevokeList().isEmpty() && cache()->getDelegateToday().isEmpty());
        QVERIFY(cache()->getMarketListOption(here).isEmpty());
        QVERIFY(cache()->getMarketListOption(there).isEmpty());
        QCOMPARE(list.count(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(list.count(), 1);
        // One that is not named may be another one.
        fill();
        cache()->storeSignIn(ZvUBMyAcount());
        QVERIFY(cache()->capInfo == ZvUBCapInfo());
        QVERIFY(cache()->getMarketListOption(there).isEmpty());
    }

    // The announcements of setters and notifications: not from inside, and once.
    void viewChangesAreToldOnceAndLater()
    {
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        QCoreApplication::processEvents();
        QStringList said;
        const auto note = [&said](const char *what) {
            return
                [&said, what](const QString &id) { said.append(QString::fromLatin1(what) + id); };
        };
        QObject guard;
        connect(cache(), &Cache::signal_cache_MarketList_changed, &guard,
                [&said] { said.append(QStringLiteral("list")); });
        connect(cache(), &Cache::signal_cache_CollectionItem_changed, &guard, note("item"));
        connect(cache(), &Cache::signal_cache_CollectionTrade_changed, &guard, note("trade"));
        connect(cache(), &Cache::signal_cache_CollectionLatestDeal_changed, &guard, note("deals"));
        connect(cache(), &Cache::signal_cache_CapInfo_changed, &guard,
                [&said] { said.append(QStringLiteral("cap")); });
        connect(cache(), &Cache::signal_cache_GatherInfo_changed, &guard,
                [&said] { said.append(QStringLiteral("gather")); });
        const auto after = [&said](const std::function<void()> &call) {
            said.clear();
            call();
            if (!said.isEmpty())
                return QStringList(QStringLiteral("told from inside"));
            QCoreApplication::processEvents();
            return said;
        };
        const QStringList collection({"item1001", "trade1001", "deals1001"});

        QCOMPARE(after([] { engine()->changedToMarketList(); }), QStringList("list"));
        QCOMPARE(after([] {
                     engine()->setIsOptionalCollectionIds(false);
                     engine()->setCollectionTypeId(2);
                 }),
                 QStringList("list"));
        QCOMPARE(after([] { engine()->changedToTimeLine(); }), collection);
        QCOMPARE(after([] { engine()->changedToDayKLine(); }), collection);
        QCOMPARE(after([] { engine()->changedToWeekKLine(); }), collection);
        QCOMPARE(after([] { engine()->changedToMonthKLine(); }), collection);
        QCOMPARE(after([] { engine()->changedToMaketDetail(); }), QStringList());
        QCOMPARE(after([] { engine()->changedToTransctionVisible(); }),
                 QStringList({"trade1001", "cap"}));
        QCOMPARE(after([] { engine()->changedToTransctionHidden(); }), QStringList());
        QCOMPARE(after([] { engine()->changedToGatherVisible(); }), QStringList("gather"));
        QCOMPARE(after([] { engine()->changedToGatherHidden(); }), QStringList());
        QCOMPARE(after([] { engine()->setGlobalCollectionID(QStringLiteral("1001")); }),
                 collection);
        // A change of collection tells of the new one alone, empty where nothing is cached.
        QCOMPARE(after([] {
                     engine()->setGlobalCollectionID(QStringLiteral("1002"));
                     engine()->setGlobalCollectionID(QStringLiteral("1003"));
                 }),
                 QStringList({"item1003", "trade1003", "deals1003"}));
        QVERIFY(cache()->getLatestDealList("1003").isEmpty());
    }

    void noSignalFromInsideACall()
    {
        KitBench bench;
        bench.startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        bench.settle();
        // Every question finds its answer ready.
        const auto say = [&bench](const QString &path, const QByteArray &data) {
            bench.exchange->always(
                path, [data](const ZvRequest &) { return ZvScriptedTransport::ok(data); });
        };
        say(zvPath_market_collection, KitBench::brief({"1001"}));
        say(zvPath_market_list, KitBench::rows({KitBench::row("1001")}));
        say(zvPath_collection_type, "{\"types\": []}");
        say(zvPath_message, "{\"messages\": []}");
        say(zvPath_collection_trade, KitBench::trade("1001"));
        say(zvPath_market_detail, KitBench::detail("1001"));
        say(zvPath_myaccount, KitBench::account());
        say(zvPath_cap, KitBench::cap(1));
        say(zvPath_myaccount_gather, KitBench::gather());
        say(zvPath_myaccount_optional, KitBench::favourites({"1001"}));
        for (const QString &path :
             {zvPath_login, zvPath_reg, zvPath_trade_buy, zvPath_trade_sell, zvPath_trade_revoke,
              zvPath_pay_send, zvPath_pay_cash_deal, zvPath_myaccount_append}) {
            say(path, "{\"token\": \"t\", \"first\": \"a\", \"second\": \"b\"}");
        }
        const QString text = QStringLiteral("1");
        const std::vector<std::function<void()>> calls{
            [] { engine()->sendRequest_Market_Collection(); },
            [] { engine()->sendRequest_Market_List(); },
            [] { engine()->sendRequest_Collection_Type(); },
            [] { engine()->sendRequest_Message(); },
            [text] { engine()->sendRequest_Market_Detail(text, 1, 0); },
            [] { engine()->flushCurrentTop5(); },
            [] { access()->link()->setToken("t"); },
            [] { engine()->startLoggedEngine(); },
            [] { engine()->sendRequest_Cap(); },
            [] { engine()->changedToMarketList(); },
            [] { engine()->changedToTimeLine(); },
            [] { engine()->changedToMaketDetail(); },
            [] { engine()->changedToTransctionVisible(); },
            [] { engine()->changedToGatherVisible(); },
            [] { engine()->setCollectionTypeId(2); },
            [] { engine()->setIsOptionalCollectionIds(true); },
            [] { engine()->setGlobalCollectionID(QStringLiteral("1002")); },
            [] { engine()->setDealLatestLimit(3); },
            [] { cache()->setMarketListOption({QStringLiteral("1")}, QString()); },
            [] { access()->setUrlPrefix(there); },
            [] { actions()->sendRequest_login(QStringLiteral("1"), QStringLiteral("2")); },
            [text] { actions()->sendRequest_register(text, text, text, text); },
            [text] { actions()->sendRequest_trade_buy(text, 1.0F, 1); },
            [text] { actions()->sendRequest_trade_sell(text, -1.0F, 1); },
            [text] { actions()->sendRequest_prepay_send(text, 1, text, 1.0F, 1); },
            [text] { actions()->sendRequest_prepay_send(text, 9, text, 1.0F, 1); },
            [] { actions()->sendRequest_trade_revoke({1}); },
            [text] { actions()->sendRequest_inMoney_sendCode(text); },
            [text] { actions()->sendRequest_outMoney(text); },
            [text] { actions()->sendRequest_addOption(text); },
            [] { actions()->sendRequest_getOptions(1, 100); },
            [] { engine()->startUnloggedEngine(); },
        };
        for (std::size_t i = 0; i < calls.size(); ++i) {
            const Ear cacheEar(cache());
            const Ear actionEar(actions());
            calls[i]();
            QVERIFY2(cacheEar.count() + actionEar.count() == 0, qPrintable(QString::number(i)));
            bench.settle();
        }
        bench.endActions();
    }

    void settersKeepTheirState()
    {
        engine()->setCollectionTypeId(5);
        engine()->setIsOptionalCollectionIds(true);
        engine()->setGlobalCollectionID(QStringLiteral("-1"));
        QCOMPARE(engine()->getCollectionTypeId(), 5);
        QCOMPARE(engine()->getIsOptionalCollectionIds(), true);
        QCOMPARE(engine()->getGlobalCollectionID(), QStringLiteral("-1"));
    }

    void signInStateIsSetAtOnce()
    {
        engine()->startLoggedEngine();
        QVERIFY(engine()->isLogged);
        engine()->startLoggedEngine();
        QVERIFY(engine()->isLogged);
        engine()->startUnloggedEngine();
        QVERIFY(!engine()->isLogged);
        engine()->startUnloggedEngine();
        QVERIFY(!engine()->isLogged);
    }

    void changeOfServerDropsTheTargetsOldRows()
    {
        cache()->storeMarketTick(ZvMarketList({row("1", 1)}), row("-1", 0), there);
        cache()->storeMarketList({row("2", 1)}, here);
        access()->setUrlPrefix(there);
        QCOMPARE(cache()->currentServer(), there);
        QVERIFY(cache()->getMarketListByTypeId(-1, QString()).isEmpty());
        ZvUBObject composite;
        QVERIFY(!cache()->getCompsite(composite, QString()));
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(-1, here)), QStringList({"2"}));
        // The same server again is no change.
        cache()->storeMarketList({row("3", 1)}, there);
        access()->setUrlPrefix(there);
        QCOMPARE(idsOf(cache()->getMarketListByTypeId(-1, QString())), QStringList({"3"}));
    }
};

ZV_TEST(CacheTest)
#include "test_cache.moc"
