#include "ZvNetworkKit/zvmoneyaddresslife.h"

#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvservercache.h"

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

} // namespace

ZvMoneyAddressLife::ZvMoneyAddressLife(ZvExchangeLink *link) : m_link(link)
{
    connect(cache(), &ZvServerCache::signal_cache_CapInfo_changed, this, [this] {
        if (m_end && cache()->capInfo.data().availableMoney != m_available)
            end();
    });
}

void ZvMoneyAddressLife::begin()
{
    m_available = cache()->capInfo.data().availableMoney;
    m_end = m_link->clock()->after(longest, [this] { end(); });
}

void ZvMoneyAddressLife::end()
{
    m_end.reset();
    cache()->storeMoneyUrls(QString(), QString());
}
