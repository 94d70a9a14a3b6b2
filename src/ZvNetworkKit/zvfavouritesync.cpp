#include "ZvNetworkKit/zvfavouritesync.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvservercache.h"

ZvFavouriteSync::ZvFavouriteSync(ZvExchangeLink *link, ZvActionQueue *queue)
    : m_link(link), m_queue(queue), m_retry(link, [this] { ask(); })
{
    connect(link, &ZvExchangeLink::started, this, &ZvFavouriteSync::restart);
    connect(link, &ZvExchangeLink::prefixChanged, this, &ZvFavouriteSync::restart);
    connect(link, &ZvExchangeLink::sessionChanged, this, &ZvFavouriteSync::restart);
    connect(link, &ZvExchangeLink::stopped, this, [this] { m_retry.reset(); });
}

void ZvFavouriteSync::restart()
{
    m_retry.reset();
    m_isLogged = false;
    if (m_isScheduled)
        return;
    m_isScheduled = true;
    // A sign-in changes the session in two steps; one question is enough.
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_isScheduled = false;
            ask();
        },
        Qt::QueuedConnection);
}

void ZvFavouriteSync::ask()
{
    if (m_isOpen || !m_link->followsAccount())
        return;
    m_isOpen = true;
    ZvAction question;
    question.path = zvPath_myaccount_optional;
    question.isQuestion = true;
    question.shape = ZvDecodeTask::Favourites;
    question.parameters = {{QStringLiteral("page"), QStringLiteral("1")},
                           {QStringLiteral("size"), QString::number(mostFavourites)}};
    question.succeed = [this](const ZvReply &reply) {
        m_isOpen = false;
        m_isLogged = false;
        m_retry.reset();
        ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
        const QString server = m_link->prefix();
        if (m_link->followsAccount() && *reply.favourites != cache->getMarketListOption(server))
            cache->setMarketListOption(*reply.favourites, server);
    };
    question.fail = [this](const QString &message) {
        m_isOpen = false;
        if (!m_link->followsAccount())
            return;
        if (!m_isLogged)
            qCInfo(zvNetworkLog).noquote() << "The favourites cannot be asked for:" << message;
        m_isLogged = true;
        m_retry.later();
    };
    m_queue->enqueue(question);
}
