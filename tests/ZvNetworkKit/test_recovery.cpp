#include "kitbench.h"

#include "ZvModelKit/zvubobject.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionqueue.h"
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

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

// A small exchange behind the scripted transport, which goes away and comes back as another run.
class ComingAndGoing : public QObject
{
public:
    enum State { Up, Refusing, Silent };

    explicit ComingAndGoing(ZvScriptedTransport *transport) : m_transport(transport)
    {
        connect(transport, &ZvScriptedTransport::requested, this, &ComingAndGoing::take);
    }

    State state = Up;
    int run = 1;
    qint64 price = 1000;

    // Ends what is held, as a process does that dies.
    void die(State how)
    {
        state = how;
        while (m_transport->openCount(zvPath_sync) > 0)
            m_transport->fail(zvPath_sync, ZvAnswer::Failed);
    }

private:
    void take(const QString &path)
    {
        if (state == Silent)
            return;
        if (state == Refusing) {
            m_transport->fail(path, ZvAnswer::NotSent);
            return;
        }
        const QByteArray boot = "run" + QByteArray::number(run);
        const auto say = [&](const QByteArray &data) {
            m_transport->answer(path, ZvScriptedTransport::ok(data, 1, boot));
        };
        const QByteArray rows = KitBench::rows({KitBench::row("1001", 1, price)});
        if (path == zvPath_market) {
            say("{\"servers\": [{\"name\": \"邮币\", \"prefix\": \"/ch/youbika/\"}]}");
        } else if (path == zvPath_market_collection) {
            say(KitBench::brief({"1001"}));
        } else if (path == zvPath_market_list) {
            say(rows);
        } else if (path == zvPath_collection_type) {
            say("{\"types\": [{\"id\": 1, \"name\": \"邮票\"}]}");
        } else if (path == zvPath_sync) {
            const ZvRequest poll = m_transport->lastRequest(zvPath_sync);
            const bool isOfThisRun = poll.parameter("boot") == QString::fromLatin1(boot);
            QByteArrayList topics;
            for (const char *name : {"list", "brief", "type"}) {
                const bool holds = isOfThisRun && poll.parameter(name) == QLatin1String("1");
                if (poll.hasParameter(name) && !holds)
                    topics.append(QByteArray("\"") + name + "\": {\"version\": 1, \"gap\": true}");
            }
            if (!topics.isEmpty() || poll.parameter("wait") == QLatin1String("0"))
                say("{\"topics\": {" + topics.join(", ") + "}}");
        }
    }

    ZvScriptedTransport *m_transport;
};

} // namespace

// The exchange goes away and returns; the client is whole again in time, by itself.
class RecoveryTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        m_exchange = std::make_unique<ComingAndGoing>(m_bench->exchange);
        access()->setUrlPrefix(QString());
        engine()->setGlobalCollectionID(QString());
        engine()->changedToMarketList();
        m_bench->settle();
    }

    void cleanup()
    {
        m_exchange.reset();
        m_bench.reset();
    }

    void wholeWithinFiveSecondsOfTheReturn_data()
    {
        QTest::addColumn<int>("how");
        QTest::addColumn<int>("away");
        for (const int away : {100, 700, 3300, 4100, 5900, 7700, 31000, 33333, 60001}) {
            QTest::newRow(qPrintable(QStringLiteral("refusing for %1 ms").arg(away)))
                << int(ComingAndGoing::Refusing) << away;
            QTest::newRow(qPrintable(QStringLiteral("silent for %1 ms").arg(away)))
                << int(ComingAndGoing::Silent) << away;
        }
    }

    void wholeWithinFiveSecondsOfTheReturn()
    {
        QFETCH(int, how);
        QFETCH(int, away);
        access()->start();
        m_bench->settle();
        QVERIFY(access()->isConnected());
        QCOMPARE(price(), qint64(1000));

        m_exchange->die(ComingAndGoing::State(how));
        m_bench->settle();
        QVERIFY(!access()->isConnected());
        pass(away);
        QVERIFY(!access()->isConnected());
        QCOMPARE(access()->awayFor(), qint64(away));
        QVERIFY(access()->dataAge() >= away);
        QCOMPARE(price(), qint64(1000)); // the old rows stay in view

        if (how == ComingAndGoing::Silent) {
            // The worst moment to return is just after a question has left for nobody.
            for (const int open : {0, 1}) {
                for (int i = 0; i < 200 && openPolls() != open; ++i)
                    pass(50);
                QCOMPARE(openPolls(), open);
            }
        }
        m_exchange->state = ComingAndGoing::Up;
        m_exchange->run = 2;
        m_exchange->price = 1234;
        int passed = 0;
        while (passed < 5000 && price() != 1234) {
            pass(50);
            passed += 50;
        }
        QCOMPARE(price(), qint64(1234));
        QVERIFY(access()->isConnected());
        QCOMPARE(access()->awayFor(), qint64(0));
    }

    void exchangeThatComesLaterIsFound()
    {
        m_exchange->state = ComingAndGoing::Refusing;
        access()->start();
        m_bench->settle();
        pass(20000);
        QVERIFY(!access()->isConnected());
        QVERIFY(access()->urlPrefix().isEmpty());
        m_exchange->state = ComingAndGoing::Up;
        pass(5000);
        QVERIFY(access()->isConnected());
        QCOMPARE(access()->urlPrefix(), QStringLiteral("/ch/youbika/"));
        QCOMPARE(price(), qint64(1000));
    }

    // The question about a key may be refused because the session has ended, which says nothing
    // about the order.
    void unknownEndStaysUnknownWithoutASession()
    {
        access()->start();
        m_bench->settle();
        auto *actions = ZvServerActionResult::getZvServerActionResultInstance();
        QSignalSpy failed(actions, &ZvServerActionResult::signal_trade_buy_failed);
        actions->sendRequest_trade_buy(QStringLiteral("1001"), 1.0F, 1);
        m_bench->exchange->fail(zvPath_trade_buy, ZvAnswer::TimedOut);
        m_bench->settle();
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        m_bench->exchange->answer(
            zvPath_trade_buy, ZvScriptedTransport::refusal("session", QStringLiteral("请先登录")),
            401);
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QVERIFY(failed.first().first().toString().contains(QStringLiteral("结果未知")));
    }

    // A question to a topic's path that hangs must not keep the next collection waiting.
    void hangingQuestionOfTheLastCollectionIsDropped()
    {
        access()->start();
        m_bench->settle();
        m_bench->exchange->takeRequests();
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        m_bench->exchange->answer(
            zvPath_sync,
            ZvScriptedTransport::ok("{\"topics\": {\"trade\": {\"version\": 3, \"gap\": true}}}", 0,
                                    "run1"));
        m_bench->settle();
        QCOMPARE(m_bench->exchange->openCount(zvPath_collection_trade), 1);
        QVERIFY(!m_bench->exchange->lastRequest(zvPath_sync).hasParameter("trade"));
        engine()->setGlobalCollectionID(QStringLiteral("1002"));
        m_bench->settle();
        QCOMPARE(m_bench->exchange->openCount(zvPath_collection_trade), 0);
        QCOMPARE(m_bench->exchange->lastRequest(zvPath_sync).parameter("trade"),
                 QStringLiteral("0"));
    }

private:
    static qint64 price()
    {
        const QList<ZvUBObject> rows = cache()->getMarketListByTypeId(-1, QString());
        return rows.isEmpty() ? -1 : rows.first().data().latest;
    }

    int openPolls() const { return m_bench->exchange->openCount(zvPath_sync); }

    // Lets `milliseconds` pass, with everything that happens on the way.
    void pass(int milliseconds)
    {
        const qint64 end = m_bench->clock.now() + milliseconds;
        while (m_bench->clock.now() < end) {
            const qint64 left = end - m_bench->clock.now();
            const qint64 next = m_bench->clock.untilNext();
            m_bench->clock.advance(next < 0 ? left : std::min(left, std::max<qint64>(next, 1)));
            m_bench->settle();
        }
    }

    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<ComingAndGoing> m_exchange;
};

ZV_TEST(RecoveryTest)
#include "test_recovery.moc"
