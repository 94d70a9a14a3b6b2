#include "kitbench.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

namespace {

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

} // namespace

KitBench::KitBench() : exchange(new ZvScriptedTransport)
{
    access()->setClock(&clock);
    access()->setTransport(std::unique_ptr<ZvTransport>(exchange));
    ZvServerEngine::getZvServerEngineInstance();
}

KitBench::~KitBench()
{
    access()->stop();
    access()->setTransport(nullptr);
    access()->setClock(nullptr);
    settle();
}

void KitBench::startOn(const QString &prefix)
{
    exchange->answer(zvPath_market_collection, ZvScriptedTransport::ok(brief({"1001", "1002"})));
    exchange->answer(zvPath_collection_type,
                     ZvScriptedTransport::ok("{\"types\": [{\"id\": 1, \"name\": \"邮票\"},"
                                             " {\"id\": 2, \"name\": \"钱币\"}]}"));
    exchange->answer(zvPath_market_list,
                     ZvScriptedTransport::ok(rows({row("1001", 1), row("1002", 2)}), 5));
    access()->setUrlPrefix(prefix);
    access()->start();
    exchange->answer(zvPath_sync,
                     ZvScriptedTransport::ok("{\"topics\": {\"check\": {\"version\": 1, \"data\": "
                                             + check(true) + "}}}"));
    settle();
    exchange->takeRequests();
}

void KitBench::signIn(const QByteArray &token, const QByteArray &number)
{
    exchange->answer(zvPath_login, ZvScriptedTransport::ok(signedIn(token, number)));
    auto *actions = ZvServerActionResult::getZvServerActionResultInstance();
    QSignalSpy succeeded(actions, &ZvServerActionResult::signal_login_succeed);
    actions->sendRequest_login(QStringLiteral("13800000000"), QStringLiteral("secret1"));
    settle();
    QCOMPARE(succeeded.count(), 1);
    ZvServerEngine::getZvServerEngineInstance()->startLoggedEngine();
    settle();
}

void KitBench::answerAccount(const QByteArray &cap, qint64 version,
                             const QList<QByteArray> &favourites, const QByteArray &number)
{
    exchange->answer(zvPath_myaccount, ZvScriptedTransport::ok(account(number)));
    exchange->answer(zvPath_cap, ZvScriptedTransport::ok(cap, version));
    exchange->answer(zvPath_myaccount_gather, ZvScriptedTransport::ok(gather()));
    exchange->answer(zvPath_myaccount_optional,
                     ZvScriptedTransport::ok(KitBench::favourites(favourites)));
    settle();
}

void KitBench::endActions()
{
    ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
    access()->stop();
    settle();
    const QByteArray refusal
        = ZvScriptedTransport::refusal("refused", QStringLiteral("测试结束"), "end");
    int seen = -1;
    while (exchange && exchange->requests().size() != seen) {
        seen = exchange->requests().size();
        for (const QString &path : exchange->requestedPaths()) {
            exchange->always(path, [refusal](const ZvRequest &) { return refusal; });
            while (exchange->openCount(path) > 0)
                exchange->answer(path, refusal);
        }
        settle();
        clock.advance(ZvActionQueue::longestPause);
        settle();
    }
    // The next test may sign in as the same account, for which the kit would ask on.
    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
    const ZvUBMyAcount account = cache->myAccount;
    ZvUBMyAcount::Data another;
    another.accountNumber = QStringLiteral("another");
    access()->link()->setToken("end");
    cache->storeMyAccount(ZvUBMyAcount(another));
    cache->storeMyAccount(account);
    ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
}

void KitBench::answerPoll(const QByteArray &topics, const QByteArray &boot)
{
    exchange->answer(zvPath_sync,
                     ZvScriptedTransport::ok("{\"topics\": {" + topics + "}}", 0, boot));
    settle();
}

void KitBench::settle()
{
    // The decoder is first in, first out: an answer of our own comes out after all others. Each
    // round may send new requests, whose prepared answers come with the next one.
    for (int round = 0; round < 6; ++round) {
        ZvExchangeLink *link = access()->link();
        QEventLoop loop;
        QTimer::singleShot(20000, &loop, [&loop] { loop.exit(1); });
        link->afterDecoding([&loop] { loop.exit(0); });
        QCOMPARE(loop.exec(), 0);
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
    }
}

QByteArray KitBench::row(const QByteArray &id, int type, qint64 latest, qint64 volume)
{
    return "{\"id\": \"" + id + "\", \"code\": \"10" + id + "\", \"name\": \"藏品" + id
        + "\", \"type\": " + QByteArray::number(type)
        + ", \"listed\": 1000, \"introduction\": \"http://example.com/" + id
        + "\", \"latest\": " + QByteArray::number(latest)
        + ", \"previousClose\": 990, \"open\": 991, \"high\": 1010, \"low\": 980, \"bid\": 999, "
          "\"ask\": null, \"bidQuantity\": 3, \"askQuantity\": null, \"volume\": "
        + QByteArray::number(volume) + ", \"amount\": 10000}";
}

QByteArray KitBench::rows(const QList<QByteArray> &rows)
{
    return "{\"rows\": [" + QByteArrayList(rows).join(", ") + "]}";
}

QByteArray KitBench::brief(const QList<QByteArray> &ids)
{
    QByteArrayList entries;
    for (const QByteArray &id : ids) {
        entries.append("{\"id\": \"" + id + "\", \"code\": \"10" + id + "\", \"name\": \"藏品" + id
                       + "\", \"initials\": [\"cp\"]}");
    }
    return "{\"collections\": [" + entries.join(", ") + "]}";
}

QByteArray KitBench::item(const QByteArray &id, qint64 volume)
{
    return "{\"id\": \"" + id
        + "\", \"latest\": 1000, \"previousClose\": 990, \"open\": 991, \"high\": 1010, \"low\": "
          "980, \"volume\": "
        + QByteArray::number(volume)
        + ", \"amount\": 10000, \"listed\": 1000, \"outer\": 6, \"inner\": 4, \"buyQuantity\": 3, "
          "\"sellQuantity\": 0}";
}

QByteArray KitBench::trade(const QByteArray &id, qint64 latest)
{
    return "{\"id\": \"" + id + "\", \"code\": \"10" + id + "\", \"name\": \"藏品" + id
        + "\", \"latest\": " + QByteArray::number(latest)
        + ", \"previousClose\": 990, \"lowerLimit\": 891, \"upperLimit\": 1089, \"sells\": "
          "[[1001, 5], [1002, 6]], \"buys\": [[999, 3]]}";
}

QByteArray KitBench::latest(const QByteArray &id, int deals)
{
    QByteArrayList entries;
    for (int i = 1; i <= deals; ++i) {
        entries.append("{\"sequence\": " + QByteArray::number(i)
                       + ", \"time\": 1577840400000, \"price\": 1000, \"quantity\": 2, "
                         "\"side\": 1}");
    }
    return "{\"id\": \"" + id + "\", \"deals\": [" + entries.join(", ") + "]}";
}

QByteArray KitBench::account(const QByteArray &number)
{
    return "{\"account\": \"" + number
        + "\", \"phone\": \"13800000000\", \"name\": \"张三\", \"poundage\": 3000, "
          "\"poundageOf\": [[\"1002\", 1500]]}";
}

QByteArray KitBench::signedIn(const QByteArray &token, const QByteArray &number)
{
    return "{\"token\": \"" + token + "\", \"account\": " + account(number) + "}";
}

QByteArray KitBench::holding(const QByteArray &id, qint64 quantity, qint64 cost)
{
    return "{\"collection\": \"" + id + "\", \"code\": \"10" + id + "\", \"name\": \"藏品" + id
        + "\", \"quantity\": " + QByteArray::number(quantity)
        + ", \"sellable\": " + QByteArray::number(quantity / 2)
        + ", \"cost\": " + QByteArray::number(cost) + ", \"latest\": 1000}";
}

QByteArray KitBench::cap(qint64 available, const QList<QByteArray> &holdings)
{
    return "{\"heldMarketValue\": 30000, \"profit\": -300, \"available\": "
        + QByteArray::number(available)
        + ", \"frozen\": 700, \"total\": " + QByteArray::number(available + 30700)
        + ", \"items\": [" + QByteArrayList(holdings).join(", ") + "]}";
}

QByteArray KitBench::gather(const QList<QByteArray> &ids)
{
    QByteArrayList entries;
    for (const QByteArray &id : ids) {
        entries.append("{\"collection\": \"" + id + "\", \"code\": \"10" + id
                       + "\", \"name\": \"藏品" + id
                       + "\", \"buyQuantity\": 5, \"buyAmount\": 5000, \"buyFee\": 15, "
                         "\"sellQuantity\": 2, \"sellAmount\": 1800, \"sellFee\": 6, "
                         "\"sellProfit\": -120}");
    }
    return "{\"items\": [" + entries.join(", ") + "]}";
}

QByteArray KitBench::favourites(const QList<QByteArray> &ids)
{
    QByteArrayList texts;
    for (const QByteArray &id : ids)
        texts.append('"' + id + '"');
    return "{\"collections\": [" + texts.join(", ") + "]}";
}

QByteArray KitBench::check(bool open, int session)
{
    return QByteArray("{\"open\": ") + (open ? "true" : "false")
        + ", \"tradingDay\": \"2020-01-01\", \"session\": " + QByteArray::number(session) + "}";
}

QByteArray KitBench::detail(const QByteArray &id, int page, int deals)
{
    QByteArray whole = latest(id, deals);
    return whole.insert(1, "\"page\": " + QByteArray::number(page) + ", ");
}

QByteArray KitBench::minute(int number, qint64 price, qint64 volume)
{
    const QByteArray fen = QByteArray::number(price);
    return "[" + QByteArray::number(1577840400000 + number * qint64(60000)) + ", " + fen + ", "
        + fen + ", " + QByteArray::number(volume) + "]";
}

QByteArray KitBench::timeLine(const QByteArray &id, const QList<QByteArray> &minutes, int session,
                              const QByteArray &spans)
{
    return "{\"id\": \"" + id + "\", \"tradingDay\": \"2020-01-01\", \"session\": "
        + QByteArray::number(session) + ", \"previousClose\": 990, \"spans\": " + spans
        + ", \"minutes\": [" + QByteArrayList(minutes).join(", ") + "]}";
}

QByteArray KitBench::bar(const QByteArray &day, qint64 close)
{
    const QByteArray fen = QByteArray::number(close);
    return "[\"" + day + "\", " + fen + ", " + QByteArray::number(close + 20) + ", "
        + QByteArray::number(close - 10) + ", " + fen + ", 7, " + QByteArray::number(7 * close)
        + "]";
}

QByteArray KitBench::kLine(const QByteArray &id, const QList<QByteArray> &bars, int session)
{
    return "{\"id\": \"" + id + "\", \"session\": " + QByteArray::number(session) + ", \"bars\": ["
        + QByteArrayList(bars).join(", ") + "]}";
}
