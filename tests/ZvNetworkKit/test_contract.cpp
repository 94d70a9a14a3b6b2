#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"
#include "ZvModelKit/zvubobject.h"
#include "ZvModelKit/zvubproitem.h"
#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvModelKit/zvubtopfive.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QMetaMethod>
#include <QtTest/QtTest>

#include <type_traits>

// What pages call and connect to: names, types and order.
class ContractTest : public QObject
{
    Q_OBJECT

private slots:
    void accessorsGiveOneInstance();
    void engineHasItsOperations();
    void actionsHaveTheirOperations();
    void cacheHasItsOperations();
    void membersHaveTheirTypes();
    void cacheSignalsStandInOrder();
    void actionSignalsStandInOrder();
    void pathsAreTheList();
};

namespace {

QStringList signalsOf(const QMetaObject &meta)
{
    QStringList names;
    for (int i = meta.methodOffset(); i < meta.methodCount(); ++i) {
        const QMetaMethod method = meta.method(i);
        if (method.methodType() == QMetaMethod::Signal)
            names.append(QString::fromLatin1(method.methodSignature()));
    }
    return names;
}

// Compiles only where the member has exactly this type.
template <typename Type>
bool has(Type member)
{
    return member != nullptr;
}

} // namespace

void ContractTest::accessorsGiveOneInstance()
{
    QCOMPARE(ZvServerEngine::getZvServerEngineInstance(),
             ZvServerEngine::getZvServerEngineInstance());
    QCOMPARE(ZvServerActionResult::getZvServerActionResultInstance(),
             ZvServerActionResult::getZvServerActionResultInstance());
    QCOMPARE(ZvServerCache::getZvServerCacheInstance(), ZvServerCache::getZvServerCacheInstance());
    QCOMPARE(ZvServerAccessManager::getZvServerAccessManagerInstance(),
             ZvServerAccessManager::getZvServerAccessManagerInstance());
    QCOMPARE(ZvServerEngine::getZvServerEngineInstance()->isLogged, false);
}

void ContractTest::engineHasItsOperations()
{
    using E = ZvServerEngine;
    using Plain = void (E::*)();
    QVERIFY(has<Plain>(&E::startLoggedEngine));
    QVERIFY(has<Plain>(&E::startUnloggedEngine));
    QVERIFY(has<Plain>(&E::changedToMarketList));
    QVERIFY(has<Plain>(&E::changedToTimeLine));
    QVERIFY(has<Plain>(&E::changedToDayKLine));
    QVERIFY(has<Plain>(&E::changedToWeekKLine));
    QVERIFY(has<Plain>(&E::changedToMonthKLine));
    QVERIFY(has<Plain>(&E::changedToMaketDetail));
    QVERIFY(has<Plain>(&E::changedToTransctionVisible));
    QVERIFY(has<Plain>(&E::changedToTransctionHidden));
    QVERIFY(has<Plain>(&E::changedToGatherVisible));
    QVERIFY(has<Plain>(&E::changedToGatherHidden));
    QVERIFY(has<QString (E::*)()>(&E::getGlobalCollectionID));
    QVERIFY(has<void (E::*)(QString)>(&E::setGlobalCollectionID));
    QVERIFY(has<int (E::*)() const>(&E::getCollectionTypeId));
    QVERIFY(has<void (E::*)(int)>(&E::setCollectionTypeId));
    QVERIFY(has<bool (E::*)() const>(&E::getIsOptionalCollectionIds));
    QVERIFY(has<void (E::*)(bool)>(&E::setIsOptionalCollectionIds));
    QVERIFY(has<void (E::*)(int)>(&E::setDealLatestLimit));
    QVERIFY(has<Plain>(&E::flushCurrentTop5));
    QVERIFY(has<Plain>(&E::sendRequest_Market_Collection));
    QVERIFY(has<Plain>(&E::sendRequest_Market_List));
    QVERIFY(has<Plain>(&E::sendRequest_Collection_Type));
    QVERIFY(has<void (E::*)(QString, int, int)>(&E::sendRequest_Market_Detail));
    QVERIFY(has<Plain>(&E::sendRequest_Message));
    QVERIFY(has<Plain>(&E::sendRequest_Cap));
    QVERIFY(has<Plain>(&E::sendRequest_Mybankcard));
    QVERIFY(has<Plain>(&E::sendRequest_getURL_INOUT));
    QVERIFY(has<void (E::*)(int)>(&E::sendRequest_ApplyList));
    QVERIFY(has<void (E::*)(int, int)>(&E::sendRequest_RevokeList));
    using Record = void (E::*)(QString, QString, int, int, int);
    QVERIFY(has<Record>(&E::sendRequest_Select_DealRecord));
    QVERIFY(has<void (E::*)(int, int, int)>(&E::sendRequest_Select_DelegateToday));
    QVERIFY(has<Record>(&E::sendRequest_Select_DelegateRecord));
    QVERIFY(has<void (E::*)(int, QString, QString)>(&E::sendRequest_Select_ApplyRecord));
    QVERIFY(has<void (E::*)(int, QString, QString)>(&E::sendRequest_Select_DeliveryRecord));
    QVERIFY(has<void (E::*)(int, int, QString, QString)>(&E::sendRequest_Select_MoneyFlow));
    QVERIFY(has<void (ZvServerAccessManager::*)(QString)>(&ZvServerAccessManager::setUrlPrefix));
}

void ContractTest::actionsHaveTheirOperations()
{
    using A = ZvServerActionResult;
    using S = QString;
    QVERIFY(has<void (A::*)(S, S)>(&A::sendRequest_login));
    QVERIFY(has<void (A::*)(S)>(&A::sendRequest_register_sendCode));
    QVERIFY(has<void (A::*)(S, S, S, S)>(&A::sendRequest_register));
    QVERIFY(has<void (A::*)(S)>(&A::sendRequest_changePasswd_sendCode));
    QVERIFY(has<void (A::*)(S, S, S)>(&A::sendRequest_changePasswd));
    QVERIFY(has<void (A::*)(S)>(&A::sendRequest_addOption));
    QVERIFY(has<void (A::*)(S)>(&A::sendRequest_removeOption));
    QVERIFY(has<void (A::*)(int, int)>(&A::sendRequest_getOptions));
    QVERIFY(has<void (A::*)(S, float, int)>(&A::sendRequest_trade_buy));
    QVERIFY(has<void (A::*)(S, float, int)>(&A::sendRequest_trade_sell));
    QVERIFY(has<void (A::*)(QList<int>)>(&A::sendRequest_trade_revoke));
    QVERIFY(has<void (A::*)(S, int, S, float, int)>(&A::sendRequest_prepay_send));
    QVERIFY(has<void (A::*)(S, int, S, S, S)>(&A::sendRequest_delivery));
    QVERIFY(has<void (A::*)(S)>(&A::sendRequest_deliveryCancel));
    QVERIFY(has<void (A::*)(S)>(&A::sendRequest_inMoney_sendCode));
    QVERIFY(has<void (A::*)(S, S, S, S)>(&A::sendRequest_inMoney));
    QVERIFY(has<void (A::*)(S)>(&A::sendRequest_outMoney));
}

void ContractTest::cacheHasItsOperations()
{
    using C = ZvServerCache;
    using S = QString;
    QVERIFY(has<ZvUBBriefInfo (C::*)()>(&C::getCurrentBriefInfo));
    QVERIFY(has<ZvUBBriefInfo (C::*)(S)>(&C::getBriefInfo));
    QVERIFY(has<QList<ZvUBObject> (C::*)(QStringList, S)>(&C::getMarketList));
    QVERIFY(has<QList<ZvUBObject> (C::*)(int, S)>(&C::getMarketListByTypeId));
    QVERIFY(has<QStringList (C::*)(S)>(&C::getMarketListOption));
    QVERIFY(has<void (C::*)(QStringList, S)>(&C::setMarketListOption));
    QVERIFY(has<bool (C::*)(ZvUBObject &, S)>(&C::getCompsite));
    QVERIFY(has<void (C::*)(int &, double &, double &)>(&C::getTotalQtyAndAmount));
    using Types = QList<QPair<S, int>>;
    QVERIFY(has<Types (C::*)(S) const>(&C::getCollectionTypeList));
    QVERIFY(has<QList<ZvUBDealItem> (C::*)(S)>(&C::getLatestDealList));
    QVERIFY(has<ZvUBProItem (C::*)(S)>(&C::getProItem));
    QVERIFY(has<ZvUBTopFive (C::*)(S)>(&C::getTopFive));
    QVERIFY(has<QList<ZvUBDealItem> (C::*)()>(&C::getMarketDetail));
    QVERIFY(has<QList<ZvUBRevokeItem> (C::*)()>(&C::getRevokeList));
    QVERIFY(has<QList<ZvUBDealRecordItem> (C::*)()>(&C::getDealRecordList));
    QVERIFY(has<QList<ZvUBEntrustItem> (C::*)()>(&C::getDelegateToday));
    QVERIFY(has<QList<ZvUBEntrustItem> (C::*)()>(&C::getDelegateRecord));
    QVERIFY(has<QList<ZvUBApplyItem> (C::*)()>(&C::getApplyList));
    QVERIFY(has<QList<ZvUBDeliveryRecordItem> (C::*)()>(&C::getDeliveryRecordList));
    QVERIFY(has<QList<ZvUBMoneyFlowItem> (C::*)()>(&C::getMoneyFlowList));
}

void ContractTest::membersHaveTheirTypes()
{
    using C = ZvServerCache;
    using Pairs = QList<QPair<QString, QString>>;
    QVERIFY(has<Pairs C::*>(&C::messageList));
    QVERIFY(has<Pairs C::*>(&C::marketInfoList));
    QVERIFY(has<ZvUBMyAcount C::*>(&C::myAccount));
    QVERIFY(has<ZvUBCapInfo C::*>(&C::capInfo));
    QVERIFY(has<ZvUBGatherInfo C::*>(&C::gatherInfo));
    QVERIFY(has<QString C::*>(&C::urlInMoney));
    QVERIFY(has<QString C::*>(&C::urlOutMoney));
    QVERIFY(has<QString C::*>(&C::bankPicturePrefix));
    QVERIFY(has<QString C::*>(&C::bankPictureName));
    QVERIFY(has<QString C::*>(&C::bankPictureSuffix));
    QVERIFY(has<QString C::*>(&C::bankCardTail));
    QVERIFY(has<bool ZvServerEngine::*>(&ZvServerEngine::isLogged));
    QVERIFY(ZvServerCache::getZvServerCacheInstance()->openApplyList.isEmpty());
}

void ContractTest::cacheSignalsStandInOrder()
{
    const QStringList expected{
        QStringLiteral("signal_cache_MarketList_changed()"),
        QStringLiteral("signal_cache_MarketInfo_changed()"),
        QStringLiteral("signal_cache_CollectionType_Changed()"),
        QStringLiteral("signal_cache_Market_Detail_changed()"),
        QStringLiteral("signal_cache_CollectionItem_changed(QString)"),
        QStringLiteral("signal_cache_CollectionTrade_changed(QString)"),
        QStringLiteral("signal_cache_SellbuyTrade_changed(QString)"),
        QStringLiteral("signal_cache_CollectionLatestDeal_changed(QString)"),
        QStringLiteral("signal_cache_briefInfo_changed(QString)"),
        QStringLiteral("signal_cache_CapInfo_changed()"),
        QStringLiteral("signal_cache_GatherInfo_changed()"),
        QStringLiteral("signal_cache_Myaccount_changed()"),
        QStringLiteral("signal_cache_MarketCheck_changed(bool)"),
        QStringLiteral("signal_cache_MessageList_changed()"),
        QStringLiteral("signal_cache_globalTime_Changed(int)"),
        QStringLiteral("signal_cache_LoggedOtherPlace(QString)"),
        QStringLiteral("signal_cache_MyBankcard_finded()"),
        QStringLiteral("signal_cache_MyBankcard_notFinded(QString)"),
        QStringLiteral("signal_cache_openApplyList_changed()"),
        QStringLiteral("signal_cache_RevokeList_changed()"),
        QStringLiteral("signal_cache_Select_ApplyRecord_changed()"),
        QStringLiteral("signal_cache_Select_DealRecord_changed()"),
        QStringLiteral("signal_cache_Select_DelegateRecord_changed()"),
        QStringLiteral("signal_cache_Select_DelegateToday_changed()"),
        QStringLiteral("signal_cache_Select_DeliveryRecord_changed()"),
        QStringLiteral("signal_cache_Select_MoneyFlow_changed()"),
    };
    QCOMPARE(signalsOf(ZvServerCache::staticMetaObject), expected);
}

void ContractTest::actionSignalsStandInOrder()
{
    const QStringList expected{
        QStringLiteral("signal_login_succeed()"),
        QStringLiteral("signal_login_failed(QString)"),
        QStringLiteral("signal_register_sendCode_succeed()"),
        QStringLiteral("signal_register_sendCode_failed(QString)"),
        QStringLiteral("signal_register_succeed()"),
        QStringLiteral("signal_register_failed(QString)"),
        QStringLiteral("signal_changePasswd_sendCode_succeed()"),
        QStringLiteral("signal_changePasswd_sendCode_failed(QString)"),
        QStringLiteral("signal_changePasswd_succeed()"),
        QStringLiteral("signal_changePasswd_failed(QString)"),
        QStringLiteral("signal_addOption_succeed()"),
        QStringLiteral("signal_addOption_failed(QString)"),
        QStringLiteral("signal_removeOption_succeed()"),
        QStringLiteral("signal_removeOption_failed(QString)"),
        QStringLiteral("signal_getOption_succeed(QStringList)"),
        QStringLiteral("signal_getOption_failed(QString)"),
        QStringLiteral("signal_trade_buy_succeed()"),
        QStringLiteral("signal_trade_buy_failed(QString)"),
        QStringLiteral("signal_trade_sell_succeed()"),
        QStringLiteral("signal_trade_sell_failed(QString)"),
        QStringLiteral("signal_trade_revoke_succeed()"),
        QStringLiteral("signal_trade_revoke_failed(QString)"),
        QStringLiteral("signal_prepay_send_succeed(QString)"),
        QStringLiteral("signal_prepay_send_failed(QString,QString)"),
        QStringLiteral("signal_delivery_succeed()"),
        QStringLiteral("signal_delivery_falied(QString)"),
        QStringLiteral("signal_cancelDelivery_succeed()"),
        QStringLiteral("signal_cancelDelivery_failed(QString)"),
        QStringLiteral("signal_inMoney_sendCode_succeed(QString,QString)"),
        QStringLiteral("signal_inMoney_sendCode_failed(QString)"),
        QStringLiteral("signal_inMoney_succeed()"),
        QStringLiteral("signal_inMoney_failed(QString)"),
        QStringLiteral("signal_outMoney_succeed()"),
        QStringLiteral("signal_outMoney_failed(QString)"),
    };
    QCOMPARE(signalsOf(ZvServerActionResult::staticMetaObject), expected);
}

void ContractTest::pathsAreTheList()
{
    QFile header(QStringLiteral(ZV_SOURCE_DIR "/src/ZvNetworkKit/serverpaths.h"));
    QVERIFY(header.open(QIODevice::ReadOnly));
    QStringList paths;
    const QRegularExpression form(QStringLiteral("QStringLiteral\\(\"([^\"]+)\"\\)"));
    QRegularExpressionMatchIterator it = form.globalMatch(QString::fromUtf8(header.readAll()));
    while (it.hasNext())
        paths.append(it.next().captured(1));
    QCOMPARE(paths.size(), 46);
    QCOMPARE(QSet<QString>(paths.cbegin(), paths.cend()).size(), 46);
    QCOMPARE(paths.at(0), QStringLiteral("sync.html"));
    QCOMPARE(paths.at(10), QStringLiteral("market/latest-list.html"));
    QCOMPARE(paths.at(22), QStringLiteral("myaccount/append.html"));
    QCOMPARE(paths.at(23), QStringLiteral("myaccount/remove.html"));
    QCOMPARE(paths.at(33), QStringLiteral("forget/validate.html"));
    QCOMPARE(paths.at(45), QStringLiteral("trade/take.html"));
    QCOMPARE(zvPath_myaccount_his_entrust, QStringLiteral("myaccount/his-entrust.html"));
}

ZV_TEST(ContractTest)
#include "test_contract.moc"
