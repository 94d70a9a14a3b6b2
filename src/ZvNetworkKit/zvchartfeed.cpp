#include "ZvNetworkKit/zvchartfeed.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvchartmerge.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvmarketpoller.h"
#include "ZvNetworkKit/zvnewestquestion.h"
#include "ZvNetworkKit/zvpace.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace {

constexpr int tailBars = 2; // the one that grows and, where a new one has begun, the one before
constexpr int earlierPause = 1000; // milliseconds after a question for earlier bars has failed

struct ChartName {
    const QString &path;
    ZvDecodeTask::Shape shape;
    zvchart::Period period;
};

// In the order of ZvChartFeed::Chart.
const ChartName &nameOf(ZvChartFeed::Chart chart)
{
    static const ChartName names[] = {
        {zvPath_market_jit, ZvDecodeTask::TimeLine, zvchart::Period::Day},
        {zvPath_market_day, ZvDecodeTask::KLine, zvchart::Period::Day},
        {zvPath_market_week, ZvDecodeTask::KLine, zvchart::Period::Week},
        {zvPath_market_month, ZvDecodeTask::KLine, zvchart::Period::Month},
    };
    return names[chart];
}

QPair<QString, QString> parameter(const char *name, const QString &value)
{
    return {QString::fromLatin1(name), value};
}

QPair<QString, QString> parameter(const char *name, qint64 value)
{
    return {QString::fromLatin1(name), QString::number(value)};
}

// The exchange says that there is nothing to be shown, which is no failure.
bool isWithoutFigures(const ZvEnvelope &envelope)
{
    return envelope.status == QLatin1String("not-found")
        || envelope.status == QLatin1String("unserved");
}

} // namespace

class ZvChartFeed::Private : public QObject
{
public:
    Private(ZvChartFeed *feed, ZvExchangeLink *link, ZvMarketPoller *poller);

    void setChart(Chart chart);
    void setActive(bool active);
    void askEarlier();
    qint64 age() const;

    Chart chart = TimeLine;
    bool isActive = false;
    QString collection;
    State state = NoData;
    ZvUBTimeLine timeLine;
    ZvUBKLine kLine;

private:
    enum Extent { Whole, Tail };
    enum class News { None, Replaced, Grown, Prepended };

    bool isTimeLine() const { return chart == TimeLine; }
    bool stands() const { return !timeLine.minutes.isEmpty() || !kLine.bars.isEmpty(); }
    bool hasCollection() const;
    bool isAway() const;
    bool canAsk() const;

    void restart();
    void dropQuestions();
    void forgetFigures();
    void changeConnection(bool connected);
    void stop();

    void renew();
    bool ask();
    int wantedBars() const;
    bool send(ZvNewestQuestion &question, const ZvRequest::Parameters &parameters,
              ZvExchangeLink::Done done);
    void take(Extent extent, const ZvOutcome &outcome, int wanted);
    void takeNone();
    void takeWhole(const ZvReply &reply, int wanted);
    void takeTail(const ZvReply &reply);
    void takeEarlier(const ZvOutcome &outcome);
    void accept(const ZvReply &reply, News news, int index);
    void askAnew();
    void fail(const QString &reason);
    void note(const QString &reason);

    void noteAge() { m_heldAt = m_link ? m_link->clock()->now() - std::max<qint64>(0, age()) : 0; }
    void tellLater(News news);
    void tell(News news, int index = 0);
    void tellState();

    ZvChartFeed *q;
    QPointer<ZvExchangeLink> m_link;
    QPointer<ZvMarketPoller> m_poller;
    QString m_boot; // the run of the service that the figures are of

    ZvNewestQuestion m_question;
    ZvNewestQuestion m_earlier; // for bars before those that stand
    ZvPace m_pace; // of the former
    ZvTimer m_earlierPause;
    bool m_needsWhole = false; // what stands cannot be gone on from
    bool m_hasAllEarlier = false;
    bool m_isBehind = false; // the exchange is away, or was away since the last answer
    bool m_isLogged = false; // that the last question failed

    qint64 m_heldAt = 0; // when the figures were last known to hold
    State m_told = NoData;
    bool m_tellsReplaced = false;
    bool m_isTelling = false;
};

ZvChartFeed::Private::Private(ZvChartFeed *feed, ZvExchangeLink *link, ZvMarketPoller *poller)
    : q(feed), m_link(link), m_poller(poller), m_question(link), m_earlier(link),
      m_pace(link, shortestDistance, [this] { return ask(); })
{
    connect(link, &ZvExchangeLink::started, this, &Private::restart);
    connect(link, &ZvExchangeLink::stopped, this, &Private::stop);
    connect(link, &ZvExchangeLink::prefixChanged, this, &Private::restart);
    connect(link, &ZvExchangeLink::connectionChanged, this, &Private::changeConnection);
    connect(poller, &ZvMarketPoller::collectionChanged, this, &Private::restart);
    connect(poller, &ZvMarketPoller::marketChecked, this, &Private::renew);
    connect(ZvServerCache::getZvServerCacheInstance(),
            &ZvServerCache::signal_cache_CollectionItem_changed, this,
            [this](const QString &collectionId) {
                if (collectionId == collection)
                    renew();
            });
    collection = poller->collection();
    state = m_told = hasCollection() ? Waiting : NoData;
    m_isBehind = isAway();
}

// An empty id is none, and a negative one stands for more than one collection.
bool ZvChartFeed::Private::hasCollection() const
{
    return !collection.isEmpty() && !collection.startsWith(QLatin1Char('-'));
}

// Nobody would say that figures have changed. Before the first answer to a poll nothing is away.
bool ZvChartFeed::Private::isAway() const
{
    return m_link && !m_link->isConnected() && m_link->dataAge() >= 0;
}

bool ZvChartFeed::Private::canAsk() const
{
    return isActive && hasCollection() && m_link && m_link->isStarted()
        && !m_link->prefix().isEmpty();
}

void ZvChartFeed::Private::setChart(Chart wanted)
{
    if (wanted == chart)
        return;
    chart = wanted;
    restart();
}

void ZvChartFeed::Private::setActive(bool active)
{
    if (active == isActive)
        return;
    if (!active) {
        noteAge();
        dropQuestions();
        isActive = false;
        return;
    }
    isActive = true;
    if (stands())
        m_pace.follow();
    else
        m_pace.begin();
}

// Everything is about something else from here on.
void ZvChartFeed::Private::restart()
{
    dropQuestions();
    m_pace.forgetDistance();
    m_earlierPause.reset();
    m_isLogged = false;
    m_isBehind = isAway();
    collection = m_poller ? m_poller->collection() : QString();
    forgetFigures();
    state = hasCollection() ? Waiting : NoData;
    tellLater(News::Replaced);
    m_pace.begin();
}

void ZvChartFeed::Private::dropQuestions()
{
    m_question.drop();
    m_earlier.drop();
    m_pace.drop();
}

void ZvChartFeed::Private::forgetFigures()
{
    timeLine = ZvUBTimeLine();
    kLine = ZvUBKLine();
    m_boot.clear();
    m_needsWhole = false;
    m_hasAllEarlier = false;
}

void ZvChartFeed::Private::changeConnection(bool connected)
{
    if (!connected) {
        m_isBehind = true;
        if (state == Ready) {
            noteAge();
            state = Stale;
            tellLater(News::None);
        }
    } else if (m_isBehind) {
        m_pace.begin();
    }
}

void ZvChartFeed::Private::stop()
{
    dropQuestions();
    changeConnection(false);
}

// The figures may be others by now.
void ZvChartFeed::Private::renew()
{
    if (!canAsk())
        return; // it catches up when it can
    noteAge();
    m_pace.follow();
}

bool ZvChartFeed::Private::ask()
{
    if (!canAsk())
        return false;
    const Extent extent = stands() && !m_needsWhole ? Tail : Whole;
    ZvRequest::Parameters parameters{parameter("collection", collection)};
    if (!isTimeLine())
        parameters.append(parameter("count", extent == Tail ? tailBars : wantedBars()));
    else if (extent == Tail)
        parameters.append(parameter("from", timeLine.minutes.last().time));
    return send(m_question, parameters,
                [this, extent, wanted = wantedBars()](const ZvOutcome &outcome) {
                    take(extent, outcome, wanted);
                });
}

// Bars that were asked for earlier are asked for again.
int ZvChartFeed::Private::wantedBars() const
{
    return std::clamp(kLine.bars.size(), int(usualBars), int(mostBars));
}

bool ZvChartFeed::Private::send(ZvNewestQuestion &question, const ZvRequest::Parameters &parameters,
                                ZvExchangeLink::Done done)
{
    ZvDecodeTask task;
    task.shape = nameOf(chart).shape;
    return question.ask(m_link->makeRequest(nameOf(chart).path, parameters),
                        ZvExchangeLink::DiesWithServer, task, std::move(done));
}

void ZvChartFeed::Private::take(Extent extent, const ZvOutcome &outcome, int wanted)
{
    if (outcome.isReadable() && isWithoutFigures(outcome.reply.envelope)) {
        takeNone();
        return;
    }
    if (!outcome.isOk()) {
        fail(outcome.reason());
        return;
    }
    const ZvReply &reply = outcome.reply;
    const QString &id = isTimeLine() ? reply.timeLine->collectionId : reply.kLine->collectionId;
    if (id != collection)
        fail(QStringLiteral("it is about another collection"));
    else if (extent == Whole)
        takeWhole(reply, wanted);
    else
        takeTail(reply);
}

void ZvChartFeed::Private::takeNone()
{
    const bool hadFigures = stands();
    forgetFigures();
    state = NoData;
    m_isLogged = false;
    m_isBehind = isAway();
    m_pace.end();
    tell(hadFigures ? News::Replaced : News::None);
}

void ZvChartFeed::Private::takeWhole(const ZvReply &reply, int wanted)
{
    const int held = isTimeLine() ? timeLine.session : kLine.session;
    const int told = isTimeLine() ? reply.timeLine->session : reply.kLine->session;
    if (reply.envelope.boot == m_boot && told < held) {
        fail(QStringLiteral("it is about a session that is over"));
        return;
    }
    bool isNew = false;
    if (isTimeLine()) {
        isNew = timeLine != *reply.timeLine;
        timeLine = *reply.timeLine;
    } else {
        isNew = kLine != *reply.kLine;
        kLine = *reply.kLine;
        m_hasAllEarlier = kLine.bars.size() < wanted;
    }
    // Bars that are under way belong in front of other ones.
    m_earlier.drop();
    m_needsWhole = false;
    accept(reply, isNew ? News::Replaced : News::None, 0);
}

void ZvChartFeed::Private::takeTail(const ZvReply &reply)
{
    zvchart::Laid laid{zvchart::Laid::Gap, 0}; // to what another run of the service has
    if (reply.envelope.boot == m_boot) {
        laid = isTimeLine() ? zvchart::layTail(timeLine, *reply.timeLine)
                            : zvchart::layTail(kLine, *reply.kLine, nameOf(chart).period);
    }
    switch (laid.kind) {
    case zvchart::Laid::Older:
        fail(QStringLiteral("it is about a session that is over"));
        break;
    case zvchart::Laid::Gap:
        askAnew();
        m_pace.end();
        break;
    case zvchart::Laid::Same:
        accept(reply, News::None, 0);
        break;
    case zvchart::Laid::Grown:
        accept(reply, News::Grown, laid.firstChanged);
        break;
    }
}

// The figures are as the exchange has them.
void ZvChartFeed::Private::accept(const ZvReply &reply, News news, int index)
{
    m_boot = reply.envelope.boot;
    m_heldAt = m_link->clock()->now();
    m_isBehind = isAway();
    state = !stands() ? NoData : m_isBehind ? Stale : Ready;
    m_isLogged = false;
    m_pace.end();
    tell(news, index);
}

void ZvChartFeed::Private::askAnew()
{
    m_needsWhole = true;
    m_pace.follow();
}

// What stands stays, and the question comes again.
void ZvChartFeed::Private::fail(const QString &reason)
{
    note(reason);
    m_pace.fail();
    if (state == Ready)
        state = Stale;
    tell(News::None);
}

void ZvChartFeed::Private::note(const QString &reason)
{
    if (!m_isLogged && !reason.isEmpty())
        qCInfo(zvNetworkLog).noquote() << nameOf(chart).path << "cannot be used:" << reason;
    m_isLogged = true;
}

void ZvChartFeed::Private::askEarlier()
{
    if (kLine.bars.isEmpty() || m_hasAllEarlier || m_earlier.isOpen() || m_earlierPause
        || !canAsk())
        return;
    send(m_earlier,
         {parameter("collection", collection), parameter("count", usualBars),
          parameter("before", kLine.bars.first().day)},
         [this](const ZvOutcome &outcome) { takeEarlier(outcome); });
}

void ZvChartFeed::Private::takeEarlier(const ZvOutcome &outcome)
{
    QString flaw = outcome.isOk() ? QString() : outcome.reason();
    int count = -1;
    if (outcome.isOk()) {
        const ZvReply &reply = outcome.reply;
        if (reply.envelope.boot != m_boot) {
            askAnew(); // and the bars before those that come with it
            return;
        }
        if (reply.kLine->collectionId == collection)
            count = zvchart::layFront(kLine, *reply.kLine, nameOf(chart).period);
        if (count < 0)
            flaw = QStringLiteral("bars of another place");
        else
            m_hasAllEarlier = reply.kLine->bars.size() < usualBars;
    }
    if (count < 0) {
        note(flaw);
        m_earlierPause = m_link->clock()->after(earlierPause, [this] { m_earlierPause.reset(); });
    } else if (count > 0) {
        tell(News::Prepended, count);
    }
}

qint64 ZvChartFeed::Private::age() const
{
    if (!stands() || !m_link)
        return -1;
    const qint64 now = m_link->clock()->now();
    // While it watches, each answer to a poll that says nothing says that they hold.
    const bool watches = state == Ready && isActive && !m_pace.isBusy();
    const qint64 polled = watches && m_link->dataAge() >= 0 ? now - m_link->dataAge() : m_heldAt;
    return now - std::max(m_heldAt, polled);
}

void ZvChartFeed::Private::tellLater(News news)
{
    m_tellsReplaced = m_tellsReplaced || news == News::Replaced;
    if (m_isTelling)
        return;
    m_isTelling = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isTelling = false;
            tell(m_tellsReplaced ? News::Replaced : News::None);
        },
        Qt::QueuedConnection);
}

// The last thing that is done in a turn: who hears it may do anything, and end the feed, too.
void ZvChartFeed::Private::tell(News news, int index)
{
    const QPointer<ZvChartFeed> feed(q);
    switch (m_tellsReplaced ? News::Replaced : news) {
    case News::None:
        break;
    case News::Replaced:
        m_tellsReplaced = false;
        emit q->replaced();
        break;
    case News::Grown:
        emit q->grown(index);
        break;
    case News::Prepended:
        emit q->prepended(index);
        break;
    }
    if (feed)
        tellState();
}

void ZvChartFeed::Private::tellState()
{
    if (m_told == state)
        return;
    m_told = state;
    emit q->stateChanged();
}

ZvChartFeed::ZvChartFeed(QObject *parent)
    : QObject(parent),
      d(std::make_unique<Private>(this,
                                  ZvServerAccessManager::getZvServerAccessManagerInstance()->link(),
                                  ZvServerEngine::getZvServerEngineInstance()->poller()))
{
}

ZvChartFeed::~ZvChartFeed() = default;

void ZvChartFeed::setChart(Chart chart)
{
    d->setChart(chart);
}

ZvChartFeed::Chart ZvChartFeed::chart() const
{
    return d->chart;
}

void ZvChartFeed::setActive(bool active)
{
    d->setActive(active);
}

bool ZvChartFeed::isActive() const
{
    return d->isActive;
}

void ZvChartFeed::askEarlier()
{
    d->askEarlier();
}

QString ZvChartFeed::collectionId() const
{
    return d->collection;
}

ZvChartFeed::State ZvChartFeed::state() const
{
    return d->state;
}

qint64 ZvChartFeed::ageMs() const
{
    return d->age();
}

const ZvUBTimeLine &ZvChartFeed::timeLine() const
{
    return d->timeLine;
}

const ZvUBKLine &ZvChartFeed::kLine() const
{
    return d->kLine;
}
