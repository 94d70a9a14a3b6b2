#include "ZvNetworkKit/zvmarketpoller.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvaccountwatch.h"
#include "ZvNetworkKit/zvexchangetime.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvservercache.h"


#include <algorithm>

namespace {

struct TopicName {
    const char *name; // in a poll
    const QString &path;
    ZvDecodeTask::Shape shape;
};

// In the order of ZvMarketPoller::Topic.
const TopicName &nameOf(ZvMarketPoller::Topic topic)
{
    static const TopicName names[] = {
        {"market", zvPath_market, ZvDecodeTask::Market},
        {"message", zvPath_message, ZvDecodeTask::Message},
        {"check", zvPath_market_check, ZvDecodeTask::Check},
        {"composite", zvPath_market_composite, ZvDecodeTask::Composite},
        {"brief", zvPath_market_collection, ZvDecodeTask::Brief},
        {"type", zvPath_collection_type, ZvDecodeTask::Type},
        {"list", zvPath_market_list, ZvDecodeTask::List},
        {"item", zvPath_collection_item, ZvDecodeTask::Item},
        {"trade", zvPath_collection_trade, ZvDecodeTask::Trade},
        {"latest", zvPath_market_latest_list, ZvDecodeTask::Latest},
    };
    return names[topic];
}

bool isOfCollection(ZvMarketPoller::Topic topic)
{
    return topic == ZvMarketPoller::Item || topic == ZvMarketPoller::Trade
        || topic == ZvMarketPoller::Latest;
}

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

} // namespace

ZvMarketPoller::ZvMarketPoller(ZvExchangeLink *link, ZvAccountWatch *account)
    : m_link(link), m_account(account), m_time(std::make_unique<ZvExchangeTime>(link))
{
    connect(link, &ZvExchangeLink::started, this, &ZvMarketPoller::begin);
    connect(link, &ZvExchangeLink::stopped, this, &ZvMarketPoller::end);
    connect(link, &ZvExchangeLink::prefixChanged, this, &ZvMarketPoller::changeServer);
    connect(link, &ZvExchangeLink::sessionChanged, this, &ZvMarketPoller::changeSession);
    connect(account, &ZvAccountWatch::versionChanged, this, &ZvMarketPoller::schedule);
    if (link->isStarted())
        begin();
}

ZvMarketPoller::~ZvMarketPoller() = default;

void ZvMarketPoller::setCollection(const QString &collectionId)
{
    if (collectionId == m_collection)
        return;
    m_collection = collectionId;
    m_isUnknownCollection = false;
    forgetCollection({Item, Trade, Latest});
    schedule();
    emit collectionChanged();
}

void ZvMarketPoller::setDealLimit(int limit)
{
    const int held = std::clamp(limit, 0, mostDeals);
    if (held == m_dealLimit)
        return;
    m_dealLimit = held;
    forgetCollection({Latest});
    schedule();
}

// What is held and asked for of the collection is of another one, or of another length.
void ZvMarketPoller::forgetCollection(std::initializer_list<Topic> topics)
{
    for (const Topic topic : topics) {
        m_link->cancel(state(topic).fetch);
        state(topic) = State();
    }
}

void ZvMarketPoller::setTableShown(bool shown)
{
    if (shown == m_tableShown)
        return;
    m_tableShown = shown;
    schedule();
}

void ZvMarketPoller::ask(Topic topic)
{
    fetch(topic, true);
}

void ZvMarketPoller::askMarket()
{
    fetch(Brief, true);
    fetch(List, true);
    fetch(Type, false);
}

void ZvMarketPoller::flushTopFive()
{
    if (!watchesCollection())
        return;
    m_link->cancel(m_flush);
    const ZvRequest request
        = m_link->makeRequest(zvPath_collection_trade, {{"collection", m_collection}});
    const QString id = m_collection;
    ZvDecodeTask task;
    task.shape = ZvDecodeTask::Trade;
    m_flush = m_link->ask(
        request, ZvExchangeLink::DiesWithServer, this,
        [this, id](const ZvOutcome &outcome) {
            m_flush = 0;
            if (!outcome.isOk() || !outcome.reply.trade || !outcome.reply.trade->data) {
                const QString reason = outcome.reason();
                if (!reason.isEmpty())
                    qCInfo(zvNetworkLog).noquote() << "The quote cannot be renewed:" << reason;
                return;
            }
            const auto &quote = *outcome.reply.trade->data;
            if (quote.collectionId == id)
                cache()->storeFlushedTopFive(id, quote.value);
        },
        task);
    if (m_flush == 0)
        qCInfo(zvNetworkLog).noquote() << "No exchange to ask for" << zvPath_collection_trade;
}

bool ZvMarketPoller::watchesCollection() const
{
    return !m_collection.isEmpty() && !m_collection.startsWith(QLatin1Char('-'));
}

bool ZvMarketPoller::isWatched(Topic topic) const
{
    if (m_topics[topic].isAsked())
        return false;
    switch (topic) {
    case Composite:
    case List:
        return m_tableShown;
    case Item:
    case Trade:
    case Latest:
        return watchesCollection() && !m_isUnknownCollection;
    default:
        return true;
    }
}

void ZvMarketPoller::begin()
{
    end();
    m_isRecovering = true;
    m_failures = 0;
    if (m_link->prefix().isEmpty())
        askServers();
    else
        changeServer();
}

void ZvMarketPoller::end()
{
    m_link->cancel(m_poll);
    m_link->cancel(m_flush);
    m_poll = 0;
    m_flush = 0;
    m_pause.reset();
    forget();
}

void ZvMarketPoller::forget()
{
    for (State &topic : m_topics) {
        m_link->cancel(topic.fetch);
        const bool waitsForServer = topic.announce && topic.fetch == 0;
        topic = State();
        topic.announce = waitsForServer;
    }
    m_isUnknownCollection = false;
}

void ZvMarketPoller::changeServer()
{
    m_link->cancel(m_poll);
    m_link->cancel(m_flush);
    m_poll = 0;
    m_flush = 0;
    m_pause.reset();
    forget();
    if (!m_link->isStarted() || m_link->prefix().isEmpty())
        return;
    // What a poll would only answer with a gap is asked for beside it.
    fetch(Brief, false);
    fetch(Type, false);
    if (m_tableShown)
        fetch(List, false);
    // And what a page has asked for before there was a server to ask.
    for (std::size_t i = 0; i < topicCount; ++i) {
        if (m_topics[i].announce)
            fetch(static_cast<Topic>(i), true);
    }
    schedule();
}

// A poll that is held back for another token would never tell of this one's end.
void ZvMarketPoller::changeSession()
{
    if (m_session == m_link->generation().session)
        return;
    if (!m_isRecovering)
        m_pause.reset();
    schedule();
}

void ZvMarketPoller::askServers()
{
    m_sent = m_link->clock()->now();
    ZvRequest request = m_link->makeRequest(zvPath_market, {});
    request.prefix = m_link->platformRoot();
    request.deadline = recoveryDeadline;
    ZvDecodeTask task;
    task.shape = ZvDecodeTask::Market;
    m_poll = m_link->ask(
        request, ZvExchangeLink::DiesWithServer, this,
        [this](const ZvOutcome &outcome) {
            m_poll = 0;
            if (!outcome.isOk() || !outcome.reply.market || !outcome.reply.market->data) {
                retryPoll(outcome.reason());
                return;
            }
            const auto servers = *outcome.reply.market->data;
            if (servers.isEmpty()) {
                retryPoll(QStringLiteral("the platform has no server"));
                return;
            }
            if (servers != cache()->marketInfoList)
                cache()->storeMarketInfo(servers);
            // A page may have chosen a server in answer to the list.
            if (m_link->prefix().isEmpty())
                m_link->setPrefix(servers.first().second);
        },
        task);
    if (m_poll == 0)
        qCInfo(zvNetworkLog).noquote() << "No exchange to ask for" << zvPath_market;
}

void ZvMarketPoller::schedule()
{
    if (m_isScheduled)
        return;
    m_isScheduled = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isScheduled = false;
            // While the exchange is away the next attempt tells it all; there is no need to hurry.
            if (m_link->isStarted() && !m_link->prefix().isEmpty() && !m_pause)
                sendPoll();
        },
        Qt::QueuedConnection);
}

void ZvMarketPoller::sendPoll()
{
    m_pause.reset();
    if (m_poll != 0 && !m_link->cancel(m_poll)) {
        m_isOutdated = true; // its answer is being decoded, and the next poll follows it
        return;
    }
    m_poll = 0;
    m_isOutdated = false;
    m_sent = m_link->clock()->now();

    const int wait = m_isRecovering ? 0 : longWait;
    ZvRequest::Parameters parameters{{"wait", QString::number(wait)}};
    if (!m_boot.isEmpty())
        parameters.append({"boot", m_boot});
    if (isWatched(Item) || isWatched(Trade) || isWatched(Latest)) {
        parameters.append({"collection", m_collection});
        parameters.append({"limit", QString::number(m_dealLimit)});
    }
    for (std::size_t i = 0; i < topicCount; ++i) {
        const auto topic = static_cast<Topic>(i);
        if (isWatched(topic)) {
            parameters.append(
                {QString::fromLatin1(nameOf(topic).name), QString::number(state(topic).version)});
        }
    }
    if (m_account->isWatched())
        parameters.append({"cap", QString::number(m_account->versionIn(m_boot))});
    ZvRequest request = m_link->makeRequest(zvPath_sync, parameters);
    m_session = request.generation.session;
    request.deadline = m_isRecovering ? recoveryDeadline : wait + waitMargin;
    ZvDecodeTask task;
    task.shape = ZvDecodeTask::Poll;
    m_poll = m_link->ask(
        request, ZvExchangeLink::DiesWithServer, this,
        [this, hadToken = !request.token.isEmpty(), collection = m_collection,
         limit = m_dealLimit](const ZvOutcome &outcome) {
            if (hadToken && outcome.isReadable() && outcome.reply.envelope.isOfSession())
                takeEndOfSession();
            else
                takePoll(outcome, collection == m_collection && limit == m_dealLimit);
        },
        task);
}

// A word about the session that the poll named, and none about the market.
void ZvMarketPoller::takeEndOfSession()
{
    m_poll = 0;
    schedule();
}

void ZvMarketPoller::takePoll(const ZvOutcome &outcome, bool isOfThisCollection)
{
    m_poll = 0;
    if (!m_link->isStarted())
        return;
    if (!outcome.isOk()) {
        retryPoll(outcome.reason());
        return;
    }
    const bool wasHeldBack = !m_isRecovering;
    m_failures = 0;
    m_isRecovering = false;
    m_hasProgress = m_isOutdated;
    m_isOutdated = false;
    m_time->setTime(outcome.reply.envelope.time);
    m_link->noteAnswer();
    take(outcome.reply);
    if (isOfThisCollection)
        takeCollection(outcome.reply);
    if (outcome.reply.cap && m_account->takePoll(*outcome.reply.cap))
        m_hasProgress = true;
    if (m_hasProgress || !wasHeldBack || m_isScheduled) {
        schedule();
    } else {
        // An answer without news should have taken its time; a service that does not hold it back
        // is not to be asked in a circle.
        m_pause = m_link->clock()->after(shortestPause, [this] { sendPoll(); });
    }
}

void ZvMarketPoller::retryPoll(const QString &reason)
{
    m_isRecovering = true;
    m_link->noteFailure(reason);
    m_pause = m_link->clock()->after(pause(), [this] {
        m_pause.reset();
        if (m_link->prefix().isEmpty())
            askServers();
        else
            sendPoll();
    });
}

// Doubles with each failure; a random quarter is taken off, so that many clients do not come back
// in step. The time that the failed attempt took counts, so that a deadline and a pause do not add
// up.
qint64 ZvMarketPoller::pause()
{
    const int doublings = std::min(m_failures, 4);
    ++m_failures;
    const int whole = std::min(longestPause, shortestPause << doublings);
    const int jitter = whole > shortestPause ? m_jitter.bounded(whole / 4) : 0;
    const qint64 spent = m_link->clock()->now() - m_sent;
    return std::max<qint64>(shortestPause, whole - jitter - spent);
}

void ZvMarketPoller::fetch(Topic topic, bool announce)
{
    State &asked = state(topic);
    asked.announce = asked.announce || announce;
    if (asked.fetch != 0)
        return;
    asked.retry.reset();
    if (m_link->hasTransport() && m_link->prefix().isEmpty())
        return; // the first server is asked as soon as it is known

    ZvRequest::Parameters parameters;
    if (isOfCollection(topic)) {
        parameters.append({"collection", m_collection});
        if (topic == Latest)
            parameters.append({"limit", QString::number(m_dealLimit)});
    }
    ZvDecodeTask task;
    task.shape = nameOf(topic).shape;
    asked.fetch = m_link->ask(
        m_link->makeRequest(nameOf(topic).path, parameters), ZvExchangeLink::DiesWithServer, this,
        [this, topic, collection = m_collection, limit = m_dealLimit](const ZvOutcome &outcome) {
            takeFetch(topic, outcome, collection == m_collection && limit == m_dealLimit);
        },
        task);
    if (asked.fetch == 0) {
        asked.announce = false;
        qCInfo(zvNetworkLog).noquote() << "No exchange to ask for" << nameOf(topic).path;
    }
}

void ZvMarketPoller::takeFetch(Topic topic, const ZvOutcome &outcome, bool isOfThisCollection)
{
    state(topic).fetch = 0;
    if (outcome.isOk()) {
        state(topic).isLogged = false;
        take(outcome.reply);
        if (isOfThisCollection)
            takeCollection(outcome.reply);
    } else {
        const bool isNews = state(topic).announce || !state(topic).isLogged;
        const QString reason = outcome.reason();
        if (isNews && !reason.isEmpty())
            qCInfo(zvNetworkLog).noquote() << nameOf(topic).path << "cannot be served:" << reason;
        state(topic).isLogged = true;
        // Kept out of the poll for the while, which would only say again that it is to be asked.
        if (m_link->isStarted() && state(topic).version == 0) {
            state(topic).retry
                = m_link->clock()->after(1000, [this, topic] { fetch(topic, false); });
        }
    }
    state(topic).announce = false;
    schedule();
}

// Notes the version of a topic, asks its path where the answer says so, and tells whether there are
// data to take.
template <typename Value>
bool ZvMarketPoller::takeVersion(Topic topic, const ZvTopic<Value> &part)
{
    if (!part)
        return false;
    if (part->gap) {
        m_hasProgress = true;
        state(topic).version = 0;
        fetch(topic, false);
        return false;
    }
    if (part->unknown) {
        m_isUnknownCollection = m_isUnknownCollection || isOfCollection(topic);
        return false;
    }
    m_hasProgress = m_hasProgress || part->version != state(topic).version;
    state(topic).version = part->version;
    return part->data.has_value();
}

void ZvMarketPoller::take(const ZvReply &reply)
{
    if (reply.envelope.boot != m_boot) {
        // Versions of another run say nothing about this one.
        m_boot = reply.envelope.boot;
        m_isUnknownCollection = false;
        m_hasProgress = true;
        for (State &topic : m_topics)
            topic.version = 0;
    }

    if (takeVersion(Market, reply.market)
        && (announces(Market) || *reply.market->data != cache()->marketInfoList)) {
        cache()->storeMarketInfo(*reply.market->data);
    }
    if (takeVersion(Message, reply.message)
        && (announces(Message) || *reply.message->data != cache()->messageList)) {
        cache()->storeMessageList(*reply.message->data);
    }
    if (takeVersion(Check, reply.check)) {
        const std::optional<ZvMarketCheck> before = m_check;
        m_check = *reply.check->data;
        m_time->setTradingDay(m_check->tradingDay);
        if (announces(Check) || !before || before->open != m_check->open)
            cache()->storeMarketCheck(m_check->open);
        if (before != m_check)
            emit marketChecked();
    }
    if (takeVersion(Brief, reply.brief)
        && (announces(Brief) || !cache()->hasBriefInfo(QString())
            || *reply.brief->data != cache()->getCurrentBriefInfo())) {
        cache()->storeBriefInfo(*reply.brief->data);
    }
    if (takeVersion(Type, reply.type)
        && (announces(Type) || *reply.type->data != cache()->getCollectionTypeList(QString()))) {
        cache()->storeCollectionTypeList(*reply.type->data);
    }
    takeRows(reply);
}

// One signal for a tick, which may bring rows, composite or both.
void ZvMarketPoller::takeRows(const ZvReply &reply)
{
    const bool hasRows = takeVersion(List, reply.list)
        && (announces(List)
            || reply.list->data->rows != cache()->getMarketListByTypeId(-1, QString()));
    bool hasComposite = takeVersion(Composite, reply.composite);
    if (hasComposite && !announces(Composite)) {
        ZvUBObject row;
        const bool has = cache()->getCompsite(row, QString());
        const std::optional<ZvUBObject> &now = *reply.composite->data;
        hasComposite = has != now.has_value() || (has && now && row != *now);
    }
    if (hasRows && hasComposite && *reply.composite->data)
        cache()->storeMarketTick(*reply.list->data, **reply.composite->data);
    else if (hasComposite && *reply.composite->data)
        cache()->storeComposite(**reply.composite->data);
    else if (hasComposite)
        cache()->storeNoComposite();
    if (hasRows && !(hasComposite && *reply.composite->data))
        cache()->storeMarketList(*reply.list->data);
}

void ZvMarketPoller::takeCollection(const ZvReply &reply)
{
    const QString id = m_collection;
    const auto isOther
        = [&id](const auto &part) { return part && part->data && part->data->collectionId != id; };
    if (!isOther(reply.item) && takeVersion(Item, reply.item)
        && (!cache()->hasProItem(id) || cache()->getProItem(id) != reply.item->data->value)) {
        cache()->storeProItem(id, reply.item->data->value);
    }
    if (!isOther(reply.trade) && takeVersion(Trade, reply.trade)
        && (!cache()->hasTopFive(id) || cache()->getTopFive(id) != reply.trade->data->value)) {
        cache()->storeTopFive(id, reply.trade->data->value);
    }
    if (!isOther(reply.latest) && takeVersion(Latest, reply.latest)
        && (!cache()->hasLatestDealList(id)
            || cache()->getLatestDealList(id) != reply.latest->data->value)) {
        cache()->storeLatestDealList(id, reply.latest->data->value);
    }
}
