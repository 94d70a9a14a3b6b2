#include "client/connectionstrip.h"

#include "ZvNetworkKit/kitbench.h"
#include "support/testregistry.h"

#include "BreltWidgetToolKit/breltglobalfunction.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvactionchecks.h"
#include "ZvNetworkKit/zvactionqueue.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveractionresult.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QAccessible>
#include <QLabel>
#include <QtTest/QtTest>

namespace {

using Checks = ZvActionChecks;

ZvServerActionResult *actions()
{
    return ZvServerActionResult::getZvServerActionResultInstance();
}

Checks *checks()
{
    return actions()->checks();
}

const QString key = QStringLiteral("00112233445566778899aabbccddeeff");

QStringList notices()
{
    return BreltGlobalFunction::getBreltGlobalFunciton()->notices();
}

} // namespace

// What the strip at the bottom of the window says of orders whose answer has not come.
class ConnectionStripTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        BreltGlobalFunction::getBreltGlobalFunciton()->setNoticeDuration(300);
        m_bench = std::make_unique<KitBench>();
        m_bench->startOn(QStringLiteral("/ch/strip/"));
        m_bench->signIn("t1");
        m_bench->answerAccount(KitBench::cap(1000));
        m_strip = std::make_unique<ConnectionStrip>();
        m_strip->resize(1366, m_strip->height());
        m_strip->show();
    }

    void cleanup()
    {
        QTRY_VERIFY(notices().isEmpty());
        m_strip.reset();
        m_bench->endActions();
        m_bench.reset();
    }

    void isCalmWhileNothingIsMissing()
    {
        QCOMPARE(m_strip->text(), QStringLiteral("已连接  ·  行情实时更新"));
        QVERIFY(words()->toolTip().isEmpty());
        QCOMPARE(heard(), QStringLiteral("连接状态 已连接  ·  行情实时更新"));
    }

    void saysThatAnOrderIsBeingChecked()
    {
        const QString calm = words()->styleSheet();
        actions()->sendRequest_trade_buy("1001", 10.0F, 3);
        QCOMPARE(m_strip->text(), QStringLiteral("已连接  ·  行情实时更新"));
        exchange()->fail(zvPath_trade_buy, ZvAnswer::TimedOut);
        m_bench->settle();
        QCOMPARE(m_strip->text(), QStringLiteral("已连接  ·  行情实时更新  ·  有1笔委托正在核对…"));
        QCOMPARE(words()->toolTip(), m_strip->text());
        QVERIFY(words()->styleSheet() != calm);
        actions()->sendRequest_trade_sell("1001", 10.0F, 3);
        QVERIFY(
            m_strip->text().endsWith(QStringLiteral("有1笔委托正在核对，另有1笔操作等待发送…")));
        m_bench->clock.advance(ZvActionQueue::shortestPause);
        exchange()->answer(zvPath_trade_buy, ZvScriptedTransport::ok("{\"order\": 1}"));
        m_bench->settle();
        QCOMPARE(m_strip->text(), QStringLiteral("已连接  ·  行情实时更新"));
        QCOMPARE(words()->styleSheet(), calm);
        // The ticket has said that it was bought.
        QVERIFY(notices().isEmpty());
    }

    void countsByWhatTheyAre_data()
    {
        QTest::addColumn<QList<int>>("matters");
        QTest::addColumn<QString>("sentence");
        using I = ZvIntent;
        QTest::newRow("prepared orders are orders")
            << QList<int>{I::Order, I::PreparedOrder, I::Order}
            << QStringLiteral("有3笔委托正在核对…");
        QTest::newRow("each kind")
            << QList<int>{I::Withdrawal, I::Order, I::Transfer, I::Delivery, I::Withdrawal}
            << QStringLiteral("有2笔撤单、1笔委托、1笔转账、1笔取消提货正在核对…");
    }
    void countsByWhatTheyAre()
    {
        QFETCH(QList<int>, matters);
        QFETCH(QString, sentence);
        for (int i = 0; i < matters.size(); ++i)
            checks()->begin(key + QString::number(i), intentOf(matters.at(i)));
        QVERIFY2(m_strip->text().endsWith(sentence), qPrintable(m_strip->text()));
        for (int i = 0; i < matters.size(); ++i)
            checks()->end(key + QString::number(i));
        QVERIFY(!m_strip->text().contains(QStringLiteral("核对")));
    }

    // Colours alone are not seen by everybody: each state has a shape of its own.
    void theMarkFollowsTheState()
    {
        QVERIFY(shows(QStringLiteral("online")));
        checks()->begin(key, intentOf(ZvIntent::Order));
        QVERIFY(shows(QStringLiteral("connecting")));
        checks()->end(key);
        QVERIFY(shows(QStringLiteral("online")));
        exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        QVERIFY(shows(QStringLiteral("offline")));
    }

    void saysItWithoutAConnectionAsWell()
    {
        exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        checks()->begin(key, intentOf(ZvIntent::Order));
        QVERIFY(m_strip->text().startsWith(QStringLiteral("连接已断开")));
        QVERIFY(m_strip->text().endsWith(QStringLiteral("有1笔委托正在核对…")));
        checks()->end(key);
    }

    void saysHowOldTheFiguresAre_data()
    {
        QTest::addColumn<int>("seconds");
        QTest::addColumn<QString>("age");
        QTest::newRow("at once") << 0 << QStringLiteral("0 秒");
        QTest::newRow("seconds") << 59 << QStringLiteral("59 秒");
        QTest::newRow("a minute") << 60 << QStringLiteral("1 分 0 秒");
        QTest::newRow("minutes") << 3599 << QStringLiteral("59 分 59 秒");
        QTest::newRow("an hour") << 3600 << QStringLiteral("1 小时 0 分");
        QTest::newRow("a day") << 26 * 3600 + 61 << QStringLiteral("26 小时 1 分");
    }
    void saysHowOldTheFiguresAre()
    {
        QFETCH(int, seconds);
        QFETCH(QString, age);
        exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        m_bench->clock.advance(qint64(seconds) * 1000);
        m_bench->settle();
        m_strip->refresh();
        QCOMPARE(m_strip->text(),
                 QStringLiteral("连接已断开  ·  行情停在 %1前  ·  正在重新连接").arg(age));
        QCOMPARE(words()->toolTip(), m_strip->text());
        QCOMPARE(heard(), QStringLiteral("连接状态 ") + m_strip->text());
    }

    void countsWhileThereIsNoConnectionAndRestsOtherwise()
    {
        auto *second = m_strip->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(second && !second->isActive());
        exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        QVERIFY(second->isActive() && !second->isSingleShot());
        QCOMPARE(second->interval(), 1000);
        m_bench->clock.advance(5000);
        QVERIFY(QMetaObject::invokeMethod(second, "timeout"));
        QVERIFY2(m_strip->text().contains(QStringLiteral("行情停在 5 秒前")),
                 qPrintable(m_strip->text()));
        m_bench->settle();
        while (exchange()->openCount(zvPath_sync) == 0) {
            m_bench->clock.advance(100);
            m_bench->settle();
        }
        m_bench->answerPoll("");
        QCOMPARE(m_strip->text(), QStringLiteral("已连接  ·  行情实时更新"));
        QVERIFY(!second->isActive());
        QVERIFY(words()->toolTip().isEmpty());
    }

    void saysOfTheServiceWhyItIsAway()
    {
        const QString notice = QStringLiteral("交易所服务已停止");
        m_strip->setServiceNotice(notice);
        QVERIFY(!m_strip->text().contains(notice)); // the exchange answers all the same
        exchange()->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        QVERIFY2(m_strip->text().endsWith(QStringLiteral("正在重新连接  ·  ") + notice),
                 qPrintable(m_strip->text()));
        m_strip->setServiceNotice(QString());
        QVERIFY(m_strip->text().endsWith(QStringLiteral("正在重新连接")));
    }

    void outcomesThatNoPageTellsAreNotices_data()
    {
        QTest::addColumn<int>("matter");
        QTest::addColumn<int>("outcome");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QString>("notice");
        using I = ZvIntent;
        QTest::newRow("order done")
            << int(I::Order) << int(Checks::Done) << ""
            << QStringLiteral("核对结果：买入委托（101001 藏品1001）已成功");
        QTest::newRow("order refused")
            << int(I::Order) << int(Checks::Refused) << QStringLiteral("可用资金不足。")
            << QStringLiteral("核对结果：买入委托（101001 藏品1001）未成功，可用资金不足。");
        QTest::newRow("order not there")
            << int(I::Order) << int(Checks::NotArrived) << ""
            << QStringLiteral("核对结果：买入委托（101001 藏品1001）未送达交易所");
        QTest::newRow("withdrawal done") << int(I::Withdrawal) << int(Checks::Done) << ""
                                         << QStringLiteral("核对结果：撤单已成功");
        QTest::newRow("withdrawal of some")
            << int(I::Withdrawal) << int(Checks::Refused)
            << QStringLiteral("委托 7 已成交或已撤销，不能再撤。其余 2 笔已撤销。")
            << QStringLiteral("核对结果：撤单已有答复，委托 7 已成交或已撤销，不能再撤。其余 2 "
                              "笔已撤销。");
        QTest::newRow("transfer not there") << int(I::Transfer) << int(Checks::NotArrived) << ""
                                            << QStringLiteral("核对结果：转账未送达交易所");
        QTest::newRow("a delivery that was to be cancelled")
            << int(I::Delivery) << int(Checks::Done) << ""
            << QStringLiteral("核对结果：取消提货已成功");
        QTest::newRow("unknown") << int(I::Order) << int(Checks::Unknown) << "" << QString();
    }
    void outcomesThatNoPageTellsAreNotices()
    {
        QFETCH(int, matter);
        QFETCH(int, outcome);
        QFETCH(QString, message);
        QFETCH(QString, notice);
        checks()->begin(key, intentOf(matter));
        checks()->settle(key, Checks::Outcome(outcome), message);
        QCOMPARE(notices(), notice.isEmpty() ? QStringList() : QStringList(notice));
        QVERIFY(!m_strip->text().contains(QStringLiteral("核对")));
    }

    void collectionsOfAnotherServerAreNotNamed()
    {
        ZvIntent intent = intentOf(ZvIntent::Order);
        intent.collectionId = QStringLiteral("4711");
        checks()->begin(key, intent);
        checks()->settle(key, Checks::Done, QString());
        QCOMPARE(notices(), QStringList(QStringLiteral("核对结果：买入委托已成功")));
    }

private:
    ZvScriptedTransport *exchange() const { return m_bench->exchange; }

    static ZvIntent intentOf(int matter)
    {
        ZvIntent intent;
        intent.matter = ZvIntent::Matter(matter);
        if (matter == ZvIntent::Order || matter == ZvIntent::PreparedOrder) {
            intent.direction = 1;
            intent.collectionId = QStringLiteral("1001");
        }
        return intent;
    }

    bool shows(const QString &name) const
    {
        for (const QLabel *label : m_strip->findChildren<QLabel *>()) {
            const QPixmap mark = label->pixmap(Qt::ReturnByValue);
            if (!mark.isNull())
                return mark.toImage()
                    == QPixmap(QStringLiteral(":/icons_vedio/%1.png").arg(name)).toImage();
        }
        return false;
    }

    // What a screen reader says of the sentence.
    QString heard() const
    {
        return QAccessible::queryAccessibleInterface(words())->text(QAccessible::Name);
    }

    // The label that holds the sentence.
    QLabel *words() const
    {
        for (QLabel *label : m_strip->findChildren<QLabel *>()) {
            if (label->text() == m_strip->text())
                return label;
        }
        return nullptr;
    }

    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<ConnectionStrip> m_strip;
};

ZV_TEST(ConnectionStripTest)
#include "test_connectionstrip.moc"
