#include "ZvNetworkKit/zvserveraccessmanager.h"

#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvkitsingleton.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QCoreApplication>

ZvServerAccessManager *ZvServerAccessManager::getZvServerAccessManagerInstance()
{
    return ZvKitSingleton<ZvServerAccessManager, ZvKitEnd::Access>::get();
}

ZvServerAccessManager::ZvServerAccessManager() : m_link(std::make_unique<ZvExchangeLink>())
{
    connect(m_link.get(), &ZvExchangeLink::connectionChanged, this,
            &ZvServerAccessManager::signal_connection_changed);
    if (QCoreApplication *application = QCoreApplication::instance()) {
        connect(application, &QCoreApplication::aboutToQuit, m_link.get(), &ZvExchangeLink::stop);
    }
}

ZvServerAccessManager::~ZvServerAccessManager() = default;

void ZvServerAccessManager::setUrlPrefix(QString prefix)
{
    zvtrace::call("ZvServerAccessManager::setUrlPrefix", prefix);
    m_link->setPrefix(prefix);
}

QString ZvServerAccessManager::urlPrefix() const
{
    return m_link->prefix();
}

void ZvServerAccessManager::setExchangeAddress(const QUrl &address)
{
    zvtrace::call("ZvServerAccessManager::setExchangeAddress", address.toString());
    m_link->setExchangeAddress(address);
}

QUrl ZvServerAccessManager::exchangeAddress() const
{
    return m_link->exchangeAddress();
}

void ZvServerAccessManager::setTransport(std::unique_ptr<ZvTransport> transport)
{
    zvtrace::call("ZvServerAccessManager::setTransport",
                  QString::fromLatin1(transport ? transport->metaObject()->className() : ""));
    m_link->setTransport(std::move(transport));
}

void ZvServerAccessManager::setClock(ZvClock *clock)
{
    zvtrace::call("ZvServerAccessManager::setClock",
                  QString::fromLatin1(clock ? clock->metaObject()->className() : ""));
    m_link->setClock(clock);
}

void ZvServerAccessManager::start()
{
    zvtrace::call("ZvServerAccessManager::start");
    // It is the engine that polls, so it must be there to hear of the start.
    ZvServerEngine::getZvServerEngineInstance();
    m_link->start();
}

void ZvServerAccessManager::stop()
{
    zvtrace::call("ZvServerAccessManager::stop");
    m_link->stop();
}

bool ZvServerAccessManager::isStarted() const
{
    return m_link->isStarted();
}

bool ZvServerAccessManager::isConnected() const
{
    return m_link->isConnected();
}

qint64 ZvServerAccessManager::awayFor() const
{
    return m_link->awayFor();
}

qint64 ZvServerAccessManager::dataAge() const
{
    return m_link->dataAge();
}

ZvExchangeLink *ZvServerAccessManager::link() const
{
    return m_link.get();
}
