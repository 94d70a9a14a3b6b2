#include "client/keyboardsprite.h"
#include "client/mainwindow.h"

#include "endtoend/chartpage.h"
#include "endtoend/marketpage.h"
#include "endtoend/programs.h"
#include "support/testregistry.h"

#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvservercache.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/market_detailwidget.h"
#include "ZvWidgetKit/market_ktimewidget.h"
#include "ZvWidgetKit/market_widget.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"

#include <QLineEdit>
#include <QPushButton>
#include <QStackedWidget>
#include <QTableView>
#include <QtTest/QtTest>

using endtoend::ChartPage;
using endtoend::DealsPage;
using endtoend::patience;
using endtoend::TablePage;

namespace {

constexpr int codeColumn = 1;
constexpr int idColumn = 21;

QString currentId()
{
    return ZvServerEngine::getZvServerEngineInstance()->getGlobalCollectionID();
}

} // namespace

// A trader at the window on a living market: from the table to a chart, through the collections, to
// the page of deals, and back. Each step begins at the market table.
class TraderTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(m_exchange.start(m_state, 0, 60));
        m_window = std::make_unique<MainWindow>();
        m_window->resize(1366, 768);
        m_window->show();
        m_window->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
        m_window->useExchange(m_exchange.address());
        m_table = endtoend::marketTable(*m_window);
        QTRY_VERIFY_WITH_TIMEOUT(m_window->hasMarket(), patience);
        QVERIFY(endtoend::showWholeMarket(*m_window));
        QTRY_COMPARE_WITH_TIMEOUT(m_table->model()->rowCount(), 9, patience);
    }

    void cleanupTestCase()
    {
        ZvServerAccessManager::getZvServerAccessManagerInstance()->stop();
        m_window.reset();
    }

    void init()
    {
        for (int i = 0; i < 3 && page() != TablePage; ++i)
            press(Qt::Key_Escape);
        QCOMPARE(page(), TablePage);
        m_table->setFocus();
    }

    void aDoubleClickOpensTheTimeLine()
    {
        const QPoint place = placeOf("111003");
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QCOMPARE(page(), ChartPage);
        QCOMPARE(mode(), QStringLiteral("分时"));
        QVERIFY(shows("111003"));
        QTRY_COMPARE_WITH_TIMEOUT(feed()->state(), ZvChartFeed::Ready, patience);
        QCOMPARE(feed()->chart(), ZvChartFeed::TimeLine);
        QCOMPARE(feed()->timeLine().collectionId, currentId());
        QVERIFY(!feed()->timeLine().minutes.isEmpty());
        QTRY_VERIFY_WITH_TIMEOUT(!endtoend::pricesOf(deals()).isEmpty(), patience);
        QCOMPARE(endtoend::faultsOf(*m_window), QStringList());
        // And it lives.
        QSignalSpy grown(feed(), &ZvChartFeed::grown);
        QVERIFY(grown.wait(patience));
        press(Qt::Key_Escape);
        QCOMPARE(page(), TablePage);
        QVERIFY(m_table->hasFocus());
        QCOMPARE(currentCode(), QStringLiteral("111003"));
    }

    void returnOpensWhatIsMarked()
    {
        select("111001");
        QTest::keyClick(m_table, Qt::Key_Down);
        const QString code = currentCode();
        QTest::keyClick(m_table, Qt::Key_Return);
        QCOMPARE(page(), ChartPage);
        QVERIFY(shows(code));
    }

    void returnOpensWhatAPageKeyHasMarked()
    {
        select("111001");
        QTest::keyClick(m_table, Qt::Key_PageDown);
        const QString id = m_table->currentIndex().siblingAtColumn(idColumn).data().toString();
        QVERIFY(id != endtoend::listed("111001").id);
        QTest::keyClick(m_table, Qt::Key_Return);
        QCOMPARE(page(), ChartPage);
        QCOMPARE(currentId(), id);
        QTRY_COMPARE_WITH_TIMEOUT(feed()->collectionId(), id, patience);
    }

    void aTypedCodeOpensTheChart()
    {
        select("111001");
        QTest::keyClicks(m_table, "1");
        QVERIFY(sprite()->isVisible());
        QTest::keyClicks(m_window->focusWidget(), "12006");
        press(Qt::Key_Return);
        QVERIFY(sprite()->isHidden());
        QCOMPARE(page(), ChartPage);
        QVERIFY(shows("112006"));
        QCOMPARE(mode(), QStringLiteral("分时"));

        // On the chart the mode stays, and only the collection changes.
        press(Qt::Key_F5);
        QCOMPARE(mode(), QStringLiteral("日K"));
        press(Qt::Key_B);
        QVERIFY(sprite()->isVisible());
        QTest::keyClicks(m_window->focusWidget(), "lsfl");
        press(Qt::Key_Return);
        QCOMPARE(page(), ChartPage);
        QVERIFY(shows("111002"));
        QCOMPARE(mode(), QStringLiteral("日K"));
        QTRY_COMPARE_WITH_TIMEOUT(feed()->kLine().collectionId, currentId(), patience);
        QCOMPARE(feed()->chart(), ZvChartFeed::DayKLine);
        press(Qt::Key_F5);
        QCOMPARE(mode(), QStringLiteral("分时"));
    }

    void otherReadingsAreFound()
    {
        // 长城首日封 and 重阳登高版 have characters with two readings each.
        for (const auto &[typed, code] :
             {std::pair("zcsrf", "111003"), std::pair("ccsrf", "111003"),
              std::pair("cydgb", "111004"), std::pair("zydgb", "111004")}) {
            press(Qt::Key(QChar(typed[0]).toUpper().unicode()));
            QTest::keyClicks(m_window->focusWidget(), typed + 1);
            press(Qt::Key_Return);
            QVERIFY2(shows(code), typed);
        }
    }

    void escapeClosesTheSpriteBeforeThePage()
    {
        open("111001");
        press(Qt::Key_1);
        QVERIFY(sprite()->isVisible());
        press(Qt::Key_Escape);
        QVERIFY(sprite()->isHidden());
        QCOMPARE(page(), ChartPage);
        press(Qt::Key_Escape);
        QCOMPARE(page(), TablePage);
    }

    void pageKeysWalkInTheServersOrder()
    {
        open("111001");
        press(Qt::Key_PageUp);
        QVERIFY(shows("111001")); // the first one
        for (const char *code : {"111002", "111003", "111004", "112005"}) {
            press(Qt::Key_PageDown);
            QVERIFY2(shows(code), code);
            QTRY_VERIFY_WITH_TIMEOUT(feed()->state() != ZvChartFeed::Waiting, patience);
            QCOMPARE(endtoend::faultsOf(*m_window), QStringList());
        }
        press(Qt::Key_PageUp);
        QVERIFY(shows("111004"));
        for (int i = 0; i < 10; ++i)
            press(Qt::Key_PageDown);
        QVERIFY(shows("112008")); // the last one
    }

    void theWheelWalksOneASecond()
    {
        open("111002");
        auto *chart = m_window->findChild<Market_KTimeWidget *>();
        QSignalSpy changes(ZvWidgetSignalSLotPool::getSignalSlotPoolInstance(),
                           &ZvWidgetSignalSLotPool::signal_global_colletionId_changed);
        // Over the chart itself, wherever its parts lie.
        QWidget *under = chart->childAt(chart->width() / 3, chart->height() / 2);
        QVERIFY(under);
        QElapsedTimer since;
        since.start();
        for (int i = 0; i < 4; ++i)
            endtoend::turnWheel(under, -120);
        QVERIFY(shows("111003"));
        QVERIFY2(since.elapsed() < 3000, qPrintable(QString::number(since.elapsed())));
        QTest::qWait(0);
        QCOMPARE(changes.count(), 1);
        endtoend::turnWheel(under, 120);
        QVERIFY(shows("111002"));
        QCOMPARE(changes.count(), 2);
    }

    void f5TurnsTheTableToTheTimeLine()
    {
        select("112007");
        press(Qt::Key_F5);
        QCOMPARE(page(), ChartPage);
        QCOMPARE(mode(), QStringLiteral("分时"));
        QVERIFY(shows("112007"));
        press(Qt::Key_F6);
        QCOMPARE(page(), TablePage);
        QVERIFY(endtoend::showWholeMarket(*m_window));
    }

    void everyChartComes_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<ZvChartFeed::Chart>("chart");
        QTest::newRow("day") << "日K" << ZvChartFeed::DayKLine;
        QTest::newRow("week") << "周K" << ZvChartFeed::WeekKLine;
        QTest::newRow("month") << "月K" << ZvChartFeed::MonthKLine;
        QTest::newRow("time line") << "分时" << ZvChartFeed::TimeLine;
    }
    void everyChartComes()
    {
        QFETCH(QString, button);
        QFETCH(ZvChartFeed::Chart, chart);
        open("111001");
        QTest::mouseClick(modeButton(button), Qt::LeftButton);
        QCOMPARE(mode(), button);
        QTRY_COMPARE_WITH_TIMEOUT(feed()->chart(), chart, patience);
        QTRY_COMPARE_WITH_TIMEOUT(feed()->state(), ZvChartFeed::Ready, patience);
        if (chart != ZvChartFeed::TimeLine)
            QVERIFY(!feed()->kLine().bars.isEmpty());
        QCOMPARE(endtoend::faultsOf(*m_window), QStringList());
    }

    void aDoubleClickInTheListOpensTheDealsAndEscapeComesBack()
    {
        open("111001");
        QTest::mouseClick(modeButton("周K"), Qt::LeftButton);
        QTRY_VERIFY_WITH_TIMEOUT(!endtoend::pricesOf(deals()).isEmpty(), patience);
        QTest::mouseDClick(deals()->viewport(), Qt::LeftButton, Qt::NoModifier,
                           deals()->viewport()->rect().center());
        QCOMPARE(page(), DealsPage);
        QCOMPARE(mode(), QString());
        QCOMPARE(endtoend::textOf(*m_window, "label_title"),
                 QStringLiteral("荷塘小型张(111001)成交明细"));
        QTRY_VERIFY_WITH_TIMEOUT(!endtoend::pricesOfPage(*m_window).isEmpty(), patience);
        QCOMPARE(endtoend::faultsOf(*m_window), QStringList());
        press(Qt::Key_Escape);
        QCOMPARE(page(), ChartPage);
        QCOMPARE(mode(), QStringLiteral("周K"));
        QVERIFY(shows("111001"));
        press(Qt::Key_Escape);
        QCOMPARE(page(), TablePage);
        press(Qt::Key_Escape);
        QCOMPARE(page(), TablePage);
    }

    void theDealsArePagedByKeysAndWheel()
    {
        open("111001");
        QTRY_VERIFY_WITH_TIMEOUT(!endtoend::pricesOf(deals()).isEmpty(), patience);
        QTest::mouseDClick(deals()->viewport(), Qt::LeftButton, Qt::NoModifier,
                           deals()->viewport()->rect().center());
        QTRY_VERIFY_WITH_TIMEOUT(!endtoend::pricesOfPage(*m_window).isEmpty(), patience);
        const QString before = currentId();
        QSignalSpy pages(ZvServerCache::getZvServerCacheInstance(),
                         &ZvServerCache::signal_cache_Market_Detail_changed);
        press(Qt::Key_PageDown);
        QTRY_COMPARE_WITH_TIMEOUT(pages.count(), 1, patience);
        auto *page = m_window->findChild<Market_DetailWidget *>();
        for (int i = 0; i < 5; ++i)
            endtoend::turnWheel(page, -120);
        QTRY_COMPARE_WITH_TIMEOUT(pages.count(), 2, patience);
        press(Qt::Key_PageUp);
        QTRY_COMPARE_WITH_TIMEOUT(pages.count(), 3, patience);
        // The keys turn the deals, not the collections.
        QCOMPARE(currentId(), before);
        QTRY_VERIFY_WITH_TIMEOUT(!endtoend::pricesOfPage(*m_window).isEmpty(), patience);
        QCOMPARE(endtoend::faultsOf(*m_window), QStringList());
    }

    void theCompositeHasAChartWithoutFigures()
    {
        const QPoint place = placeOfId("-1");
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QTest::mouseDClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, place);
        QCOMPARE(page(), ChartPage);
        QTRY_COMPARE_WITH_TIMEOUT(feed()->state(), ZvChartFeed::NoData, patience);
        press(Qt::Key_PageDown);
        press(Qt::Key_PageUp);
        QCOMPARE(currentId(), QStringLiteral("-1"));
        QTest::mouseDClick(deals()->viewport(), Qt::LeftButton);
        QCOMPARE(page(), ChartPage);
    }

private:
    endtoend::Page page() const { return endtoend::pageInFront(*m_window); }
    ZvChartFeed *feed() const { return endtoend::feedOf(*m_window); }
    QTableView *deals() const { return endtoend::latestDeals(*m_window); }
    KeyboardSprite *sprite() const { return m_window->findChild<KeyboardSprite *>(); }

    void press(Qt::Key key) const
    {
        QWidget *focus = m_window->focusWidget();
        QTest::keyClick(focus ? focus : m_window.get(), key);
    }

    QPushButton *modeButton(const QString &text) const
    {
        for (QPushButton *button :
             m_window->findChild<Market_Widget *>()->findChildren<QPushButton *>()) {
            if (button->text() == text && button->isCheckable())
                return button;
        }
        return nullptr;
    }

    // The button of the chart that is checked; "" where none is.
    QString mode() const
    {
        for (const char *text : {"分时", "日K", "周K", "月K"}) {
            if (modeButton(text)->isChecked())
                return text;
        }
        return {};
    }

    QPoint placeIn(int column, const QString &text) const
    {
        const QAbstractItemModel *model = m_table->model();
        for (int row = 0; row < model->rowCount(); ++row) {
            if (model->index(row, column).data().toString() == text) {
                m_table->scrollTo(model->index(row, codeColumn));
                return m_table->visualRect(model->index(row, codeColumn)).center();
            }
        }
        return {-1, -1};
    }
    QPoint placeOf(const QString &code) const { return placeIn(codeColumn, code); }
    QPoint placeOfId(const QString &id) const { return placeIn(idColumn, id); }

    QString currentCode() const
    {
        return m_table->currentIndex().siblingAtColumn(codeColumn).data().toString();
    }

    void select(const QString &code) const
    {
        QTest::mouseClick(m_table->viewport(), Qt::LeftButton, Qt::NoModifier, placeOf(code));
        QCOMPARE(currentCode(), code);
    }

    void open(const QString &code) const
    {
        select(code);
        QTest::keyClick(m_table, Qt::Key_Return);
        QCOMPARE(page(), ChartPage);
        QVERIFY(shows(code));
    }

    // Waits until the panel beside the chart names a collection.
    bool shows(const QString &code) const
    {
        return endtoend::until([&] { return endtoend::shownCode(*m_window) == code; })
            && currentId() == endtoend::listed(code).id;
    }

    endtoend::StateFolder m_state;
    endtoend::Exchange m_exchange;
    std::unique_ptr<MainWindow> m_window;
    QTableView *m_table = nullptr;
};

ZV_TEST(TraderTest)
#include "test_trader.moc"
