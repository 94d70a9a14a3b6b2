#pragma once

#include "ZvNetworkKit/zvnetworkkit_export.h"

#include <QObject>
#include <QString>

#include <memory>

class ZvMarketPoller;
enum class ZvKitEnd;
template <typename T, ZvKitEnd End>
struct ZvKitSingleton;

// What the pages want of the exchange: which page is on view, which collection, and queries.
//
// Every call returns at once and emits nothing from inside; what follows comes through the event
// loop as signals of ZvServerCache. Pages are 1-based; dates are "yyyy/MM/dd", an empty one is no
// bound; a type code is 0 for sales or money out, 1 for buys or money in, 2 for all. A query that
// cannot be served logs one line in the category `zv.network` and stays silent. Of two questions of
// one kind the answer to the older one is dropped.
class ZVNETWORKKIT_EXPORT ZvServerEngine : public QObject
{
    Q_OBJECT

public:
    static ZvServerEngine *getZvServerEngineInstance();

    bool isLogged = false; // true while a user is signed in

    // After a sign-in and after its end. Either may be called twice. In between the kit keeps
    // account, money, holdings, the day's sums and the favourites of the server in view current.
    void startLoggedEngine();
    void startUnloggedEngine();

    // The page that has come on view. Its topics are announced once more, so that a page that was
    // hidden during the last change is not stale.
    void changedToMarketList();
    void changedToTimeLine();
    void changedToDayKLine();
    void changedToWeekKLine();
    void changedToMonthKLine();
    void changedToMaketDetail();
    void changedToTransctionVisible();
    void changedToTransctionHidden();
    void changedToGatherVisible();
    void changedToGatherHidden();

    QString getGlobalCollectionID(); // empty until one is set
    void setGlobalCollectionID(QString collectionId);

    int getCollectionTypeId() const; // -1 is the whole market
    void setCollectionTypeId(int typeId);

    bool getIsOptionalCollectionIds() const; // true while the table shows the favourites
    void setIsOptionalCollectionIds(bool isOptional);

    // How many latest deals to watch; held between 0 and 200.
    void setDealLatestLimit(int limit);

    // Asks for the five levels of the current collection out of turn.
    void flushCurrentTop5();

    void sendRequest_Market_Collection();
    void sendRequest_Market_List();
    void sendRequest_Collection_Type();
    void sendRequest_Market_Detail(QString collectionId, int page, int pageSize);
    void sendRequest_Message();
    void sendRequest_Cap();
    void sendRequest_Mybankcard();
    void sendRequest_getURL_INOUT();
    void sendRequest_ApplyList(int page);
    void sendRequest_RevokeList(int page, int pageSize);
    void sendRequest_Select_DealRecord(QString startDate, QString stopDate, int page, int type,
                                       int pageSize);
    void sendRequest_Select_DelegateToday(int page, int pageSize, int type);
    void sendRequest_Select_DelegateRecord(QString startDate, QString stopDate, int page, int type,
                                           int pageSize);
    void sendRequest_Select_ApplyRecord(int page, QString startDate, QString stopDate);
    void sendRequest_Select_DeliveryRecord(int page, QString startDate, QString stopDate);
    void sendRequest_Select_MoneyFlow(int page, int type, QString startDate, QString stopDate);

    // What the other parts of the kit follow.
    ZvMarketPoller *poller() const;

private:
    template <typename T, ZvKitEnd End>
    friend struct ZvKitSingleton;
    class Private;

    ZvServerEngine();
    ~ZvServerEngine() override;
    Q_DISABLE_COPY(ZvServerEngine)

    std::unique_ptr<Private> d;
};
