#include "kitbench.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvretry.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

Q_DECLARE_METATYPE(ZvIntent)
Q_DECLARE_METATYPE(ZvActionChecks::Outcome)

namespace {

using Checks = ZvActionChecks;
using Result = ZvServerActionResult;

Result *actions()
{
    return Result::getZvServerActionResultInstance();
}

Checks *checks()
{
    return actions()->checks();
}

const QString collection = QStringLiteral("1001");
const QString md5 = QStringLiteral("0123456789abcdef0123456789abcdef");

// What has been said in the end of actions that were checked.
struct Word {
    ZvIntent intent;
    Checks::Outcome outcome;
    QString message;
};

} // namespace

// Actions whose answer does not come are shown as being checked until it is known what became of
// them.
class ActionChecksTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        m_bench->startOn(QStringLiteral("/ch/youbika/"));
        m_bench->signIn("t1");
        m_bench->answerAccount(KitBench::cap(1000));
        exchange()->takeRequests();
        m_words.clear();
        m_listener = std::make_unique<QObject>();
        connect(checks(), &Checks::settled, m_listener.get(),
                [this](const ZvIntent &intent, Checks::Outcome outcome, const QString &message) {
                    m_words.append({intent, outcome, message});
                });
    }

    void cleanup()
    {
        m_listener.reset();
        m_bench->endActions();
        m_bench.reset();
        QVERIFY(checks()->open().isEmpty());
        QCOMPARE(checks()->waiting(), 0);
    }

    void anAnswerThatComesIsNotChecked();
    void aMissingAnswerIsCheckedUntilItIsKnown_data();
    void aMissingAnswerIsCheckedUntilItIsKnown();
    void everyMatterIsNamed_data();
    void everyMatterIsNamed();
    void whatIsNotAtStakeIsNotShown();
    void whoWaitsIsCounted();
    void afterTheBoundTheOthersLeaveAndItIsAskedOn();
    void lateEndIsTold_data();
    void lateEndIsTold();
    void lateEndsAreAskedForOneAfterTheOther();
    void lateEndHoldsNoOtherBack();
    void lateEndIsAskedForWhenTheExchangeIsBack();
    void lateEndOfAnotherSessionIsUnknown();
    void answerAfterTheSessionIsNotHeard();
    void theSameAccountIsAskedForAgain_data();
    void theSameAccountIsAskedForAgain();
    void anotherAccountEndsTheAsking();
    void aSessionThatEndsUnderTheQuestionIsTakenUp();
    void aQuestionOfTheOldSessionSaysNothing();
    void preparedOrderThatIsFoundIsTold();
    void preparedOrderThatIsLostKeepsItsKey();
    void aTransferThatIsPendingIsAskedOnFor();
    void answersOfDeliveries();

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    static void buy() { actions()->sendRequest_trade_buy(collection, 1.0F, 1); }

    void lose(const QString &path)
    {
        exchange()->fail(path, ZvAnswer::Failed);
        m_bench->settle();
    }

    // Lets the kit ask once for what became of an action, and says it.
    void tell(const QString &path, const QByteArray &answer)
    {
        m_bench->clock.advance(ZvActionQueue::longestPause);
        QVERIFY(exchange()->lastRequest(path).hasParameter("resolve"));
        exchange()->answer(path, answer);
        m_bench->settle();
    }

    // Stays silent until the page hears that nothing is known.
    void passTheBound(const QString &path)
    {
        const qint64 begin = m_bench->clock.now();
        while (m_bench->clock.now() - begin
               <= ZvActionQueue::resolveBound + ZvActionQueue::longestPause) {
            if (exchange()->openCount(path) > 0)
                lose(path);
            m_bench->clock.advance(ZvActionQueue::longestPause);
            m_bench->settle();
        }
        if (exchange()->openCount(path) > 0)
            lose(path);
    }

    // Lets the unhurried question go out, however long its pause is.
    void askLate(const QString &path)
    {
        for (int i = 0; i < 40 && exchange()->openCount(path) == 0; ++i)
            m_bench->clock.advance(1000);
        QCOMPARE(exchange()->openCount(path), 1);
        QVERIFY(exchange()->lastRequest(path).hasParameter("resolve"));
    }

    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<QObject> m_listener;
    QList<Word> m_words;
};

void ActionChecksTest::anAnswerThatComesIsNotChecked()
{
    QSignalSpy changed(checks(), &Checks::changed);
    buy();
    exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
    m_bench->settle();
    buy();
    exchange()->answer(
        zvPath_trade_buy,
        ZvScriptedTransport::refusal("refused", QStringLiteral("可用资金不足"), "money"));
    m_bench->settle();
    QCOMPARE(changed.count(), 0);
    QVERIFY(m_words.isEmpty());
}

void ActionChecksTest::aMissingAnswerIsCheckedUntilItIsKnown_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<bool>("isDone");
    QTest::newRow("done") << ZvScriptedTransport::ok("{\"order\": 1}") << true;
    QTest::newRow("refused") << ZvScriptedTransport::refusal(
        "refused", QStringLiteral("可用资金不足"), "money")
                             << false;
    QTest::newRow("not arrived") << ZvScriptedTransport::refusal(
        "refused", QStringLiteral("没有这个请求"), "unknown-key")
                                 << false;
}

void ActionChecksTest::aMissingAnswerIsCheckedUntilItIsKnown()
{
    QFETCH(QByteArray, answer);
    QFETCH(bool, isDone);
    QSignalSpy changed(checks(), &Checks::changed);
    QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
    QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
    buy();
    QCOMPARE(checks()->open().size(), 0);
    lose(zvPath_trade_buy);
    QCOMPARE(checks()->open().size(), 1);
    QCOMPARE(int(checks()->open().first().matter), int(ZvIntent::Order));
    QCOMPARE(checks()->open().first().direction, 1);
    QCOMPARE(checks()->open().first().collectionId, collection);
    QCOMPARE(changed.count(), 1);
    // Nobody knows yet.
    m_bench->clock.advance(ZvActionQueue::longestPause);
    lose(zvPath_trade_buy);
    QCOMPARE(checks()->open().size(), 1);
    QCOMPARE(succeeded.count() + failed.count(), 0);

    // The page has not heard of it before it has ended here.
    int openWhenTold = -1;
    const auto hear = [&openWhenTold] { openWhenTold = checks()->open().size(); };
    connect(actions(), &Result::signal_trade_buy_succeed, m_listener.get(), hear);
    connect(actions(), &Result::signal_trade_buy_failed, m_listener.get(), hear);
    tell(zvPath_trade_buy, answer);
    QCOMPARE(openWhenTold, 0);
    QCOMPARE(changed.count(), 2);
    QCOMPARE(succeeded.count(), isDone ? 1 : 0);
    QCOMPARE(failed.count(), isDone ? 0 : 1);
    // The page says it; the window need not.
    QVERIFY(m_words.isEmpty());
}

void ActionChecksTest::everyMatterIsNamed_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("matter");
    QTest::addColumn<int>("direction");
    QTest::newRow("sale") << zvPath_trade_sell << int(ZvIntent::Order) << 2;
    QTest::newRow("withdrawal") << zvPath_trade_revoke << int(ZvIntent::Withdrawal) << 0;
    QTest::newRow("delivery") << zvPath_trade_take << int(ZvIntent::Delivery) << 0;
    QTest::newRow("money in") << zvPath_pay_trade << int(ZvIntent::Transfer) << 0;
    QTest::newRow("money out") << zvPath_pay_cash_deal << int(ZvIntent::Transfer) << 0;
}

void ActionChecksTest::everyMatterIsNamed()
{
    QFETCH(QString, path);
    QFETCH(int, matter);
    QFETCH(int, direction);
    if (path == zvPath_trade_sell)
        actions()->sendRequest_trade_sell(collection, 1.0F, 1);
    else if (path == zvPath_trade_revoke)
        actions()->sendRequest_trade_revoke({7, 8});
    else if (path == zvPath_trade_take)
        actions()->sendRequest_delivery(collection, 1, "a", "13800000000", "b");
    else if (path == zvPath_pay_trade)
        actions()->sendRequest_inMoney("1.00", "123456", "x", "y");
    else
        actions()->sendRequest_outMoney("1.00");
    lose(path);
    QCOMPARE(checks()->open().size(), 1);
    QCOMPARE(int(checks()->open().first().matter), matter);
    QCOMPARE(checks()->open().first().direction, direction);
}

void ActionChecksTest::whatIsNotAtStakeIsNotShown()
{
    actions()->sendRequest_addOption(collection);
    lose(zvPath_myaccount_append);
    actions()->sendRequest_changePasswd_sendCode("13800000000");
    lose(zvPath_forget_send);
    QVERIFY(checks()->open().isEmpty());
}

void ActionChecksTest::whoWaitsIsCounted()
{
    buy();
    buy();
    QCOMPARE(checks()->waiting(), 0);
    lose(zvPath_trade_buy);
    QCOMPARE(checks()->waiting(), 1);
    buy();
    QCOMPARE(checks()->waiting(), 2);
    // Favourites have a row of their own, and nobody waits for them.
    actions()->sendRequest_addOption(collection);
    actions()->sendRequest_addOption(collection);
    lose(zvPath_myaccount_append);
    QCOMPARE(checks()->waiting(), 2);
    tell(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
    QCOMPARE(checks()->waiting(), 0);
    QVERIFY(checks()->open().isEmpty());
}

void ActionChecksTest::afterTheBoundTheOthersLeaveAndItIsAskedOn()
{
    QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
    buy();
    const QString key = exchange()->lastRequest(zvPath_trade_buy).parameter("key");
    actions()->sendRequest_trade_sell(collection, 1.0F, 1);
    lose(zvPath_trade_buy);
    int openWhenTold = -1;
    connect(actions(), &Result::signal_trade_buy_failed, m_listener.get(),
            [&openWhenTold] { openWhenTold = checks()->open().size(); });
    passTheBound(zvPath_trade_buy);
    QCOMPARE(failed.count(), 1);
    QVERIFY(failed.first().first().toString().contains(QStringLiteral("结果未知")));
    QCOMPARE(openWhenTold, 1);
    QCOMPARE(checks()->open().size(), 1);
    QCOMPARE(checks()->waiting(), 0);
    QCOMPARE(exchange()->openCount(zvPath_trade_sell), 1);
    exchange()->answer(zvPath_trade_sell, ZvScriptedTransport::ok("{\"order\": 2}"));
    m_bench->settle();
    QCOMPARE(checks()->open().size(), 1);
    askLate(zvPath_trade_buy);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_buy).parameter("key"), key);
}

void ActionChecksTest::lateEndIsTold_data()
{
    QTest::addColumn<QByteArray>("answer");
    QTest::addColumn<int>("outcome");
    QTest::addColumn<QString>("message");
    QTest::newRow("done") << ZvScriptedTransport::ok("{\"order\": 1}") << int(Checks::Done) << "";
    QTest::newRow("refused") << ZvScriptedTransport::refusal(
        "refused", QStringLiteral("可用资金不足"), "money")
                             << int(Checks::Refused) << QStringLiteral("可用资金不足");
    QTest::newRow("not arrived") << ZvScriptedTransport::refusal(
        "refused", QStringLiteral("没有这个请求"), "unknown-key")
                                 << int(Checks::NotArrived) << "";
}

void ActionChecksTest::lateEndIsTold()
{
    QFETCH(QByteArray, answer);
    QFETCH(int, outcome);
    QFETCH(QString, message);
    QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
    QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    // Silence, and an exchange that is too busy to say, change nothing.
    askLate(zvPath_trade_buy);
    lose(zvPath_trade_buy);
    askLate(zvPath_trade_buy);
    exchange()->answer(zvPath_trade_buy,
                       ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙")), 503);
    m_bench->settle();
    QCOMPARE(checks()->open().size(), 1);
    QVERIFY(m_words.isEmpty());
    askLate(zvPath_trade_buy);
    exchange()->answer(zvPath_trade_buy, answer);
    m_bench->settle();
    QVERIFY(checks()->open().isEmpty());
    QCOMPARE(m_words.size(), 1);
    QCOMPARE(int(m_words.first().outcome), outcome);
    QCOMPARE(m_words.first().message, message);
    QCOMPARE(int(m_words.first().intent.matter), int(ZvIntent::Order));
    QCOMPARE(m_words.first().intent.collectionId, collection);
    // The page has heard its one end before.
    QCOMPARE(succeeded.count(), 0);
    QCOMPARE(failed.count(), 1);
    m_bench->clock.advance(60000);
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_trade_buy), 0);
}

void ActionChecksTest::lateEndsAreAskedForOneAfterTheOther()
{
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    actions()->sendRequest_trade_sell(collection, 1.0F, 1);
    lose(zvPath_trade_sell);
    // Two questions about the buy go out at most before the sale's bound.
    exchange()->always(zvPath_trade_buy, [](const ZvRequest &) {
        return ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙"));
    });
    passTheBound(zvPath_trade_sell);
    QCOMPARE(checks()->open().size(), 2);
    QCOMPARE(checks()->open().first().direction, 1);
    QCOMPARE(checks()->open().last().direction, 2);
    exchange()->always(zvPath_trade_buy,
                       [](const ZvRequest &) { return ZvScriptedTransport::ok("{}"); });
    exchange()->always(zvPath_trade_sell,
                       [](const ZvRequest &) { return ZvScriptedTransport::ok("{}"); });
    for (int i = 0; i < 40 && !checks()->open().isEmpty(); ++i) {
        m_bench->clock.advance(1000);
        m_bench->settle();
    }
    QVERIFY(checks()->open().isEmpty());
    QCOMPARE(m_words.size(), 2);
    QCOMPARE(m_words.first().intent.direction + m_words.last().intent.direction, 1 + 2);
    QVERIFY(m_words.first().intent.direction != m_words.last().intent.direction);
}

// The exchange may have no word on one of them for long.
void ActionChecksTest::lateEndHoldsNoOtherBack()
{
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    actions()->sendRequest_trade_sell(collection, 1.0F, 1);
    lose(zvPath_trade_sell);
    exchange()->always(zvPath_trade_buy, [](const ZvRequest &) {
        return ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙"));
    });
    passTheBound(zvPath_trade_sell);
    exchange()->always(zvPath_trade_sell,
                       [](const ZvRequest &) { return ZvScriptedTransport::ok("{}"); });
    m_words.clear();
    for (int i = 0; i < 400 && m_words.isEmpty(); ++i) {
        m_bench->clock.advance(1000);
        m_bench->settle();
    }
    QCOMPARE(m_words.size(), 1);
    QCOMPARE(m_words.first().intent.direction, 2);
    QCOMPARE(checks()->open().size(), 1);
}

void ActionChecksTest::lateEndIsAskedForWhenTheExchangeIsBack()
{
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    for (int i = 0; i < 6; ++i) {
        askLate(zvPath_trade_buy);
        lose(zvPath_trade_buy);
    }
    // The pause is the longest by now, and the poll says that the exchange is there.
    for (int i = 0; i < 200 && exchange()->openCount(zvPath_sync) == 0; ++i) {
        m_bench->clock.advance(500);
        if (exchange()->openCount(zvPath_trade_buy) > 0)
            lose(zvPath_trade_buy);
    }
    QCOMPARE(exchange()->openCount(zvPath_sync), 1);
    QCOMPARE(exchange()->openCount(zvPath_trade_buy), 0);
    m_bench->answerPoll("");
    QCOMPARE(exchange()->openCount(zvPath_trade_buy), 1);
}

void ActionChecksTest::lateEndOfAnotherSessionIsUnknown()
{
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    QCOMPARE(checks()->open().size(), 1);
    ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
    QVERIFY(checks()->open().isEmpty());
    QCOMPARE(m_words.size(), 1);
    QCOMPARE(int(m_words.first().outcome), int(Checks::Unknown));
    m_bench->clock.advance(60000);
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_trade_buy), 0);
}

void ActionChecksTest::answerAfterTheSessionIsNotHeard()
{
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    askLate(zvPath_trade_buy);
    ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
    QCOMPARE(m_words.size(), 1);
    exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
    m_bench->settle();
    QCOMPARE(m_words.size(), 1);
    // And the next one is not held up by it.
    m_bench->signIn("t2", "80002");
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    askLate(zvPath_trade_buy);
    exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 2}"));
    m_bench->settle();
    QCOMPARE(m_words.size(), 2);
    QCOMPARE(int(m_words.last().outcome), int(Checks::Done));
}

void ActionChecksTest::theSameAccountIsAskedForAgain_data()
{
    QTest::addColumn<bool>("signsOut");
    QTest::newRow("after signing out") << true;
    QTest::newRow("while signed in") << false;
}

void ActionChecksTest::theSameAccountIsAskedForAgain()
{
    QFETCH(bool, signsOut);
    buy();
    const QString key = exchange()->lastRequest(zvPath_trade_buy).parameter("key");
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    if (signsOut) {
        ZvServerEngine::getZvServerEngineInstance()->startUnloggedEngine();
        m_bench->clock.advance(60000);
        m_bench->settle();
        QCOMPARE(exchange()->openCount(zvPath_trade_buy), 0);
        QVERIFY(checks()->open().isEmpty());
    }
    m_bench->signIn("t2");
    QCOMPARE(checks()->open().size(), 1);
    QCOMPARE(checks()->open().first().collectionId, collection);
    askLate(zvPath_trade_buy);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_buy).parameter("key"), key);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_buy).token, QByteArray("t2"));
    exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
    m_bench->settle();
    QVERIFY(checks()->open().isEmpty());
    QCOMPARE(m_words.size(), 2);
    QCOMPARE(int(m_words.first().outcome), int(Checks::Unknown));
    QCOMPARE(int(m_words.last().outcome), int(Checks::Done));
}

// Under its token the exchange would say of any key of the first one that it never came.
void ActionChecksTest::anotherAccountEndsTheAsking()
{
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    for (const char *number : {"80002", "80001"}) {
        m_bench->signIn(QByteArray("of") + number, number);
        QVERIFY(checks()->open().isEmpty());
        m_bench->clock.advance(60000);
        m_bench->settle();
        QCOMPARE(exchange()->openCount(zvPath_trade_buy), 0);
    }
    QCOMPARE(m_words.size(), 1);
    QCOMPARE(int(m_words.first().outcome), int(Checks::Unknown));
}

void ActionChecksTest::aSessionThatEndsUnderTheQuestionIsTakenUp()
{
    QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
    buy();
    const QString key = exchange()->lastRequest(zvPath_trade_buy).parameter("key");
    lose(zvPath_trade_buy);
    m_bench->clock.advance(ZvActionQueue::longestPause);
    exchange()->answer(zvPath_trade_buy,
                       ZvScriptedTransport::refusal("session", QStringLiteral("请登录")), 401);
    m_bench->settle();
    QCOMPARE(failed.count(), 1);
    QVERIFY(checks()->open().isEmpty());
    m_bench->signIn("t2");
    QCOMPARE(checks()->open().size(), 1);
    askLate(zvPath_trade_buy);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_buy).parameter("key"), key);
    exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
    m_bench->settle();
    QCOMPARE(m_words.size(), 1);
    QCOMPARE(int(m_words.first().outcome), int(Checks::Done));
    QCOMPARE(failed.count(), 1);
}

void ActionChecksTest::aQuestionOfTheOldSessionSaysNothing()
{
    buy();
    lose(zvPath_trade_buy);
    passTheBound(zvPath_trade_buy);
    askLate(zvPath_trade_buy);
    m_bench->signIn("t2");
    QCOMPARE(checks()->open().size(), 1);
    exchange()->answer(zvPath_trade_buy,
                       ZvScriptedTransport::refusal("session", QStringLiteral("请登录")), 401);
    m_bench->settle();
    QCOMPARE(checks()->open().size(), 1);
    askLate(zvPath_trade_buy);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_buy).token, QByteArray("t2"));
    exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
    m_bench->settle();
    QVERIFY(checks()->open().isEmpty());
    QCOMPARE(int(m_words.last().outcome), int(Checks::Done));
}

// Its row vanishes without a word.
void ActionChecksTest::preparedOrderThatIsFoundIsTold()
{
    QSignalSpy succeeded(actions(), &Result::signal_prepay_send_succeed);
    actions()->sendRequest_prepay_send(md5, 2, collection, 1.0F, 1);
    lose(zvPath_trade_sell);
    QCOMPARE(int(checks()->open().first().matter), int(ZvIntent::PreparedOrder));
    tell(zvPath_trade_sell, ZvScriptedTransport::ok("{\"order\": 1}"));
    QCOMPARE(succeeded.count(), 1);
    QCOMPARE(m_words.size(), 1);
    QCOMPARE(int(m_words.first().outcome), int(Checks::Done));
    QCOMPARE(m_words.first().intent.direction, 2);
    // One whose answer comes says nothing.
    actions()->sendRequest_prepay_send(QStringLiteral("another"), 2, collection, 1.0F, 1);
    exchange()->answer(zvPath_trade_sell, ZvScriptedTransport::ok("{\"order\": 2}"));
    m_bench->settle();
    QCOMPARE(succeeded.count(), 2);
    QCOMPARE(m_words.size(), 1);
}

// A question would use the key up under which the order is sent again.
void ActionChecksTest::preparedOrderThatIsLostKeepsItsKey()
{
    const QString lostMd5 = QStringLiteral("fedcba9876543210fedcba9876543210");
    QSignalSpy failed(actions(), &Result::signal_prepay_send_failed);
    actions()->sendRequest_prepay_send(lostMd5, 2, collection, 1.0F, 1);
    const QString key = exchange()->lastRequest(zvPath_trade_sell).parameter("key");
    lose(zvPath_trade_sell);
    passTheBound(zvPath_trade_sell);
    QCOMPARE(failed.count(), 1);
    QVERIFY(checks()->open().isEmpty());
    m_bench->clock.advance(120000);
    m_bench->settle();
    QCOMPARE(exchange()->openCount(zvPath_trade_sell), 0);
    actions()->sendRequest_prepay_send(lostMd5, 2, collection, 1.0F, 1);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_sell).parameter("key"), key);
    QVERIFY(!exchange()->lastRequest(zvPath_trade_sell).hasParameter("resolve"));

    // An attempt that does not even leave says nothing of the first one.
    exchange()->fail(zvPath_trade_sell, ZvAnswer::NotSent);
    m_bench->settle();
    QCOMPARE(failed.count(), 2);
    actions()->sendRequest_prepay_send(lostMd5, 2, collection, 1.0F, 1);
    QCOMPARE(exchange()->lastRequest(zvPath_trade_sell).parameter("key"), key);

    // A key that has no effect any more is not used again.
    exchange()->answer(
        zvPath_trade_sell,
        ZvScriptedTransport::refusal("refused", QStringLiteral("没有执行"), "unknown-key"));
    m_bench->settle();
    QCOMPARE(failed.count(), 3);
    actions()->sendRequest_prepay_send(lostMd5, 2, collection, 1.0F, 1);
    QVERIFY(exchange()->lastRequest(zvPath_trade_sell).parameter("key") != key);
}

// The bank has not spoken when the exchange is back: that is no end, and money is not sent twice.
void ActionChecksTest::aTransferThatIsPendingIsAskedOnFor()
{
    actions()->sendRequest_outMoney(QStringLiteral("5.00"));
    lose(zvPath_pay_cash_deal);
    passTheBound(zvPath_pay_cash_deal);
    QCOMPARE(checks()->open().size(), 1);
    m_words.clear();
    askLate(zvPath_pay_cash_deal);
    exchange()->answer(
        zvPath_pay_cash_deal,
        ZvScriptedTransport::refusal("refused", QStringLiteral("银行尚未答复"), "pending"));
    m_bench->settle();
    QCOMPARE(checks()->open().size(), 1);
    QVERIFY(m_words.isEmpty());
    askLate(zvPath_pay_cash_deal);
    exchange()->answer(zvPath_pay_cash_deal, ZvScriptedTransport::ok("{}"));
    m_bench->settle();
    QVERIFY(checks()->open().isEmpty());
}

void ActionChecksTest::answersOfDeliveries()
{
    QSignalSpy asked(actions(), &Result::signal_delivery_succeed);
    QSignalSpy refused(actions(), &Result::signal_delivery_falied);
    QSignalSpy cancelled(actions(), &Result::signal_cancelDelivery_succeed);
    QSignalSpy kept(actions(), &Result::signal_cancelDelivery_failed);
    actions()->sendRequest_delivery(collection, 3, QStringLiteral("林晓月"), "13800000001",
                                    QStringLiteral("北京市东城区一号"));
    const ZvRequest request = exchange()->lastRequest(zvPath_trade_take);
    QCOMPARE(request.parameter("collection"), collection);
    QCOMPARE(request.parameter("quantity"), QStringLiteral("3"));
    QCOMPARE(request.parameter("person"), QStringLiteral("林晓月"));
    QCOMPARE(request.parameter("phone"), QStringLiteral("13800000001"));
    QCOMPARE(request.parameter("address"), QStringLiteral("北京市东城区一号"));
    exchange()->answer(zvPath_trade_take, ZvScriptedTransport::ok("{\"id\": \"t-31\"}"));
    m_bench->settle();
    QCOMPARE(asked.count(), 1);
    actions()->sendRequest_delivery(collection, 3, "a", "13800000001", "b");
    exchange()->answer(
        zvPath_trade_take,
        ZvScriptedTransport::refusal("refused", QStringLiteral("可提数量不足"), "holdings"));
    m_bench->settle();
    QCOMPARE(refused.count(), 1);
    QCOMPARE(refused.first().first().toString(), QStringLiteral("可提数量不足"));
    actions()->sendRequest_deliveryCancel(QStringLiteral("t-31"));
    QCOMPARE(exchange()->lastRequest(zvPath_trade_take).parameter("cancel"),
             QStringLiteral("t-31"));
    QVERIFY(!exchange()->lastRequest(zvPath_trade_take).hasParameter("collection"));
    exchange()->answer(zvPath_trade_take, ZvScriptedTransport::ok("{}"));
    m_bench->settle();
    QCOMPARE(cancelled.count(), 1);
    // What cannot be read is asked for by its key, and never taken for a success.
    zvtest::expectMessage(QStringLiteral("The answer of trade/take.html"));
    actions()->sendRequest_deliveryCancel(QStringLiteral("t-32"));
    exchange()->answer(zvPath_trade_take, ZvScriptedTransport::ok("[]"));
    m_bench->settle();
    QCOMPARE(cancelled.count() + kept.count(), 1);
    QCOMPARE(checks()->open().size(), 1);
    tell(zvPath_trade_take,
         ZvScriptedTransport::refusal("refused", QStringLiteral("已不能取消"), "take-done"));
    QCOMPARE(kept.count(), 1);
    QCOMPARE(kept.first().first().toString(), QStringLiteral("已不能取消"));
}

ZV_TEST(ActionChecksTest)
#include "test_actionchecks.moc"
