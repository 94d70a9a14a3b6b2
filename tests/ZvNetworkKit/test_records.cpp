#include "kitbench.h"
#include "listeners.h"

#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubdealrecorditem.h"
#include "ZvModelKit/zvubdeliveryrecorditem.h"
#include "ZvModelKit/zvubentrustitem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"
#include "ZvModelKit/zvubrevokeitem.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvmoneyaddresslife.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

namespace {

using Cache = ZvServerCache;

Cache *cache()
{
    return Cache::getZvServerCacheInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

const QString here = QStringLiteral("/ch/youbika/");
const QString there = QStringLiteral("/ch/baoyushi/");

QByteArray bound(const QByteArray &tail = "6688")
{
    return "{\"bound\": true, \"picturePrefix\": \"http://127.0.0.1:1/bank/\", \"pictureName\": "
           "\"yunhe\", \"pictureSuffix\": \"png\", \"tail\": \""
        + tail + "\"}";
}

QByteArray unbound(const QByteArray &code = "aZ09-_")
{
    return "{\"bound\": false, \"code\": \"" + code + "\"}";
}

QByteArray addresses()
{
    return "{\"in\": \"http://127.0.0.1:1/in/a\", \"out\": \"https://127.0.0.1:1/out/b\"}";
}

QByteArray openApplications()
{
    return "{\"collections\": [{\"collection\": \"1009\", \"code\": \"101009\", \"name\": "
           "\"新藏\", "
           "\"price\": 1250, \"quantity\": 100, \"from\": \"2020-01-01\", \"to\": "
           "\"2020-01-03\"}]}";
}

QByteArray applications()
{
    return "{\"applications\": [{\"number\": 12, \"time\": 1577840400000, \"collection\": "
           "\"1009\", \"code\": \"101009\", \"name\": \"新藏\", \"price\": 1250, \"quantity\": "
           "100, \"granted\": null, \"state\": 0}, {\"number\": 11, \"time\": 1577840300000, "
           "\"collection\": \"1008\", \"code\": \"101008\", \"name\": \"旧藏\", \"price\": 100, "
           "\"quantity\": 10, \"granted\": 4, \"state\": 1}]}";
}

QByteArray flows()
{
    return "{\"flows\": [{\"number\": 2, \"time\": 1577840400000, \"in\": false, \"amount\": 29, "
           "\"state\": 0, \"balance\": 971}, {\"number\": 1, \"time\": 1577840300000, \"in\": "
           "true, \"amount\": 1000, \"state\": 1, \"balance\": 1000}]}";
}

QByteArray order(int number, const QByteArray &fields)
{
    return "{\"order\": " + QByteArray::number(number)
        + ", \"time\": 1577840400000, \"collection\": \"1001\", \"code\": \"101001\", \"name\": "
          "\"藏品1001\", \"price\": 1000, \"key\": \"00112233445566778899aabbccddeeff\", "
        + fields + "}";
}

QByteArray openOrders()
{
    return "{\"orders\": ["
        + order(2147483647,
                "\"side\": 1, \"quantity\": 10, \"filled\": 4, \"averagePrice\": 995, \"amount\": "
                "3981, \"fee\": 12, "
                "\"frozen\": 6018, \"state\": 2")
        + ", "
        + order(7,
                "\"side\": 2, \"quantity\": 3, \"filled\": 0, \"averagePrice\": null, \"amount\": "
                "0, \"fee\": 0, "
                "\"frozen\": 0, \"state\": 1")
        + "]}";
}

QByteArray doneOrders()
{
    return "{\"orders\": ["
        + order(9,
                "\"side\": 1, \"quantity\": 10, \"filled\": 4, \"averagePrice\": 995, \"amount\": "
                "3981, \"fee\": 12, "
                "\"frozen\": 0, \"state\": 5")
        + ", "
        + order(8,
                "\"side\": 2, \"quantity\": 3, \"filled\": 0, \"averagePrice\": null, \"amount\": "
                "0, \"fee\": 0, "
                "\"frozen\": 0, \"state\": 4")
        + "]}";
}

QByteArray deals()
{
    return "{\"deals\": [{\"sequence\": 41, \"time\": 1577840400000, \"side\": 2, "
           "\"collection\": \"1001\", \"code\": \"101001\", \"name\": \"藏品1001\", \"price\": "
           "995, \"quantity\": 4, \"amount\": 3980, \"fee\": 12}]}";
}

QByteArray takes()
{
    return "{\"takes\": [{\"id\": \"t-31\", \"number\": \"20200101000031\", \"time\": "
           "1577840400000, \"collection\": \"1001\", \"code\": \"101001\", \"name\": "
           "\"藏品1001\", \"quantity\": 5, \"state\": 2, \"person\": \"林晓月\", \"phone\": "
           "\"13800000001\", \"address\": \"北京市东城区一号\", \"carrier\": \"\", \"tracking\": "
           "\"\", \"sent\": null}]}";
}

// A list of one row that stands there `count` times.
QByteArray repeated(const QByteArray &key, const QByteArray &list, int count)
{
    const int begin = list.indexOf('[') + 1;
    const QByteArray row = list.mid(begin, list.lastIndexOf(']') - begin);
    return "{\"" + key + "\": [" + row + (", " + row).repeated(count - 1) + "]}";
}

// `count` orders of different numbers.
QByteArray manyOrders(int count)
{
    QByteArrayList rows;
    for (int number = 1; number <= count; ++number)
        rows.append(order(number,
                          "\"side\": 2, \"quantity\": 3, \"filled\": 0, \"averagePrice\": null, "
                          "\"amount\": 0, \"fee\": 0, \"frozen\": 0, \"state\": 1"));
    return "{\"orders\": [" + rows.join(", ") + "]}";
}

// A question of a page: how it is asked, where, and what a good answer is.
struct Question {
    const char *name;
    std::function<void()> ask;
    QString path;
    QByteArray good;
    void (Cache::*told)();
};

const QList<Question> &questions()
{
    static const QList<Question> all{
        {"bank card", [] { engine()->sendRequest_Mybankcard(); }, zvPath_pay_hx, bound(),
         &Cache::signal_cache_MyBankcard_finded},
        {"addresses", [] { engine()->sendRequest_getURL_INOUT(); }, zvPath_pay_hx, addresses(),
         nullptr},
        {"open applications", [] { engine()->sendRequest_ApplyList(1); }, zvPath_hold_list,
         openApplications(), &Cache::signal_cache_openApplyList_changed},
        {"applications",
         [] { engine()->sendRequest_Select_ApplyRecord(2, "2020/01/01", "2020/01/02"); },
         zvPath_hold_list, applications(), &Cache::signal_cache_Select_ApplyRecord_changed},
        {"money flow",
         [] { engine()->sendRequest_Select_MoneyFlow(3, 2, "2020/01/01", QString()); },
         zvPath_pay_list, flows(), &Cache::signal_cache_Select_MoneyFlow_changed},
        {"open orders", [] { engine()->sendRequest_RevokeList(1, 12); }, zvPath_revoke,
         openOrders(), &Cache::signal_cache_RevokeList_changed},
        {"orders of today", [] { engine()->sendRequest_Select_DelegateToday(1, 10, 2); },
         zvPath_myaccount_entrust, doneOrders(), &Cache::signal_cache_Select_DelegateToday_changed},
        {"orders",
         [] { engine()->sendRequest_Select_DelegateRecord("2020/01/01", "2020/01/01", 1, 2, 10); },
         zvPath_myaccount_his_entrust, doneOrders(),
         &Cache::signal_cache_Select_DelegateRecord_changed},
        {"deals",
         [] { engine()->sendRequest_Select_DealRecord("2020/01/01", "2020/01/01", 1, 2, 10); },
         zvPath_myaccount_trade, deals(), &Cache::signal_cache_Select_DealRecord_changed},
        {"deliveries",
         [] { engine()->sendRequest_Select_DeliveryRecord(1, "2020/01/01", "2020/01/01"); },
         zvPath_myaccount_take_list, takes(), &Cache::signal_cache_Select_DeliveryRecord_changed},
    };
    return all;
}

} // namespace

// What pages ask for when they want to know it: the bank card, the addresses for money, records of
// an account, and the page of deals.
class RecordsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        access()->setUrlPrefix(QStringLiteral("/ch/elsewhere/"));
        engine()->setGlobalCollectionID(QString());
        cache()->storeMarketDetail({});
        cache()->storeApplyList({});
        cache()->storeMoneyFlowList({});
        cache()->storeRevokeList({});
        cache()->storeDelegateToday({});
        cache()->storeDelegateRecord({});
        cache()->storeDealRecordList({});
        cache()->storeDeliveryRecordList({});
        m_bench->startOn(here);
        m_bench->signIn("t1");
        m_bench->answerAccount(KitBench::cap(1000));
        exchange()->takeRequests();
    }

    void cleanup()
    {
        m_bench->endActions();
        m_bench.reset();
        cache()->storeSignIn(ZvUBMyAcount());
    }

    void boundBankCardIsStored();
    void unboundBankCardTellsTheCode();
    void moneyAddressesAreStored();
    void oldAddressesAreForgotten();
    void addressesAreForgottenWhenMoneyMoves();
    void openApplicationsAreStored();
    void applicationsAreStored();
    void moneyFlowsAreStored();
    void openOrdersAreStored();
    void anOrderMayHaveNoKey();
    void ordersAreStored_data();
    void ordersAreStored();
    void dealRecordsAreStored();
    void deliveriesAreStored();
    void longestPageIsTaken();
    void pagesOfRecordsAreAskedForInBounds_data();
    void pagesOfRecordsAreAskedForInBounds();
    void equalAnswersAreToldAgain_data();
    void equalAnswersAreToldAgain();
    void emptyAnswersAreToldAsWell_data();
    void emptyAnswersAreToldAsWell();
    void hostileAnswersLeaveTheCache_data();
    void hostileAnswersLeaveTheCache();
    void newerQuestionCounts_data();
    void newerQuestionCounts();
    void answerOfTheLastServerDies_data();
    void answerOfTheLastServerDies();
    void answerOfTheLastSessionDies_data();
    void answerOfTheLastSessionDies();
    void cardAndAddressesDoNotDisturbEachOther();
    void otherServerForgetsCardAddressesAndDeals();
    void otherAccountForgetsCardAndAddresses();

    void pageOfDealsIsAskedForAndStored();
    void pageSizesAreHeldInBounds_data();
    void pageSizesAreHeldInBounds();
    void emptyPageIsToldAsWell();
    void dealsOfAnotherPageAreRefused_data();
    void dealsOfAnotherPageAreRefused();
    void dealsOfTheLastCollectionDie();
    void dealsOfACollectionThatIsNotCurrentAreDropped();
    void otherCollectionForgetsTheDeals();

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    void answer(const QString &path, const QByteArray &data)
    {
        exchange()->answer(path, ZvScriptedTransport::ok(data, 0));
        m_bench->settle();
    }

    static void rows()
    {
        QTest::addColumn<int>("index");
        for (int i = 0; i < questions().size(); ++i)
            QTest::newRow(questions().at(i).name) << i;
    }

    // Asks as the current row says, and has the answer in the decoder.
    Question askAndAnswer()
    {
        const Question &question
            = questions().at(*static_cast<int *>(QTest::qData("index", qMetaTypeId<int>())));
        question.ask();
        exchange()->answer(question.path, ZvScriptedTransport::ok(question.good, 0));
        QCoreApplication::sendPostedEvents();
        return question;
    }

    static bool isForgotten()
    {
        return cache()->bankPicturePrefix.isEmpty() && cache()->bankPictureName.isEmpty()
            && cache()->bankPictureSuffix.isEmpty() && cache()->bankCardTail.isEmpty()
            && cache()->urlInMoney.isEmpty() && cache()->urlOutMoney.isEmpty()
            && cache()->openApplyList.isEmpty() && cache()->getApplyList().isEmpty()
            && cache()->getMoneyFlowList().isEmpty() && cache()->getRevokeList().isEmpty()
            && cache()->getDelegateToday().isEmpty() && cache()->getDelegateRecord().isEmpty()
            && cache()->getDealRecordList().isEmpty() && cache()->getDeliveryRecordList().isEmpty();
    }

    void fillEverything()
    {
        for (const Question &question : questions()) {
            question.ask();
            answer(question.path, question.good);
        }
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, 10);
        answer(zvPath_market_detail, KitBench::detail("1001"));
        QVERIFY(!cache()->bankCardTail.isEmpty() && !cache()->urlInMoney.isEmpty());
        QVERIFY(!cache()->openApplyList.isEmpty() && !cache()->getApplyList().isEmpty());
        QVERIFY(!cache()->getMoneyFlowList().isEmpty() && !cache()->getMarketDetail().isEmpty());
        QVERIFY(!cache()->getRevokeList().isEmpty() && !cache()->getDelegateToday().isEmpty());
        QVERIFY(!cache()->getDelegateRecord().isEmpty() && !cache()->getDealRecordList().isEmpty());
        QVERIFY(!cache()->getDeliveryRecordList().isEmpty());
    }

    std::unique_ptr<KitBench> m_bench;
};

void RecordsTest::boundBankCardIsStored()
{
    QSignalSpy found(cache(), &Cache::signal_cache_MyBankcard_finded);
    QSignalSpy missing(cache(), &Cache::signal_cache_MyBankcard_notFinded);
    engine()->sendRequest_Mybankcard();
    const ZvRequest request = exchange()->lastRequest(zvPath_pay_hx);
    QVERIFY(!request.isAction);
    QVERIFY(!request.hasParameter("addresses"));
    QCOMPARE(request.token, QByteArray("t1"));
    answer(zvPath_pay_hx, bound());
    QCOMPARE(found.count(), 1);
    QCOMPARE(missing.count(), 0);
    QCOMPARE(cache()->bankPicturePrefix, QStringLiteral("http://127.0.0.1:1/bank/"));
    QCOMPARE(cache()->bankPictureName, QStringLiteral("yunhe"));
    QCOMPARE(cache()->bankPictureSuffix, QStringLiteral("png"));
    QCOMPARE(cache()->bankCardTail, QStringLiteral("6688"));
    // Told again, since a page has asked.
    engine()->sendRequest_Mybankcard();
    answer(zvPath_pay_hx, bound());
    QCOMPARE(found.count(), 2);
}

void RecordsTest::unboundBankCardTellsTheCode()
{
    engine()->sendRequest_Mybankcard();
    answer(zvPath_pay_hx, bound());
    QSignalSpy missing(cache(), &Cache::signal_cache_MyBankcard_notFinded);
    engine()->sendRequest_Mybankcard();
    answer(zvPath_pay_hx, unbound());
    QCOMPARE(missing.count(), 1);
    QCOMPARE(missing.first().first().toString(), QStringLiteral("aZ09-_"));
    QCOMPARE(cache()->bankCardTail, QString());
    QCOMPARE(cache()->bankPicturePrefix, QString());
}

void RecordsTest::moneyAddressesAreStored()
{
    const Ear ear(cache());
    engine()->sendRequest_getURL_INOUT();
    QCOMPARE(exchange()->lastRequest(zvPath_pay_hx).parameter("addresses"), QStringLiteral("1"));
    answer(zvPath_pay_hx, addresses());
    QCOMPARE(cache()->urlInMoney, QStringLiteral("http://127.0.0.1:1/in/a"));
    QCOMPARE(cache()->urlOutMoney, QStringLiteral("https://127.0.0.1:1/out/b"));
    QCOMPARE(ear.heard(), QStringList());
}

void RecordsTest::oldAddressesAreForgotten()
{
    engine()->sendRequest_getURL_INOUT();
    answer(zvPath_pay_hx, addresses());
    m_bench->clock.advance(ZvMoneyAddressLife::longest - 1000);
    QVERIFY(!cache()->urlInMoney.isEmpty());
    // Fresh ones live as long as the first did.
    engine()->sendRequest_getURL_INOUT();
    answer(zvPath_pay_hx, addresses());
    m_bench->clock.advance(2000);
    QVERIFY(!cache()->urlInMoney.isEmpty());
    m_bench->clock.advance(ZvMoneyAddressLife::longest);
    QVERIFY(cache()->urlInMoney.isEmpty());
    QVERIFY(cache()->urlOutMoney.isEmpty());
}

// They are good for one use.
void RecordsTest::addressesAreForgottenWhenMoneyMoves()
{
    engine()->sendRequest_getURL_INOUT();
    answer(zvPath_pay_hx, addresses());
    engine()->sendRequest_Cap();
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(1000), 2));
    m_bench->settle();
    QVERIFY(!cache()->urlInMoney.isEmpty());
    engine()->sendRequest_Cap();
    exchange()->answer(zvPath_cap, ZvScriptedTransport::ok(KitBench::cap(1001), 3));
    m_bench->settle();
    QVERIFY(cache()->urlInMoney.isEmpty());
    QVERIFY(cache()->urlOutMoney.isEmpty());
}

void RecordsTest::openApplicationsAreStored()
{
    QSignalSpy told(cache(), &Cache::signal_cache_openApplyList_changed);
    engine()->sendRequest_ApplyList(1);
    const ZvRequest request = exchange()->lastRequest(zvPath_hold_list);
    QCOMPARE(request.parameter("page"), QStringLiteral("1"));
    QVERIFY(!request.hasParameter("mine"));
    answer(zvPath_hold_list, openApplications());
    QCOMPARE(told.count(), 1);
    QCOMPARE(cache()->openApplyList.size(), 1);
    const ZvUBApplyItem::Data &item = cache()->openApplyList.first().data();
    QCOMPARE(item.code, QStringLiteral("101009"));
    QCOMPARE(item.name, QStringLiteral("新藏"));
    QCOMPARE(item.price, qint64(1250));
    QCOMPARE(item.quantity, qint64(100));
    QVERIFY(cache()->getApplyList().isEmpty());
    // The page waits for the answer, and so an empty list is told, too.
    engine()->sendRequest_ApplyList(1);
    answer(zvPath_hold_list, "{\"collections\": []}");
    QCOMPARE(told.count(), 2);
    QVERIFY(cache()->openApplyList.isEmpty());
}

void RecordsTest::applicationsAreStored()
{
    QSignalSpy told(cache(), &Cache::signal_cache_Select_ApplyRecord_changed);
    engine()->sendRequest_Select_ApplyRecord(2, QStringLiteral("2020/01/01"), QString());
    const ZvRequest request = exchange()->lastRequest(zvPath_hold_list);
    QCOMPARE(request.parameter("mine"), QStringLiteral("1"));
    QCOMPARE(request.parameter("page"), QStringLiteral("2"));
    QCOMPARE(request.parameter("start"), QStringLiteral("2020/01/01"));
    QVERIFY(!request.hasParameter("stop"));
    answer(zvPath_hold_list, applications());
    QCOMPARE(told.count(), 1);
    QCOMPARE(cache()->getApplyList().size(), 2);
    const ZvUBApplyItem::Data &waiting = cache()->getApplyList().first().data();
    QCOMPARE(waiting.number, qint64(12));
    QCOMPARE(waiting.time, qint64(1577840400000));
    QCOMPARE(waiting.allotted, zvub::noValue);
    QCOMPARE(waiting.state, int(ZvUBApplyItem::Pending));
    const ZvUBApplyItem::Data &granted = cache()->getApplyList().last().data();
    QCOMPARE(granted.allotted, qint64(4));
    QCOMPARE(granted.state, int(ZvUBApplyItem::Granted));
    QVERIFY(cache()->openApplyList.isEmpty());
}

void RecordsTest::moneyFlowsAreStored()
{
    QSignalSpy told(cache(), &Cache::signal_cache_Select_MoneyFlow_changed);
    engine()->sendRequest_Select_MoneyFlow(3, 1, QString(), QStringLiteral("2020/01/05"));
    const ZvRequest request = exchange()->lastRequest(zvPath_pay_list);
    QCOMPARE(request.parameter("page"), QStringLiteral("3"));
    QCOMPARE(request.parameter("type"), QStringLiteral("1"));
    QCOMPARE(request.parameter("stop"), QStringLiteral("2020/01/05"));
    QVERIFY(!request.hasParameter("start"));
    answer(zvPath_pay_list, flows());
    QCOMPARE(told.count(), 1);
    QCOMPARE(cache()->getMoneyFlowList().size(), 2);
    const ZvUBMoneyFlowItem::Data &out = cache()->getMoneyFlowList().first().data();
    QCOMPARE(out.number, qint64(2));
    QCOMPARE(out.moneyIn, 0);
    QCOMPARE(out.amount, qint64(29));
    QCOMPARE(out.state, int(ZvUBMoneyFlowItem::Pending));
    const ZvUBMoneyFlowItem::Data &in = cache()->getMoneyFlowList().last().data();
    QVERIFY(in.moneyIn != 0);
    QCOMPARE(in.amount, qint64(1000));
    QCOMPARE(in.time, qint64(1577840300000));
    QCOMPARE(in.state, int(ZvUBMoneyFlowItem::Done));
}

void RecordsTest::openOrdersAreStored()
{
    engine()->sendRequest_RevokeList(3, 12);
    const ZvRequest request = exchange()->lastRequest(zvPath_revoke);
    QVERIFY(!request.isAction);
    QCOMPARE(request.token, QByteArray("t1"));
    QCOMPARE(request.parameter("page"), QStringLiteral("3"));
    QCOMPARE(request.parameter("size"), QStringLiteral("12"));
    answer(zvPath_revoke, openOrders());
    QCOMPARE(cache()->getRevokeList().size(), 2);
    const ZvUBRevokeItem buy = cache()->getRevokeList().first();
    QCOMPARE(buy.getCollectionID(), 2147483647);
    QCOMPARE(buy.getTypeID(), 1);
    QVERIFY(!buy.getUserChecked());
    QCOMPARE(buy.data().collectionId, QStringLiteral("1001"));
    QCOMPARE(buy.data().price, qint64(1000));
    QCOMPARE(buy.data().quantity, qint64(10));
    QCOMPARE(buy.data().filled, qint64(4));
    // To the fen: no average price of whole fen gives it back.
    QCOMPARE(buy.data().amount, qint64(3981));
    QCOMPARE(buy.displayDataForModelUse(14), QStringLiteral("39.81"));
    QCOMPARE(buy.data().fee, qint64(12));
    QCOMPARE(buy.data().frozen, qint64(6018));
    QCOMPARE(buy.data().time, qint64(1577840400000));
    QCOMPARE(buy.data().key, QStringLiteral("00112233445566778899aabbccddeeff"));
    QCOMPARE(buy.displayDataForModelUse(9), QStringLiteral("6"));
    const ZvUBRevokeItem sell = cache()->getRevokeList().last();
    QCOMPARE(sell.getTypeID(), 2);
    QCOMPARE(sell.data().amount, qint64(0));
    QCOMPARE(sell.displayDataForModelUse(9), QStringLiteral("3"));
}

void RecordsTest::anOrderMayHaveNoKey()
{
    QByteArray orders = openOrders();
    orders.replace("\"00112233445566778899aabbccddeeff\"", "null");
    engine()->sendRequest_RevokeList(1, 12);
    answer(zvPath_revoke, orders);
    QCOMPARE(cache()->getRevokeList().size(), 2);
    QCOMPARE(cache()->getRevokeList().first().data().key, QString());
}

void RecordsTest::ordersAreStored_data()
{
    QTest::addColumn<bool>("isToday");
    QTest::newRow("of today") << true;
    QTest::newRow("of a period") << false;
}

void RecordsTest::ordersAreStored()
{
    QFETCH(bool, isToday);
    const QString path = isToday ? zvPath_myaccount_entrust : zvPath_myaccount_his_entrust;
    if (isToday)
        engine()->sendRequest_Select_DelegateToday(2, 10, 1);
    else
        engine()->sendRequest_Select_DelegateRecord("2019/12/31", "2020/01/01", 2, 1, 10);
    const ZvRequest request = exchange()->lastRequest(path);
    QCOMPARE(request.parameter("page"), QStringLiteral("2"));
    QCOMPARE(request.parameter("size"), QStringLiteral("10"));
    QCOMPARE(request.parameter("type"), QStringLiteral("1"));
    QCOMPARE(request.parameter("start"), isToday ? QString() : QStringLiteral("2019/12/31"));
    QCOMPARE(request.parameter("stop"), isToday ? QString() : QStringLiteral("2020/01/01"));
    answer(path, doneOrders());
    const QList<ZvUBEntrustItem> here
        = isToday ? cache()->getDelegateToday() : cache()->getDelegateRecord();
    const QList<ZvUBEntrustItem> there
        = isToday ? cache()->getDelegateRecord() : cache()->getDelegateToday();
    QVERIFY(there.isEmpty());
    QCOMPARE(here.size(), 2);
    const ZvUBEntrustItem::Data &part = here.first().data();
    QCOMPARE(part.orderNumber, 9);
    QCOMPARE(part.direction, 1);
    QCOMPARE(part.state, int(ZvUBEntrustItem::PartlyWithdrawn));
    QCOMPARE(part.withdrawn, qint64(6));
    QCOMPARE(here.first().displayData(8), QStringLiteral("9.95"));
    QCOMPARE(here.first().displayData(14), QStringLiteral("39.81"));
    const ZvUBEntrustItem::Data &none = here.last().data();
    QCOMPARE(none.state, int(ZvUBEntrustItem::Withdrawn));
    QCOMPARE(none.withdrawn, qint64(3));
    QCOMPARE(here.last().displayData(8), QStringLiteral("--"));
}

void RecordsTest::dealRecordsAreStored()
{
    engine()->sendRequest_Select_DealRecord(QString(), QStringLiteral("2020/01/01"), 4, 0, 10);
    const ZvRequest request = exchange()->lastRequest(zvPath_myaccount_trade);
    QVERIFY(!request.hasParameter("start"));
    QCOMPARE(request.parameter("stop"), QStringLiteral("2020/01/01"));
    QCOMPARE(request.parameter("page"), QStringLiteral("4"));
    QCOMPARE(request.parameter("type"), QStringLiteral("0"));
    QCOMPARE(request.parameter("size"), QStringLiteral("10"));
    answer(zvPath_myaccount_trade, deals());
    QCOMPARE(cache()->getDealRecordList().size(), 1);
    const ZvUBDealRecordItem deal = cache()->getDealRecordList().first();
    QCOMPARE(deal.data().number, qint64(41));
    QCOMPARE(deal.direction(), 2);
    QCOMPARE(deal.data().code, QStringLiteral("101001"));
    QCOMPARE(deal.data().price, qint64(995));
    QCOMPARE(deal.data().quantity, qint64(4));
    QCOMPARE(deal.data().fee, qint64(12));
    QCOMPARE(deal.data().time, qint64(1577840400000));
    QCOMPARE(deal.displayDataForModelUse(5), QStringLiteral("39.80"));
}

void RecordsTest::deliveriesAreStored()
{
    engine()->sendRequest_Select_DeliveryRecord(2, QStringLiteral("2020/01/01"), QString());
    const ZvRequest request = exchange()->lastRequest(zvPath_myaccount_take_list);
    QCOMPARE(request.parameter("page"), QStringLiteral("2"));
    QCOMPARE(request.parameter("start"), QStringLiteral("2020/01/01"));
    QVERIFY(!request.hasParameter("stop"));
    answer(zvPath_myaccount_take_list, takes());
    QCOMPARE(cache()->getDeliveryRecordList().size(), 1);
    const ZvUBDeliveryRecordItem::Data &take = cache()->getDeliveryRecordList().first().data();
    QCOMPARE(take.deliveryId, QStringLiteral("t-31"));
    QCOMPARE(take.orderNumber, QStringLiteral("20200101000031"));
    QCOMPARE(take.collectionId, QStringLiteral("1001"));
    QCOMPARE(take.quantity, qint64(5));
    QCOMPARE(take.state, int(ZvUBDeliveryRecordItem::Reviewing));
    QCOMPARE(take.consignee, QStringLiteral("林晓月"));
    QCOMPARE(take.phone, QStringLiteral("13800000001"));
    QCOMPARE(take.address, QStringLiteral("北京市东城区一号"));
}

void RecordsTest::longestPageIsTaken()
{
    engine()->sendRequest_RevokeList(1, 200);
    answer(zvPath_revoke, manyOrders(200));
    QCOMPARE(cache()->getRevokeList().size(), 200);
    engine()->sendRequest_Select_DealRecord({}, {}, 1, 2, 200);
    answer(zvPath_myaccount_trade, repeated("deals", deals(), 200));
    QCOMPARE(cache()->getDealRecordList().size(), 200);
}

void RecordsTest::pagesOfRecordsAreAskedForInBounds_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("sent");
    QTest::newRow("none") << 0 << "1";
    QTest::newRow("below none") << -3 << "1";
    QTest::newRow("longest") << 200 << "200";
    QTest::newRow("a wall of screens") << 201 << "200";
}

void RecordsTest::pagesOfRecordsAreAskedForInBounds()
{
    QFETCH(int, size);
    QFETCH(QString, sent);
    engine()->sendRequest_RevokeList(1, size);
    engine()->sendRequest_Select_DelegateToday(1, size, 2);
    engine()->sendRequest_Select_DelegateRecord({}, {}, 1, 2, size);
    engine()->sendRequest_Select_DealRecord({}, {}, 1, 2, size);
    for (const QString &path : {zvPath_revoke, zvPath_myaccount_entrust,
                                zvPath_myaccount_his_entrust, zvPath_myaccount_trade})
        QCOMPARE(exchange()->lastRequest(path).parameter("size"), sent);
}

void RecordsTest::equalAnswersAreToldAgain_data()
{
    rows();
}

// The page has asked and waits.
void RecordsTest::equalAnswersAreToldAgain()
{
    QFETCH(int, index);
    const Question &question = questions().at(index);
    if (!question.told)
        return;
    QSignalSpy told(cache(), question.told);
    for (int times = 1; times <= 3; ++times) {
        question.ask();
        answer(question.path, question.good);
        QCOMPARE(told.count(), times);
    }
}

void RecordsTest::emptyAnswersAreToldAsWell_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("empty");
    const QHash<QByteArray, QByteArray> keys{{"open applications", "collections"},
                                             {"applications", "applications"},
                                             {"money flow", "flows"},
                                             {"open orders", "orders"},
                                             {"orders of today", "orders"},
                                             {"orders", "orders"},
                                             {"deals", "deals"},
                                             {"deliveries", "takes"}};
    for (int i = 0; i < questions().size(); ++i) {
        const char *name = questions().at(i).name;
        if (keys.contains(name))
            QTest::newRow(name) << i << "{\"" + keys.value(name) + "\": []}";
    }
}

void RecordsTest::emptyAnswersAreToldAsWell()
{
    QFETCH(int, index);
    QFETCH(QByteArray, empty);
    const Question &question = questions().at(index);
    question.ask();
    answer(question.path, question.good);
    QVERIFY(!isForgotten());
    QSignalSpy told(cache(), question.told);
    for (int times = 1; times <= 2; ++times) {
        question.ask();
        answer(question.path, empty);
        QCOMPARE(told.count(), times);
        QVERIFY(isForgotten());
    }
}

void RecordsTest::hostileAnswersLeaveTheCache_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("data");
    const auto row = [](const char *name, int index, const char *before, const char *after) {
        const QByteArray good = questions().at(index).good;
        const QByteArray data = QByteArray(good).replace(before, after);
        QVERIFY2(data != good, name); // a row that changes nothing would prove nothing
        QTest::newRow(name) << index << data;
    };
    for (int i = 0; i < questions().size(); ++i) {
        for (const char *data : {"null", "[]", "{}", "1"})
            QTest::addRow("%s is %s", questions().at(i).name, data) << i << QByteArray(data);
    }
    row("bound is a word", 0, "true", "\"true\"");
    row("bound without a picture", 0, "\"pictureName\"", "\"other\"");
    row("picture of a file", 0, "http://", "file://");
    row("tail is a number", 0, "\"6688\"", "6688");
    row("unbound without a code", 0, "true", "false");
    QTest::newRow("code with a blank") << 0 << unbound("a b");
    QTest::newRow("code with another address") << 0 << unbound("a&s=b");
    QTest::newRow("code with a line") << 0 << unbound("a\\n");
    QTest::newRow("empty code") << 0 << unbound("");
    QTest::newRow("endless code") << 0 << unbound(QByteArray(300, 'a'));
    row("address of a program", 1, "http://127.0.0.1:1/in/a", "javascript:x");
    row("address of a file", 1, "https://127.0.0.1:1/out/b", "file:///etc/passwd");
    row("no address", 1, "http://127.0.0.1:1/in/a", "");
    row("one address", 1, "\"out\"", "\"other\"");
    row("price below zero", 2, "1250", "-1250");
    row("price with a fraction", 2, "1250", "12.5");
    row("collections are an object", 2, "[", "{}, \"x\": [");
    row("state that is none", 3, "\"state\": 0", "\"state\": 4");
    row("state is null", 3, "\"state\": 0", "\"state\": null");
    row("granted below zero", 3, "\"granted\": 4", "\"granted\": -4");
    row("number is a text", 3, "\"number\": 12", "\"number\": \"12\"");
    row("amount is huge", 4, "29", "9000000000000001");
    row("way is a number", 4, "true", "1");
    row("state of a flow that is none", 4, "\"state\": 1", "\"state\": 3");
    row("time below zero", 4, "1577840400000", "-1");
    row("flow of money that is huge", 4, "1000", "1e400");

    for (const int index : {5, 6, 7}) {
        const auto each = [&](const char *name, const char *before, const char *after) {
            row(qPrintable(QStringLiteral("%1: %2").arg(questions().at(index).name, name)), index,
                before, after);
        };
        each("no orders", "\"orders\"", "\"other\"");
        each("a row is null", "[{", "[null, {");
        each("number is 0", "\"order\": ", "\"order\": 0, \"x\": ");
        each("number of 32 bits", "\"order\": ", "\"order\": 2147483648, \"x\": ");
        each("number is a text", "\"order\": ", "\"order\": \"7\", \"x\": ");
        each("no side", "\"side\"", "\"other\"");
        each("side 3", "\"side\": 2", "\"side\": 3");
        each("collection of all", "\"1001\"", "\"-1\"");
        each("collection is a number", "\"1001\"", "1001");
        each("price is huge", "\"price\": 1000", "\"price\": 9000000000000001");
        each("price with a fraction", "\"price\": 1000", "\"price\": 10.5");
        each("price is null", "\"price\": 1000", "\"price\": null");
        each("more dealt than ordered", "\"filled\": 4", "\"filled\": 11");
        each("dealt for nothing", "\"amount\": 3981", "\"amount\": 0");
        each("paid for nothing", "\"amount\": 0", "\"amount\": 1");
        each("amount is missing", "\"amount\"", "\"other\"");
        each("amount with a fraction", "\"amount\": 3981", "\"amount\": 3981.5");
        each("fee below zero", "\"fee\": 12", "\"fee\": -12");
        each("frozen is missing", "\"frozen\"", "\"other\"");
        each("state 0", "\"state\": ", "\"state\": 0, \"x\": ");
        each("state 7", "\"state\": ", "\"state\": 7, \"x\": ");
        each("key is a number", "\"00112233445566778899aabbccddeeff\"", "7");
    }
    row("an order twice", 5, "\"order\": 7,", "\"order\": 2147483647,");
    QTest::newRow("too many open orders") << 5 << manyOrders(201);
    QTest::newRow("too many orders of today") << 6 << manyOrders(201);
    QTest::newRow("too many orders") << 7 << manyOrders(201);
    row("deal without a number", 8, "\"sequence\"", "\"other\"");
    row("side of a deal", 8, "\"side\": 2", "\"side\": 0");
    row("amount that does not fit", 8, "3980", "3981");
    row("quantity of a deal is a text", 8, "\"quantity\": 4", "\"quantity\": \"4\"");
    row("price of a deal is huge", 8, "995", "99999999999999999999");
    row("name of a deal is null", 8, "\"藏品1001\"", "null");
    QTest::newRow("too many deals") << 8 << repeated("deals", deals(), 201);
    row("id that is no word", 9, "t-31", "t 31");
    row("id is a number", 9, "\"t-31\"", "31");
    row("state of a delivery that is none", 9, "\"state\": 2", "\"state\": 6");
    row("state 0 of a delivery", 9, "\"state\": 2", "\"state\": 0");
    row("nobody takes it", 9, "\"person\"", "\"other\"");
    row("quantity taken is huge", 9, "\"quantity\": 5", "\"quantity\": 9000000000000001");
    QTest::newRow("too many deliveries") << 9 << repeated("takes", takes(), 201);
    QTest::newRow("too many flows") << 4 << repeated("flows", flows(), 101);
    QTest::newRow("too many applications") << 3 << repeated("applications", applications(), 101);
    QTest::newRow("too many open applications")
        << 2 << repeated("collections", openApplications(), 201);
}

void RecordsTest::hostileAnswersLeaveTheCache()
{
    QFETCH(int, index);
    QFETCH(QByteArray, data);
    fillEverything();
    const Question &question = questions().at(index);
    const auto picture = cache()->bankPicturePrefix + cache()->bankCardTail;
    const auto in = cache()->urlInMoney;
    const auto open = cache()->openApplyList;
    const auto made = cache()->getApplyList();
    const auto moved = cache()->getMoneyFlowList();
    const auto revocable = cache()->getRevokeList();
    const auto ofToday = cache()->getDelegateToday();
    const auto ordered = cache()->getDelegateRecord();
    const auto dealt = cache()->getDealRecordList();
    const auto taken = cache()->getDeliveryRecordList();
    zvtest::expectMessage(QStringLiteral("The answer of ") + question.path);
    const Ear ear(cache());
    const LogLines log;
    question.ask();
    answer(question.path, data);
    QCOMPARE(LogLines::lines().size(), 1);
    QCOMPARE(ear.heard(), QStringList());
    QCOMPARE(cache()->bankPicturePrefix + cache()->bankCardTail, picture);
    QCOMPARE(cache()->urlInMoney, in);
    QVERIFY(cache()->openApplyList == open);
    QVERIFY(cache()->getApplyList() == made);
    QVERIFY(cache()->getMoneyFlowList() == moved);
    QVERIFY(cache()->getRevokeList() == revocable);
    QVERIFY(cache()->getDelegateToday() == ofToday);
    QVERIFY(cache()->getDelegateRecord() == ordered);
    QVERIFY(cache()->getDealRecordList() == dealt);
    QVERIFY(cache()->getDeliveryRecordList() == taken);
}

void RecordsTest::newerQuestionCounts_data()
{
    rows();
}

void RecordsTest::newerQuestionCounts()
{
    const Ear ear(cache());
    const Question question = askAndAnswer();
    question.ask(); // and the first answer is being decoded
    m_bench->settle();
    QCOMPARE(ear.count(), 0);
    QVERIFY(isForgotten());
    QCOMPARE(exchange()->openCount(question.path), 1);
    answer(question.path, question.good);
    QCOMPARE(ear.count(), question.told ? 1 : 0);
    QVERIFY(!isForgotten());
}

void RecordsTest::answerOfTheLastServerDies_data()
{
    rows();
}

void RecordsTest::answerOfTheLastServerDies()
{
    const Question question = askAndAnswer();
    access()->setUrlPrefix(there);
    if (question.told) {
        QSignalSpy told(cache(), question.told);
        m_bench->settle();
        QCOMPARE(told.count(), 0);
    }
    m_bench->settle();
    QVERIFY(isForgotten());
}

void RecordsTest::answerOfTheLastSessionDies_data()
{
    rows();
}

void RecordsTest::answerOfTheLastSessionDies()
{
    const Question question = askAndAnswer();
    engine()->startUnloggedEngine();
    if (question.told) {
        QSignalSpy told(cache(), question.told);
        m_bench->settle();
        QCOMPARE(told.count(), 0);
    }
    m_bench->settle();
    QVERIFY(isForgotten());
}

// Both are asked for by the same path.
void RecordsTest::cardAndAddressesDoNotDisturbEachOther()
{
    engine()->sendRequest_Mybankcard();
    engine()->sendRequest_getURL_INOUT();
    QCOMPARE(exchange()->openCount(zvPath_pay_hx), 2);
    exchange()->answer(zvPath_pay_hx, ZvScriptedTransport::ok(bound(), 0));
    answer(zvPath_pay_hx, addresses());
    QCOMPARE(cache()->bankCardTail, QStringLiteral("6688"));
    QVERIFY(!cache()->urlOutMoney.isEmpty());
}

void RecordsTest::otherServerForgetsCardAddressesAndDeals()
{
    fillEverything();
    access()->setUrlPrefix(there);
    QVERIFY(isForgotten());
    QVERIFY(cache()->getMarketDetail().isEmpty());
}

void RecordsTest::otherAccountForgetsCardAndAddresses()
{
    fillEverything();
    engine()->startUnloggedEngine();
    m_bench->signIn("t2", "80002");
    QVERIFY(isForgotten());
}

void RecordsTest::pageOfDealsIsAskedForAndStored()
{
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    QSignalSpy told(cache(), &Cache::signal_cache_Market_Detail_changed);
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 3, 480);
    const ZvRequest request = exchange()->lastRequest(zvPath_market_detail);
    QCOMPARE(request.parameter("collection"), QStringLiteral("1001"));
    QCOMPARE(request.parameter("page"), QStringLiteral("3"));
    QCOMPARE(request.parameter("size"), QStringLiteral("480"));
    answer(zvPath_market_detail,
           "{\"id\": \"1001\", \"page\": 3, \"deals\": [{\"sequence\": 7, \"time\": 1577840400000, "
           "\"price\": 1234, \"quantity\": 5, \"side\": 2}]}");
    QCOMPARE(told.count(), 1);
    QCOMPARE(cache()->getMarketDetail().size(), 1);
    const ZvUBDealItem deal = cache()->getMarketDetail().first();
    QCOMPARE(deal.data().sequence, qint64(7));
    QCOMPARE(deal.data().price, qint64(1234));
    QCOMPARE(deal.data().quantity, qint64(5));
    QCOMPARE(deal.data().direction, 2);
    QCOMPARE(deal.displayDataForModelUse(0), QStringLiteral("09:00:00"));
    // The rows on view say what the collection closed at, and so how the price is coloured.
    QCOMPARE(deal.data().previousClose, qint64(990));
}

void RecordsTest::pageSizesAreHeldInBounds_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("sent");
    QTest::newRow("none") << 0 << "0";
    QTest::newRow("a page that is too low for a row") << -70 << "0";
    QTest::newRow("the largest") << 5000 << "5000";
    QTest::newRow("a wall of screens") << 40000 << "5000";
}

void RecordsTest::pageSizesAreHeldInBounds()
{
    QFETCH(int, size);
    QFETCH(QString, sent);
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, size);
    QCOMPARE(exchange()->lastRequest(zvPath_market_detail).parameter("size"), sent);
}

void RecordsTest::emptyPageIsToldAsWell()
{
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    QSignalSpy told(cache(), &Cache::signal_cache_Market_Detail_changed);
    for (int i = 1; i <= 2; ++i) {
        engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 9, 10);
        answer(zvPath_market_detail, KitBench::detail("1001", 9, 0));
        QCOMPARE(told.count(), i);
        QVERIFY(cache()->getMarketDetail().isEmpty());
    }
}

void RecordsTest::dealsOfAnotherPageAreRefused_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("isShapeless");
    QTest::newRow("another page") << KitBench::detail("1001", 3) << false;
    QTest::newRow("another collection") << KitBench::detail("1002", 2) << false;
    QTest::newRow("no page") << KitBench::latest("1001") << true;
    QTest::newRow("page 0") << KitBench::detail("1001", 0) << true;
    QTest::newRow("side 3") << KitBench::detail("1001", 2).replace("\"side\": 1", "\"side\": 3")
                            << true;
}

void RecordsTest::dealsOfAnotherPageAreRefused()
{
    QFETCH(QByteArray, data);
    QFETCH(bool, isShapeless);
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, 10);
    answer(zvPath_market_detail, KitBench::detail("1001", 1, 4));
    QSignalSpy told(cache(), &Cache::signal_cache_Market_Detail_changed);
    if (isShapeless)
        zvtest::expectMessage(QStringLiteral("The answer of market/detail.html"));
    const LogLines log;
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 2, 10);
    answer(zvPath_market_detail, data);
    QCOMPARE(told.count(), 0);
    QCOMPARE(cache()->getMarketDetail().size(), 4);
    QCOMPARE(LogLines::lines().size(), 1);
}

void RecordsTest::dealsOfTheLastCollectionDie()
{
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    QSignalSpy told(cache(), &Cache::signal_cache_Market_Detail_changed);
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, 10);
    exchange()->answer(zvPath_market_detail, ZvScriptedTransport::ok(KitBench::detail("1001"), 0));
    QCoreApplication::sendPostedEvents();
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    m_bench->settle();
    QCOMPARE(told.count(), 0);
    // A question that waits is called back.
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, 10);
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    QCOMPARE(exchange()->openCount(zvPath_market_detail), 0);
    // One about the collection that becomes current is not.
    engine()->sendRequest_Market_Detail(QStringLiteral("1001"), 1, 10);
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    answer(zvPath_market_detail, KitBench::detail("1001"));
    QCOMPARE(told.count(), 1);
}

void RecordsTest::dealsOfACollectionThatIsNotCurrentAreDropped()
{
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    QSignalSpy told(cache(), &Cache::signal_cache_Market_Detail_changed);
    engine()->sendRequest_Market_Detail(QStringLiteral("1002"), 1, 10);
    answer(zvPath_market_detail, KitBench::detail("1002"));
    QCOMPARE(told.count(), 0);
    QVERIFY(cache()->getMarketDetail().isEmpty());
}

void RecordsTest::otherCollectionForgetsTheDeals()
{
    fillEverything();
    engine()->setGlobalCollectionID(QStringLiteral("1001"));
    QVERIFY(!cache()->getMarketDetail().isEmpty());
    engine()->setGlobalCollectionID(QStringLiteral("1002"));
    QVERIFY(cache()->getMarketDetail().isEmpty());
}

ZV_TEST(RecordsTest)
#include "test_records.moc"
