#include "client/mainwindow.h"

#include "endtoend/chartpage.h"
#include "endtoend/heap.h"
#include "endtoend/marketpage.h"
#include "endtoend/middleman.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QDir>
#include <QRandomGenerator>
#include <QStackedWidget>
#include <QTableView>
#include <QtTest/QtTest>

using endtoend::patience;

namespace {

constexpr int walks = 1000; // changes of collection
constexpr int warmUp = 200; // until every collection has been seen often
constexpr int longestDelay = 300; // of an answer, milliseconds

int objects()
{
    int count = qApp->findChildren<QObject *>().size();
    for (const QWidget *window : QApplication::topLevelWidgets())
        count += window->findChildren<QObject *>().size();
    return count;
}

int openFiles()
{
    return QDir(QStringLiteral("/proc/self/fd"))
        .entryList(QDir::NoDotAndDotDot | QDir::AllEntries)
        .size();
}

} // namespace

// Walking through the collections faster than the exchange answers, over a line that holds answers
// back by chance, so that they overtake each other.
class FastWalkingTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_exchange.start(m_state, 0, 60));
        m_line = std::make_unique<endtoend::Middleman>(m_exchange.port());
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1366, 768);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_window->useExchange(m_line->address());
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
        m_table = endtoend::marketTable(*m_window);
        QTRY_COMPARE_WITH_TIMEOUT(m_table->model()->rowCount(), 9, patience);
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier,
                          m_table->visualRect(m_table->model()->index(1, 1)).center());
        QTest::keyClick(m_table, Qt::Key_Return);
        QCOMPARE(endtoend::pageInFront(*m_window), endtoend::ChartPage);
        m_line->delayAnswers(longestDelay);
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
        m_line.reset();
    }

    void noPageMixesTwoCollections_data()
    {
        QTest::addColumn<bool>("isTimeLine");
        QTest::newRow("time line") << true;
        QTest::newRow("day") << false;
    }
    void noPageMixesTwoCollections()
    {
        QFETCH(bool, isTimeLine);
        if (isTimeLine != (feed()->chart() == ZvChartFeed::TimeLine))
            press(Qt::Key_F5);
        QCOMPARE(feed()->chart() == ZvChartFeed::TimeLine, isTimeLine);
        QStringList faults;
        int panels = 0; // that showed a collection when they were looked at
        int charts = 0;
        // After the widgets' own connections, so a fault is seen in the moment in which it stands.
        const auto look = [&] {
            faults += endtoend::faultsOf(*m_window);
            panels += endtoend::listed(endtoend::shownCode(*m_window)).isThere() ? 1 : 0;
            charts += feed()->state() == ZvChartFeed::Ready ? 1 : 0;
        };
        auto *cache = ZvServerCache::getZvServerCacheInstance();
        QObject scope;
        connect(cache, &ZvServerCache::signal_cache_CollectionLatestDeal_changed, &scope, look);
        connect(feed(), &ZvChartFeed::replaced, &scope, look, Qt::QueuedConnection);

        walk(warmUp, look);
        rest();
        const int objectsBefore = objects();
        const int filesBefore = openFiles();
        const qint64 heapBefore = endtoend::heapInUse();
        const int delayedBefore = m_line->delayed();
        walk(walks, look);
        rest();
        look();
        QVERIFY2(faults.isEmpty(), qPrintable(faults.mid(0, 10).join('\n')));
        QVERIFY2(panels > walks / 10, qPrintable(QString::number(panels)));
        QVERIFY2(charts > 0, "no chart was ever there to be looked at");
        QVERIFY2(m_line->delayed() - delayedBefore > 100, "the line has held nothing back");
        const int objectsMore = objects() - objectsBefore;
        const int filesMore = openFiles() - filesBefore;
        const qint64 heapMore = endtoend::heapInUse() - heapBefore;
        QVERIFY2(objectsMore < 20, qPrintable(QString::number(objectsMore)));
        QVERIFY2(filesMore < 20, qPrintable(QString::number(filesMore)));
        // Deals and minutes of a living market come in meanwhile.
        QVERIFY2(heapMore < 2 * 1024 * 1024, qPrintable(QString::number(heapMore)));
    }

    void whatIsAskedAtTheEndComes()
    {
        for (const char *code : {"111001", "112008"}) {
            const Qt::Key key = QLatin1String(code) == "111001" ? Qt::Key_PageUp : Qt::Key_PageDown;
            for (int i = 0; i < 8; ++i)
                press(key);
            QTRY_COMPARE_WITH_TIMEOUT(endtoend::shownCode(*m_window), QString(code), patience);
            QTRY_COMPARE_WITH_TIMEOUT(feed()->state(), ZvChartFeed::Ready, patience);
            QCOMPARE(feed()->collectionId(), endtoend::listed(code).id);
            QCOMPARE(endtoend::faultsOf(*m_window), QStringList());
        }
    }

    void theDealsOfAPageAreThoseOfItsTitle()
    {
        QStringList faults;
        for (int round = 0; round < 20; ++round) {
            // Into the deals of one, and out again before they are there.
            press(round % 8 < 4 ? Qt::Key_PageUp : Qt::Key_PageDown);
            ZvWidgetSignalSLotPool::getSignalSlotPoolInstance()->slot_marketDeatil_clicked();
            QCOMPARE(endtoend::pageInFront(*m_window), endtoend::DealsPage);
            press(Qt::Key_PageDown);
            press(Qt::Key_PageUp);
            for (int i = 0; i < round; ++i) {
                QTest::qWait(10);
                faults += endtoend::faultsOf(*m_window);
            }
            press(Qt::Key_Escape);
            QCOMPARE(endtoend::pageInFront(*m_window), endtoend::ChartPage);
        }
        QVERIFY2(faults.isEmpty(), qPrintable(faults.mid(0, 10).join('\n')));
    }

private:
    ZvChartFeed *feed() const { return endtoend::feedOf(*m_window); }

    void press(Qt::Key key) const
    {
        QWidget *focus = m_window->focusWidget();
        QTest::keyClick(focus ? focus : m_window.get(), key);
    }

    // Walks up and down as quickly as events allow; calls `look` after each change. Rests now and
    // then, so that answers come in at all: a change gives up most of what is under way.
    template <typename Look>
    void walk(int changes, Look look)
    {
        QSignalSpy changed(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                           &ZvWidgetSignalSLotPool::signal_global_colletionId_changed);
        Qt::Key key = Qt::Key_PageDown;
        while (changed.count() < changes) {
            const int before = changed.count();
            press(key);
            if (changed.count() == before) // at the end
                key = key == Qt::Key_PageDown ? Qt::Key_PageUp : Qt::Key_PageDown;
            QCoreApplication::processEvents();
            look();
            if (m_chance.bounded(8) == 0)
                QTest::qWait(m_chance.bounded(longestDelay));
        }
    }

    // Waits until everything that was asked for has come.
    void rest()
    {
        QTRY_VERIFY_WITH_TIMEOUT(feed()->state() != ZvChartFeed::Waiting, patience);
        const QString id = ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID();
        QTRY_COMPARE_WITH_TIMEOUT(endtoend::listed(endtoend::shownCode(*m_window)).id, id,
                                  patience);
        QTest::qWait(2 * longestDelay);
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<endtoend::Middleman> m_line;
    std::unique_ptr<MainWindow> m_window;
    QTableView *m_table = nullptr;
    QRandomGenerator m_chance{7};
};

ZV_TEST(FastWalkingTest)
#include "test_fastwalking.moc"
