#include "ZvNetworkKit/zvserveraccessmanager.h"

#include "ZvNetworkKit/zvkitsingleton.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvtransport.h"

class ZvExchangeLink
{
public:
    std::unique_ptr<ZvTransport> transport;
    QString prefix;
    QUrl address;
    bool isStarted = false;
};

ZvServerAccessManager *ZvServerAccessManager::getZvServerAccessManagerInstance()
{
    return ZvKitSingleton<ZvServerAccessManager, ZvKitEnd::Access>::get();
}

ZvServerAccessManager::ZvServerAccessManager() : m_link(std::make_unique<ZvExchangeLink>()) { }

ZvServerAccessManager::~ZvServerAccessManager() = default;

void ZvServerAccessManager::setUrlPrefix(QString prefix)
{
    zvtrace::call("ZvServerAccessManager::setUrlPrefix", prefix);
    m_link->prefix = prefix;
    ZvServerCache::getZvServerCacheInstance()->setCurrentServer(prefix);
}

QString ZvServerAccessManager::urlPrefix() const
{
    return m_link->prefix;
}

void ZvServerAccessManager::setExchangeAddress(const QUrl &address)
{
    m_link->address = address;
}

QUrl ZvServerAccessManager::exchangeAddress() const
{
    return m_link->address;
}

void ZvServerAccessManager::setTransport(std::unique_ptr<ZvTransport> transport)
{
    m_link->transport = std::move(transport);
}

void ZvServerAccessManager::setClock(ZvClock *) { }

void ZvServerAccessManager::start() { }

void ZvServerAccessManager::stop() { }

bool ZvServerAccessManager::isStarted() const
{
    return m_link->isStarted;
}

bool ZvServerAccessManager::isConnected() const
{
    return false;
}

qint64 ZvServerAccessManager::awayFor() const
{
    return 0;
}

qint64 ZvServerAccessManager::dataAge() const
{
    return -1;
}

ZvExchangeLink *ZvServerAccessManager::link() const
{
    return m_link.get();
}
