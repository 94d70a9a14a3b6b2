#include "ZvNetworkKit/zvserverengine.h"

#include "ZvNetworkKit/zvaccountqueries.h"
#include "ZvNetworkKit/zvaccountwatch.h"
#include "ZvNetworkKit/zvannouncer.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvkitsingleton.h"
#include "ZvNetworkKit/zvkittrace.h"
#include "ZvNetworkKit/zvmarketpoller.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"

#include <algorithm>

using Queries = ZvAccountQueries;

namespace {

ZvExchangeLink *theLink()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance()->link();
}

QPair<QString, QString> parameter(const char *name, const QString &value)
{
    return {QString::fromLatin1(name), value};
}

QPair<QString, QString> parameter(const char *name, int value)
{
    return {QString::fromLatin1(name), QString::number(value)};
}

// A page of records has one row at least, and the exchange gives no longer ones.
QPair<QString, QString> pageSizeParameter(int pageSize)
{
    constexpr int longestPage = 200;
    return parameter("size", std::clamp(pageSize, 1, longestPage));
}

// Dates are left out where they are no bound.
ZvRequest::Parameters period(const QString &startDate, const QString &stopDate)
{
    ZvRequest::Parameters parameters;
    if (!startDate.isEmpty())
        parameters.append(parameter("start", startDate));
    if (!stopDate.isEmpty())
        parameters.append(parameter("stop", stopDate));
    return parameters;
}

} // namespace

class ZvServerEngine::Private
{
public:
    Private() : account(theLink()), poller(theLink(), &account), queries(theLink()) { }

    // A page with the chart or the deals of a collection has come on view.
    void showCollectionPage()
    {
        poller.setTableShown(false);
        announcer.announce(ZvAnnouncer::Collection);
    }

    ZvAnnouncer announcer;
    ZvAccountWatch account;
    ZvMarketPoller poller;
    ZvAccountQueries queries;
    int typeId = -1;
    bool isOptional = false;
};

ZvServerEngine *ZvServerEngine::getZvServerEngineInstance()
{
    return ZvKitSingleton<ZvServerEngine, ZvKitEnd::Engine>::get();
}

ZvServerEngine::ZvServerEngine() : d(std::make_unique<Private>())
{
    connect(theLink(), &ZvExchangeLink::prefixChanged, this, [this] {
        // Quotes, deals, money and holdings are those of one server.
        ZvServerCache::getZvServerCacheInstance()->dropCollections();
        if (ZvServerCache::getZvServerCacheInstance()->dropAccountRecords())
            d->announcer.announce(ZvAnnouncer::Cap | ZvAnnouncer::Gather);
        // What stands beside the charts goes with its server, not with the next choice.
        d->announcer.announce(ZvAnnouncer::Collection);
    });
    connect(theLink(), &ZvExchangeLink::sessionEnded, this, [](const QString &message) {
        ZvServerCache::getZvServerCacheInstance()->storeLoggedOtherPlace(message);
    });
}

ZvServerEngine::~ZvServerEngine() = default;

QString ZvServerEngine::getGlobalCollectionID()
{
    return d->announcer.collection();
}

int ZvServerEngine::getCollectionTypeId() const
{
    return d->typeId;
}

bool ZvServerEngine::getIsOptionalCollectionIds() const
{
    return d->isOptional;
}

void ZvServerEngine::startLoggedEngine()
{
    zvtrace::call("ZvServerEngine::startLoggedEngine");
    isLogged = true;
    theLink()->setLogged(true);
    d->account.renew();
    // An earlier account may still be on view, and its data are forgotten.
    d->announcer.announce(ZvAnnouncer::Cap | ZvAnnouncer::Gather);
}

void ZvServerEngine::startUnloggedEngine()
{
    zvtrace::call("ZvServerEngine::startUnloggedEngine");
    isLogged = false;
    d->queries.dropAccount();
    theLink()->setToken(QByteArray());
    theLink()->setLogged(false);
}

void ZvServerEngine::changedToMarketList()
{
    zvtrace::call("ZvServerEngine::changedToMarketList");
    d->poller.setTableShown(true);
    d->announcer.announce(ZvAnnouncer::MarketList);
}

void ZvServerEngine::changedToTimeLine()
{
    zvtrace::call("ZvServerEngine::changedToTimeLine");
    d->showCollectionPage();
}

void ZvServerEngine::changedToDayKLine()
{
    zvtrace::call("ZvServerEngine::changedToDayKLine");
    d->showCollectionPage();
}

void ZvServerEngine::changedToWeekKLine()
{
    zvtrace::call("ZvServerEngine::changedToWeekKLine");
    d->showCollectionPage();
}

void ZvServerEngine::changedToMonthKLine()
{
    zvtrace::call("ZvServerEngine::changedToMonthKLine");
    d->showCollectionPage();
}

void ZvServerEngine::changedToMaketDetail()
{
    zvtrace::call("ZvServerEngine::changedToMaketDetail");
    d->poller.setTableShown(false);
}

void ZvServerEngine::changedToTransctionVisible()
{
    zvtrace::call("ZvServerEngine::changedToTransctionVisible");
    d->announcer.announce(ZvAnnouncer::Quote | ZvAnnouncer::Cap);
}

void ZvServerEngine::changedToTransctionHidden()
{
    zvtrace::call("ZvServerEngine::changedToTransctionHidden");
}

void ZvServerEngine::changedToGatherVisible()
{
    zvtrace::call("ZvServerEngine::changedToGatherVisible");
    d->announcer.announce(ZvAnnouncer::Gather);
}

void ZvServerEngine::changedToGatherHidden()
{
    zvtrace::call("ZvServerEngine::changedToGatherHidden");
}

void ZvServerEngine::setGlobalCollectionID(QString collectionId)
{
    zvtrace::call("ZvServerEngine::setGlobalCollectionID", collectionId);
    d->announcer.setCollection(collectionId);
    d->queries.setCollection(collectionId);
    d->poller.setCollection(collectionId);
    d->announcer.announce(ZvAnnouncer::Collection);
}

void ZvServerEngine::setCollectionTypeId(int typeId)
{
    zvtrace::call("ZvServerEngine::setCollectionTypeId", typeId);
    d->typeId = typeId;
    d->announcer.announce(ZvAnnouncer::MarketList);
}

void ZvServerEngine::setIsOptionalCollectionIds(bool isOptional)
{
    zvtrace::call("ZvServerEngine::setIsOptionalCollectionIds", isOptional);
    d->isOptional = isOptional;
    d->announcer.announce(ZvAnnouncer::MarketList);
}

void ZvServerEngine::setDealLatestLimit(int limit)
{
    zvtrace::call("ZvServerEngine::setDealLatestLimit", limit);
    d->poller.setDealLimit(limit);
}

void ZvServerEngine::flushCurrentTop5()
{
    zvtrace::call("ZvServerEngine::flushCurrentTop5");
    d->poller.flushTopFive();
}

void ZvServerEngine::sendRequest_Market_Collection()
{
    zvtrace::call("ZvServerEngine::sendRequest_Market_Collection");
    d->poller.askMarket();
}

void ZvServerEngine::sendRequest_Market_List()
{
    zvtrace::call("ZvServerEngine::sendRequest_Market_List");
    d->poller.ask(ZvMarketPoller::List);
}

void ZvServerEngine::sendRequest_Collection_Type()
{
    zvtrace::call("ZvServerEngine::sendRequest_Collection_Type");
    d->poller.ask(ZvMarketPoller::Type);
}

void ZvServerEngine::sendRequest_Market_Detail(QString collectionId, int page, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_Market_Detail", collectionId, page, pageSize);
    d->queries.askDeals(collectionId, page, pageSize);
}

void ZvServerEngine::sendRequest_Message()
{
    zvtrace::call("ZvServerEngine::sendRequest_Message");
    d->poller.ask(ZvMarketPoller::Message);
}

void ZvServerEngine::sendRequest_Cap()
{
    zvtrace::call("ZvServerEngine::sendRequest_Cap");
    d->account.askCap();
}

void ZvServerEngine::sendRequest_Mybankcard()
{
    zvtrace::call("ZvServerEngine::sendRequest_Mybankcard");
    d->queries.ask(Queries::Bankcard);
}

void ZvServerEngine::sendRequest_getURL_INOUT()
{
    zvtrace::call("ZvServerEngine::sendRequest_getURL_INOUT");
    d->queries.ask(Queries::MoneyUrls, {parameter("addresses", 1)});
}

void ZvServerEngine::sendRequest_ApplyList(int page)
{
    zvtrace::call("ZvServerEngine::sendRequest_ApplyList", page);
    d->queries.ask(Queries::OpenApplications, {parameter("page", page)});
}

void ZvServerEngine::sendRequest_RevokeList(int page, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_RevokeList", page, pageSize);
    d->queries.ask(Queries::RevokeList, {parameter("page", page), pageSizeParameter(pageSize)});
}

void ZvServerEngine::sendRequest_Select_DealRecord(QString startDate, QString stopDate, int page,
                                                   int type, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DealRecord", startDate, stopDate, page, type,
                  pageSize);
    d->queries.ask(Queries::DealRecord,
                   period(startDate, stopDate) << parameter("page", page) << parameter("type", type)
                                               << pageSizeParameter(pageSize));
}

void ZvServerEngine::sendRequest_Select_DelegateToday(int page, int pageSize, int type)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DelegateToday", page, pageSize, type);
    d->queries.ask(Queries::DelegateToday,
                   {parameter("page", page), pageSizeParameter(pageSize), parameter("type", type)});
}

void ZvServerEngine::sendRequest_Select_DelegateRecord(QString startDate, QString stopDate,
                                                       int page, int type, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DelegateRecord", startDate, stopDate, page,
                  type, pageSize);
    d->queries.ask(Queries::DelegateRecord,
                   period(startDate, stopDate) << parameter("page", page) << parameter("type", type)
                                               << pageSizeParameter(pageSize));
}

void ZvServerEngine::sendRequest_Select_ApplyRecord(int page, QString startDate, QString stopDate)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_ApplyRecord", page, startDate, stopDate);
    d->queries.ask(Queries::ApplyRecord,
                   period(startDate, stopDate) << parameter("mine", 1) << parameter("page", page));
}

void ZvServerEngine::sendRequest_Select_DeliveryRecord(int page, QString startDate,
                                                       QString stopDate)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DeliveryRecord", page, startDate, stopDate);
    d->queries.ask(Queries::DeliveryRecord, period(startDate, stopDate) << parameter("page", page));
}

void ZvServerEngine::sendRequest_Select_MoneyFlow(int page, int type, QString startDate,
                                                  QString stopDate)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_MoneyFlow", page, type, startDate, stopDate);
    d->queries.ask(Queries::MoneyFlow,
                   period(startDate, stopDate)
                       << parameter("page", page) << parameter("type", type));
}

ZvMarketPoller *ZvServerEngine::poller() const
{
    return &d->poller;
}
