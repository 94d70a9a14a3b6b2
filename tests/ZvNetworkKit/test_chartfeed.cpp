#include "kitbench.h"
#include "listeners.h"

#include "ZvModelKit/zvubproitem.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvretry.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

namespace {

using Feed = ZvChartFeed;

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

const QString here = QStringLiteral("/ch/youbika/");
const QString there = QStringLiteral("/ch/baoyushi/");
constexpr qint64 firstMinute = 1577840400000;

// What a feed says, in the order in which it says it.
class Words
{
public:
    explicit Words(Feed *feed)
    {
        QObject::connect(feed, &Feed::replaced, &m_context, [this] { m_said += "replaced"; });
        QObject::connect(feed, &Feed::grown, &m_context,
                         [this](int first) { m_said += QStringLiteral("grown %1").arg(first); });
        QObject::connect(feed, &Feed::prepended, &m_context, [this](int count) {
            m_said += QStringLiteral("prepended %1").arg(count);
        });
        QObject::connect(feed, &Feed::stateChanged, &m_context, [this, feed] {
            m_said += QString::fromLatin1(QMetaEnum::fromType<Feed::State>().key(feed->state()));
        });
    }

    QStringList take()
    {
        QStringList taken;
        taken.swap(m_said);
        return taken;
    }

private:
    QObject m_context;
    QStringList m_said;
};

} // namespace

// A chart's figures, followed through changes of collection, server, session and connection.
class ChartFeedTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        access()->setUrlPrefix(QStringLiteral("/ch/elsewhere/"));
        engine()->setGlobalCollectionID(QString());
        m_bench->startOn(here);
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        m_feed = std::make_unique<Feed>();
        m_words = std::make_unique<Words>(m_feed.get());
        exchange()->takeRequests();
    }

    void cleanup()
    {
        m_words.reset();
        m_feed.reset();
        m_bench.reset();
    }

    void hiddenFeedAsksNothing();
    void wholeSessionIsTakenExactly();
    void eachChartHasItsPath_data();
    void eachChartHasItsPath();
    void barsAreTakenExactly();
    void growsByItsTail();
    void equalTailIsSilent();
    void asksAtMostOnceASecond();
    void changeUnderWayIsAskedForAgain();
    void otherCollectionsAreNoNews();
    void gapAsksForEverything();
    void otherSessionBeginsAnew();
    void sessionThatIsOverLandsNowhere();
    void marketThatOpensIsLookedAt();
    void firstDealMakesAChart();
    void weekThatGrowsBearsAnotherDay();

    void otherCollectionDropsWhatStoodAtOnce();
    void lateAnswerOfTheLastCollectionDies();
    void lateAnswerOfTheLastServerDies();
    void lateAnswerOfTheLastChartDies();
    void manyChangesInATurnAreOneQuestion();
    void sameCollectionAgainIsNoChange();
    void withoutFigures_data();
    void withoutFigures();
    void whatTheExchangeDoesNotHave_data();
    void whatTheExchangeDoesNotHave();

    void hostileAnswersLeaveWhatStands_data();
    void hostileAnswersLeaveWhatStands();
    void failureIsAskedForAgainAndLoggedOnce();
    void lostConnectionMakesItStale();
    void figuresThatComeWithoutPollsAreStale();
    void ageIsThatOfTheFigures();
    void hiddenFeedCatchesUp();
    void otherRunOfTheServiceBeginsAnew();
    void stopAndStart();

    void earlierBarsComeInFront();
    void earlierBarsAreAskedForOnceAtATime();
    void earlierBarsOfAnotherPlaceAreRefused();
    void earlierBarsThatFailComeLater();
    void earlierBarsOfTheLastCollectionDie();
    void barsThatWereAskedForEarlierStayInView();
    void timeLineHasNoEarlierBars();

    void listenerMayChangeTheChart();
    void listenerMayEndTheFeed();
    void twoFeedsStandBesideEachOther();
    void signalsComeFromTheEventLoop();

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }
    int asked(const QString &path) const { return exchange()->requestedPaths().count(path); }
    QString lastParameter(const QString &path, const char *name) const
    {
        return exchange()->lastRequest(path).parameter(QString::fromLatin1(name));
    }

    void answer(const QString &path, const QByteArray &data, const QByteArray &boot = "b001")
    {
        exchange()->answer(path, ZvScriptedTransport::ok(data, 0, boot));
        m_bench->settle();
    }

    // The collection has changed, as a poll says it.
    void change(const QString &id = QStringLiteral("1001"))
    {
        ZvServerCache::getZvServerCacheInstance()->storeProItem(id, ZvUBProItem());
    }

    // Changed, and asked for.
    void changeLater()
    {
        m_bench->clock.advance(Feed::shortestDistance);
        change();
    }

    // A time line of two minutes stands and nothing is asked for.
    void standWithMinutes()
    {
        m_feed->setActive(true);
        m_bench->settle();
        answer(zvPath_market_jit,
               KitBench::timeLine("1001", {KitBench::minute(0), KitBench::minute(1, 1010)}));
        QCOMPARE(m_feed->state(), Feed::Ready);
        m_words->take();
        exchange()->takeRequests();
    }

    // Day bars of the last days of 2019 stand, as many as are asked for at a time.
    void standWithBars()
    {
        m_feed->setChart(Feed::DayKLine);
        m_feed->setActive(true);
        m_bench->settle();
        answer(zvPath_market_day, KitBench::kLine("1001", days(QDate(2019, 12, 31), 1000)));
        QCOMPARE(m_feed->kLine().bars.size(), 1000);
        m_words->take();
        exchange()->takeRequests();
    }

    static QList<QByteArray> days(const QDate &last, int count)
    {
        QList<QByteArray> bars;
        for (int i = count - 1; i >= 0; --i)
            bars.append(KitBench::bar(last.addDays(-i).toString(Qt::ISODate).toLatin1()));
        return bars;
    }

    QList<int> prices() const
    {
        QList<int> fen;
        for (const ZvUBMinute &minute : m_feed->timeLine().minutes)
            fen.append(qRound(minute.price * 100));
        return fen;
    }

    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<Feed> m_feed;
    std::unique_ptr<Words> m_words;
};

void ChartFeedTest::hiddenFeedAsksNothing()
{
    QCOMPARE(m_feed->chart(), Feed::TimeLine);
    QVERIFY(!m_feed->isActive());
    QCOMPARE(m_feed->collectionId(), QStringLiteral("1001"));
    QCOMPARE(m_feed->state(), Feed::Waiting);
    QCOMPARE(m_feed->ageMs(), qint64(-1));
    m_feed->setChart(Feed::MonthKLine);
    m_feed->setChart(Feed::TimeLine);
    m_feed->askEarlier();
    change();
    m_bench->settle();
    m_bench->clock.advance(60000);
    m_bench->settle();
    for (const QString &path : exchange()->requestedPaths())
        QCOMPARE(path, zvPath_sync);
}

void ChartFeedTest::wholeSessionIsTakenExactly()
{
    m_feed->setActive(true);
    QVERIFY(exchange()->requests().isEmpty());
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 1);
    const ZvRequest request = exchange()->lastRequest(zvPath_market_jit);
    QCOMPARE(request.prefix, here);
    QCOMPARE(request.parameter("collection"), QStringLiteral("1001"));
    QVERIFY(!request.hasParameter("from"));
    QVERIFY(!request.isAction);
    QCOMPARE(m_feed->state(), Feed::Waiting);

    answer(zvPath_market_jit,
           "{\"id\": \"1001\", \"tradingDay\": \"2019-12-31\", \"session\": 7, "
           "\"previousClose\": 13107199, \"spans\": [[1577840400000, 1577847600000], "
           "[1577853000000, null]], \"minutes\": [[1577840400000, 13107201, 13107200, 3], "
           "[1577853060000, 29, 57, 0]]}");
    QCOMPARE(m_words->take(), QStringList({"replaced", "Ready"}));
    const ZvUBTimeLine &line = m_feed->timeLine();
    QCOMPARE(line.collectionId, QStringLiteral("1001"));
    QCOMPARE(line.tradingDay, QStringLiteral("2019-12-31"));
    QCOMPARE(line.session, 7);
    QCOMPARE(line.previousClose, 131071.99);
    QCOMPARE(line.spans.size(), 2);
    QCOMPARE(line.spans.at(0).begin, firstMinute);
    QCOMPARE(line.spans.at(0).end, qint64(1577847600000));
    QCOMPARE(line.spans.at(1).end, qint64(0));
    QCOMPARE(line.minutes.size(), 2);
    QCOMPARE(line.minutes.at(0).time, firstMinute);
    QCOMPARE(line.minutes.at(0).price, 131072.01);
    QCOMPARE(line.minutes.at(0).average, 131072.0);
    QCOMPARE(line.minutes.at(0).volume, qint64(3));
    QCOMPARE(line.minutes.at(1).price, 0.29);
    QCOMPARE(line.minutes.at(1).average, 0.57);
    QVERIFY(m_feed->kLine().bars.isEmpty());
}

void ChartFeedTest::eachChartHasItsPath_data()
{
    QTest::addColumn<int>("chart");
    QTest::addColumn<QString>("path");
    QTest::newRow("day") << int(Feed::DayKLine) << zvPath_market_day;
    QTest::newRow("week") << int(Feed::WeekKLine) << zvPath_market_week;
    QTest::newRow("month") << int(Feed::MonthKLine) << zvPath_market_month;
}

void ChartFeedTest::eachChartHasItsPath()
{
    QFETCH(int, chart);
    QFETCH(QString, path);
    standWithMinutes();
    m_feed->setChart(Feed::Chart(chart));
    QCOMPARE(m_feed->chart(), Feed::Chart(chart));
    QVERIFY(m_feed->timeLine().minutes.isEmpty());
    QCOMPARE(m_feed->state(), Feed::Waiting);
    QCOMPARE(m_words->take(), QStringList());
    m_bench->settle();
    QCOMPARE(m_words->take(), QStringList({"replaced", "Waiting"}));
    QCOMPARE(exchange()->requestedPaths(), QStringList(path));
    QCOMPARE(lastParameter(path, "count"), QStringLiteral("1000"));
    QVERIFY(!exchange()->lastRequest(path).hasParameter("before"));
    answer(path,
           KitBench::kLine("1001", {KitBench::bar("2019-11-29"), KitBench::bar("2020-01-01")}));
    QCOMPARE(m_words->take(), QStringList({"replaced", "Ready"}));
    QCOMPARE(m_feed->kLine().bars.size(), 2);
    changeLater();
    m_bench->settle();
    QCOMPARE(lastParameter(path, "count"), QStringLiteral("2"));
}

void ChartFeedTest::barsAreTakenExactly()
{
    m_feed->setChart(Feed::DayKLine);
    m_feed->setActive(true);
    m_bench->settle();
    answer(zvPath_market_day,
           "{\"id\": \"1001\", \"session\": 3, \"bars\": [[\"2019-12-31\", 1001, 1029, 957, 1003, "
           "70, 70035]]}");
    const ZvUBKLine &line = m_feed->kLine();
    QCOMPARE(line.collectionId, QStringLiteral("1001"));
    QCOMPARE(line.session, 3);
    QCOMPARE(line.bars.size(), 1);
    const ZvUBBar &bar = line.bars.first();
    QCOMPARE(bar.day, QStringLiteral("2019-12-31"));
    QCOMPARE(bar.open, 10.01);
    QCOMPARE(bar.high, 10.29);
    QCOMPARE(bar.low, 9.57);
    QCOMPARE(bar.close, 10.03);
    QCOMPARE(bar.volume, qint64(70));
    QCOMPARE(bar.amount, 700.35);
}

void ChartFeedTest::growsByItsTail()
{
    standWithMinutes();
    changeLater();
    m_bench->settle();
    QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_market_jit));
    QCOMPARE(lastParameter(zvPath_market_jit, "from"), QString::number(firstMinute + 60000));
    answer(zvPath_market_jit,
           KitBench::timeLine("1001", {KitBench::minute(1, 1020), KitBench::minute(4, 990)}));
    QCOMPARE(m_words->take(), QStringList("grown 1"));
    QCOMPARE(prices(), QList<int>({1000, 1020, 990}));
    changeLater();
    m_bench->settle();
    QCOMPARE(lastParameter(zvPath_market_jit, "from"), QString::number(firstMinute + 240000));
    answer(zvPath_market_jit,
           KitBench::timeLine("1001", {KitBench::minute(4, 990), KitBench::minute(5, 995)}));
    QCOMPARE(m_words->take(), QStringList("grown 3"));
    QCOMPARE(m_feed->state(), Feed::Ready);
}

void ChartFeedTest::equalTailIsSilent()
{
    standWithMinutes();
    changeLater();
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(1, 1010)}));
    QCOMPARE(m_words->take(), QStringList());
    QCOMPARE(m_feed->state(), Feed::Ready);
}

void ChartFeedTest::asksAtMostOnceASecond()
{
    standWithMinutes();
    m_bench->clock.advance(Feed::shortestDistance);
    for (int i = 0; i < 50; ++i) {
        change();
        m_bench->clock.advance(100);
        if (exchange()->openCount(zvPath_market_jit) > 0)
            answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(1, 1011 + i)}));
    }
    QCOMPARE(asked(zvPath_market_jit), 6); // at once, and after each of five seconds
    // What comes last is asked for as well.
    change();
    QCOMPARE(asked(zvPath_market_jit), 6);
    m_bench->clock.advance(Feed::shortestDistance);
    QCOMPARE(asked(zvPath_market_jit), 7);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(1, 2000)}));
    m_bench->clock.advance(60000);
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 7);
}

// The answer may have left the exchange before the change.
void ChartFeedTest::changeUnderWayIsAskedForAgain()
{
    standWithMinutes();
    changeLater();
    m_bench->clock.advance(Feed::shortestDistance + 500);
    change();
    QCOMPARE(asked(zvPath_market_jit), 1);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(1, 1010)}));
    QCOMPARE(asked(zvPath_market_jit), 2);
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 1);
}

void ChartFeedTest::otherCollectionsAreNoNews()
{
    standWithMinutes();
    m_bench->clock.advance(Feed::shortestDistance);
    change(QStringLiteral("1002"));
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 0);
}

void ChartFeedTest::gapAsksForEverything()
{
    standWithMinutes();
    changeLater();
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(9)}));
    QCOMPARE(m_words->take(), QStringList());
    QCOMPARE(prices(), QList<int>({1000, 1010}));
    m_bench->clock.advance(Feed::shortestDistance);
    QVERIFY(!exchange()->lastRequest(zvPath_market_jit).hasParameter("from"));
    answer(zvPath_market_jit,
           KitBench::timeLine("1001", {KitBench::minute(8, 1), KitBench::minute(9, 2)}));
    QCOMPARE(m_words->take(), QStringList("replaced"));
    QCOMPARE(prices(), QList<int>({1, 2}));
}

void ChartFeedTest::otherSessionBeginsAnew()
{
    standWithMinutes();
    changeLater();
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(1, 1010)}, 2));
    QCOMPARE(prices(), QList<int>({1000, 1010}));
    m_bench->clock.advance(Feed::shortestDistance);
    QVERIFY(!exchange()->lastRequest(zvPath_market_jit).hasParameter("from"));
    answer(zvPath_market_jit, KitBench::timeLine("1001", {}, 2));
    QCOMPARE(m_words->take(), QStringList({"replaced", "NoData"}));
    QCOMPARE(m_feed->timeLine().session, 2);
    QCOMPARE(m_feed->timeLine().previousClose, 9.9);
    QCOMPARE(m_feed->timeLine().spans.size(), 1);
}

void ChartFeedTest::sessionThatIsOverLandsNowhere()
{
    m_feed->setActive(true);
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(0)}, 5));
    m_words->take();
    const LogLines log;
    changeLater();
    m_bench->settle();
    answer(zvPath_market_jit,
           KitBench::timeLine("1001", {KitBench::minute(0), KitBench::minute(1)}, 4));
    QCOMPARE(m_words->take(), QStringList("Stale"));
    QCOMPARE(prices(), QList<int>({1000}));
    QCOMPARE(LogLines::lines().size(), 1);

    // Nor does a whole answer, which may have been under way longer still.
    m_bench->clock.advance(ZvRetry::shortestPause);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(9)}, 5)); // a gap
    m_bench->clock.advance(Feed::shortestDistance);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(7)}, 4));
    QCOMPARE(prices(), QList<int>({1000}));
    QCOMPARE(m_feed->timeLine().session, 5);
    m_bench->clock.advance(ZvRetry::shortestPause);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(7)}, 6));
    QCOMPARE(m_feed->timeLine().session, 6);
    QCOMPARE(m_feed->state(), Feed::Ready);
}

// Nothing may be dealt for a long time after another session has begun.
void ChartFeedTest::marketThatOpensIsLookedAt()
{
    standWithMinutes();
    m_bench->clock.advance(Feed::shortestDistance);
    m_bench->answerPoll("\"check\": {\"version\": 2, \"data\": " + KitBench::check(true, 2) + "}");
    QCOMPARE(asked(zvPath_market_jit), 1);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {}, 2));
    m_bench->clock.advance(Feed::shortestDistance);
    QCOMPARE(asked(zvPath_market_jit), 2);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {}, 2));
    QCOMPARE(m_feed->state(), Feed::NoData);
    m_bench->clock.advance(Feed::shortestDistance);
    m_bench->answerPoll("\"check\": {\"version\": 3, \"data\": " + KitBench::check(false, 2) + "}");
    QCOMPARE(asked(zvPath_market_jit), 3);
}

void ChartFeedTest::firstDealMakesAChart()
{
    m_feed->setActive(true);
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {}));
    QCOMPARE(m_words->take(), QStringList({"replaced", "NoData"}));
    QCOMPARE(m_feed->ageMs(), qint64(-1));
    changeLater();
    m_bench->settle();
    QVERIFY(!exchange()->lastRequest(zvPath_market_jit).hasParameter("from"));
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(3)}));
    QCOMPARE(m_words->take(), QStringList({"replaced", "Ready"}));
}

void ChartFeedTest::weekThatGrowsBearsAnotherDay()
{
    m_feed->setChart(Feed::WeekKLine);
    m_feed->setActive(true);
    m_bench->settle();
    answer(zvPath_market_week,
           KitBench::kLine("1001", {KitBench::bar("2019-12-27"), KitBench::bar("2019-12-31")}));
    m_words->take();
    changeLater();
    m_bench->settle();
    answer(zvPath_market_week,
           KitBench::kLine("1001", {KitBench::bar("2019-12-27"), KitBench::bar("2020-01-01")}));
    QCOMPARE(m_words->take(), QStringList("grown 1"));
    QCOMPARE(m_feed->kLine().bars.size(), 2);
    QCOMPARE(m_feed->kLine().bars.last().day, QStringLiteral("2020-01-01"));
}

void ChartFeedTest::otherCollectionDropsWhatStoodAtOnce()
{
    standWithMinutes();
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    QCOMPARE(m_feed->collectionId(), QStringLiteral("1002"));
    QCOMPARE(m_feed->state(), Feed::Waiting);
    QVERIFY(m_feed->timeLine().minutes.isEmpty());
    QVERIFY(m_feed->timeLine().collectionId.isEmpty());
    QCOMPARE(m_feed->ageMs(), qint64(-1));
    QCOMPARE(m_words->take(), QStringList());
    m_bench->settle();
    QCOMPARE(m_words->take(), QStringList({"replaced", "Waiting"}));
    QCOMPARE(lastParameter(zvPath_market_jit, "collection"), QStringLiteral("1002"));
    QVERIFY(!exchange()->lastRequest(zvPath_market_jit).hasParameter("from"));
}

void ChartFeedTest::lateAnswerOfTheLastCollectionDies()
{
    m_feed->setActive(true);
    m_bench->settle();
    // The answer is with the decoder when the collection changes, so it cannot be called back.
    exchange()->answer(
        zvPath_market_jit,
        ZvScriptedTransport::ok(KitBench::timeLine("1001", {KitBench::minute(0)}), 0));
    QCoreApplication::sendPostedEvents();
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    m_bench->settle();
    QVERIFY(m_feed->timeLine().minutes.isEmpty());
    QCOMPARE(m_feed->state(), Feed::Waiting);
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 1);
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(2)}));
    QCOMPARE(m_feed->timeLine().minutes.first().time, firstMinute + 120000);
}

void ChartFeedTest::lateAnswerOfTheLastServerDies()
{
    standWithMinutes();
    changeLater();
    m_bench->settle();
    exchange()->answer(
        zvPath_market_jit,
        ZvScriptedTransport::ok(KitBench::timeLine("1001", {KitBench::minute(1, 77)}), 0));
    QCoreApplication::sendPostedEvents();
    access()->setUrlPrefix(there);
    QVERIFY(m_feed->timeLine().minutes.isEmpty());
    QCOMPARE(m_feed->state(), Feed::Waiting);
    m_bench->settle();
    QVERIFY(m_feed->timeLine().minutes.isEmpty());
    QCOMPARE(exchange()->lastRequest(zvPath_market_jit).prefix, there);
    QCOMPARE(m_words->take(), QStringList({"replaced", "Waiting"}));
}

void ChartFeedTest::lateAnswerOfTheLastChartDies()
{
    m_feed->setChart(Feed::DayKLine);
    m_feed->setActive(true);
    m_bench->settle();
    exchange()->answer(
        zvPath_market_day,
        ZvScriptedTransport::ok(KitBench::kLine("1001", {KitBench::bar("2019-12-31")}), 0));
    QCoreApplication::sendPostedEvents();
    m_feed->setChart(Feed::WeekKLine);
    m_bench->settle();
    QVERIFY(m_feed->kLine().bars.isEmpty());
    QCOMPARE(exchange()->openCount(zvPath_market_week), 1);
}

void ChartFeedTest::manyChangesInATurnAreOneQuestion()
{
    standWithMinutes();
    for (int i = 0; i < 100; ++i)
        engine()->setGlobalCollectionID(QString::number(2000 + i));
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 1);
    QCOMPARE(lastParameter(zvPath_market_jit, "collection"), QStringLiteral("2099"));
    QCOMPARE(m_words->take(), QStringList({"replaced", "Waiting"}));
}

void ChartFeedTest::sameCollectionAgainIsNoChange()
{
    standWithMinutes();
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    access()->setUrlPrefix(here);
    m_feed->setChart(Feed::TimeLine);
    m_feed->setActive(true);
    m_bench->settle();
    QCOMPARE(prices().size(), 2);
    QVERIFY(!m_words->take().contains("replaced"));
}

void ChartFeedTest::withoutFigures_data()
{
    QTest::addColumn<QString>("id");
    QTest::newRow("no collection") << QString();
    QTest::newRow("the composite row") << QStringLiteral("-1");
}

void ChartFeedTest::withoutFigures()
{
    QFETCH(QString, id);
    standWithMinutes();
    engine()->setGlobalCollectionID(id);
    QCOMPARE(m_feed->state(), Feed::NoData);
    QCOMPARE(m_feed->collectionId(), id);
    m_bench->settle();
    QCOMPARE(m_words->take(), QStringList({"replaced", "NoData"}));
    change(id);
    m_bench->clock.advance(60000);
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 0);
}

void ChartFeedTest::whatTheExchangeDoesNotHave_data()
{
    QTest::addColumn<QByteArray>("status");
    QTest::newRow("unknown collection") << QByteArray("not-found");
    QTest::newRow("unserved path") << QByteArray("unserved");
}

void ChartFeedTest::whatTheExchangeDoesNotHave()
{
    QFETCH(QByteArray, status);
    const LogLines log;
    const QByteArray refusal = ZvScriptedTransport::refusal(status, QStringLiteral("没有"));
    m_feed->setActive(true);
    m_bench->settle();
    exchange()->answer(zvPath_market_jit, refusal, 404);
    m_bench->settle();
    QCOMPARE(m_words->take(), QStringList("NoData"));
    m_bench->clock.advance(5000);
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 1);
    QCOMPARE(LogLines::lines(), QStringList());

    // It may have them later, and lose them again.
    change();
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(0)}));
    QCOMPARE(m_words->take(), QStringList({"replaced", "Ready"}));
    changeLater();
    m_bench->settle();
    exchange()->answer(zvPath_market_jit, refusal, 404);
    m_bench->settle();
    QCOMPARE(m_words->take(), QStringList({"replaced", "NoData"}));
    QVERIFY(m_feed->timeLine().minutes.isEmpty());
}

void ChartFeedTest::hostileAnswersLeaveWhatStands_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<bool>("isShapeless");
    const QByteArray good = ZvScriptedTransport::ok(
        KitBench::timeLine("1001", {KitBench::minute(1, 1020), KitBench::minute(2)}), 0);
    const auto with = [&good](const char *before, const char *after) {
        return QByteArray(good).replace(before, after);
    };
    QTest::newRow("cut off") << good.chopped(3) << true;
    QTest::newRow("no JSON") << QByteArray("<html>") << true;
    QTest::newRow("minutes are an object")
        << with("\"minutes\": [", "\"minutes\": {}, \"x\": [") << true;
    QTest::newRow("price with a fraction") << with("1020, 1020", "1020.5, 1020") << true;
    QTest::newRow("price of nothing") << with("1020, 1020", "0, 1020") << true;
    QTest::newRow("huge volume") << with(", 5]", ", 9000000000000001]") << true;
    QTest::newRow("minutes backwards") << with("1577840520000", "1577840400000") << true;
    QTest::newRow("no session") << with("\"session\": 1, ", "") << true;
    QTest::newRow("bars") << ZvScriptedTransport::ok(
        KitBench::kLine("1001", {KitBench::bar("2020-01-01")}), 0)
                          << true;
    QTest::newRow("another collection") << with("\"1001\"", "\"1002\"") << false;
    QTest::newRow("busy") << ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙")) << false;
    QTest::newRow("failed") << ZvScriptedTransport::refusal("failed", QStringLiteral("停止"))
                            << false;
    QTest::newRow("session") << ZvScriptedTransport::refusal("session", QStringLiteral("登录"))
                             << false;
}

void ChartFeedTest::hostileAnswersLeaveWhatStands()
{
    QFETCH(QByteArray, body);
    QFETCH(bool, isShapeless);
    standWithMinutes();
    const ZvUBTimeLine before = m_feed->timeLine();
    if (isShapeless)
        zvtest::expectMessage(QStringLiteral("The answer of market/jit.html"));
    const LogLines log;
    changeLater();
    m_bench->settle();
    exchange()->answer(zvPath_market_jit, body);
    m_bench->settle();
    QCOMPARE(LogLines::lines().size(), 1);
    QVERIFY(LogLines::lines().first().contains(zvPath_market_jit));
    QCOMPARE(m_feed->timeLine(), before);
    QCOMPARE(m_words->take(), QStringList("Stale"));
    m_bench->clock.advance(ZvRetry::shortestPause);
    answer(zvPath_market_jit,
           KitBench::timeLine("1001", {KitBench::minute(1, 1020), KitBench::minute(2)}));
    QCOMPARE(m_words->take(), QStringList({"grown 1", "Ready"}));
}

void ChartFeedTest::failureIsAskedForAgainAndLoggedOnce()
{
    const LogLines log;
    m_feed->setActive(true);
    m_bench->settle();
    qint64 waited = 0;
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(exchange()->openCount(zvPath_market_jit), 1);
        exchange()->answer(zvPath_market_jit,
                           ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙")), 503);
        m_bench->settle();
        QCOMPARE(m_feed->state(), Feed::Waiting);
        // News do not hurry a question that keeps failing.
        change();
        QCOMPARE(exchange()->openCount(zvPath_market_jit), 0);
        for (; exchange()->openCount(zvPath_market_jit) == 0 && waited < 120000; waited += 500) {
            m_bench->clock.advance(500);
            m_bench->settle();
        }
    }
    QVERIFY(waited >= 60000);
    QCOMPARE(LogLines::lines().filter(zvPath_market_jit).size(), 1);
    // Polls have failed as well meanwhile.
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(0)}));
    QVERIFY(!access()->isConnected());
    QCOMPARE(m_feed->state(), Feed::Stale);
}

void ChartFeedTest::lostConnectionMakesItStale()
{
    standWithMinutes();
    exchange()->fail(zvPath_sync, ZvAnswer::Failed);
    m_bench->settle();
    QCOMPARE(m_feed->state(), Feed::Stale);
    QCOMPARE(m_words->take(), QStringList("Stale"));
    QCOMPARE(prices().size(), 2);
    QCOMPARE(asked(zvPath_market_jit), 0);
    m_bench->clock.advance(2000);
    m_bench->settle();
    QCOMPARE(m_feed->ageMs(), qint64(2000));
    m_bench->answerPoll("");
    QVERIFY(access()->isConnected());
    QCOMPARE(m_feed->state(), Feed::Stale); // until it has caught up
    QCOMPARE(lastParameter(zvPath_market_jit, "from"), QString::number(firstMinute + 60000));
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(1, 1010)}));
    QCOMPARE(m_words->take(), QStringList("Ready"));
    QCOMPARE(m_feed->ageMs(), qint64(0));
}

void ChartFeedTest::figuresThatComeWithoutPollsAreStale()
{
    standWithMinutes();
    exchange()->fail(zvPath_sync, ZvAnswer::Failed);
    m_bench->settle();
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    m_bench->settle();
    QCOMPARE(m_words->take(), QStringList({"Stale", "replaced", "Waiting"}));
    answer(zvPath_market_jit, KitBench::timeLine("1002", {KitBench::minute(0)}));
    QCOMPARE(m_words->take(), QStringList({"replaced", "Stale"}));
    m_bench->clock.advance(2000);
    m_bench->settle();
    m_bench->answerPoll("");
    QVERIFY(access()->isConnected());
    answer(zvPath_market_jit, KitBench::timeLine("1002", {KitBench::minute(0)}));
    QCOMPARE(m_words->take(), QStringList("Ready"));
}

void ChartFeedTest::ageIsThatOfTheFigures()
{
    standWithMinutes();
    m_bench->clock.advance(2000);
    QCOMPARE(m_feed->ageMs(), qint64(2000));
    // A poll that says nothing says that they hold.
    m_bench->answerPoll("");
    QCOMPARE(m_feed->ageMs(), qint64(0));
    m_bench->clock.advance(300);
    QCOMPARE(m_feed->ageMs(), qint64(300));

    // What has changed and is not there yet ages, whatever polls say.
    change();
    m_bench->clock.advance(400);
    m_bench->answerPoll("");
    QCOMPARE(m_feed->ageMs(), qint64(700));
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(1, 1020)}));
    QCOMPARE(m_feed->ageMs(), qint64(0));

    // So do figures that nobody watches.
    m_feed->setActive(false);
    m_bench->clock.advance(1000);
    m_bench->answerPoll("");
    QCOMPARE(m_feed->ageMs(), qint64(1000));
    m_feed->setActive(true);
    QCOMPARE(m_feed->ageMs(), qint64(1000));
}

void ChartFeedTest::hiddenFeedCatchesUp()
{
    standWithMinutes();
    m_feed->setActive(false);
    m_bench->clock.advance(Feed::shortestDistance);
    for (int i = 0; i < 3; ++i) {
        change();
        m_bench->clock.advance(Feed::shortestDistance);
    }
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 0);
    QCOMPARE(prices().size(), 2);
    m_feed->setActive(true);
    m_bench->settle();
    QCOMPARE(asked(zvPath_market_jit), 1);
    answer(zvPath_market_jit,
           KitBench::timeLine("1001", {KitBench::minute(1, 1010), KitBench::minute(2)}));
    QCOMPARE(m_words->take(), QStringList("grown 2"));

    // One that is hidden while it waits takes no answer, and asks again when it is back.
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    m_bench->settle();
    m_feed->setActive(false);
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 0);
    m_feed->setActive(true);
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 1);
    answer(zvPath_market_jit, KitBench::timeLine("1002", {KitBench::minute(0)}));
    QCOMPARE(m_feed->state(), Feed::Ready);
}

void ChartFeedTest::otherRunOfTheServiceBeginsAnew()
{
    standWithMinutes();
    changeLater();
    m_bench->settle();
    answer(zvPath_market_jit,
           KitBench::timeLine("1001", {KitBench::minute(1, 1010), KitBench::minute(2)}), "b002");
    QCOMPARE(prices().size(), 2);
    m_bench->clock.advance(Feed::shortestDistance);
    QVERIFY(!exchange()->lastRequest(zvPath_market_jit).hasParameter("from"));
    // Its sessions count anew, too.
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(5, 500)}, 0), "b002");
    QCOMPARE(m_words->take(), QStringList("replaced"));
    QCOMPARE(prices(), QList<int>({500}));
    changeLater();
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(5, 501)}, 0), "b002");
    QCOMPARE(m_words->take(), QStringList("grown 0"));
}

void ChartFeedTest::stopAndStart()
{
    standWithMinutes();
    changeLater();
    m_bench->settle();
    access()->stop();
    QCOMPARE(m_feed->state(), Feed::Stale);
    m_bench->settle();
    m_bench->clock.advance(60000);
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 0);
    m_words->take();
    m_bench->startOn(here);
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 1);
    QCOMPARE(m_words->take(), QStringList({"replaced", "Waiting"}));
}

void ChartFeedTest::earlierBarsComeInFront()
{
    standWithBars();
    const QDate first(2017, 4, 6);
    QCOMPARE(m_feed->kLine().bars.first().day, first.toString(Qt::ISODate));
    m_feed->askEarlier();
    const ZvRequest request = exchange()->lastRequest(zvPath_market_day);
    QCOMPARE(request.parameter("collection"), QStringLiteral("1001"));
    QCOMPARE(request.parameter("before"), QStringLiteral("2017-04-06"));
    QCOMPARE(request.parameter("count"), QStringLiteral("1000"));
    answer(zvPath_market_day, KitBench::kLine("1001", days(first.addDays(-1), 1000)));
    QCOMPARE(m_words->take(), QStringList("prepended 1000"));
    QCOMPARE(m_feed->kLine().bars.size(), 2000);
    for (int i = 1; i < 2000; ++i)
        QVERIFY(m_feed->kLine().bars.at(i - 1).day < m_feed->kLine().bars.at(i).day);

    // Fewer than asked for are the last ones.
    const QDate next = QDate::fromString(m_feed->kLine().bars.first().day, Qt::ISODate);
    m_feed->askEarlier();
    answer(zvPath_market_day, KitBench::kLine("1001", days(next.addDays(-1), 3)));
    QCOMPARE(m_words->take(), QStringList("prepended 3"));
    exchange()->takeRequests();
    m_feed->askEarlier();
    QCOMPARE(asked(zvPath_market_day), 0);

    // And the other end goes on growing.
    changeLater();
    m_bench->settle();
    answer(zvPath_market_day,
           KitBench::kLine("1001", {KitBench::bar("2019-12-31"), KitBench::bar("2020-01-01")}));
    QCOMPARE(m_words->take(), QStringList("grown 2003"));
}

void ChartFeedTest::earlierBarsAreAskedForOnceAtATime()
{
    standWithBars();
    m_feed->askEarlier();
    m_feed->askEarlier();
    QCOMPARE(asked(zvPath_market_day), 1);
    answer(zvPath_market_day, KitBench::kLine("1001", {}));
    QCOMPARE(m_words->take(), QStringList());
    m_feed->askEarlier();
    QCOMPARE(asked(zvPath_market_day), 1);
}

void ChartFeedTest::earlierBarsOfAnotherPlaceAreRefused()
{
    const QByteArray later = KitBench::kLine("1001", {KitBench::bar("2018-01-01")});
    const QByteArray other = KitBench::kLine("1002", {KitBench::bar("2016-01-01")});
    for (const QByteArray &data : {later, other}) {
        m_feed->setChart(Feed::TimeLine);
        standWithBars();
        const LogLines log;
        m_feed->askEarlier();
        answer(zvPath_market_day, data);
        QCOMPARE(m_words->take(), QStringList());
        QCOMPARE(m_feed->kLine().bars.size(), 1000);
        QCOMPARE(m_feed->state(), Feed::Ready);
        QCOMPARE(LogLines::lines().size(), 1);
    }
}

void ChartFeedTest::earlierBarsThatFailComeLater()
{
    standWithBars();
    m_feed->askEarlier();
    exchange()->fail(zvPath_market_day, ZvAnswer::Failed);
    m_bench->settle();
    // However often a hand drags the chart.
    for (int i = 0; i < 100; ++i)
        m_feed->askEarlier();
    QCOMPARE(asked(zvPath_market_day), 1);
    m_bench->clock.advance(1000);
    m_feed->askEarlier();
    QCOMPARE(asked(zvPath_market_day), 2);
    answer(zvPath_market_day, KitBench::kLine("1001", days(QDate(2017, 4, 5), 10)));
    QCOMPARE(m_words->take(), QStringList("prepended 10"));
}

void ChartFeedTest::earlierBarsOfTheLastCollectionDie()
{
    standWithBars();
    m_feed->askEarlier();
    exchange()->answer(
        zvPath_market_day,
        ZvScriptedTransport::ok(KitBench::kLine("1001", {KitBench::bar("2016-01-01")}), 0));
    QCoreApplication::sendPostedEvents();
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    m_bench->settle();
    QVERIFY(m_feed->kLine().bars.isEmpty());
    answer(zvPath_market_day, KitBench::kLine("1002", {KitBench::bar("2019-12-31")}));
    QCOMPARE(m_feed->kLine().bars.size(), 1);
}

// Another session asks for as many bars as there are, so that the view need not jump.
void ChartFeedTest::barsThatWereAskedForEarlierStayInView()
{
    standWithBars();
    m_feed->askEarlier();
    answer(zvPath_market_day, KitBench::kLine("1001", days(QDate(2017, 4, 5), 1000)));
    changeLater();
    m_bench->settle();
    answer(zvPath_market_day, KitBench::kLine("1001", {KitBench::bar("2019-12-31")}, 2));
    m_bench->clock.advance(Feed::shortestDistance);
    QCOMPARE(lastParameter(zvPath_market_day, "count"), QStringLiteral("2000"));
    answer(zvPath_market_day, KitBench::kLine("1001", days(QDate(2019, 12, 31), 2000), 2));
    QCOMPARE(m_feed->kLine().bars.size(), 2000);
    exchange()->takeRequests();
    m_feed->askEarlier();
    QCOMPARE(asked(zvPath_market_day), 1);
}

void ChartFeedTest::timeLineHasNoEarlierBars()
{
    standWithMinutes();
    m_feed->askEarlier();
    m_bench->settle();
    QVERIFY(exchange()->requests().isEmpty());
}

void ChartFeedTest::listenerMayChangeTheChart()
{
    connect(m_feed.get(), &Feed::replaced, m_feed.get(), [this] {
        if (!m_feed->timeLine().minutes.isEmpty())
            m_feed->setChart(Feed::DayKLine);
    });
    m_feed->setActive(true);
    m_bench->settle();
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(0)}));
    QCOMPARE(m_feed->chart(), Feed::DayKLine);
    QCOMPARE(m_feed->state(), Feed::Waiting);
    QVERIFY(m_feed->timeLine().minutes.isEmpty());
    answer(zvPath_market_day, KitBench::kLine("1001", {KitBench::bar("2019-12-31")}));
    QCOMPARE(m_feed->state(), Feed::Ready);
}

void ChartFeedTest::listenerMayEndTheFeed()
{
    m_feed->setActive(true);
    m_bench->settle();
    connect(m_feed.get(), &Feed::replaced, m_bench->exchange, [this] { m_feed.reset(); });
    answer(zvPath_market_jit, KitBench::timeLine("1001", {KitBench::minute(0)}));
    QVERIFY(!m_feed);
    QCOMPARE(m_words->take(), QStringList("replaced"));
    change();
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 0);
}

void ChartFeedTest::twoFeedsStandBesideEachOther()
{
    standWithMinutes();
    Feed second;
    second.setChart(Feed::DayKLine);
    second.setActive(true);
    m_bench->settle();
    answer(zvPath_market_day, KitBench::kLine("1001", {KitBench::bar("2019-12-31")}));
    QCOMPARE(second.state(), Feed::Ready);
    QCOMPARE(m_feed->state(), Feed::Ready);
    QCOMPARE(m_words->take(), QStringList());
    changeLater();
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_market_jit), 1);
    QCOMPARE(exchange()->openCount(zvPath_market_day), 1);
}

void ChartFeedTest::signalsComeFromTheEventLoop()
{
    standWithMinutes();
    const auto silent = [this](const std::function<void()> &call) {
        call();
        const bool isSilent = m_words->take().isEmpty();
        m_bench->settle();
        m_words->take();
        return isSilent;
    };
    QVERIFY(silent([] { engine()->setGlobalCollectionID(QStringLiteral("1002")); }));
    QVERIFY(silent([] { engine()->setGlobalCollectionID(QString()); }));
    QVERIFY(silent([] { engine()->setGlobalCollectionID(QStringLiteral("1001")); }));
    QVERIFY(silent([this] { m_feed->setChart(Feed::DayKLine); }));
    QVERIFY(silent([this] { m_feed->setActive(false); }));
    QVERIFY(silent([this] { m_feed->setActive(true); }));
    QVERIFY(silent([] { access()->setUrlPrefix(there); }));
    answer(zvPath_market_day, KitBench::kLine("1001", {KitBench::bar("2019-12-31")}));
    QCOMPARE(m_feed->state(), Feed::Ready);
    m_words->take();
    QVERIFY(silent([] { access()->stop(); }));
    QCOMPARE(m_feed->state(), Feed::Stale);
    QVERIFY(silent([] { access()->start(); }));
}

ZV_TEST(ChartFeedTest)
#include "test_chartfeed.moc"
