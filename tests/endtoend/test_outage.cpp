#include "client/connectionstrip.h"
#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"

#include <QTableView>
#include <QtTest/QtTest>

using endtoend::patience;

// A service that the client was told of, killed under the open window and started again by somebody
// else on the same port.
class OutageTest : public QObject
{
    Q_OBJECT

private slots:
    void theWindowSurvivesAKilledService()
    {
        endtoend::StateFolder state;
        endtoend::Exchange exchange;
        QVERIFY(exchange.start(state));
        auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
        MainWindow window;
        ConnectionStrip *strip = window.connectionStrip();
        QTableView *table = endtoend::marketTable(window);
        window.show();
        access->setExchangeAddress(exchange.address());
        access->start();
        QVERIFY(strip->text().contains(QStringLiteral("正在连接交易所")));
        QTRY_VERIFY_WITH_TIMEOUT(window.hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(window));
        QTRY_VERIFY(strip->text().contains(QStringLiteral("已连接")));

        for (int round = 0; round < 2; ++round) {
            table->selectRow(3);
            const QString chosen = idOf(table);
            const QString boot = endtoend::bootOf(exchange.address());
            const int rows = table->model()->rowCount();
            QVERIFY(!boot.isEmpty());

            endtoend::LoopWatch watch;
            exchange.kill();
            QTRY_VERIFY_WITH_TIMEOUT(strip->text().contains(QStringLiteral("连接已断开")), 5000);
            QTRY_VERIFY_WITH_TIMEOUT(strip->text().contains(QStringLiteral("行情停在 3 秒前")),
                                     10000);
            // The last rows stay in sight and can still be walked through.
            QCOMPARE(table->model()->rowCount(), rows);
            QTest::keyClick(table, Qt::Key_Down);
            QCOMPARE(table->currentIndex().row(), 4);
            QTest::keyClick(table, Qt::Key_Up);
            QVERIFY2(watch.longestGap() < 1000, qPrintable(QString::number(watch.longestGap())));

            QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                             &ZvServerCache::signal_cache_MarketList_changed);
            QVERIFY(exchange.start(state, exchange.port()));
            QElapsedTimer back;
            back.start();
            QTRY_VERIFY_WITH_TIMEOUT(!ticks.isEmpty() && access->isConnected(), 5000);
            QVERIFY(strip->text().contains(QStringLiteral("已连接")));
            qInfo("whole again after %lld ms", back.elapsed());
            // And they go on to move.
            const int seen = ticks.count();
            QTRY_VERIFY_WITH_TIMEOUT(ticks.count() >= seen + 2, patience);
            QVERIFY(endtoend::bootOf(exchange.address()) != boot);
            QCOMPARE(table->model()->rowCount(), rows);
            QCOMPARE(idOf(table), chosen);
        }
        access->stop();
    }

private:
    static QString idOf(const QTableView *table)
    {
        return table->model()->index(table->currentIndex().row(), 21).data().toString();
    }
};

ZV_TEST(OutageTest)
#include "test_outage.moc"
