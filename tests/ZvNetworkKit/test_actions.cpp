#include "kitbench.h"

#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvexchangelink.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <QSignalSpy>
#include <QtTest/QtTest>

namespace {

using Result = ZvServerActionResult;

Result *actions()
{
    return Result::getZvServerActionResultInstance();
}

ZvServerAccessManager *access()
{
    return ZvServerAccessManager::getZvServerAccessManagerInstance();
}

const QString collection = QStringLiteral("1001");

} // namespace

class ActionsTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        access()->setUrlPrefix(QStringLiteral("/ch/youbika/"));
    }

    void cleanup()
    {
        m_bench->endActions();
        m_bench.reset();
    }

    void orderIsSentInFen()
    {
        QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
        actions()->sendRequest_trade_buy(collection, 131071.99F, 3);
        actions()->sendRequest_trade_buy(collection, 0.29F, 1);
        const ZvRequest request = exchange()->lastRequest(zvPath_trade_buy);
        QVERIFY(request.isAction);
        QCOMPARE(request.prefix, QStringLiteral("/ch/youbika/"));
        QCOMPARE(request.parameter("collection"), collection);
        QCOMPARE(request.parameter("price"), QStringLiteral("13107199"));
        QCOMPARE(request.parameter("quantity"), QStringLiteral("3"));
        QVERIFY(QRegularExpression(QStringLiteral("\\A[0-9a-f]{32}\\z"))
                    .match(request.parameter("key"))
                    .hasMatch());
        QVERIFY(!request.hasParameter("resolve"));
        exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
        QCOMPARE(succeeded.count(), 0);
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);
        QCOMPARE(exchange()->lastRequest(zvPath_trade_buy).parameter("price"),
                 QStringLiteral("29"));
    }

    void whatIsNoPriceIsRefusedHere_data()
    {
        QTest::addColumn<float>("price");
        QTest::addColumn<int>("count");
        QTest::newRow("three decimals") << 1.234F << 1;
        QTest::newRow("zero") << 0.0F << 1;
        QTest::newRow("negative") << -1.0F << 1;
        QTest::newRow("too large for cents") << 131072.0F << 1;
        QTest::newRow("not a number") << std::numeric_limits<float>::quiet_NaN() << 1;
        QTest::newRow("infinite") << std::numeric_limits<float>::infinity() << 1;
        QTest::newRow("no pieces") << 1.0F << 0;
        QTest::newRow("negative pieces") << 1.0F << -5;
    }

    void whatIsNoPriceIsRefusedHere()
    {
        QFETCH(float, price);
        QFETCH(int, count);
        QSignalSpy failed(actions(), &Result::signal_trade_sell_failed);
        actions()->sendRequest_trade_sell(collection, price, count);
        QCOMPARE(failed.count(), 0);
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QVERIFY(!failed.first().first().toString().isEmpty());
        QVERIFY(exchange()->requests().isEmpty());
    }

    void tooHighPricesAreCalledSo_data()
    {
        QTest::addColumn<float>("price");
        QTest::addColumn<bool>("isTooHigh");
        QTest::newRow("the bound") << 131072.0F << true;
        QTest::newRow("above it") << 200000.5F << true;
        QTest::newRow("endless") << std::numeric_limits<float>::infinity() << true;
        QTest::newRow("three decimals") << 1.005F << false;
        QTest::newRow("no number") << std::numeric_limits<float>::quiet_NaN() << false;
    }

    void tooHighPricesAreCalledSo()
    {
        QFETCH(float, price);
        QFETCH(bool, isTooHigh);
        QSignalSpy failed(actions(), &Result::signal_trade_sell_failed);
        actions()->sendRequest_trade_sell(collection, price, 1);
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        const QString told = failed.first().first().toString();
        QCOMPARE(told.contains(QStringLiteral("131071.99")), isTooHigh);
        QCOMPARE(told.contains(QStringLiteral("两位小数")), !isTooHigh);
        QVERIFY(exchange()->requests().isEmpty());
    }

    void theHighestPriceIsSent()
    {
        actions()->sendRequest_trade_sell(collection, 131071.99F, 1);
        QCOMPARE(exchange()->lastRequest(zvPath_trade_sell).parameter("price"),
                 QStringLiteral("13107199"));
    }

    void asManyOrdersAreWithdrawnAsTheExchangeTakes()
    {
        QList<int> ids;
        for (int id = 1; id <= 200; ++id)
            ids << id;
        actions()->sendRequest_trade_revoke(ids);
        QCOMPARE(exchange()->lastRequest(zvPath_trade_revoke).parameter("orders").split(',').size(),
                 200);
        exchange()->answer(zvPath_trade_revoke, ZvScriptedTransport::ok("{\"revoked\": 200}"));
        m_bench->settle();
        exchange()->takeRequests();
        QSignalSpy failed(actions(), &Result::signal_trade_revoke_failed);
        actions()->sendRequest_trade_revoke(ids << 201);
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QVERIFY(failed.first().first().toString().contains(QStringLiteral("200")));
        QVERIFY(exchange()->requests().isEmpty());
    }

    void everyCentComesThrough()
    {
        // Sent one after the other: each answer lets the next one out.
        exchange()->always(zvPath_trade_buy,
                           [](const ZvRequest &) { return ZvScriptedTransport::ok("{}"); });
        for (int fen = 1; fen <= 2000; fen += 7) {
            actions()->sendRequest_trade_buy(collection, static_cast<float>(fen / 100.0), 1);
        }
        QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
        QTRY_COMPARE(succeeded.count(), 286);
        const QList<ZvRequest> requests = exchange()->requests();
        for (int i = 0; i < requests.size(); ++i)
            QCOMPARE(requests.at(i).parameter("price").toInt(), 1 + 7 * i);
    }

    void oneIsUnderWayAndTheRestWaitInOrder()
    {
        actions()->sendRequest_addOption(QStringLiteral("1"));
        actions()->sendRequest_removeOption(QStringLiteral("2"));
        actions()->sendRequest_getOptions(1, 100);
        QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_myaccount_append));
        exchange()->answer(zvPath_myaccount_append, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        exchange()->answer(zvPath_myaccount_remove, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        const QStringList order{zvPath_myaccount_append, zvPath_myaccount_remove,
                                zvPath_myaccount_optional};
        QCOMPARE(exchange()->requestedPaths(), order);
        const ZvRequest question = exchange()->lastRequest(zvPath_myaccount_optional);
        QVERIFY(!question.isAction);
        QVERIFY(!question.hasParameter("key"));
        QSignalSpy succeeded(actions(), &Result::signal_getOption_succeed);
        exchange()->answer(zvPath_myaccount_optional,
                           ZvScriptedTransport::ok("{\"collections\": [\"1001\", \"1003\"]}"));
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);
        QCOMPARE(succeeded.first().first().toStringList(), QStringList({"1001", "1003"}));
        QVERIFY(exchange()->requests().at(0).parameter("key")
                != exchange()->requests().at(1).parameter("key"));
    }

    void nextLeavesBeforeTheLastIsTold()
    {
        int sentWhenTold = 0;
        QObject guard;
        connect(actions(), &Result::signal_addOption_succeed, &guard,
                [&] { sentWhenTold = exchange()->requests().size(); });
        actions()->sendRequest_addOption(QStringLiteral("1"));
        actions()->sendRequest_removeOption(QStringLiteral("2"));
        exchange()->answer(zvPath_myaccount_append, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        QCOMPARE(sentWhenTold, 2);
    }

    void refusalIsShownAsItCame()
    {
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        exchange()->answer(
            zvPath_trade_buy,
            ZvScriptedTransport::refusal("refused", QStringLiteral("可用资金不足"), "money"));
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed.first().first().toString(), QStringLiteral("可用资金不足"));
        QCOMPARE(exchange()->requests().size(), 1);
    }

    void unservedHasAClearSentence()
    {
        QSignalSpy failed(actions(), &Result::signal_register_failed);
        actions()->sendRequest_register({}, "13800000000", "secret1", "1234");
        exchange()->answer(zvPath_reg, ZvScriptedTransport::refusal("unserved", QString()), 501);
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed.first().first().toString(), QStringLiteral("该功能尚未开放"));
    }

    void exchangeThatIsNotReachedIsADefiniteFailure()
    {
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        exchange()->fail(zvPath_trade_buy, ZvAnswer::NotSent);
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(exchange()->requests().size(), 1);
    }

    void unknownEndIsAskedForByItsKey_data()
    {
        QTest::addColumn<int>("ending");
        QTest::newRow("broken off") << int(ZvAnswer::Failed);
        QTest::newRow("deadline") << int(ZvAnswer::TimedOut);
    }

    void unknownEndIsAskedForByItsKey()
    {
        QFETCH(int, ending);
        QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        actions()->sendRequest_trade_sell(collection, 1.0F, 1);
        const ZvRequest first = exchange()->lastRequest(zvPath_trade_buy);
        exchange()->fail(zvPath_trade_buy, ZvAnswer::Ending(ending));
        m_bench->settle();
        QCOMPARE(exchange()->requests().size(), 1);
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        QCOMPARE(exchange()->requests().size(), 2);
        ZvRequest question = exchange()->lastRequest(zvPath_trade_buy);
        QCOMPARE(question.parameter("key"), first.parameter("key"));
        QCOMPARE(question.parameter("resolve"), QStringLiteral("1"));
        QCOMPARE(question.parameter("price"), first.parameter("price"));

        // The exchange is still away, and then it says what became of the order.
        exchange()->fail(zvPath_trade_buy, ZvAnswer::NotSent);
        m_bench->settle();
        m_bench->clock.advance(2 * ZvActionQueue::shortestPause);
        exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 5}"));
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);
        QCOMPARE(failed.count(), 0);
        for (const ZvRequest &request : exchange()->requests()) {
            if (request.path == zvPath_trade_buy
                && request.parameter("key") != first.parameter("key"))
                QFAIL("the order was sent under another key");
        }
        int sent = 0;
        for (const ZvRequest &request : exchange()->requests())
            sent += request.path == zvPath_trade_buy && !request.hasParameter("resolve") ? 1 : 0;
        QCOMPARE(sent, 1);
        // And only now the next action leaves.
        QCOMPARE(exchange()->requestedPaths().last(), zvPath_trade_sell);
    }

    void unknownKeyMeansNothingHappened()
    {
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        exchange()->fail(zvPath_trade_buy, ZvAnswer::Failed);
        m_bench->settle();
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        exchange()->answer(
            zvPath_trade_buy,
            ZvScriptedTransport::refusal("refused", QStringLiteral("没有这个请求"), "unknown-key"));
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed.first().first().toString(), QStringLiteral("请求未送达交易所，请重试"));
    }

    void busyAndStoppingAreNoEnds()
    {
        QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        exchange()->answer(zvPath_trade_buy,
                           ZvScriptedTransport::refusal("busy", QStringLiteral("繁忙")), 503);
        m_bench->settle();
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        exchange()->answer(zvPath_trade_buy,
                           ZvScriptedTransport::refusal("failed", QStringLiteral("停止中")), 500);
        m_bench->settle();
        QCOMPARE(failed.count(), 0);
        m_bench->clock.advance(2 * ZvActionQueue::shortestPause);
        exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);
        QCOMPARE(failed.count(), 0);
    }

    // Answers that speak of the question say nothing of the order.
    void refusedQuestionsAreNoEnds_data()
    {
        QTest::addColumn<QByteArray>("status");
        QTest::addColumn<int>("httpStatus");
        QTest::newRow("another release") << QByteArray("protocol") << 400;
        QTest::newRow("not understood") << QByteArray("bad-request") << 400;
        QTest::newRow("no such server") << QByteArray("not-found") << 404;
        QTest::newRow("unserved") << QByteArray("unserved") << 501;
    }

    void refusedQuestionsAreNoEnds()
    {
        QFETCH(QByteArray, status);
        QFETCH(int, httpStatus);
        QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        exchange()->fail(zvPath_trade_buy, ZvAnswer::Failed);
        m_bench->settle();
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        QVERIFY(exchange()->lastRequest(zvPath_trade_buy).hasParameter("resolve"));
        exchange()->answer(zvPath_trade_buy,
                           ZvScriptedTransport::refusal(status, QStringLiteral("问题无效")),
                           httpStatus);
        m_bench->settle();
        QCOMPARE(failed.count(), 0);
        m_bench->clock.advance(2 * ZvActionQueue::shortestPause);
        exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);
        QCOMPARE(failed.count(), 0);
    }

    void unreadableAnswerIsUnknownToo()
    {
        zvtest::expectMessage(QStringLiteral("The answer of trade/buy.html"));
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        exchange()->answer(zvPath_trade_buy, "<html>502</html>", 502);
        m_bench->settle();
        QCOMPARE(failed.count(), 0);
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        QVERIFY(exchange()->lastRequest(zvPath_trade_buy).hasParameter("resolve"));
    }

    void askingForAKeyEndsAtItsBound()
    {
        QSignalSpy failed(actions(), &Result::signal_trade_buy_failed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        exchange()->fail(zvPath_trade_buy, ZvAnswer::Failed);
        m_bench->settle();
        for (int i = 0; i < 100 && failed.isEmpty(); ++i) {
            m_bench->clock.advance(ZvActionQueue::longestPause);
            if (exchange()->openCount(zvPath_trade_buy) > 0)
                exchange()->fail(zvPath_trade_buy, ZvAnswer::Failed);
            m_bench->settle();
        }
        QCOMPARE(failed.count(), 1);
        QVERIFY(failed.first().first().toString().contains(QStringLiteral("结果未知")));
    }

    void preparedOrderIsKeyedOnlyWhileItMatters()
    {
        const QString md5 = QStringLiteral("0123456789abcdef0123456789abcdef");
        QSignalSpy succeeded(actions(), &Result::signal_prepay_send_succeed);
        QSignalSpy failed(actions(), &Result::signal_prepay_send_failed);
        actions()->sendRequest_prepay_send(md5, 2, collection, 1.0F, 1);
        actions()->sendRequest_prepay_send(md5, 2, collection, 1.0F, 1);
        QCOMPARE(exchange()->requestedPaths(), QStringList(zvPath_trade_sell));
        QCOMPARE(exchange()->requests().first().parameter("prepared"), QStringLiteral("1"));
        const QString firstKey = exchange()->requests().first().parameter("key");
        exchange()->answer(
            zvPath_trade_sell,
            ZvScriptedTransport::refusal("refused", QStringLiteral("休市"), "closed"));
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(failed.first().at(0).toString(), md5);
        QCOMPARE(failed.first().at(1).toString(), QStringLiteral("休市"));

        // Refused, it may be sent again, as another intent.
        actions()->sendRequest_prepay_send(md5, 2, collection, 1.0F, 1);
        QCOMPARE(exchange()->requests().size(), 2);
        QVERIFY(exchange()->requests().last().parameter("key") != firstKey);
        exchange()->answer(zvPath_trade_sell, ZvScriptedTransport::ok("{\"order\": 1}"));
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);

        // Done, it is never sent again.
        actions()->sendRequest_prepay_send(md5, 2, collection, 1.0F, 1);
        QCOMPARE(succeeded.count(), 1);
        m_bench->settle();
        QCOMPARE(succeeded.count(), 2);
        QCOMPARE(exchange()->requests().size(), 2);
    }

    // A prepared order that may have arrived is sent again under the key that it had.
    void lostPreparedOrderKeepsItsKey()
    {
        const QString md5 = QStringLiteral("00112233445566778899aabbccddeeff");
        QSignalSpy failed(actions(), &Result::signal_prepay_send_failed);
        actions()->sendRequest_prepay_send(md5, 1, QStringLiteral("1001"), 1.0F, 1);
        const QString key = exchange()->lastRequest(zvPath_trade_buy).parameter("key");
        exchange()->fail(zvPath_trade_buy, ZvAnswer::Failed);
        m_bench->settle();
        for (int i = 0; i < 100 && failed.isEmpty(); ++i) {
            m_bench->clock.advance(ZvActionQueue::longestPause);
            if (exchange()->openCount(zvPath_trade_buy) > 0)
                exchange()->fail(zvPath_trade_buy, ZvAnswer::NotSent);
            m_bench->settle();
        }
        QCOMPARE(failed.count(), 1);
        exchange()->takeRequests();
        actions()->sendRequest_prepay_send(md5, 1, QStringLiteral("1001"), 1.0F, 1);
        QCOMPARE(exchange()->requests().size(), 1);
        QVERIFY(!exchange()->requests().first().hasParameter("resolve"));
        QCOMPARE(exchange()->requests().first().parameter("key"), key);
        exchange()->answer(
            zvPath_trade_buy,
            ZvScriptedTransport::refusal("refused", QStringLiteral("资金不足"), "money"));
        m_bench->settle();
        QCOMPARE(failed.count(), 2);
        // Refused for good, the next attempt is another one.
        actions()->sendRequest_prepay_send(md5, 1, QStringLiteral("1001"), 1.0F, 1);
        QVERIFY(exchange()->lastRequest(zvPath_trade_buy).parameter("key") != key);
        exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
        m_bench->settle();
    }

    void actionBeforeTheFirstServerFails()
    {
        access()->setUrlPrefix(QString());
        QSignalSpy failed(actions(), &Result::signal_login_failed);
        actions()->sendRequest_login(QStringLiteral("13800000000"), QStringLiteral("secret1"));
        QCOMPARE(failed.count(), 0);
        m_bench->settle();
        QCOMPARE(failed.count(), 1);
        QVERIFY(exchange()->requests().isEmpty());
    }

    void moneyIsSentInFen()
    {
        QSignalSpy failed(actions(), &Result::signal_outMoney_failed);
        actions()->sendRequest_inMoney(QStringLiteral("12.5"), QStringLiteral("123456"),
                                       QStringLiteral("a"), QStringLiteral("b"));
        const ZvRequest request = exchange()->lastRequest(zvPath_pay_trade);
        QCOMPARE(request.parameter("amount"), QStringLiteral("1250"));
        QCOMPARE(request.parameter("first"), QStringLiteral("a"));
        QCOMPARE(request.parameter("second"), QStringLiteral("b"));
        for (const char *amount : {"", "0", "0.00", "-1", "1.234", "1e3", "12,5", "abc"})
            actions()->sendRequest_outMoney(QString::fromLatin1(amount));
        m_bench->settle();
        QCOMPARE(failed.count(), 8);
        QCOMPARE(exchange()->openCount(zvPath_pay_cash_deal), 0);
    }

    void answerOfACodeRequestIsHandedOn()
    {
        QSignalSpy succeeded(actions(), &Result::signal_inMoney_sendCode_succeed);
        actions()->sendRequest_inMoney_sendCode(QStringLiteral("13800000000"));
        exchange()->answer(zvPath_pay_send,
                           ZvScriptedTransport::ok("{\"first\": \"f\", \"second\": \"s\"}"));
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);
        QCOMPARE(succeeded.first().at(0).toString(), QStringLiteral("f"));
        QCOMPARE(succeeded.first().at(1).toString(), QStringLiteral("s"));
    }

    // Without them no money could be moved in, and the code that was sent would be for nothing.
    void codeRequestWithoutItsTextsIsAFailure()
    {
        QSignalSpy succeeded(actions(), &Result::signal_inMoney_sendCode_succeed);
        QSignalSpy failed(actions(), &Result::signal_inMoney_sendCode_failed);
        for (const char *data :
             {"{}", "{\"first\": \"f\"}", "{\"first\": \"f\", \"second\": []}"}) {
            failed.clear();
            actions()->sendRequest_inMoney_sendCode(QStringLiteral("13800000000"));
            exchange()->answer(zvPath_pay_send, ZvScriptedTransport::ok(data));
            m_bench->settle();
            QCOMPARE(failed.count(), 1);
            QVERIFY(!failed.first().first().toString().isEmpty());
        }
        QCOMPARE(succeeded.count(), 0);
    }

    void amountsOfMoney_data()
    {
        QTest::addColumn<QString>("amount");
        QTest::addColumn<QString>("fen"); // empty: it is refused
        QTest::newRow("a fen") << "0.01"
                               << "1";
        QTest::newRow("29 fen") << "0.29"
                                << "29";
        QTest::newRow("57 fen") << "0.57"
                                << "57";
        QTest::newRow("a yuan") << "1"
                                << "100";
        QTest::newRow("a tenth") << "1.1"
                                 << "110";
        QTest::newRow("more than a float holds") << "16777217.01"
                                                 << "1677721701";
        QTest::newRow("more than a double holds") << "9007199254740.99"
                                                  << "900719925474099";
        QTest::newRow("blanks around it") << " 5.00 "
                                          << "500";
        QTest::newRow("half a fen") << "0.005"
                                    << "";
        QTest::newRow("a fen and a half") << "0.015"
                                          << "";
        QTest::newRow("nothing") << "0.00"
                                 << "";
        QTest::newRow("less than nothing") << "-0.01"
                                           << "";
        QTest::newRow("a plus") << "+1"
                                << "";
        QTest::newRow("no yuan") << ".5"
                                 << "";
        QTest::newRow("no fen") << "5."
                                << "";
        QTest::newRow("two points") << "1.2.3"
                                    << "";
        QTest::newRow("thousands apart") << "1,000.00"
                                         << "";
        QTest::newRow("a float's own text") << "1e+06"
                                            << "";
        QTest::newRow("no number") << "nan"
                                   << "";
        QTest::newRow("other digits") << QString::fromUtf8("１２") << "";
        QTest::newRow("too long") << "10000000000000"
                                  << "";
    }

    void amountsOfMoney()
    {
        QFETCH(QString, amount);
        QFETCH(QString, fen);
        QSignalSpy inFailed(actions(), &Result::signal_inMoney_failed);
        QSignalSpy outFailed(actions(), &Result::signal_outMoney_failed);
        QSignalSpy outDone(actions(), &Result::signal_outMoney_succeed);
        actions()->sendRequest_outMoney(amount);
        actions()->sendRequest_inMoney(amount, "123456", "f", "s");
        exchange()->answer(zvPath_pay_cash_deal, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        if (fen.isEmpty()) {
            QVERIFY(exchange()->requests().isEmpty());
            QCOMPARE(inFailed.count() + outFailed.count(), 2);
            QVERIFY(!outFailed.first().first().toString().isEmpty());
            return;
        }
        QCOMPARE(outDone.count(), 1);
        for (const QString &path : {zvPath_pay_cash_deal, zvPath_pay_trade}) {
            const ZvRequest request = exchange()->lastRequest(path);
            QVERIFY(request.isAction);
            QCOMPARE(request.parameter("amount"), fen);
            QCOMPARE(request.parameter("key").size(), 32);
        }
    }

    void endIsToldAfterAChangeOfServer()
    {
        QSignalSpy succeeded(actions(), &Result::signal_trade_buy_succeed);
        actions()->sendRequest_trade_buy(collection, 1.0F, 1);
        actions()->sendRequest_trade_sell(collection, 1.0F, 1);
        access()->setUrlPrefix(QStringLiteral("/ch/baoyushi/"));
        exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{}"));
        m_bench->settle();
        QCOMPARE(succeeded.count(), 1);
        // What waited belongs to the server on which the user acted.
        QCOMPARE(exchange()->lastRequest(zvPath_trade_sell).prefix, QStringLiteral("/ch/youbika/"));
    }

    void withoutATransportEveryActionFailsWithAText()
    {
        access()->setTransport(nullptr);
        m_bench->exchange = nullptr;
        QSignalSpy failed(actions(), &Result::signal_delivery_falied);
        QSignalSpy cancelled(actions(), &Result::signal_cancelDelivery_failed);
        actions()->sendRequest_delivery(collection, 1, "a", "13800000000", "b");
        actions()->sendRequest_deliveryCancel(QStringLiteral("5"));
        QCOMPARE(failed.count(), 0);
        QCoreApplication::processEvents();
        QCOMPARE(failed.count(), 1);
        QCOMPARE(cancelled.count(), 1);
        QCOMPARE(failed.first().first().toString(), QStringLiteral("尚未连接交易所，请稍后再试"));
    }

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    std::unique_ptr<KitBench> m_bench;
};

ZV_TEST(ActionsTest)
#include "test_actions.moc"
