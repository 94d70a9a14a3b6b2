#pragma once

#include "ZvModelKit/zvubapplyitem.h"
#include "ZvModelKit/zvubcapinfo.h"
#include "ZvModelKit/zvubgatherinfo.h"
#include "ZvModelKit/zvubmyacount.h"
#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QList>
#include <QObject>
#include <QPair>
#include <QString>
#include <QStringList>

#include <memory>

class ZvMarketList;
class ZvUBBriefInfo;
class ZvUBDealItem;
class ZvUBDealRecordItem;
class ZvUBDeliveryRecordItem;
class ZvUBEntrustItem;
class ZvUBMoneyFlowItem;
class ZvUBObject;
class ZvUBProItem;
class ZvUBRevokeItem;
class ZvUBTopFive;
enum class ZvKitEnd;
template <typename T, ZvKitEnd End>
struct ZvKitSingleton;

// The last answers of the exchange, and the signals that say they changed.
//
// Pages read, the kit writes: each answer has one `store...` operation, which replaces the data and
// then says so, whether or not the data are equal. The one operation for pages is
// setMarketListOption(). All of it lives on the GUI thread.
//
// A `server` is the prefix of a server; an empty one means the current server. What is not known
// is answered by an empty list or a default item.
class ZVNETWORKKIT_EXPORT ZvServerCache : public QObject
{
    Q_OBJECT

public:
    static ZvServerCache *getZvServerCacheInstance();

    // Read, and in tests written, as they are.
    QList<ZvUBApplyItem> openApplyList; // collections that are open for application
    QList<QPair<QString, QString>> messageList; // text, and the address it links to or ""
    QList<QPair<QString, QString>> marketInfoList; // name and prefix of each server
    ZvUBMyAcount myAccount;
    ZvUBCapInfo capInfo;
    ZvUBGatherInfo gatherInfo;
    QString urlInMoney; // empty until asked for, and again when it may be of no use any more
    QString urlOutMoney;
    QString bankPicturePrefix; // of the bound bank card: prefix + name + "." + suffix is a picture
    QString bankPictureName;
    QString bankPictureSuffix;
    QString bankCardTail; // the last digits of its number

    ZvUBBriefInfo getCurrentBriefInfo();
    ZvUBBriefInfo getBriefInfo(QString server);

    // The rows of the given collections, in the order of `ids`; unknown ids are left out.
    QList<ZvUBObject> getMarketList(QStringList ids, QString server);

    // The rows of one collection type in the server's order; of the whole market for a negative
    // type. Costs no more than a shared copy.
    QList<ZvUBObject> getMarketListByTypeId(int typeId, QString server);

    QStringList getMarketListOption(QString server);

    // Stores the favourites; signal_cache_MarketList_changed() follows from the event loop.
    void setMarketListOption(QStringList ids, QString server);

    // The composite row of a server; false, and `row` as it was, when there is none.
    bool getCompsite(ZvUBObject &row, QString server);

    // Pieces and yuan dealt on the current server, and what all its pieces are worth in yuan. A
    // quantity that does not fit an int stays at its end.
    void getTotalQtyAndAmount(int &quantity, double &amount, double &marketValue);

    // Name and id of each collection type.
    QList<QPair<QString, int>> getCollectionTypeList(QString server) const;

    QList<ZvUBDealItem> getLatestDealList(QString collectionId); // the oldest first
    ZvUBProItem getProItem(QString collectionId);
    ZvUBTopFive getTopFive(QString collectionId);

    QList<ZvUBDealItem> getMarketDetail();
    QList<ZvUBRevokeItem> getRevokeList(); // the newest first
    QList<ZvUBDealRecordItem> getDealRecordList();
    QList<ZvUBEntrustItem> getDelegateToday();
    QList<ZvUBEntrustItem> getDelegateRecord();
    QList<ZvUBApplyItem> getApplyList();
    QList<ZvUBDeliveryRecordItem> getDeliveryRecordList();
    QList<ZvUBMoneyFlowItem> getMoneyFlowList();

    // What an empty `server` means. Set by the access manager; says nothing.
    QString currentServer() const;
    void setCurrentServer(const QString &server);

    // Forgets rows and composite of a server without a signal: the rows that follow may be as many
    // and still be others.
    void dropMarketRows(const QString &server);

    // Forgets without a signal the page of deals: it is of a collection that is not in view.
    void dropMarketDetail();

    // Forgets without a signal quotes, figures and deals of all collections: they were a server's.
    void dropCollections();

    // Forgets without a signal what an account has at a server: money, holdings, the day's sums,
    // records, the bank card. True where there was something that pages show all the time.
    bool dropAccountRecords();
    bool hasBriefInfo(const QString &server) const;
    bool hasProItem(const QString &collectionId) const;
    bool hasTopFive(const QString &collectionId) const;
    bool hasLatestDealList(const QString &collectionId) const;

    void storeMarketInfo(const QList<QPair<QString, QString>> &servers);
    void storeMessageList(const QList<QPair<QString, QString>> &messages);
    void storeMarketCheck(bool open);
    void storeMarketList(const ZvMarketList &list, const QString &server = QString());
    void storeMarketList(const QList<ZvUBObject> &rows, const QString &server = QString());
    void storeComposite(const ZvUBObject &row, const QString &server = QString());
    void storeNoComposite(const QString &server = QString());

    // Rows and composite of one tick, told by one signal.
    void storeMarketTick(const ZvMarketList &list, const ZvUBObject &composite,
                         const QString &server = QString());

    void storeCollectionTypeList(const QList<QPair<QString, int>> &types,
                                 const QString &server = QString());
    void storeBriefInfo(const ZvUBBriefInfo &info, const QString &server = QString());
    void storeProItem(const QString &collectionId, const ZvUBProItem &item);
    void storeTopFive(const QString &collectionId, const ZvUBTopFive &item);

    // The quote that flushCurrentTop5() asked for; told as signal_cache_SellbuyTrade_changed().
    void storeFlushedTopFive(const QString &collectionId, const ZvUBTopFive &item);
    void storeLatestDealList(const QString &collectionId, const QList<ZvUBDealItem> &deals);
    void storeMarketDetail(const QList<ZvUBDealItem> &deals);
    void storeMyAccount(const ZvUBMyAcount &account);

    // The account that has signed in; a default one where the exchange has not named it. What the
    // cache holds of an earlier account, its favourites too, is forgotten first.
    void storeSignIn(const ZvUBMyAcount &account);
    void storeCapInfo(const ZvUBCapInfo &info);
    void storeGatherInfo(const ZvUBGatherInfo &info);
    void storeGlobalTime(int displayedSeconds);
    void storeLoggedOtherPlace(const QString &message);
    void storeMyBankcard(const QString &picturePrefix, const QString &pictureName,
                         const QString &pictureSuffix, const QString &cardTail);
    void storeNoMyBankcard(const QString &accountOpeningCode);
    void storeMoneyUrls(const QString &inMoney, const QString &outMoney);
    void storeOpenApplyList(const QList<ZvUBApplyItem> &applications);
    void storeRevokeList(const QList<ZvUBRevokeItem> &orders);
    void storeApplyList(const QList<ZvUBApplyItem> &applications);
    void storeDealRecordList(const QList<ZvUBDealRecordItem> &records);
    void storeDelegateRecord(const QList<ZvUBEntrustItem> &orders);
    void storeDelegateToday(const QList<ZvUBEntrustItem> &orders);
    void storeDeliveryRecordList(const QList<ZvUBDeliveryRecordItem> &records);
    void storeMoneyFlowList(const QList<ZvUBMoneyFlowItem> &flows);

signals:
    void signal_cache_MarketList_changed();
    void signal_cache_MarketInfo_changed();
    void signal_cache_CollectionType_Changed();
    void signal_cache_Market_Detail_changed();
    void signal_cache_CollectionItem_changed(QString collectionId);
    void signal_cache_CollectionTrade_changed(QString collectionId);
    void signal_cache_SellbuyTrade_changed(QString collectionId);
    void signal_cache_CollectionLatestDeal_changed(QString collectionId);
    void signal_cache_briefInfo_changed(QString server);
    void signal_cache_CapInfo_changed();
    void signal_cache_GatherInfo_changed();
    void signal_cache_Myaccount_changed();
    void signal_cache_MarketCheck_changed(bool open);
    void signal_cache_MessageList_changed();
    void signal_cache_globalTime_Changed(int displayedSeconds);
    void signal_cache_LoggedOtherPlace(QString message);
    void signal_cache_MyBankcard_finded();
    void signal_cache_MyBankcard_notFinded(QString accountOpeningCode);
    void signal_cache_openApplyList_changed();
    void signal_cache_RevokeList_changed();
    void signal_cache_Select_ApplyRecord_changed();
    void signal_cache_Select_DealRecord_changed();
    void signal_cache_Select_DelegateRecord_changed();
    void signal_cache_Select_DelegateToday_changed();
    void signal_cache_Select_DeliveryRecord_changed();
    void signal_cache_Select_MoneyFlow_changed();

private:
    template <typename T, ZvKitEnd End>
    friend struct ZvKitSingleton;
    struct Store;

    ZvServerCache();
    ~ZvServerCache() override;
    Q_DISABLE_COPY(ZvServerCache)

    QString resolved(const QString &server) const;
    void tellFavourites();
    void forgetBankcard();

    std::unique_ptr<Store> m_store;
};
