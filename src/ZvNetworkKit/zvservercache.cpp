#include "ZvNetworkKit/zvservercache.h"

#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"
#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/zvkitsingleton.h"
#include "ZvNetworkKit/zvmarketlist.h"

#include <QHash>

#include <optional>

namespace {

struct ServerData {
    ZvMarketList market;
    std::optional<ZvUBObject> composite;
    QStringList favourites;
    QList<QPair<QString, int>> types;
    std::optional<ZvUBBriefInfo> brief;
};

} // namespace

struct ZvServerCache::Store {
    QString currentServer;
    QHash<QString, ServerData> servers;
    QHash<QString, QList<ZvUBDealItem>> latestDeals;
    QHash<QString, ZvUBProItem> proItems;
    QHash<QString, ZvUBTopFive> topFives;
    QList<ZvUBDealItem> marketDetail;
    QList<ZvUBRevokeItem> revokes;
    QList<ZvUBDealRecordItem> dealRecords;
    QList<ZvUBEntrustItem> delegateToday;
    QList<ZvUBEntrustItem> delegateRecord;
    QList<ZvUBApplyItem> applications;
    QList<ZvUBDeliveryRecordItem> deliveryRecords;
    QList<ZvUBMoneyFlowItem> moneyFlows;
    bool favouritesToTell = false;
};

ZvServerCache *ZvServerCache::getZvServerCacheInstance()
{
    return ZvKitSingleton<ZvServerCache, ZvKitEnd::Cache>::get();
}

ZvServerCache::ZvServerCache() : m_store(std::make_unique<Store>()) { }

ZvServerCache::~ZvServerCache() = default;

QString ZvServerCache::resolved(const QString &server) const
{
    return server.isEmpty() ? m_store->currentServer : server;
}

ZvUBBriefInfo ZvServerCache::getCurrentBriefInfo()
{
    return getBriefInfo(QString());
}

ZvUBBriefInfo ZvServerCache::getBriefInfo(QString server)
{
    return m_store->servers.value(resolved(server)).brief.value_or(ZvUBBriefInfo());
}

QList<ZvUBObject> ZvServerCache::getMarketList(QStringList ids, QString server)
{
    const ZvMarketList market = m_store->servers.value(resolved(server)).market;
    QList<ZvUBObject> rows;
    for (const QString &id : qAsConst(ids)) {
        const int index = market.indexOf.value(id, -1);
        if (index >= 0)
            rows.append(market.rows.at(index));
    }
    return rows;
}

QList<ZvUBObject> ZvServerCache::getMarketListByTypeId(int typeId, QString server)
{
    const auto found = m_store->servers.constFind(resolved(server));
    if (found == m_store->servers.constEnd())
        return {};
    return typeId < 0 ? found->market.rows : found->market.byType.value(typeId);
}

QStringList ZvServerCache::getMarketListOption(QString server)
{
    return m_store->servers.value(resolved(server)).favourites;
}

void ZvServerCache::setMarketListOption(QStringList ids, QString server)
{
    m_store->servers[resolved(server)].favourites = ids;
    tellFavourites();
}

void ZvServerCache::tellFavourites()
{
    if (m_store->favouritesToTell)
        return;
    m_store->favouritesToTell = true;
    QMetaObject::invokeMethod(
        this,
        [this] {
            m_store->favouritesToTell = false;
            emit signal_cache_MarketList_changed();
        },
        Qt::QueuedConnection);
}

bool ZvServerCache::getCompsite(ZvUBObject &row, QString server)
{
    const std::optional<ZvUBObject> composite = m_store->servers.value(resolved(server)).composite;
    if (!composite)
        return false;
    row = *composite;
    return true;
}

void ZvServerCache::getTotalQtyAndAmount(int &quantity, double &amount, double &marketValue)
{
    const ZvMarketList market = m_store->servers.value(m_store->currentServer).market;
    quantity = zvub::cappedInt(market.quantity);
    amount = zvub::yuan(market.amount);
    marketValue = zvub::yuan(market.marketValue);
}

QList<QPair<QString, int>> ZvServerCache::getCollectionTypeList(QString server) const
{
    return m_store->servers.value(resolved(server)).types;
}

QList<ZvUBDealItem> ZvServerCache::getLatestDealList(QString collectionId)
{
    return m_store->latestDeals.value(collectionId);
}

ZvUBProItem ZvServerCache::getProItem(QString collectionId)
{
    return m_store->proItems.value(collectionId);
}

ZvUBTopFive ZvServerCache::getTopFive(QString collectionId)
{
    return m_store->topFives.value(collectionId);
}

QList<ZvUBDealItem> ZvServerCache::getMarketDetail()
{
    return m_store->marketDetail;
}

QList<ZvUBRevokeItem> ZvServerCache::getRevokeList()
{
    return m_store->revokes;
}

QList<ZvUBDealRecordItem> ZvServerCache::getDealRecordList()
{
    return m_store->dealRecords;
}

QList<ZvUBEntrustItem> ZvServerCache::getDelegateToday()
{
    return m_store->delegateToday;
}

QList<ZvUBEntrustItem> ZvServerCache::getDelegateRecord()
{
    return m_store->delegateRecord;
}

QList<ZvUBApplyItem> ZvServerCache::getApplyList()
{
    return m_store->applications;
}

QList<ZvUBDeliveryRecordItem> ZvServerCache::getDeliveryRecordList()
{
    return m_store->deliveryRecords;
}

QList<ZvUBMoneyFlowItem> ZvServerCache::getMoneyFlowList()
{
    return m_store->moneyFlows;
}

QString ZvServerCache::currentServer() const
{
    return m_store->currentServer;
}

void ZvServerCache::setCurrentServer(const QString &server)
{
    m_store->currentServer = server;
}

void ZvServerCache::dropMarketRows(const QString &server)
{
    ServerData &data = m_store->servers[resolved(server)];
    data.market = ZvMarketList();
    data.composite.reset();
}

void ZvServerCache::dropMarketDetail()
{
    m_store->marketDetail.clear();
}

void ZvServerCache::dropCollections()
{
    m_store->topFives.clear();
    m_store->proItems.clear();
    m_store->latestDeals.clear();
    dropMarketDetail();
}

bool ZvServerCache::dropAccountRecords()
{
    const bool isShown = capInfo != ZvUBCapInfo() || gatherInfo != ZvUBGatherInfo();
    capInfo = ZvUBCapInfo();
    gatherInfo = ZvUBGatherInfo();
    openApplyList.clear();
    urlInMoney.clear();
    urlOutMoney.clear();
    forgetBankcard();
    m_store->revokes.clear();
    m_store->dealRecords.clear();
    m_store->delegateToday.clear();
    m_store->delegateRecord.clear();
    m_store->applications.clear();
    m_store->deliveryRecords.clear();
    m_store->moneyFlows.clear();
    return isShown;
}

void ZvServerCache::forgetBankcard()
{
    bankPicturePrefix.clear();
    bankPictureName.clear();
    bankPictureSuffix.clear();
    bankCardTail.clear();
}

bool ZvServerCache::hasBriefInfo(const QString &server) const
{
    return m_store->servers.value(resolved(server)).brief.has_value();
}

bool ZvServerCache::hasProItem(const QString &collectionId) const
{
    return m_store->proItems.contains(collectionId);
}

bool ZvServerCache::hasTopFive(const QString &collectionId) const
{
    return m_store->topFives.contains(collectionId);
}

bool ZvServerCache::hasLatestDealList(const QString &collectionId) const
{
    return m_store->latestDeals.contains(collectionId);
}

void ZvServerCache::storeMarketInfo(const QList<QPair<QString, QString>> &servers)
{
    marketInfoList = servers;
    emit signal_cache_MarketInfo_changed();
}

void ZvServerCache::storeMessageList(const QList<QPair<QString, QString>> &messages)
{
    messageList = messages;
    emit signal_cache_MessageList_changed();
}

void ZvServerCache::storeMarketCheck(bool open)
{
    emit signal_cache_MarketCheck_changed(open);
}

void ZvServerCache::storeMarketList(const ZvMarketList &list, const QString &server)
{
    m_store->servers[resolved(server)].market = list;
    emit signal_cache_MarketList_changed();
}

void ZvServerCache::storeMarketList(const QList<ZvUBObject> &rows, const QString &server)
{
    storeMarketList(ZvMarketList(rows), server);
}

void ZvServerCache::storeComposite(const ZvUBObject &row, const QString &server)
{
    m_store->servers[resolved(server)].composite = row;
    emit signal_cache_MarketList_changed();
}

void ZvServerCache::storeNoComposite(const QString &server)
{
    m_store->servers[resolved(server)].composite.reset();
    emit signal_cache_MarketList_changed();
}

void ZvServerCache::storeMarketTick(const ZvMarketList &list, const ZvUBObject &composite,
                                    const QString &server)
{
    ServerData &data = m_store->servers[resolved(server)];
    data.market = list;
    data.composite = composite;
    emit signal_cache_MarketList_changed();
}

void ZvServerCache::storeCollectionTypeList(const QList<QPair<QString, int>> &types,
                                            const QString &server)
{
    m_store->servers[resolved(server)].types = types;
    emit signal_cache_CollectionType_Changed();
}

void ZvServerCache::storeBriefInfo(const ZvUBBriefInfo &info, const QString &server)
{
    const QString prefix = resolved(server);
    m_store->servers[prefix].brief = info;
    emit signal_cache_briefInfo_changed(prefix);
}

void ZvServerCache::storeProItem(const QString &collectionId, const ZvUBProItem &item)
{
    m_store->proItems.insert(collectionId, item);
    emit signal_cache_CollectionItem_changed(collectionId);
}

void ZvServerCache::storeTopFive(const QString &collectionId, const ZvUBTopFive &item)
{
    m_store->topFives.insert(collectionId, item);
    emit signal_cache_CollectionTrade_changed(collectionId);
}

void ZvServerCache::storeFlushedTopFive(const QString &collectionId, const ZvUBTopFive &item)
{
    m_store->topFives.insert(collectionId, item);
    emit signal_cache_SellbuyTrade_changed(collectionId);
}

void ZvServerCache::storeLatestDealList(const QString &collectionId,
                                        const QList<ZvUBDealItem> &deals)
{
    m_store->latestDeals.insert(collectionId, deals);
    emit signal_cache_CollectionLatestDeal_changed(collectionId);
}

void ZvServerCache::storeMarketDetail(const QList<ZvUBDealItem> &deals)
{
    m_store->marketDetail = deals;
    emit signal_cache_Market_Detail_changed();
}

void ZvServerCache::storeMyAccount(const ZvUBMyAcount &account)
{
    myAccount = account;
    emit signal_cache_Myaccount_changed();
}

void ZvServerCache::storeSignIn(const ZvUBMyAcount &account)
{
    const QString before = myAccount.accountNumber();
    const bool isSame = !before.isEmpty() && before == account.accountNumber();
    if (!isSame)
        dropAccountRecords();
    if (!isSame && !before.isEmpty()) {
        for (ServerData &data : m_store->servers)
            data.favourites.clear();
        tellFavourites();
    }
    storeMyAccount(account);
}

void ZvServerCache::storeCapInfo(const ZvUBCapInfo &info)
{
    capInfo = info;
    emit signal_cache_CapInfo_changed();
}

void ZvServerCache::storeGatherInfo(const ZvUBGatherInfo &info)
{
    gatherInfo = info;
    emit signal_cache_GatherInfo_changed();
}

void ZvServerCache::storeGlobalTime(int displayedSeconds)
{
    emit signal_cache_globalTime_Changed(displayedSeconds);
}

void ZvServerCache::storeLoggedOtherPlace(const QString &message)
{
    emit signal_cache_LoggedOtherPlace(message);
}

void ZvServerCache::storeMyBankcard(const QString &picturePrefix, const QString &pictureName,
                                    const QString &pictureSuffix, const QString &cardTail)
{
    bankPicturePrefix = picturePrefix;
    bankPictureName = pictureName;
    bankPictureSuffix = pictureSuffix;
    bankCardTail = cardTail;
    emit signal_cache_MyBankcard_finded();
}

void ZvServerCache::storeNoMyBankcard(const QString &accountOpeningCode)
{
    forgetBankcard();
    emit signal_cache_MyBankcard_notFinded(accountOpeningCode);
}

void ZvServerCache::storeMoneyUrls(const QString &inMoney, const QString &outMoney)
{
    urlInMoney = inMoney;
    urlOutMoney = outMoney;
}

void ZvServerCache::storeOpenApplyList(const QList<ZvUBApplyItem> &applications)
{
    openApplyList = applications;
    emit signal_cache_openApplyList_changed();
}

void ZvServerCache::storeRevokeList(const QList<ZvUBRevokeItem> &orders)
{
    m_store->revokes = orders;
    emit signal_cache_RevokeList_changed();
}

void ZvServerCache::storeApplyList(const QList<ZvUBApplyItem> &applications)
{
    m_store->applications = applications;
    emit signal_cache_Select_ApplyRecord_changed();
}

void ZvServerCache::storeDealRecordList(const QList<ZvUBDealRecordItem> &records)
{
    m_store->dealRecords = records;
    emit signal_cache_Select_DealRecord_changed();
}

void ZvServerCache::storeDelegateRecord(const QList<ZvUBEntrustItem> &orders)
{
    m_store->delegateRecord = orders;
    emit signal_cache_Select_DelegateRecord_changed();
}

void ZvServerCache::storeDelegateToday(const QList<ZvUBEntrustItem> &orders)
{
    m_store->delegateToday = orders;
    emit signal_cache_Select_DelegateToday_changed();
}

void ZvServerCache::storeDeliveryRecordList(const QList<ZvUBDeliveryRecordItem> &records)
{
    m_store->deliveryRecords = records;
    emit signal_cache_Select_DeliveryRecord_changed();
}

void ZvServerCache::storeMoneyFlowList(const QList<ZvUBMoneyFlowItem> &flows)
{
    m_store->moneyFlows = flows;
    emit signal_cache_Select_MoneyFlow_changed();
}
