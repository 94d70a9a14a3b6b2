#include "ZvChartKit/zv_collectioncharts.h"
#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvWidgetKit/collection_detailwidget.h"
#include "ZvWidgetKit/market_ktimewidget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "collectionwalk.h"
#include "record.h"
#include "support/testregistry.h"
#include "wheel.h"

#include <QAbstractScrollArea>
#include <QElapsedTimer>
#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>
#include <QtTest/QtTest>

#include <limits>
#include <memory>

using zvtest::choose;
using zvtest::chooses;
using zvtest::current;
using zvtest::turnWheel;
using Pool = ZvWidgetSignalSLotPool;

namespace {

Pool *pool()
{
    return Pool::getSignalSlotPoolInstance();
}

const QStringList three{QStringLiteral("1001"), QStringLiteral("1002"), QStringLiteral("1003")};
const QString firstLog
    = QStringLiteral("src/ZvWidgetKit/market_ktimewidget slot_beforeCollection 157 wxk1");
const QString secondLog
    = QStringLiteral("src/ZvWidgetKit/market_ktimewidget slot_beforeCollection 159 wxk2");

enum class Way { PageDown, PageUp, WheelDown, WheelUp };

} // namespace

Q_DECLARE_METATYPE(Way)

class MarketKTimeWidgetTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_kit;
    std::unique_ptr<Market_KTimeWidget> m_page;

    Zv_CollectionCharts *charts() const { return m_page->findChild<Zv_CollectionCharts *>(); }
    QTimer *timer() const
    {
        return m_page->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
    }

    // The second of the wheel is over.
    void tick()
    {
        if (m_page)
            QVERIFY(QMetaObject::invokeMethod(timer(), "timeout"));
    }

    // A second would end in the middle of what a test counts.
    void putToSleep() { timer()->setInterval(24 * 60 * 60 * 1000); }

    void walk(Way way)
    {
        switch (way) {
        case Way::PageDown:
            pool()->slot_pagedown_clicked();
            break;
        case Way::PageUp:
            pool()->slot_pageup_clicked();
            break;
        case Way::WheelDown:
            pool()->slot_wheelOnChart_clicked(-120);
            tick();
            break;
        case Way::WheelUp:
            pool()->slot_wheelOnChart_clicked(120);
            tick();
            break;
        }
    }

private slots:
    void init()
    {
        static int pages = 0;
        m_kit = std::make_unique<KitBench>();
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setUrlPrefix(
            QStringLiteral("/walk/%1/").arg(++pages));
        m_page = std::make_unique<Market_KTimeWidget>();
        m_page->resize(1000, 600);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
        putToSleep();
        zvtest::storeCollections(three);
        choose(QStringLiteral("1002"));
    }

    void cleanup()
    {
        m_page.reset();
        m_kit.reset();
    }

    // The page.

    void thePageHoldsChartAndDetail()
    {
        const auto *row = qobject_cast<QHBoxLayout *>(m_page->layout());
        QVERIFY(row);
        QCOMPARE(row->contentsMargins(), QMargins(1, 1, 1, 1));
        QCOMPARE(row->spacing(), 1);
        QCOMPARE(row->count(), 2);
        const auto *left = qobject_cast<QVBoxLayout *>(row->itemAt(0)->layout());
        QVERIFY(left);
        QCOMPARE(left->contentsMargins(), QMargins());
        QCOMPARE(left->spacing(), 0);
        QCOMPARE(left->count(), 2);
        QCOMPARE(left->itemAt(1)->widget(), charts());
        QCOMPARE(row->itemAt(1)->widget(), m_page->findChild<Collection_DetailWidget *>());

        // The chart takes all that the detail leaves.
        QCOMPARE(charts()->geometry().topLeft(), QPoint(1, 1));
        QCOMPARE(charts()->height(), 598);
        QCOMPARE(charts()->width() + 1 + row->itemAt(1)->widget()->width(), 998);
        QVERIFY(charts()->width() > row->itemAt(1)->widget()->width());
    }

    void theBarIsThereAndHidden()
    {
        const QLabel *caption = nullptr;
        for (const QLabel *label : m_page->findChildren<QLabel *>()) {
            if (label->text() == QStringLiteral("藏品名称与编号"))
                caption = label;
        }
        QVERIFY(caption);
        const QWidget *bar = caption->parentWidget();
        QCOMPARE(bar->parentWidget(), m_page.get());
        QVERIFY(bar->isHidden());
        QCOMPARE(bar->minimumHeight(), 30);
        QCOMPARE(bar->maximumHeight(), 30);
        const QLayout *row = bar->layout();
        QCOMPARE(row->contentsMargins(), QMargins());
        QCOMPARE(row->spacing(), 0);
        QCOMPARE(row->count(), 3);
        QCOMPARE(row->itemAt(0)->spacerItem()->sizeHint().width(), 20);
        QCOMPARE(row->itemAt(1)->widget(), caption);
        QCOMPARE(qobject_cast<const QHBoxLayout *>(row)->stretch(2), 1);
    }

    void theBackgroundIsOneColour()
    {
        QVERIFY(m_page->autoFillBackground());
        for (const auto group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
            QCOMPARE(m_page->palette().color(group, QPalette::Window), QColor("#16181c"));
        QCOMPARE(m_page->grab().toImage().pixelColor(0, 0), QColor("#16181c"));
    }

    void theChartFollowsTheFourOperations()
    {
        const auto *feed = charts()->findChild<ZvChartFeed *>();
        QVERIFY(feed);
        m_page->changeToPage_kline_day();
        QCOMPARE(feed->chart(), ZvChartFeed::DayKLine);
        m_page->changeToPage_kline_week();
        QCOMPARE(feed->chart(), ZvChartFeed::WeekKLine);
        m_page->changeToPage_kline_month();
        QCOMPARE(feed->chart(), ZvChartFeed::MonthKLine);
        m_page->changeToPage_timeChart();
        QCOMPARE(feed->chart(), ZvChartFeed::TimeLine);
    }

    // Page keys.

    void pageDownGoesToTheNext()
    {
        zvtest::Record record;
        record.noteSignal(pool(), &Pool::signal_global_colletionId_changed, "changed");
        pool()->slot_pagedown_clicked();
        QCOMPARE(record.take(), chooses("1003") + "\nchanged");
        // The last one is the end.
        pool()->slot_pagedown_clicked();
        QCOMPARE(record.take(), QString());
    }

    void pageUpGoesToThePreviousAndSaysSo()
    {
        zvtest::Record record;
        record.noteSignal(pool(), &Pool::signal_global_colletionId_changed, "changed");
        pool()->slot_pageup_clicked();
        QCOMPARE(record.take(), firstLog + '\n' + chooses("1001") + "\nchanged\n" + secondLog);
        // The first one is the end, and nothing is logged there.
        pool()->slot_pageup_clicked();
        QCOMPARE(record.take(), QString());
    }

    void aHiddenPageLeavesThePageKeysAlone()
    {
        m_page->hide();
        zvtest::Record record;
        pool()->slot_pageup_clicked();
        pool()->slot_pagedown_clicked();
        QCOMPARE(record.take(), QString());
    }

    void theListIsThatOfTheServer()
    {
        zvtest::storeCollections({"7", "1002", "5", "1001"});
        pool()->slot_pagedown_clicked();
        QCOMPARE(current(), QStringLiteral("5"));
        pool()->slot_pageup_clicked();
        pool()->slot_pageup_clicked();
        QCOMPARE(current(), QStringLiteral("7"));
    }

    void thereIsNoWayFromOutsideTheList_data()
    {
        QTest::addColumn<Way>("way");
        QTest::addColumn<QString>("id");
        QTest::addColumn<QStringList>("list");
        const QPair<const char *, Way> ways[] = {{"page down", Way::PageDown},
                                                 {"page up", Way::PageUp},
                                                 {"wheel down", Way::WheelDown},
                                                 {"wheel up", Way::WheelUp}};
        for (const auto &way : ways) {
            QTest::addRow("composite, %s", way.first) << way.second << "-1" << three;
            QTest::addRow("unknown, %s", way.first) << way.second << "9" << three;
            QTest::addRow("empty list, %s", way.first) << way.second << "1002" << QStringList();
        }
        QTest::newRow("the only one, page down") << Way::PageDown << "1002" << QStringList("1002");
        QTest::newRow("the only one, page up") << Way::PageUp << "1002" << QStringList("1002");
        QTest::newRow("the only one, wheel down")
            << Way::WheelDown << "1002" << QStringList("1002");
        QTest::newRow("the only one, wheel up") << Way::WheelUp << "1002" << QStringList("1002");
        QTest::newRow("the last, wheel down") << Way::WheelDown << "1003" << three;
        QTest::newRow("the first, wheel up") << Way::WheelUp << "1001" << three;
    }
    void thereIsNoWayFromOutsideTheList()
    {
        QFETCH(Way, way);
        QFETCH(QString, id);
        QFETCH(QStringList, list);
        zvtest::storeCollections(list);
        choose(id);
        zvtest::Record record;
        walk(way);
        QCOMPARE(record.take(), QString());
        QCOMPARE(current(), id);
    }

    // The wheel.

    void theTimerRunsFromTheStart()
    {
        const Market_KTimeWidget page;
        const auto *clock = page.findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly);
        QVERIFY(clock->isActive());
        QCOMPARE(clock->interval(), 1000);
        QVERIFY(!clock->isSingleShot());
    }

    void theWheelMovesWhenItsSecondIsOver_data()
    {
        QTest::addColumn<QPoint>("angle");
        QTest::addColumn<QString>("target");
        QTest::newRow("a notch away") << QPoint(0, 120) << "1001";
        QTest::newRow("a notch near") << QPoint(0, -120) << "1003";
        QTest::newRow("three notches at once") << QPoint(0, -360) << "1003";
        QTest::newRow("less than a notch") << QPoint(0, 119) << "1002";
        QTest::newRow("less than a notch near") << QPoint(0, -119) << "1002";
        QTest::newRow("a notch to the side") << QPoint(120, 0) << "1001";
        QTest::newRow("a notch to the other side") << QPoint(-120, 10) << "1003";
        QTest::newRow("nothing") << QPoint() << "1002";
    }
    void theWheelMovesWhenItsSecondIsOver()
    {
        QFETCH(QPoint, angle);
        QFETCH(QString, target);
        zvtest::Record record;
        QVERIFY(turnWheel(m_page.get(), angle));
        QCOMPARE(record.take(), QString());
        tick();
        QCOMPARE(current(), target);
        QCOMPARE(record.take(), target == QLatin1String("1002") ? QString() : chooses(target));
        // The target is used up.
        tick();
        QCOMPARE(record.take(), QString());
    }

    void twoNotchesInASecondMoveOneCollection()
    {
        zvtest::storeCollections({"1", "2", "3", "4", "5"});
        choose("1");
        for (int i = 0; i < 3; ++i)
            QVERIFY(turnWheel(m_page.get(), -120));
        tick();
        QCOMPARE(current(), QStringLiteral("2"));
        QVERIFY(turnWheel(m_page.get(), -120));
        QVERIFY(turnWheel(m_page.get(), 120));
        tick();
        QCOMPARE(current(), QStringLiteral("1"));
    }

    void theClockItselfMovesIt()
    {
        timer()->start(1000);
        QElapsedTimer elapsed;
        elapsed.start();
        QVERIFY(turnWheel(m_page.get(), -120));
        QCOMPARE(current(), QStringLiteral("1002"));
        QTRY_COMPARE_WITH_TIMEOUT(current(), QStringLiteral("1003"), 3000);
        QVERIFY2(elapsed.elapsed() >= 900, qPrintable(QString::number(elapsed.elapsed())));
    }

    void theWheelOverTheChartReachesThePage()
    {
        QVERIFY(turnWheel(charts(), -120));
        tick();
        QCOMPARE(current(), QStringLiteral("1003"));
    }

    void theWheelOverTheDetailReachesThePage()
    {
        for (QAbstractScrollArea *list : m_page->findChild<Collection_DetailWidget *>()
                                             ->findChildren<QAbstractScrollArea *>()) {
            choose("1002");
            turnWheel(list->viewport(), -120);
            tick();
            QCOMPARE(current(), QStringLiteral("1003"));
        }
    }

    void theWheelOfThePoolCountsOnAHiddenPage()
    {
        m_page->hide();
        pool()->slot_wheelOnChart_clicked(240);
        tick();
        QCOMPARE(current(), QStringLiteral("1001"));
        pool()->slot_wheelOnChart_clicked(119);
        pool()->slot_wheelOnChart_clicked(-119);
        tick();
        QCOMPARE(current(), QStringLiteral("1001"));
    }

    // The server may be another one before the second is over.
    void aTargetOfAnotherListIsForgotten()
    {
        QVERIFY(turnWheel(m_page.get(), -120));
        zvtest::storeCollections({"7", "8"});
        zvtest::Record record;
        tick();
        QCOMPARE(record.take(), QString());
        // For good: the old list does not bring it back.
        zvtest::storeCollections(three);
        tick();
        QCOMPARE(record.take(), QString());
    }

    void theWheelMayTurnAsFarAsItCan()
    {
        for (const int delta : {std::numeric_limits<int>::min(), std::numeric_limits<int>::max()}) {
            choose("1002");
            pool()->slot_wheelOnChart_clicked(delta);
            tick();
            QCOMPARE(current(), QLatin1String(delta < 0 ? "1003" : "1001"));
        }
    }

    void anEmptyIdIsNoTarget()
    {
        zvtest::storeCollections({"1001", "1002", ""});
        zvtest::Record record;
        QVERIFY(turnWheel(m_page.get(), 120));
        QVERIFY(turnWheel(m_page.get(), -120));
        tick();
        QCOMPARE(record.take(), chooses("1001"));
    }

    // Whoever hears of the change may end the page.
    void thePageMayEndOnTheWay_data()
    {
        QTest::addColumn<Way>("way");
        QTest::newRow("page down") << Way::PageDown;
        QTest::newRow("page up") << Way::PageUp;
        QTest::newRow("wheel") << Way::WheelDown;
    }
    void thePageMayEndOnTheWay()
    {
        QFETCH(Way, way);
        QObject context;
        connect(pool(), &Pool::signal_global_colletionId_changed, &context,
                [this] { m_page.reset(); });
        walk(way);
        QVERIFY(!m_page);
    }

    void aThousandStepsEndWhereTheyShould()
    {
        QStringList ids;
        for (int i = 0; i < 501; ++i)
            ids << QString::number(2000 + i);
        zvtest::storeCollections(ids);
        choose("2000");
        for (int i = 0; i < 500; ++i)
            pool()->slot_pagedown_clicked();
        QCOMPARE(current(), QStringLiteral("2500"));
        for (int i = 0; i < 500; ++i)
            pool()->slot_pageup_clicked();
        QCOMPARE(current(), QStringLiteral("2000"));
    }
};

ZV_TEST(MarketKTimeWidgetTest)
#include "test_market_ktimewidget.moc"
