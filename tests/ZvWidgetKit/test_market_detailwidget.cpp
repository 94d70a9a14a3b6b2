#include "ZvModelKit/zvubbriefinfo.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/collection_dealhistory_view.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "dealrows.h"
#include "pagelog.h"
#include "support/testregistry.h"
#include "wheel.h"

#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QRegularExpression>
#include <QScrollBar>
#include <QtTest/QtTest>

#include <limits>
#include <memory>

using zvtest::deals;
using zvtest::numbers;
using zvtest::shownDeals;

namespace {

const QString current = QStringLiteral("1001");
const QString cleared = QStringLiteral("clear clear clear");

ZvServerCache *cache()
{
    return ZvServerCache::getZvServerCacheInstance();
}

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

ZvWidgetSignalSLotPool *pool()
{
    return ZvWidgetSignalSLotPool::getSignalSlotPoolInstance();
}

QString asks(int page, int size, const QString &id = current)
{
    return QStringLiteral("ZvServerEngine::sendRequest_Market_Detail(\"%1\", %2, %3)")
        .arg(id)
        .arg(page)
        .arg(size);
}

// The lines with each time of day as "<time>".
QStringList withoutTimes(QStringList lines)
{
    static const QRegularExpression time(QStringLiteral("^\\d\\d:\\d\\d:\\d\\d\\d"));
    for (QString &line : lines)
        line.replace(time, QStringLiteral("<time>"));
    return lines;
}

QStringList turn(const char *direction, int page, int size, const QString &id = current)
{
    return {cleared, QStringLiteral("<time> ==> ") + QLatin1String(direction),
            QStringLiteral("<time> ==> RequestPage: %1").arg(page), asks(page, size, id)};
}

} // namespace

// A page of 900 x 330 has three lists of eleven deals.
class MarketDetailWidgetTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<Market_DetailWidget> m_page;
    static constexpr int Rows = 11;
    static constexpr int PageSize = 33;

    Collection_DealHistory_View *view(int i) const
    {
        return m_page->findChild<Collection_DealHistory_View *>(
            QStringLiteral("tableView_%1").arg(i));
    }
    QString shown(int i) const { return shownDeals(view(i)->model()); }
    QString shown() const
    {
        QStringList all;
        for (int i = 0; i < 3; ++i)
            all << shown(i);
        return all.join(QStringLiteral(" | "));
    }

    void showPage(const QSize &size = QSize(900, 330))
    {
        m_page->resize(size);
        m_page->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_page.get()));
        QCOMPARE(m_page->size(), size);
    }

    void call(const char *slot) { QVERIFY(QMetaObject::invokeMethod(m_page.get(), slot)); }
    void forward() { pool()->slot_pagedown_clicked(); }
    void back() { pool()->slot_pageup_clicked(); }

    // An answer of so many deals from a number on.
    static void answer(int count, int first = 1)
    {
        cache()->storeMarketDetail(deals(count, first));
    }

    // The page on view: the one before that which a turn forward asks for.
    int currentPage(zvtest::PageLog &log)
    {
        log.take();
        forward();
        const QString line = log.take().last();
        return line.section(QStringLiteral(", "), 1, 1).toInt() - 1;
    }

private slots:
    void initTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->setTransport(
            std::make_unique<ZvScriptedTransport>());
        ZvUBBriefItem::Data item;
        item.collectionId = current;
        item.code = QStringLiteral("600137");
        item.name = QStringLiteral("庚申猴票");
        ZvUBBriefInfo::Data data;
        data.items << ZvUBBriefItem(item);
        cache()->storeBriefInfo(ZvUBBriefInfo(data));
    }

    void init()
    {
        engine()->setGlobalCollectionID(current);
        cache()->storeMarketDetail({});
        QCoreApplication::processEvents();
        m_page = std::make_unique<Market_DetailWidget>();
    }

    void cleanup() { m_page.reset(); }

    void formIsMadeAsRequired()
    {
        auto *frameTitle = m_page->findChild<QFrame *>("frame_title");
        auto *frameDetail = m_page->findChild<QFrame *>("frame_detail");
        auto *title = m_page->findChild<QLabel *>("label_title");
        QVERIFY(frameTitle && frameDetail && title);
        QCOMPARE(frameTitle->styleSheet(),
                 QStringLiteral("QFrame#frame_title{background-color: rgb(54, 54, 68);}"));
        QCOMPARE(frameDetail->styleSheet(),
                 QStringLiteral("QFrame#frame_detail{background-color: rgb(22, 24, 28);}"));
        QCOMPARE(title->styleSheet(), QStringLiteral("color: rgb(255, 255, 0);"));
        QCOMPARE(title->text(), QStringLiteral("成交明细"));
        QCOMPARE(title->textFormat(), Qt::PlainText);
        QCOMPARE(title->parentWidget(), frameTitle);

        QCOMPARE(m_page->layout()->itemAt(0)->widget(), frameTitle);
        QCOMPARE(m_page->layout()->itemAt(1)->widget(), frameDetail);
        QStringList row;
        for (int i = 0; i < frameDetail->layout()->count(); ++i)
            row << frameDetail->layout()->itemAt(i)->widget()->objectName();
        QStringList expected;
        for (int i = 0; i < 10; ++i)
            expected << QStringLiteral("line_%1").arg(i) << QStringLiteral("tableView_%1").arg(i);
        expected << QStringLiteral("line_10");
        QCOMPARE(row, expected);
        for (int i = 0; i <= 10; ++i) {
            auto *line = m_page->findChild<QFrame *>(QStringLiteral("line_%1").arg(i));
            QCOMPARE(line->styleSheet(), QStringLiteral("color: #ae1309;"));
            QCOMPARE(line->frameShape(), QFrame::VLine);
        }
        for (int i = 0; i < 10; ++i)
            QCOMPARE(view(i)->verticalHeader()->defaultSectionSize(), 25);

        for (const auto &[layout, spacing] :
             {std::pair(m_page->layout(), 0), std::pair(frameTitle->layout(), 0),
              std::pair(frameDetail->layout(), 20)}) {
            QCOMPARE(layout->contentsMargins(), QMargins());
            QCOMPARE(layout->spacing(), spacing);
        }
    }

    void aHundredDealsAreAskedForBeforeTheSizeIsKnown()
    {
        zvtest::PageLog log;
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "selectTiggered",
                                          Q_ARG(QString, QStringLiteral("77"))));
        QCOMPARE(log.take(), QStringList{asks(1, 100, QStringLiteral("77"))});
    }

    // The resize that the first show brings, then the show itself: two requests.
    void theFirstShowAsksTwice()
    {
        m_page->resize(900, 330);
        zvtest::PageLog log;
        m_page->show();
        QCOMPARE(log.take(), (QStringList{asks(1, 33), "3 11 33", cleared, asks(1, 33)}));
        m_page->hide();
        m_page->show();
        QCOMPARE(log.take(), (QStringList{cleared, asks(1, 33)}));
        QCOMPARE(m_page->findChild<QLabel *>("label_title")->text(),
                 QStringLiteral("庚申猴票(600137)成交明细"));
    }

    void titleFollowsTheCollectionAtTheNextShow()
    {
        showPage();
        engine()->setGlobalCollectionID(QStringLiteral("-1"));
        auto *title = m_page->findChild<QLabel *>("label_title");
        QCOMPARE(title->text(), QStringLiteral("庚申猴票(600137)成交明细"));
        m_page->hide();
        zvtest::PageLog log;
        m_page->show();
        QCOMPARE(title->text(), QStringLiteral("()成交明细"));
        QCOMPARE(log.take(), (QStringList{cleared, asks(1, 33, QStringLiteral("-1"))}));
    }

    void sizeDecidesHowMuchIsAskedFor_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("views");
        QTest::addColumn<int>("rows");
        QTest::addColumn<int>("pageSize");
        QTest::newRow("1366x768") << QSize(1366, 768) << 4 << 28 << 112;
        QTest::newRow("1920x1080") << QSize(1920, 1080) << 6 << 41 << 246;
        QTest::newRow("ten lists") << QSize(3299, 900) << 10 << 33 << 330;
        QTest::newRow("eleven lists, of which ten are there")
            << QSize(3300, 900) << 11 << 33 << 363;
        QTest::newRow("3400x900") << QSize(3400, 900) << 11 << 33 << 363;
        QTest::newRow("one list") << QSize(300, 80) << 1 << 1 << 1;
        QTest::newRow("no list") << QSize(299, 600) << 0 << 21 << 0;
        QTest::newRow("250 wide") << QSize(250, 600) << 0 << 21 << 0;
        QTest::newRow("no row") << QSize(900, 79) << 3 << 0 << 0;
        QTest::newRow("54 high") << QSize(900, 54) << 3 << 0 << 0;
        QTest::newRow("31 high") << QSize(900, 31) << 3 << 0 << 0;
        QTest::newRow("30 high") << QSize(900, 30) << 3 << -1 << -3;
        QTest::newRow("5 high") << QSize(900, 5) << 3 << -2 << -6;
    }

    void sizeDecidesHowMuchIsAskedFor()
    {
        QFETCH(QSize, size);
        QFETCH(int, views);
        QFETCH(int, rows);
        QFETCH(int, pageSize);
        showPage(QSize(901, 331));
        zvtest::PageLog log;
        m_page->resize(size);
        QCOMPARE(m_page->size(), size);
        QCOMPARE(log.take(),
                 (QStringList{asks(1, pageSize),
                              QStringLiteral("%1 %2 %3").arg(views).arg(rows).arg(pageSize)}));
        for (int i = 0; i < 10; ++i) {
            auto *line = m_page->findChild<QFrame *>(QStringLiteral("line_%1").arg(i));
            QCOMPARE(view(i)->isVisible(), i < views);
            QCOMPARE(line->isVisible(), i < views);
        }
        QVERIFY(m_page->findChild<QFrame *>("line_10")->isVisible());

        // Neither clearing nor filling leaves the ten lists or their rows.
        answer(400);
        for (int i = 0; i < 10; ++i) {
            const int count = i < views ? qMax(0, qMin(rows, 400 - i * rows)) : 0;
            QCOMPARE(shown(i), numbers(count, 1 + i * rows));
        }
        forward();
        for (int i = 0; i < 10; ++i)
            QCOMPARE(shown(i), QString());
        cache()->storeMarketDetail({});
        for (int i = 0; i < 10; ++i) {
            const int count = i < views ? qMax(0, qMin(rows, 400 - i * rows)) : 0;
            QCOMPARE(shown(i), numbers(count, 1 + i * rows));
        }
    }

    void aResizeStartsAtTheFirstPage()
    {
        showPage();
        answer(33);
        forward();
        answer(33, 34);
        zvtest::PageLog log;
        QCOMPARE(currentPage(log), 2);
        m_page->resize(600, 330);
        QCOMPARE(log.take(), (QStringList{asks(1, 22), "2 11 22"}));
        answer(22);
        QCOMPARE(currentPage(log), 1);
    }

    // A list that is hidden for a while must not come back with deals of another collection.
    void aListThatComesBackIsEmpty()
    {
        showPage();
        answer(33);
        m_page->resize(600, 330);
        answer(22, 100);
        m_page->resize(900, 330);
        QCOMPARE(shown(),
                 numbers(11, 100) + QStringLiteral(" | ") + numbers(11, 111)
                     + QStringLiteral(" | "));
    }

    void fullListsFitWithoutScrolling()
    {
        for (const QSize &size : {QSize(1366, 768), QSize(1920, 1080), QSize(900, 330)}) {
            showPage(size);
            const int rows = (size.height() - 55) / 25;
            answer(10 * rows);
            QCoreApplication::processEvents();
            auto *title = m_page->findChild<QFrame *>("frame_title");
            for (int i = 0; i < size.width() / 300; ++i) {
                QCOMPARE(view(i)->model()->rowCount(), rows);
                QCOMPARE(title->height() + view(i)->horizontalHeader()->height(), 55);
                QCOMPARE(view(i)->verticalScrollBar()->maximum(), 0);
                QCOMPARE(view(i)->horizontalScrollBar()->maximum(), 0);
                const QRect last = view(i)->visualRect(view(i)->model()->index(rows - 1, 0));
                QVERIFY(view(i)->viewport()->rect().contains(last));
                QCOMPARE(last.height(), 25);
            }
            m_page->hide();
        }
    }

    void theWindowMayBecomeNarrowAgain()
    {
        showPage(QSize(3400, 900));
        m_page->resize(250, 100);
        QCOMPARE(m_page->size(), QSize(250, 100));
    }

    void answersFillOneListAfterTheOther_data()
    {
        QTest::addColumn<int>("count");
        QTest::addColumn<QString>("expected");
        const QString then = QStringLiteral(" | ");
        QTest::newRow("one") << 1 << "1" + then + then;
        QTest::newRow("one list") << 11 << numbers(11) + then + then;
        QTest::newRow("one more") << 12 << numbers(11) + then + "12" + then;
        QTest::newRow("all") << 33 << numbers(11) + then + numbers(11, 12) + then + numbers(11, 23);
        QTest::newRow("more than asked for")
            << 50 << numbers(11) + then + numbers(11, 12) + then + numbers(11, 23);
    }

    void answersFillOneListAfterTheOther()
    {
        QFETCH(int, count);
        QFETCH(QString, expected);
        showPage();
        answer(33, 500);
        answer(count);
        QCOMPARE(shown(), expected);
    }

    void aHiddenPageTakesNoAnswer()
    {
        showPage();
        answer(3);
        m_page->hide();
        answer(5, 50);
        QCOMPARE(shown(0), numbers(3));
        // Nor does an empty one end the new choice.
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "selectTiggered", Q_ARG(QString, current)));
        cache()->storeMarketDetail({});
        QCOMPARE(shown(0), numbers(3));
    }

    void aHiddenPageDoesNotTurn()
    {
        showPage();
        m_page->hide();
        zvtest::PageLog log;
        forward();
        back();
        call("requestPage_whenWheelIn");
        call("requestPage_whenWheelOut");
        QCOMPARE(log.take(), QStringList());
        QVERIFY(QMetaObject::invokeMethod(m_page.get(), "selectTiggered", Q_ARG(QString, current)));
        QCOMPARE(log.take(), QStringList{asks(1, 33)});
    }

    void pageKeysTurn()
    {
        showPage();
        answer(33);
        zvtest::PageLog log;
        forward();
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, PageSize));
        QCOMPARE(shown(), QStringLiteral(" |  | "));
        answer(33, 34);
        QCOMPARE(shown(0), numbers(11, 34));
        log.take();
        forward();
        QCOMPARE(withoutTimes(log.take()), turn("Down", 3, PageSize));
        answer(33, 67);
        log.take();
        back();
        QCOMPARE(withoutTimes(log.take()), turn("Up", 2, PageSize));
        answer(33, 34);
        QCOMPARE(shown(2), numbers(11, 56));
    }

    void timesAreHoursSecondsAndMilliseconds()
    {
        showPage();
        zvtest::PageLog log;
        const QTime before = QTime::currentTime();
        forward();
        const QTime after = QTime::currentTime();
        const QString line = log.take().at(1);
        QStringList possible;
        for (QTime time = before; time <= after; time = time.addMSecs(1))
            possible << time.toString(QStringLiteral("hh:ss:zzz")) + QStringLiteral(" ==> Down");
        QVERIFY2(possible.contains(line), qPrintable(line));
    }

    void theFirstPageIsAskedForOnceMore()
    {
        showPage();
        answer(33);
        zvtest::PageLog log;
        back();
        QCOMPARE(withoutTimes(log.take()), turn("Up", 1, PageSize));
        QCOMPARE(shown(), QStringLiteral(" |  | "));
        answer(33);
        QCOMPARE(shown(0), numbers(11));
        QCOMPARE(currentPage(log), 1);
    }

    void pastTheEndTheLastPageComesBack()
    {
        showPage();
        answer(33);
        forward();
        answer(25, 34);
        const QString lastPage = shown();
        forward();
        QCOMPARE(shown(), QStringLiteral(" |  | "));
        zvtest::PageLog log;
        cache()->storeMarketDetail({});
        QCOMPARE(shown(), lastPage);
        QCOMPARE(log.take(), QStringList{"wo ri 3"});
        forward();
        QCOMPARE(withoutTimes(log.take()), turn("Down", 3, PageSize));
        cache()->storeMarketDetail({});
        QCOMPARE(shown(), lastPage);
        log.take();
        back();
        QCOMPARE(withoutTimes(log.take()), turn("Up", 1, PageSize));
    }

    void onlyTheThirdListTellsWhatItHoldsAgain()
    {
        showPage(QSize(600, 330));
        answer(22);
        forward();
        zvtest::PageLog log;
        cache()->storeMarketDetail({});
        QCOMPARE(log.take(), QStringList());
        QCOMPARE(shown(1), numbers(11, 12));
        m_page->resize(1500, 330);
        answer(20);
        QCOMPARE(log.take().filter(QStringLiteral("wo ri")), QStringList());
        forward();
        log.take();
        cache()->storeMarketDetail({});
        QCOMPARE(log.take(), QStringList{"wo ri 0"});
    }

    void aCollectionWithoutDealsIsEmpty()
    {
        showPage();
        answer(33);
        m_page->hide();
        m_page->show();
        zvtest::PageLog log;
        cache()->storeMarketDetail({});
        QCOMPARE(log.take(), QStringList());
        QCOMPARE(shown(), QStringLiteral(" |  | "));
        QCOMPARE(currentPage(log), 1);
        // The deals of before are gone for good.
        cache()->storeMarketDetail({});
        QCOMPARE(shown(), QStringLiteral(" |  | "));
        QCOMPARE(currentPage(log), 1);
    }

    void anAnswerEndsTheNewChoice()
    {
        showPage();
        answer(2);
        // Nothing was asked for since, so this is the end of the list, not an empty collection.
        cache()->storeMarketDetail({});
        QCOMPARE(shown(0), numbers(2));
    }

    void clearingLeavesTheDealsKnown()
    {
        showPage();
        answer(33);
        const QString before = shown();
        zvtest::PageLog log;
        call("slot_clearMarketDetail");
        QCOMPARE(log.take(), QStringList{cleared});
        QCOMPARE(shown(), QStringLiteral(" |  | "));
        cache()->storeMarketDetail({});
        QCOMPARE(shown(), before);
    }

    void ofTwoQuickTurnsTheLaterNumberWins()
    {
        showPage();
        answer(33);
        forward();
        answer(33, 34);
        zvtest::PageLog log;
        forward();
        QCOMPARE(withoutTimes(log.take()), turn("Down", 3, PageSize));
        forward(); // no answer yet: the same page once more
        QCOMPARE(withoutTimes(log.take()), turn("Down", 3, PageSize));
        back();
        QCOMPARE(withoutTimes(log.take()), turn("Up", 1, PageSize));
        answer(33, 67);
        log.take();
        forward();
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, PageSize));
    }

    void pagesAreThoseOfTheCurrentCollection()
    {
        showPage();
        answer(33);
        engine()->setGlobalCollectionID(QStringLiteral("2002"));
        zvtest::PageLog log;
        forward();
        auto *title = m_page->findChild<QLabel *>("label_title");
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, PageSize, QStringLiteral("2002")));
        // No deals stand below the name of another collection.
        QCOMPARE(title->text(), QStringLiteral("()成交明细"));
        engine()->setGlobalCollectionID(current);
        m_page->resize(901, 330);
        QCOMPARE(title->text(), QStringLiteral("庚申猴票(600137)成交明细"));
        // A hidden page has nothing to name.
        m_page->hide();
        engine()->setGlobalCollectionID(QStringLiteral("2002"));
        m_page->resize(900, 330);
        QCOMPARE(title->text(), QStringLiteral("庚申猴票(600137)成交明细"));
    }

    void theWheelMayTurnAsFarAsItCan()
    {
        showPage();
        answer(33);
        const int most = std::numeric_limits<int>::max();
        zvtest::PageLog log;
        zvtest::turnWheel(m_page.get(), -480);
        zvtest::turnWheel(m_page.get(), -most);
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, PageSize));
        zvtest::turnWheel(m_page.get(), 480);
        zvtest::turnWheel(m_page.get(), most);
        QCOMPARE(withoutTimes(log.take()), turn("Up", 1, PageSize));
    }

    void fiveNotchesTurnThePage()
    {
        showPage();
        answer(33);
        forward();
        answer(33, 34);
        zvtest::PageLog log;
        for (int notch = 0; notch < 4; ++notch)
            QVERIFY(zvtest::turnWheel(m_page.get(), -120));
        QCOMPARE(log.take(), QStringList());
        QVERIFY(zvtest::turnWheel(m_page.get(), -120));
        QCOMPARE(withoutTimes(log.take()), turn("Down", 3, PageSize));
        answer(33, 67);
        // The count begins anew.
        for (int notch = 0; notch < 4; ++notch)
            zvtest::turnWheel(m_page.get(), -120);
        QCOMPARE(log.take(), QStringList());
        zvtest::turnWheel(m_page.get(), -1);
        QCOMPARE(withoutTimes(log.take()), turn("Down", 4, PageSize));
        answer(33, 100);

        for (int notch = 0; notch < 4; ++notch)
            QVERIFY(zvtest::turnWheel(m_page.get(), 120));
        QCOMPARE(log.take(), QStringList());
        QVERIFY(zvtest::turnWheel(m_page.get(), 1));
        QCOMPARE(withoutTimes(log.take()), turn("Up", 3, PageSize));
    }

    void oneBigTurnIsOnePage()
    {
        showPage();
        answer(33);
        zvtest::PageLog log;
        zvtest::turnWheel(m_page.get(), -4800);
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, PageSize));
        zvtest::turnWheel(m_page.get(), 4800);
        QCOMPARE(withoutTimes(log.take()), turn("Up", 1, PageSize));
    }

    void aChangeOfDirectionBeginsAnewAndDoesNotCount_data()
    {
        QTest::addColumn<int>("direction");
        QTest::newRow("down, then up") << -1;
        QTest::newRow("up, then down") << 1;
    }

    void aChangeOfDirectionBeginsAnewAndDoesNotCount()
    {
        QFETCH(int, direction);
        showPage();
        answer(33);
        zvtest::PageLog log;
        const auto turnBy = [&](int delta) { zvtest::turnWheel(m_page.get(), direction * delta); };
        turnBy(480);
        turnBy(-480); // dropped
        turnBy(-480);
        QCOMPARE(log.take(), QStringList());
        turnBy(-1);
        QCOMPARE(log.take().size(), 4);
        // And back: 480 here, dropped there, nothing left.
        turnBy(480);
        turnBy(-2);
        turnBy(480);
        QCOMPARE(log.take(), QStringList());
        turnBy(1);
        QCOMPARE(log.take().size(), 4);
    }

    void aTurnOfZeroCountsAsNotNegative()
    {
        showPage();
        answer(33);
        zvtest::PageLog log;
        zvtest::turnWheel(m_page.get(), -480);
        QVERIFY(zvtest::turnWheel(m_page.get(), 0));
        zvtest::turnWheel(m_page.get(), -480);
        QCOMPARE(log.take(), QStringList());
        zvtest::turnWheel(m_page.get(), -1);
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, PageSize));
        // Forward it changes nothing.
        zvtest::turnWheel(m_page.get(), 480);
        zvtest::turnWheel(m_page.get(), 0);
        QCOMPARE(log.take(), QStringList());
        zvtest::turnWheel(m_page.get(), 1);
        QCOMPARE(withoutTimes(log.take()), turn("Up", 1, PageSize));
    }

    void aSidewaysTurnIsTakenAndTurnsNothing()
    {
        showPage();
        zvtest::PageLog log;
        for (int i = 0; i < 20; ++i)
            QVERIFY(zvtest::turnWheel(m_page.get(), QPoint(-120, 0)));
        QCOMPARE(log.take(), QStringList());
    }

    void theWheelTurnsOverTheListsToo()
    {
        showPage();
        answer(33);
        zvtest::PageLog log;
        for (int notch = 0; notch < 5; ++notch)
            QVERIFY(zvtest::turnWheel(view(1)->viewport(), -120));
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, PageSize));
        // While the lists are longer than the page, too: it has shrunk, and no answer has come.
        answer(33);
        m_page->resize(900, 130);
        log.take();
        for (int notch = 0; notch < 5; ++notch)
            QVERIFY(zvtest::turnWheel(view(1)->viewport(), -120));
        QCOMPARE(withoutTimes(log.take()), turn("Down", 2, 9));
        for (int notch = 0; notch < 5; ++notch)
            QVERIFY(zvtest::turnWheel(m_page->findChild<QLabel *>("label_title"), -120));
        QCOMPARE(log.take().size(), 4);
    }

    void aDoubleClickOnAListDoesNothing()
    {
        showPage();
        answer(33);
        QSignalSpy asked(pool(), &ZvWidgetSignalSLotPool::signal_marketDeatil_clicked);
        zvtest::PageLog log;
        QTest::mouseDClick(view(0)->viewport(), Qt::LeftButton, {}, QPoint(20, 20));
        QCOMPARE(asked.count(), 0);
        QCOMPARE(log.take(), QStringList());
    }

    void aLongTitleDoesNotWidenThePage()
    {
        showPage(QSize(320, 330));
        m_page->findChild<QLabel *>("label_title")->setText(QString(80, QChar(0x9f98)));
        QCoreApplication::processEvents();
        QCOMPARE(m_page->size(), QSize(320, 330));
    }
};

ZV_TEST(MarketDetailWidgetTest)
#include "test_market_detailwidget.moc"
