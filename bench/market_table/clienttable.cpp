#include "clienttable.h"

#include "market.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

} // namespace

ClientTable::ClientTable(const Market &market, QSize size, int sortColumn)
    : m_market(market), m_transport(nullptr), m_view(std::make_unique<Collection_TableView>())
{
    m_view->sortByColumn(sortColumn, Qt::AscendingOrder);
    m_view->resize(size);
    m_view->show();
    connect(cache(), &ZvServerCache::signal_cache_MarketList_changed, this, &ClientTable::feed);

    auto transport = std::make_unique<ZvScriptedTransport>();
    m_transport = transport.get();
    m_transport->always(zvPath_market_list, [this](const ZvRequest &) {
        return ZvScriptedTransport::ok(m_market.listData(), m_market.version());
    });
    m_transport->always(zvPath_market_collection, [](const ZvRequest &) {
        return ZvScriptedTransport::ok("{\"collections\": []}");
    });
    m_transport->always(zvPath_collection_type, [](const ZvRequest &) {
        return ZvScriptedTransport::ok("{\"types\": []}");
    });

    static int number = 0;
    ZvServerAccessManager *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
    access->stop();
    access->setUrlPrefix(QStringLiteral("/lc/market%1/").arg(++number));
    access->setTransport(std::move(transport));
    access->start();
    ZvServerEngine::getZvServerEngineInstance()->changedToMarketList();

    // The rows are there, and a poll is held back until there is news.
    const auto isHeldBack = [this] {
        return m_transport->lastRequest(zvPath_sync).parameter(QStringLiteral("list"))
            == QString::number(m_market.version())
            && m_transport->lastRequest(zvPath_sync).parameter(QStringLiteral("wait"))
            != QLatin1String("0");
    };
    turnUntil([this, isHeldBack] {
        if (isHeldBack())
            return true;
        if (m_transport->openCount(zvPath_sync) > 0)
            m_transport->answer(zvPath_sync, ZvScriptedTransport::ok(Market::nothingNew()));
        return false;
    });
    turnUntilQuiet();
}

ClientTable::~ClientTable()
{
    ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
}

void ClientTable::feed()
{
    m_view->setMarketList(rows());
    ++m_fed;
    if (m_watch)
        m_settled = m_watch->cpu();
}

QList<ZvUBObject> ClientTable::rows() const
{
    return cache()->getMarketListByTypeId(-1, QString());
}

Cost ClientTable::takeTick()
{
    return take(m_market.changesData(), true);
}

Cost ClientTable::takeNothingNew()
{
    return take(Market::nothingNew(), false);
}

void ClientTable::sayTick(const QByteArray &data)
{
    m_transport->takeRequests();
    m_transport->answer(zvPath_sync, ZvScriptedTransport::ok(data));
}

Cost ClientTable::take(const QByteArray &data, bool isFed)
{
    m_transport->takeRequests();
    const QByteArray body = ZvScriptedTransport::ok(data);
    const PaintCounter paints(m_view->viewport());
    int signalsSeen = 0;
    QObject listener;
    connect(m_view->model(), &QAbstractItemModel::layoutChanged, &listener,
            [&signalsSeen] { ++signalsSeen; });
    if (!isFed) {
        connect(m_view->model(), &QAbstractItemModel::dataChanged, &listener,
                [&signalsSeen] { ++signalsSeen; });
    }

    Cost cost;
    const int fed = m_fed;
    m_watch.emplace();
    m_transport->answer(zvPath_sync, body);
    if (isFed) {
        turnUntil([this, fed] { return m_fed > fed; });
        cost.settled = m_settled;
        turnUntilQuiet();
        cost.wall = m_watch->wall();
        cost.painted = m_watch->cpu();
    } else {
        // The end of such a poll is the next one.
        turnUntil([this] { return m_transport->openCount(zvPath_sync) > 0; });
        cost.wall = m_watch->wall();
        cost.settled = cost.painted = m_watch->cpu();
    }
    m_watch.reset();
    turnUntil([this] { return m_transport->openCount(zvPath_sync) > 0; });
    cost.paints = paints.count();
    cost.signalsSeen = signalsSeen;
    return cost;
}
