#include "ZvNetworkKit/zvannouncer.h"

#include "ZvNetworkKit/zvservercache.h"

ZvAnnouncer::ZvAnnouncer(QObject *parent) : QObject(parent) { }

void ZvAnnouncer::announce(int topics)
{
    const bool isWaiting = m_topics != 0;
    m_topics |= topics;
    if (!isWaiting && m_topics != 0)
        QMetaObject::invokeMethod(
            this, [this] { tell(); }, Qt::QueuedConnection);
}

void ZvAnnouncer::tell()
{
    const int topics = m_topics;
    const QString id = m_collection;
    m_topics = 0;

    ZvServerCache *cache = ZvServerCache::getZvServerCacheInstance();
    if (topics & MarketList)
        emit cache->signal_cache_MarketList_changed();
    if (!id.isEmpty()) {
        if (topics & Collection)
            emit cache->signal_cache_CollectionItem_changed(id);
        if (topics & (Collection | Quote))
            emit cache->signal_cache_CollectionTrade_changed(id);
        if (topics & Collection)
            emit cache->signal_cache_CollectionLatestDeal_changed(id);
    }
    if (topics & Cap)
        emit cache->signal_cache_CapInfo_changed();
    if (topics & Gather)
        emit cache->signal_cache_GatherInfo_changed();
}
