#include "kitbench.h"

#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

#include <map>
#include <random>

namespace {

using Feed = ZvChartFeed;

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

const QString servers[] = {QStringLiteral("/ch/youbika/"), QStringLiteral("/ch/baoyushi/")};
constexpr int collections = 40; // of each server; "1000" and on
constexpr int dealsOfAPage = 20;

// Every figure of a collection says whose it is: fen that no other one of any server has.
qint64 priceOf(const QString &server, const QString &id)
{
    return id.toLongLong() * 100 + (server == servers[0] ? 11 : 77);
}

// An exchange whose answers come late and in any order.
class SlowExchange : public ZvTransport
{
public:
    explicit SlowExchange(quint32 seed) : m_random(seed) { }
    ~SlowExchange() override { finishAll(); }

    int waiting() const { return static_cast<int>(m_waiting.size()); }
    int asked() const { return m_asked; }

    // Answers one of the calls that wait, or lets it fail.
    void answerOne(bool mayFail)
    {
        if (m_waiting.empty())
            return;
        auto chosen = m_waiting.begin();
        std::advance(chosen, below(waiting()));
        const ZvCallId id = chosen->first;
        const ZvRequest request = chosen->second;
        m_waiting.erase(chosen);
        ZvAnswer answer;
        const bool fails = mayFail && below(12) == 0;
        answer.ending = fails ? ZvAnswer::Failed : ZvAnswer::Answered;
        answer.error = fails ? QStringLiteral("broken off") : QString();
        answer.httpStatus = 200;
        answer.body = fails ? QByteArray() : bodyFor(request);
        finish(id, answer);
    }

    int below(int bound) { return static_cast<int>(m_random() % static_cast<unsigned>(bound)); }

protected:
    void start(ZvCallId id, const ZvRequest &request) override
    {
        ++m_asked;
        m_waiting.emplace(id, request);
    }
    void abandon(ZvCallId id) override { m_waiting.erase(id); }

private:
    static QByteArray bodyFor(const ZvRequest &request)
    {
        const QByteArray id = request.parameter(QStringLiteral("collection")).toLatin1();
        const qint64 price = priceOf(request.prefix, QString::fromLatin1(id));
        if (request.path == zvPath_sync)
            return poll(request, id, price);
        if (request.path == zvPath_market_jit) {
            QList<QByteArray> minutes;
            const qint64 from = request.parameter(QStringLiteral("from")).toLongLong();
            const int first = from == 0 ? 0 : int((from - 1577840400000) / 60000);
            for (int i = first; i < 10; ++i)
                minutes.append(KitBench::minute(i, price));
            return ZvScriptedTransport::ok(KitBench::timeLine(id, minutes), 0);
        }
        if (request.path == zvPath_market_day || request.path == zvPath_market_week
            || request.path == zvPath_market_month) {
            QList<QByteArray> bars;
            const int count = std::min(6, request.parameter(QStringLiteral("count")).toInt());
            const bool isEarlier = request.hasParameter(QStringLiteral("before"));
            for (int i = count; i > 0 && !isEarlier; --i) {
                bars.append(KitBench::bar(
                    QDate(2019, 12, 31).addMonths(1 - i).toString(Qt::ISODate).toLatin1(), price));
            }
            return ZvScriptedTransport::ok(KitBench::kLine(id, bars), 0);
        }
        if (request.path == zvPath_market_detail) {
            const int page = request.parameter(QStringLiteral("page")).toInt();
            return ZvScriptedTransport::ok(priced(KitBench::detail(id, page, dealsOfAPage), price),
                                           0);
        }
        if (request.path == zvPath_collection_trade)
            return ZvScriptedTransport::ok(KitBench::trade(id, price), 0);
        return ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙"));
    }

    static QByteArray priced(QByteArray deals, qint64 price)
    {
        return deals.replace("\"price\": 1000", "\"price\": " + QByteArray::number(price));
    }

    static QByteArray poll(const ZvRequest &request, const QByteArray &id, qint64 price)
    {
        QByteArrayList topics;
        if (!id.isEmpty()) {
            const QByteArray version
                = QByteArray::number(request.parameter(QStringLiteral("item")).toLongLong() + 1);
            topics.append("\"item\": {\"version\": " + version
                          + ", \"data\": " + KitBench::item(id, price) + "}");
            topics.append("\"trade\": {\"version\": " + version
                          + ", \"data\": " + KitBench::trade(id, price) + "}");
            topics.append("\"latest\": {\"version\": " + version
                          + ", \"data\": " + priced(KitBench::latest(id, 3), price) + "}");
        }
        return ZvScriptedTransport::ok("{\"topics\": {" + topics.join(", ") + "}}", 0);
    }

    std::mt19937 m_random;
    std::map<ZvCallId, ZvRequest> m_waiting;
    int m_asked = 0;
};

} // namespace

// A trader who walks through collections, charts and servers faster than the exchange answers.
class WalkingTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_seed = qEnvironmentVariableIsSet("ZV_SEED") ? qEnvironmentVariable("ZV_SEED").toUInt()
                                                      : std::random_device()();
        qInfo("seed %u; repeat with ZV_SEED=%u ZvNetworkKitTests walking %s", m_seed, m_seed,
              QTest::currentTestFunction());
        m_bench = std::make_unique<KitBench>();
        access()->setUrlPrefix(QStringLiteral("/ch/elsewhere/"));
        engine()->setGlobalCollectionID(QString());
        m_exchange = new SlowExchange(m_seed);
        m_bench->exchange = nullptr;
        access()->setTransport(std::unique_ptr<ZvTransport>(m_exchange));
        access()->setUrlPrefix(servers[0]);
        access()->start();
        m_feed = std::make_unique<Feed>();
        m_feed->setActive(true);
        m_wrong = 0;
        m_signals = 0;
        m_landed = 0;
        watch();
    }

    void cleanup()
    {
        m_context.reset();
        m_feed.reset();
        access()->stop();
        m_bench.reset();
    }

    void nothingIsMixed_data()
    {
        QTest::addColumn<bool>("withServers");
        QTest::newRow("one server") << false;
        QTest::newRow("two servers") << true;
    }

    void nothingIsMixed()
    {
        QFETCH(bool, withServers);
        int objects = 0;
        for (int change = 0; change < 1000; ++change) {
            walk(change, withServers);
            const int turns = m_exchange->below(4);
            for (int turn = 0; turn < turns; ++turn) {
                m_exchange->answerOne(true);
                comeOn();
                m_bench->clock.advance(m_exchange->below(400));
            }
            check();
            if (m_wrong > 0)
                break;
            QVERIFY2(m_exchange->waiting() <= 12, qPrintable(QString::number(change)));
            if (change == 200)
                objects = countObjects();
        }
        QCOMPARE(m_wrong, 0);
        QVERIFY2(m_signals > 500, qPrintable(QString::number(m_signals)));
        QVERIFY2(m_landed > 50, qPrintable(QString::number(m_landed)));
        const int objectsAfter = countObjects();
        QVERIFY2(objectsAfter <= objects + 30,
                 qPrintable(QStringLiteral("%1, then %2").arg(objects).arg(objectsAfter)));

        // Where the walk ends, all comes to rest and is there.
        engine()->sendRequest_Market_Detail(currentId(), 1, dealsOfAPage);
        for (int turn = 0; turn < 400 && !isWhole(); ++turn) {
            m_exchange->answerOne(false);
            m_bench->settle();
            m_bench->clock.advance(100);
        }
        QVERIFY(isWhole());
        check();
        QCOMPARE(m_wrong, 0);
    }

private:
    QString currentId() const { return engine()->getGlobalCollectionID(); }
    qint64 price() const { return priceOf(access()->urlPrefix(), currentId()); }

    void walk(int change, bool withServers)
    {
        engine()->setGlobalCollectionID(
            QString::number(1000 + (change + m_exchange->below(3)) % collections));
        engine()->sendRequest_Market_Detail(currentId(), 1 + m_exchange->below(3), dealsOfAPage);
        if (m_exchange->below(5) == 0)
            engine()->flushCurrentTop5();
        if (m_exchange->below(7) == 0)
            m_feed->setChart(Feed::Chart(m_exchange->below(4)));
        if (m_exchange->below(7) == 0)
            m_feed->askEarlier();
        if (m_exchange->below(11) == 0)
            m_feed->setActive(!m_feed->isActive());
        if (withServers && m_exchange->below(9) == 0)
            access()->setUrlPrefix(servers[m_exchange->below(2)]);
    }

    // A part of what is under way comes, or all of it.
    void comeOn()
    {
        switch (m_exchange->below(3)) {
        case 0:
            QCoreApplication::sendPostedEvents();
            break;
        case 1:
            QCoreApplication::processEvents();
            break;
        default:
            m_bench->settle();
        }
    }

    // At every signal, and between them, all that is on view is of one collection and server.
    void check()
    {
        const auto hold = [this](bool isRight, const char *what) {
            if (!isRight) {
                ++m_wrong;
                qInfo("%s is not of %s", what, qPrintable(currentId()));
            }
        };
        const double yuan = zvub::yuan(price());
        hold(m_feed->collectionId() == currentId(), "the feed");
        const ZvUBTimeLine &line = m_feed->timeLine();
        hold(line.minutes.isEmpty() || line.collectionId == currentId(), "the time line");
        for (const ZvUBMinute &minute : line.minutes)
            hold(minute.price == yuan, "a minute");
        const ZvUBKLine &bars = m_feed->kLine();
        hold(bars.bars.isEmpty() || bars.collectionId == currentId(), "the K line");
        for (const ZvUBBar &bar : bars.bars)
            hold(bar.close == yuan, "a bar");
        for (const ZvUBDealItem &deal : cache()->getMarketDetail())
            hold(deal.data().price == price(), "a deal of the page");
        if (!line.minutes.isEmpty() || !bars.bars.isEmpty())
            ++m_landed;
    }

    void watch()
    {
        m_context = std::make_unique<QObject>();
        const auto see = [this] {
            ++m_signals;
            check();
        };
        connect(m_feed.get(), &Feed::replaced, m_context.get(), see);
        connect(m_feed.get(), &Feed::grown, m_context.get(), see);
        connect(m_feed.get(), &Feed::prepended, m_context.get(), see);
        connect(m_feed.get(), &Feed::stateChanged, m_context.get(), see);
        connect(cache(), &ZvServerCache::signal_cache_Market_Detail_changed, m_context.get(), see);
        connect(cache(), &ZvServerCache::signal_cache_CollectionItem_changed, m_context.get(), see);
        // What a poll stores is stored under the collection that it is about.
        connect(cache(), &ZvServerCache::signal_cache_CollectionTrade_changed, m_context.get(),
                [this](const QString &id) {
                    if (cache()->hasTopFive(id)
                        && cache()->getTopFive(id).data().collectionId != id)
                        ++m_wrong;
                });
    }

    bool isWhole() const
    {
        m_feed->setActive(true);
        return m_feed->state() == Feed::Ready && !cache()->getMarketDetail().isEmpty()
            && cache()->getProItem(currentId()).data().volume == price()
            && cache()->getTopFive(currentId()).data().latest == price();
    }

    int countObjects()
    {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        return m_bench->clock.children().size() + access()->link()->findChildren<QObject *>().size()
            + engine()->findChildren<QObject *>().size() + m_feed->findChildren<QObject *>().size()
            + m_exchange->openCalls();
    }

    quint32 m_seed = 0;
    std::unique_ptr<KitBench> m_bench;
    SlowExchange *m_exchange = nullptr;
    std::unique_ptr<Feed> m_feed;
    std::unique_ptr<QObject> m_context;
    int m_wrong = 0;
    int m_signals = 0;
    int m_landed = 0;
};

ZV_TEST(WalkingTest)
#include "test_walking.moc"
