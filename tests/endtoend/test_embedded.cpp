#include "client/connectionstrip.h"
#include "client/embeddedexchange.h"
#include "client/mainwindow.h"

#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QJsonObject>
#include <QtTest/QtTest>

using endtoend::patience;

namespace {

const QString program = QStringLiteral(ZV_EXCHANGE_PROGRAM);

} // namespace

// The service that the client starts, keeps and lets go of by itself.
class EmbeddedTest : public QObject
{
    Q_OBJECT

private slots:
    void startsAndEndsWithItsOnlyClient()
    {
        endtoend::StateFolder state;
        EmbeddedExchange embedded(program, state.path());
        QSignalSpy available(&embedded, &EmbeddedExchange::available);
        embedded.start();
        QVERIFY(available.wait(patience));
        QCOMPARE(available.first().first().toUrl(), embedded.address());
        QCOMPARE(state.servicePid(), embedded.processId());
        QCOMPARE(state.servicePort(), embedded.address().port());
        QVERIFY(!endtoend::bootOf(embedded.address()).isEmpty());
        QElapsedTimer elapsed;
        elapsed.start();
        embedded.stop();
        QVERIFY2(elapsed.elapsed() < 6000, qPrintable(QString::number(elapsed.elapsed())));
        QVERIFY(embedded.address().isEmpty());
        QVERIFY(endtoend::until([&] { return !state.isHeld(); }));
        QTRY_VERIFY(state.log().contains("ending reason=\"nobody attached\""));
    }

    void aKilledServiceIsStartedAgainAndTheWindowIsWhole()
    {
        endtoend::StateFolder state;
        EmbeddedExchange embedded(program, state.path());
        embedded.setExtraArguments({"--robots", "40"});
        MainWindow window;
        window.followExchange(&embedded);
        window.show();
        embedded.start();
        QTRY_VERIFY_WITH_TIMEOUT(window.hasMarket(), patience);
        ConnectionStrip *strip = window.connectionStrip();
        QTRY_VERIFY(strip->text().contains(QStringLiteral("已连接")));
        const QString boot = endtoend::bootOf(embedded.address());

        QSignalSpy lost(&embedded, &EmbeddedExchange::lost);
        QSignalSpy available(&embedded, &EmbeddedExchange::available);
        endtoend::LoopWatch watch;
        endtoend::killNow(embedded.processId());
        QVERIFY(lost.wait(patience));
        QTRY_VERIFY_WITH_TIMEOUT(strip->text().contains(QStringLiteral("连接已断开")), 5000);
        QVERIFY(strip->text().contains(QStringLiteral("行情停在")));
        QVERIFY(strip->text().contains(QStringLiteral("交易所服务已停止")));
        QVERIFY(available.wait(patience));
        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        QTRY_VERIFY_WITH_TIMEOUT(
            !ticks.isEmpty() && strip->text().contains(QStringLiteral("已连接")), 5000);
        QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= 3, patience);
        QVERIFY(!strip->text().contains(QStringLiteral("交易所服务已停止")));
        QVERIFY2(watch.longestGap() < 1000, qPrintable(QString::number(watch.longestGap())));
        const QString bootNow = endtoend::bootOf(embedded.address());
        QVERIFY(!bootNow.isEmpty());
        QVERIFY(bootNow != boot);
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
    }

    void attachesToTheServiceOfAnother()
    {
        endtoend::StateFolder state;
        auto first = std::make_unique<EmbeddedExchange>(program, state.path());
        QSignalSpy firstAvailable(first.get(), &EmbeddedExchange::available);
        first->start();
        QVERIFY(firstAvailable.wait(patience));
        const qint64 pid = state.servicePid();

        EmbeddedExchange second(program, state.path());
        QSignalSpy secondAvailable(&second, &EmbeddedExchange::available);
        QSignalSpy secondLost(&second, &EmbeddedExchange::lost);
        second.start();
        QVERIFY(secondAvailable.wait(patience));
        QCOMPARE(second.processId(), qint64(0));
        QCOMPARE(second.address(), first->address());
        QCOMPARE(state.servicePid(), pid);

        // The one that started it leaves; the other one goes on with the same service.
        first.reset();
        QVERIFY(endtoend::isAlive(pid));
        QVERIFY(!endtoend::bootOf(second.address()).isEmpty());
        QCOMPARE(state.servicePid(), pid);
        QVERIFY(secondLost.isEmpty());
        QCOMPARE(state.servicesStarted(), 1);

        second.stop();
        QVERIFY(endtoend::until([&] { return !state.isHeld(); }));
        QTRY_VERIFY(state.log().contains("ending reason=\"nobody attached\""));
    }

    void anAttachedClientStartsTheServiceAgain()
    {
        endtoend::StateFolder state;
        EmbeddedExchange first(program, state.path());
        EmbeddedExchange second(program, state.path());
        QSignalSpy firstAvailable(&first, &EmbeddedExchange::available);
        QSignalSpy secondAvailable(&second, &EmbeddedExchange::available);
        // Both at one time: one of them is too late and joins the other's service.
        first.start();
        second.start();
        QTRY_COMPARE_WITH_TIMEOUT(firstAvailable.count() + secondAvailable.count(), 2, patience);
        QCOMPARE(first.address(), second.address());
        QCOMPARE(state.servicesStarted(), 1);

        const qint64 pid = state.servicePid();
        endtoend::killNow(pid);
        QTRY_COMPARE_WITH_TIMEOUT(firstAvailable.count() + secondAvailable.count(), 4, patience);
        QCOMPARE(first.address(), second.address());
        QCOMPARE(state.servicesStarted(), 2);
        QVERIFY(state.servicePid() != pid);
    }

    void whatAKilledServiceLeftDoesNotHinder()
    {
        endtoend::StateFolder state;
        {
            EmbeddedExchange embedded(program, state.path());
            QSignalSpy available(&embedded, &EmbeddedExchange::available);
            embedded.start();
            QVERIFY(available.wait(patience));
            endtoend::killNow(embedded.processId());
            QVERIFY(endtoend::until([&] { return !state.isHeld(); }));
            QVERIFY(QFile::exists(state.file("attach.sock")));
            QVERIFY(state.servicePort() != 0);
        }
        EmbeddedExchange embedded(program, state.path());
        QSignalSpy available(&embedded, &EmbeddedExchange::available);
        QSignalSpy lost(&embedded, &EmbeddedExchange::lost);
        embedded.start();
        QVERIFY(available.wait(patience));
        QVERIFY(lost.isEmpty());
        QVERIFY(!endtoend::bootOf(embedded.address()).isEmpty());
    }

    void aNewFolderGetsTheDemoAccount()
    {
        endtoend::StateFolder state;
        QVERIFY(QFile::remove(state.file("catalogue.json")));
        for (int start = 0; start < 2; ++start) {
            EmbeddedExchange embedded(program, state.path());
            embedded.setExtraArguments({"--catalogue", ZV_SMALL_CATALOGUE, "--robots", "0"});
            QSignalSpy available(&embedded, &EmbeddedExchange::available);
            embedded.start();
            QVERIFY(available.wait(patience));
            const QByteArray key = QByteArray::number(start).rightJustified(32, 'a');
            const QJsonObject answer = endtoend::post(
                embedded.address(), "/lc/youbika/login.html",
                "phone=13800000000&password=demo888888&client=00000000000000aa&key=" + key);
            QCOMPARE(answer.value("status").toString(), QStringLiteral("ok"));
            const QJsonObject account = answer.value("data").toObject().value("account").toObject();
            QCOMPARE(account.value("phone").toString(), QStringLiteral("13800000000"));
            embedded.stop();
            QVERIFY(endtoend::until([&] { return !state.isHeld(); }));
        }
        QCOMPARE(state.log().count("the demo account has its money and pieces"), 3);
    }

    void aFolderThatWasThereGetsNoDemoAccount()
    {
        endtoend::StateFolder state;
        EmbeddedExchange embedded(program, state.path());
        QSignalSpy available(&embedded, &EmbeddedExchange::available);
        embedded.start();
        QVERIFY(available.wait(patience));
        const QJsonObject answer
            = endtoend::post(embedded.address(), "/lc/youbika/login.html",
                             "phone=13800000000&password=demo888888&client=00000000000000aa&key="
                                 + QByteArray(32, 'a'));
        QCOMPARE(answer.value("reason").toString(), QStringLiteral("wrong-password"));
        QVERIFY(state.log().contains("--demo changes nothing"));
    }

    // The address of a socket holds 107 bytes.
    void aLongFolderNameWithBlanksAndChineseWillDo()
    {
        endtoend::StateFolder state;
        const QString folder
            = state.file(QStringLiteral("交易 所/") + QString(120, 'x') + QStringLiteral("/a b"));
        QDir().mkpath(folder);
        QVERIFY(QFile::copy(ZV_SMALL_CATALOGUE, folder + "/catalogue.json"));
        EmbeddedExchange first(program, folder);
        QSignalSpy firstAvailable(&first, &EmbeddedExchange::available);
        first.start();
        QVERIFY(firstAvailable.wait(patience));
        EmbeddedExchange second(program, folder);
        QSignalSpy secondAvailable(&second, &EmbeddedExchange::available);
        second.start();
        QVERIFY(secondAvailable.wait(patience));
        QCOMPARE(second.address(), first.address());
        QCOMPARE(second.processId(), qint64(0));
    }

    void whatCannotStartIsSaidInWordsAndTriedAgain_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("words");
        QTest::newRow("no program") << "/no/such/program"
                                    << "state"
                                    << "/no/such/program";
        QTest::newRow("not a program")
            << QString(ZV_SMALL_CATALOGUE) << "state" << QStringLiteral("无法启动交易所服务");
        QTest::newRow("another program") << "/bin/true"
                                         << "state" << QStringLiteral("没有启动成功");
        QTest::newRow("a file in the folder's place") << program << "file/state"
                                                      << "file/state";
        QTest::newRow("a file that is the folder") << program << "file"
                                                   << "file";
        QTest::newRow("a folder in the lock's place")
            << program << "odd" << QStringLiteral("无法使用数据文件夹");
    }
    void whatCannotStartIsSaidInWordsAndTriedAgain()
    {
        QFETCH(QString, name);
        QFETCH(QString, folder);
        QFETCH(QString, words);
        QTemporaryDir base;
        QFile file(base.filePath("file"));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.close();
        QVERIFY(QDir().mkpath(base.filePath("odd/zvexchange.lock")));

        MainWindow window;
        window.show();
        EmbeddedExchange embedded(name, base.filePath(folder));
        window.followExchange(&embedded);
        QSignalSpy lost(&embedded, &EmbeddedExchange::lost);
        QElapsedTimer elapsed;
        elapsed.start();
        embedded.start();
        QTRY_COMPARE_WITH_TIMEOUT(lost.count(), 3, patience);
        // 0.5 s and 1 s lie between three attempts: no busy loop.
        QVERIFY2(elapsed.elapsed() >= 1400, qPrintable(QString::number(elapsed.elapsed())));
        for (const QList<QVariant> &each : lost)
            QVERIFY2(each.first().toString().contains(words), qPrintable(each.first().toString()));
        QVERIFY(window.connectionStrip()->text().contains(words));
        QVERIFY(embedded.address().isEmpty());
    }
};

ZV_TEST(EmbeddedTest)
#include "test_embedded.moc"
