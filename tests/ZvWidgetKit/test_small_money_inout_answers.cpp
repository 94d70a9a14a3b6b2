#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvservercache.h"
#include "messageboxes.h"
#include "moneybench.h"
#include "record.h"
#include "support/testregistry.h"

#include <QTimer>
#include <QtTest/QtTest>

#include <memory>

using zvtest::actions;
using zvtest::boxesIn;
using zvtest::notices;
using zvtest::ShownBox;

namespace {

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

const QString freeText = QStringLiteral("获取验证码");
const QString asksForMoney = QStringLiteral("ZvServerEngine::sendRequest_Cap()");
const QString asksForCode
    = QStringLiteral("ZvServerActionResult::sendRequest_inMoney_sendCode(\"13912345678\")");

QString waiting(int seconds)
{
    return QStringLiteral("重新发送(%1)").arg(seconds);
}

} // namespace

// The code and its countdown, and what the answers of the server do.
class SmallMoneyInOutAnswersTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::MoneyBench> m_bench;

    QPushButton *codeButton() const { return m_bench->codeButton(); }
    QTimer *timer() const
    {
        return m_bench->dialog->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    }

    // A second passes for the countdown; its timer sleeps.
    void tick() { QVERIFY(QMetaObject::invokeMethod(timer(), "timeout")); }

    void codeIsSent(const QString &first = QStringLiteral("一"),
                    const QString &second = QStringLiteral("二"))
    {
        emit actions()->signal_inMoney_sendCode_succeed(first, second);
        QVERIFY(timer()->isActive());
        QCOMPARE(timer()->interval(), 1000);
        QVERIFY(!timer()->isSingleShot());
    }

    void putToSleep() { timer()->setInterval(24 * 60 * 60 * 1000); }

    void fill()
    {
        m_bench->typeAmount("12.50");
        m_bench->typeCode("123456");
    }

private slots:
    void init() { m_bench = std::make_unique<zvtest::MoneyBench>(); }
    void cleanup() { m_bench.reset(); }

    // The code.

    void theCodeGoesToThePhoneOfTheAccount()
    {
        zvtest::Record record;
        m_bench->click("pushButton_getValidataCode");
        QCOMPARE(record.take(), asksForCode);
        // Nothing waits before the answer.
        QVERIFY(codeButton()->isEnabled());
        QCOMPARE(codeButton()->text(), freeText);
        QVERIFY(!timer()->isActive());
    }

    void anAccountWithoutAPhoneIsToldSo_data()
    {
        QTest::addColumn<QString>("phone");
        QTest::newRow("none") << QString();
        QTest::newRow("ten") << "1391234567";
        QTest::newRow("twelve") << "139123456789";
    }
    void anAccountWithoutAPhoneIsToldSo()
    {
        QFETCH(QString, phone);
        cache()->storeMyAccount(zvtest::accountWithPhone(phone));
        m_bench->dialog->hide();
        m_bench->dialog->show();
        zvtest::Record record;
        const QList<ShownBox> boxes
            = boxesIn([this] { QTest::mouseClick(codeButton(), Qt::LeftButton); });
        QCOMPARE(boxes.size(), 1);
        QCOMPARE(boxes.first().text,
                 QStringLiteral("<p align='center'>获取身份失败，请关闭此页并重新登录！</p>"));
        QCOMPARE(boxes.first().buttons, QStringList(QStringLiteral("确认")));
        QCOMPARE(boxes.first().title, QStringLiteral("温馨提示"));
        QCOMPARE(boxes.first().titleHeight, 40);
        QVERIFY(!boxes.first().hasParent);
        QCOMPARE(record.take(), QString());
        QVERIFY(codeButton()->isEnabled());
    }

    void theDialogMayEndUnderTheBox()
    {
        cache()->storeMyAccount(ZvUBMyAcount());
        m_bench->dialog->hide();
        m_bench->dialog->show();
        const QList<ShownBox> boxes
            = boxesIn([this] { QTest::mouseClick(codeButton(), Qt::LeftButton); },
                      [this] { delete m_bench->dialog; });
        QCOMPARE(boxes.size(), 1);
        QVERIFY(!m_bench->dialog);
    }

    void thePhoneIsReadWithEachShow()
    {
        cache()->storeMyAccount(zvtest::accountWithPhone("13700000000"));
        zvtest::Record record;
        m_bench->click("pushButton_getValidataCode");
        QCOMPARE(record.take(), asksForCode);
        m_bench->dialog->hide();
        m_bench->dialog->show();
        m_bench->click("pushButton_getValidataCode");
        QCOMPARE(record.take(), QString(asksForCode).replace("13912345678", "13700000000"));
    }

    // The countdown.

    void theCountdownBeginsASecondAfterTheAnswer()
    {
        codeIsSent();
        QVERIFY(!codeButton()->isEnabled());
        QCOMPARE(codeButton()->text(), freeText);
        QTRY_COMPARE_WITH_TIMEOUT(codeButton()->text(), waiting(59), 3000);
        putToSleep();
        for (int left = 58; left >= 1; --left) {
            tick();
            QCOMPARE(codeButton()->text(), waiting(left));
            QVERIFY(!codeButton()->isEnabled());
        }
        tick();
        QCOMPARE(codeButton()->text(), freeText);
        QVERIFY(codeButton()->isEnabled());
        QVERIFY(!timer()->isActive());
    }

    void aSecondCodeBeginsAnew()
    {
        codeIsSent();
        putToSleep();
        for (int i = 0; i < 10; ++i)
            tick();
        QCOMPARE(codeButton()->text(), waiting(50));
        codeIsSent();
        putToSleep();
        QCOMPARE(codeButton()->text(), waiting(50));
        tick();
        QCOMPARE(codeButton()->text(), waiting(59));
    }

    void theCountGoesOnBehindMoneyOut()
    {
        codeIsSent();
        putToSleep();
        tick();
        m_bench->click("pushButton_out");
        QVERIFY(codeButton()->isHidden());
        tick();
        tick();
        m_bench->click("pushButton_in");
        QVERIFY(codeButton()->isVisible());
        QCOMPARE(codeButton()->text(), waiting(57));
        QVERIFY(!codeButton()->isEnabled());
    }

    void theCountEndsWithTheDialog()
    {
        codeIsSent();
        QPointer<QTimer> running = timer();
        m_bench->click("toolButton_close");
        QTRY_VERIFY(!m_bench->dialog);
        QVERIFY(!running);
        // Answers that come late find nobody.
        emit actions()->signal_inMoney_sendCode_succeed("a", "b");
        emit actions()->signal_inMoney_succeed();
    }

    void aRefusedCodeChangesNothing()
    {
        codeIsSent("first", "second");
        putToSleep();
        for (int i = 0; i < 60; ++i)
            tick();
        emit actions()->signal_inMoney_sendCode_failed(QStringLiteral("请稍后再试"));
        QCOMPARE(notices(), QStringList(QStringLiteral("请稍后再试")));
        QVERIFY(codeButton()->isEnabled());
        QVERIFY(!timer()->isActive());
        fill();
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QVERIFY(record.take().endsWith("(\"12.50\", \"***\", \"first\", \"second\")"));
    }

    void theTwoStringsGoBackInTheirOrder()
    {
        codeIsSent("first", "second");
        codeIsSent("first & 2", QString());
        putToSleep();
        fill();
        zvtest::Record record;
        m_bench->click("pushButton_ok");
        QVERIFY(record.take().endsWith("(\"12.50\", \"***\", \"first & 2\", \"\")"));
    }

    // The answers.

    void aSuccessAsksForTheMoneyAndStaysOpen_data()
    {
        QTest::addColumn<bool>("isIn");
        QTest::addColumn<QString>("text");
        QTest::newRow("in") << true << QStringLiteral("入金成功");
        QTest::newRow("out") << false << QStringLiteral("出金成功");
    }
    void aSuccessAsksForTheMoneyAndStaysOpen()
    {
        QFETCH(bool, isIn);
        QFETCH(QString, text);
        fill();
        zvtest::Record record;
        if (isIn)
            emit actions()->signal_inMoney_succeed();
        else
            emit actions()->signal_outMoney_succeed();
        QCOMPARE(record.take(), asksForMoney);
        QCOMPARE(notices(), QStringList(text));
        QVERIFY(m_bench->dialog->isVisible());
        QCOMPARE(m_bench->amount()->value(), 12.5);
        QCOMPARE(m_bench->code()->text(), QStringLiteral("123456"));
    }

    void aRefusalIsShownAsItComes_data()
    {
        QTest::addColumn<int>("request");
        QTest::newRow("code") << 0;
        QTest::newRow("in") << 1;
        QTest::newRow("out") << 2;
    }
    void aRefusalIsShownAsItComes()
    {
        QFETCH(int, request);
        fill();
        const auto refuse = [request](const QString &reason) {
            if (request == 0)
                emit actions()->signal_inMoney_sendCode_failed(reason);
            else if (request == 1)
                emit actions()->signal_inMoney_failed(reason);
            else
                emit actions()->signal_outMoney_failed(reason);
        };
        const QString reason = QStringLiteral("余额<b>不足</b> %1");
        zvtest::Record record;
        refuse(reason);
        refuse(QString()); // a notice without words is none
        QCOMPARE(notices(), QStringList(reason));
        QCOMPARE(record.take(), QString());
        QVERIFY(m_bench->dialog->isVisible());
        QCOMPARE(m_bench->amount()->value(), 12.5);
        QCOMPARE(m_bench->code()->text(), QStringLiteral("123456"));
        QCOMPARE(m_bench->prompts(), QStringList());
    }

    // The whole road, from the keys to the wire and back.
    void moneyGoesInWithTheCodeThatWasSent()
    {
        ZvScriptedTransport *exchange = m_bench->exchange();
        exchange->answer(zvPath_pay_send,
                         ZvScriptedTransport::ok("{\"first\": \"f1\", \"second\": \"s2\"}"));
        m_bench->click("pushButton_getValidataCode");
        QTRY_VERIFY(!codeButton()->isEnabled());
        QCOMPARE(exchange->lastRequest(zvPath_pay_send).parameter("phone"),
                 QStringLiteral("13912345678"));

        exchange->answer(zvPath_pay_trade, ZvScriptedTransport::ok("{}"));
        fill();
        m_bench->click("pushButton_ok");
        QTRY_COMPARE(notices(), QStringList(QStringLiteral("入金成功")));
        const ZvRequest sent = exchange->lastRequest(zvPath_pay_trade);
        QCOMPARE(sent.parameter("amount"), QStringLiteral("1250"));
        QCOMPARE(sent.parameter("code"), QStringLiteral("123456"));
        QCOMPARE(sent.parameter("first"), QStringLiteral("f1"));
        QCOMPARE(sent.parameter("second"), QStringLiteral("s2"));
    }

    void moneyGoesOutWithItsAmount()
    {
        ZvScriptedTransport *exchange = m_bench->exchange();
        exchange->answer(zvPath_pay_cash_deal,
                         ZvScriptedTransport::refusal("refused", QStringLiteral("可用资金不足")));
        m_bench->click("pushButton_out");
        m_bench->typeAmount("3.07");
        m_bench->click("pushButton_ok");
        QTRY_COMPARE(notices(), QStringList(QStringLiteral("可用资金不足")));
        QCOMPARE(exchange->lastRequest(zvPath_pay_cash_deal).parameter("amount"),
                 QStringLiteral("307"));
    }
};

ZV_TEST(SmallMoneyInOutAnswersTest)
#include "test_small_money_inout_answers.moc"
