#include "kitbench.h"
#include "listeners.h"

#include "ZvModelKit/zvubdealitem.h"
#include "ZvModelKit/zvubmoneyflowitem.h"
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
            && cache()->getMoneyFlowList().isEmpty();
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
