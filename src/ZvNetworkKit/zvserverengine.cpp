#include "ZvNetworkKit/zvserverengine.h"

#include "ZvNetworkKit/zvannouncer.h"
#include "ZvNetworkKit/zvkitsingleton.h"
#include "ZvNetworkKit/zvkittrace.h"

class ZvServerEngine::Private
{
public:
    ZvAnnouncer announcer;
    int typeId = -1;
    bool isOptional = false;
};

ZvServerEngine *ZvServerEngine::getZvServerEngineInstance()
{
    return ZvKitSingleton<ZvServerEngine, ZvKitEnd::Engine>::get();
}

ZvServerEngine::ZvServerEngine() : d(std::make_unique<Private>()) { }

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
}

void ZvServerEngine::startUnloggedEngine()
{
    zvtrace::call("ZvServerEngine::startUnloggedEngine");
    isLogged = false;
}

void ZvServerEngine::changedToMarketList()
{
    zvtrace::call("ZvServerEngine::changedToMarketList");
    d->announcer.announce(ZvAnnouncer::MarketList);
}

void ZvServerEngine::changedToTimeLine()
{
    zvtrace::call("ZvServerEngine::changedToTimeLine");
    d->announcer.announce(ZvAnnouncer::Collection);
}

void ZvServerEngine::changedToDayKLine()
{
    zvtrace::call("ZvServerEngine::changedToDayKLine");
    d->announcer.announce(ZvAnnouncer::Collection);
}

void ZvServerEngine::changedToWeekKLine()
{
    zvtrace::call("ZvServerEngine::changedToWeekKLine");
    d->announcer.announce(ZvAnnouncer::Collection);
}

void ZvServerEngine::changedToMonthKLine()
{
    zvtrace::call("ZvServerEngine::changedToMonthKLine");
    d->announcer.announce(ZvAnnouncer::Collection);
}

void ZvServerEngine::changedToMaketDetail()
{
    zvtrace::call("ZvServerEngine::changedToMaketDetail");
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
}

void ZvServerEngine::flushCurrentTop5()
{
    zvtrace::call("ZvServerEngine::flushCurrentTop5");
}

void ZvServerEngine::sendRequest_Market_Collection()
{
    zvtrace::call("ZvServerEngine::sendRequest_Market_Collection");
}

void ZvServerEngine::sendRequest_Market_List()
{
    zvtrace::call("ZvServerEngine::sendRequest_Market_List");
}

void ZvServerEngine::sendRequest_Collection_Type()
{
    zvtrace::call("ZvServerEngine::sendRequest_Collection_Type");
}

void ZvServerEngine::sendRequest_Market_Detail(QString collectionId, int page, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_Market_Detail", collectionId, page, pageSize);
}

void ZvServerEngine::sendRequest_Message()
{
    zvtrace::call("ZvServerEngine::sendRequest_Message");
}

void ZvServerEngine::sendRequest_Cap()
{
    zvtrace::call("ZvServerEngine::sendRequest_Cap");
}

void ZvServerEngine::sendRequest_Mybankcard()
{
    zvtrace::call("ZvServerEngine::sendRequest_Mybankcard");
}

void ZvServerEngine::sendRequest_getURL_INOUT()
{
    zvtrace::call("ZvServerEngine::sendRequest_getURL_INOUT");
}

void ZvServerEngine::sendRequest_ApplyList(int page)
{
    zvtrace::call("ZvServerEngine::sendRequest_ApplyList", page);
}

void ZvServerEngine::sendRequest_RevokeList(int page, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_RevokeList", page, pageSize);
}

void ZvServerEngine::sendRequest_Select_DealRecord(QString startDate, QString stopDate, int page,
                                                   int type, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DealRecord", startDate, stopDate, page, type,
                  pageSize);
}

void ZvServerEngine::sendRequest_Select_DelegateToday(int page, int pageSize, int type)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DelegateToday", page, pageSize, type);
}

void ZvServerEngine::sendRequest_Select_DelegateRecord(QString startDate, QString stopDate,
                                                       int page, int type, int pageSize)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DelegateRecord", startDate, stopDate, page,
                  type, pageSize);
}

void ZvServerEngine::sendRequest_Select_ApplyRecord(int page, QString startDate, QString stopDate)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_ApplyRecord", page, startDate, stopDate);
}

void ZvServerEngine::sendRequest_Select_DeliveryRecord(int page, QString startDate,
                                                       QString stopDate)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_DeliveryRecord", page, startDate, stopDate);
}

void ZvServerEngine::sendRequest_Select_MoneyFlow(int page, int type, QString startDate,
                                                  QString stopDate)
{
    zvtrace::call("ZvServerEngine::sendRequest_Select_MoneyFlow", page, type, startDate, stopDate);
}
