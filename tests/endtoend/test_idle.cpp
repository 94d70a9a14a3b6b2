#include "client/mainwindow.h"

#include "endtoend/marketpage.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvWidgetKit/statusbar.h"

#include <QTableView>
#include <QtTest/QtTest>

using endtoend::patience;

namespace {

// Counts what is painted anywhere in the program but for the ticker, the clock, and the bar that is
// the ground of both.
class PaintCount : public QObject
{
public:
    explicit PaintCount(const QWidget &window) : m_bar(window.findChild<StatusBar *>())
    {
        qApp->installEventFilter(this);
    }

    int count = 0;

protected:
    bool eventFilter(QObject *object, QEvent *event) override
    {
        count += event->type() == QEvent::Paint && object != m_bar
            && !(object->isWidgetType() && m_bar->isAncestorOf(static_cast<QWidget *>(object)));
        return false;
    }

private:
    const StatusBar *m_bar;
};

} // namespace

// A client on a market in which nothing happens.
class IdleTest : public QObject
{
    Q_OBJECT

private slots:
    void paintsNothingWhileNothingChanges()
    {
        endtoend::StateFolder state;
        endtoend::Exchange exchange;
        QVERIFY(exchange.start(state, 0, 0));
        auto *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
        MainWindow window;
        window.show();
        access->setExchangeAddress(exchange.address());
        access->start();
        QTRY_VERIFY_WITH_TIMEOUT(window.hasMarket() && access->isConnected(), patience);
        QVERIFY(endtoend::showWholeMarket(window));

        PaintCount paints(window);
        // The first answers and the first frame may still be on their way.
        QVERIFY(endtoend::until([&] {
            const int before = paints.count;
            QTest::qWait(1500);
            return paints.count == before;
        }));
        QSignalSpy ticks(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_MarketList_changed);
        paints.count = 0;
        QElapsedTimer elapsed;
        elapsed.start();
        endtoend::until([&] { return elapsed.hasExpired(6000); });
        QVERIFY(access->isConnected());
        QCOMPARE(ticks.count(), 0);
        QCOMPARE(paints.count, 0);
        // And the count does count.
        endtoend::marketTable(window)->selectRow(3);
        QTRY_VERIFY(paints.count > 0);
        access->stop();
    }
};

ZV_TEST(IdleTest)
#include "test_idle.moc"
