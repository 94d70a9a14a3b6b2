#include "ZvChartKit/zv_collectioncharts.h"
#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvserverconfig.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/zvwidgetsignalslotpool.h"
#include "collectionwalk.h"
#include "marketbench.h"
#include "record.h"
#include "support/testregistry.h"

#include <QHBoxLayout>
#include <QtTest/QtTest>

using zvtest::choose;
using zvtest::chooses;
using zvtest::current;
using Pool = ZvWidgetSignalSLotPool;

namespace {

Pool *pool()
{
    return Pool::getSignalSlotPoolInstance();
}

ZvServerConfig *config()
{
    return ZvServerConfig::getZvServerConfigInstance();
}

const QStringList charts{QStringLiteral("分时"), QStringLiteral("日K"), QStringLiteral("周K"),
                         QStringLiteral("月K")};
const QStringList minutes{QStringLiteral("5分钟"), QStringLiteral("15分钟"),
                          QStringLiteral("30分钟"), QStringLiteral("60分钟")};
const QStringList moneyButtons{QStringLiteral("资金总览"), QStringLiteral("出/入金"),
                               QStringLiteral("入金"), QStringLiteral("出金"),
                               QStringLiteral("藏品申购")};
const QString unsignedRow = QStringLiteral("行情列表 分时 日K 周K 月K 藏品介绍");
const QString signedRow = unsignedRow + QStringLiteral(" 资金总览 入金 出金 藏品申购");

// The four ways to a chart: the slot, its road through the pool, what the engine is told, and what
// the chart shows then.
struct ChartPage {
    const char *slot;
    const char *action;
    const char *call;
    ZvChartFeed::Chart chart;
};
const ChartPage chartPages[] = {
    {"slot_changeToPage_TimeChart", "slot_collectionTimeLine_action",
     "ZvServerEngine::changedToTimeLine()", ZvChartFeed::TimeLine},
    {"slot_changeToPage_KLine_day", "slot_collectionKDayLine_action",
     "ZvServerEngine::changedToDayKLine()", ZvChartFeed::DayKLine},
    {"slot_changeToPage_KLine_week", "slot_collectionKWeekLine_action",
     "ZvServerEngine::changedToWeekKLine()", ZvChartFeed::WeekKLine},
    {"slot_changeToPage_KLine_month", "slot_collectionKMonthLine_action",
     "ZvServerEngine::changedToMonthKLine()", ZvChartFeed::MonthKLine},
};

const QString tellsTable = QStringLiteral("ZvServerEngine::changedToMarketList()");
const QString tellsDeals = QStringLiteral("ZvServerEngine::changedToMaketDetail()");

// The lines of a record that tell the engine which page is on view.
QStringList pagesTold(zvtest::Record &record)
{
    return record.take().split(QLatin1Char('\n')).filter(QStringLiteral("::changedTo"));
}

} // namespace

// The title row, the three pages and the ways between them.
class MarketWidgetTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<zvtest::MarketBench> m_bench;

    QString page() const { return m_bench->page(); }
    QString checked() const { return m_bench->checked(); }
    void call(const char *slot) { m_bench->call(slot); }
    bool asks(const char *slot) { return m_bench->asks(slot); }
    ZvChartFeed::Chart chart() const
    {
        return m_bench->market->findChild<Zv_CollectionCharts *>()
            ->findChild<ZvChartFeed *>()
            ->chart();
    }

    void typeCode(const QString &code)
    {
        QVERIFY(QMetaObject::invokeMethod(m_bench->market.get(), "slot_changePageWhenKeybordFairy",
                                          Q_ARG(QString, code)));
    }

private slots:
    void init()
    {
        config()->setCurrentPlatform(ZvServerConfig::ChengHu);
        m_bench = std::make_unique<zvtest::MarketBench>();
    }
    void cleanup() { m_bench.reset(); }

    // The title row.

    void itStartsOnTheTableUnsigned()
    {
        QCOMPARE(page(), QStringLiteral("table"));
        QCOMPARE(m_bench->stack()->count(), 3);
        QCOMPARE(checked(), QString());
        QCOMPARE(m_bench->shown(), unsignedRow);
    }

    void aSignInShowsItsButtons()
    {
        call("showButtonsNeedLog");
        QCOMPARE(m_bench->shown(), signedRow);
        call("showButtonsNeedLog");
        QCOMPARE(m_bench->shown(), signedRow);
        call("hideButtonsNeedLog");
        QCOMPARE(m_bench->shown(), unsignedRow);
    }

    void theRowIsLaidOutAsGiven()
    {
        call("showButtonsNeedLog");
        QCoreApplication::processEvents();
        QCOMPARE(m_bench->market->layout()->contentsMargins(), QMargins());
        QCOMPARE(m_bench->market->layout()->spacing(), 0);
        const QWidget *row = m_bench->button("分时")->parentWidget();
        QCOMPARE(row->geometry(), QRect(0, 0, 1366, 45));
        QCOMPARE(m_bench->stack()->geometry(), QRect(0, 45, 1366, 555));
        const auto placeOf = [this](const QString &text) {
            const QRect place = m_bench->button(text)->geometry();
            return QStringLiteral("%1 %2x%3").arg(place.x()).arg(place.width()).arg(place.height());
        };
        QCOMPARE(placeOf("行情列表"), QStringLiteral("20 95x30"));
        QCOMPARE(placeOf("分时"), QStringLiteral("135 60x30"));
        QCOMPARE(placeOf("日K"), QStringLiteral("195 60x30"));
        QCOMPARE(placeOf("周K"), QStringLiteral("255 60x30"));
        QCOMPARE(placeOf("月K"), QStringLiteral("315 60x30"));
        QCOMPARE(placeOf("藏品介绍"), QStringLiteral("395 70x30"));
        QCOMPARE(placeOf("资金总览"), QStringLiteral("966 95x30"));
        QCOMPARE(placeOf("入金"), QStringLiteral("1061 95x30"));
        QCOMPARE(placeOf("出金"), QStringLiteral("1156 95x30"));
        QCOMPARE(placeOf("藏品申购"), QStringLiteral("1251 95x30"));
    }

    void theRowHoldsItsItemsInOrder()
    {
        const auto *row
            = qobject_cast<QHBoxLayout *>(m_bench->button("分时")->parentWidget()->layout());
        QVERIFY(row);
        QCOMPARE(row->contentsMargins(), QMargins());
        QCOMPARE(row->spacing(), 0);
        QStringList items;
        for (int i = 0; i < row->count(); ++i) {
            QLayoutItem *item = row->itemAt(i);
            if (const auto *button = qobject_cast<QPushButton *>(item->widget()))
                items << button->text();
            else
                items << (row->stretch(i) > 0
                              ? QStringLiteral("stretch")
                              : QString::number(item->spacerItem()->sizeHint().width()));
        }
        const QStringList expected = QStringList{"20", "行情列表", "20"} + charts + minutes
            + QStringList{"20", "藏品介绍", "stretch"} + moneyButtons + QStringList("20");
        QCOMPARE(items.join(' '), expected.join(' '));
    }

    void minuteButtonsAreNeverSeen()
    {
        call("showButtonsNeedLog");
        zvtest::Record record;
        for (const QString &text : minutes) {
            QPushButton *button = m_bench->button(text);
            QVERIFY(button->isHidden());
            QVERIFY(button->isCheckable());
            QCOMPARE(button->size(), QSize(60, 30));
            button->click();
        }
        QCOMPARE(record.take(), QString());
        QCOMPARE(page(), QStringLiteral("table"));
    }

    void theInOutButtonIsOnViewAtNoTime()
    {
        QVERIFY(m_bench->button("出/入金")->isHidden());
        call("showButtonsNeedLog");
        QVERIFY(m_bench->button("出/入金")->isHidden());
        QCOMPARE(m_bench->button("出/入金")->minimumSize(), QSize(95, 30));
    }

    void stylesFollowThePlatform_data()
    {
        QTest::addColumn<ZvServerConfig::Platform>("platform");
        QTest::newRow("first platform") << ZvServerConfig::ChengHu;
        QTest::newRow("second platform") << ZvServerConfig::LanChuan;
    }
    void stylesFollowThePlatform()
    {
        QFETCH(ZvServerConfig::Platform, platform);
        config()->setCurrentPlatform(platform);
        m_bench.reset();
        m_bench = std::make_unique<zvtest::MarketBench>();
        QCOMPARE(m_bench->button("行情列表")->styleSheet(),
                 config()->getStyleOf_MarketTitleMarketButton());
        for (const QString &text : charts + minutes + moneyButtons + QStringList("藏品介绍"))
            QCOMPARE(m_bench->button(text)->styleSheet(),
                     config()->getStyleOf_MarketTitleKTimeButton());
        const QWidget *row = m_bench->button("分时")->parentWidget();
        QCOMPARE(row->styleSheet(), QStringLiteral("font-style: normal;font-size: 10pt;"));
        QVERIFY(row->autoFillBackground());
        QCOMPARE(row->palette().color(QPalette::Window),
                 QColor(config()->getStyleOf_MarketTitlePaletteColor()));
        QCOMPARE(m_bench->market->grab().toImage().pixelColor(5, 5),
                 QColor(config()->getStyleOf_MarketTitlePaletteColor()));
    }

    void clicksTakeNoFocus()
    {
        for (const QString &text : charts + moneyButtons + QStringList{"行情列表", "藏品介绍"})
            QCOMPARE(m_bench->button(text)->focusPolicy(), Qt::NoFocus);
    }

    void textsFitTheirButtons()
    {
        call("showButtonsNeedLog");
        for (const QString &text : charts + moneyButtons + QStringList{"行情列表", "藏品介绍"}) {
            const QPushButton *button = m_bench->button(text);
            button->ensurePolished();
            QVERIFY2(button->fontMetrics().horizontalAdvance(text) + 10 <= button->minimumWidth(),
                     qPrintable(text));
        }
    }

    void theIntroductionGoesThroughThePool()
    {
        QSignalSpy shown(pool(), &Pool::signal_showCollectionInfo_clicked);
        m_bench->click("藏品介绍");
        QCOMPARE(shown.count(), 1);
    }

    // Pages.

    void aChartIsReached_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<int>("way"); // 0: a click, 1: the pool, 2: the slot
        const char *ways[] = {"click", "pool", "slot"};
        for (int index = 0; index < 4; ++index) {
            for (int way = 0; way < 3; ++way)
                QTest::addRow("%s by %s", qPrintable(charts.at(index)), ways[way]) << index << way;
        }
    }
    void aChartIsReached()
    {
        QFETCH(int, index);
        QFETCH(int, way);
        zvtest::Record record;
        if (way == 0) {
            m_bench->click(charts.at(index));
        } else if (way == 2) {
            call(chartPages[index].slot);
        } else {
            QVERIFY(QMetaObject::invokeMethod(pool(), chartPages[index].action));
        }
        QCOMPARE(pagesTold(record), QStringList(chartPages[index].call));
        QCOMPARE(page(), QStringLiteral("chart"));
        QCOMPARE(chart(), chartPages[index].chart);
        QCOMPARE(checked(), charts.at(index));
        // A click on the checked button leaves it checked.
        m_bench->click(charts.at(index));
        QCOMPARE(checked(), charts.at(index));
        QCOMPARE(chart(), chartPages[index].chart);
    }

    // The engine first, then the page, then the chart's mode, then the check marks.
    void theEngineIsToldBeforeThePageIsShown()
    {
        zvtest::Record record;
        QObject context;
        connect(m_bench->stack(), &QStackedWidget::currentChanged, &context, [&](int index) {
            record.note(QStringLiteral("page %1, chart %2, checked %3")
                            .arg(index)
                            .arg(int(chart()))
                            .arg(checked()));
        });
        connect(m_bench->button("月K"), &QPushButton::toggled, &context, [&](bool isChecked) {
            record.note(QStringLiteral("month %1, chart %2").arg(int(isChecked)).arg(int(chart())));
        });
        pool()->slot_collectionKMonthLine_action();
        QStringList lines = record.take().split('\n').filter(
            QRegularExpression(QStringLiteral("changedTo|^page|^month")));
        QCOMPARE(
            lines,
            (QStringList{chartPages[3].call, "page 1, chart 0, checked ", "month 1, chart 3"}));

        pool()->slot_timeKChart_collectionID_escape_clicked(QString());
        lines = record.take().split('\n').filter(
            QRegularExpression(QStringLiteral("changedTo|^page|^month")));
        QCOMPARE(lines,
                 (QStringList{tellsTable, "page 0, chart 3, checked 月K", "month 0, chart 3"}));
    }

    void theTableIsReached_data()
    {
        QTest::addColumn<int>("way");
        QTest::newRow("click") << 0;
        QTest::newRow("slot") << 1;
        QTest::newRow("escape of the pool") << 2;
        QTest::newRow("turnover") << 3;
    }
    void theTableIsReached()
    {
        QFETCH(int, way);
        call("slot_changeToPage_KLine_week");
        zvtest::Record record;
        if (way == 0)
            m_bench->click("行情列表");
        else if (way == 1)
            call("slot_changeToPage_marketTable");
        else if (way == 2)
            pool()->slot_timeKChart_collectionID_escape_clicked("1002");
        else
            call("slot_turnoverOption");
        QCOMPARE(pagesTold(record), QStringList(tellsTable));
        QCOMPARE(page(), QStringLiteral("table"));
        QCOMPARE(checked(), QString());
    }

    void f6ReachesTheTableBeforeThePage()
    {
        zvtest::Record record;
        pool()->slot_F6_clicked();
        const QStringList lines = record.take().split('\n').filter(
            QRegularExpression(QStringLiteral("setIsOptional|changedTo")));
        QCOMPARE(lines,
                 (QStringList{"ZvServerEngine::setIsOptionalCollectionIds(true)", tellsTable}));
    }

    void theTurnoverKeyGoesBetweenTimeAndDay()
    {
        const auto turn = [this] {
            pool()->slot_turnoverKTime_clicked();
            return checked();
        };
        QCOMPARE(turn(), QStringLiteral("分时")); // from the table
        QCOMPARE(turn(), QStringLiteral("日K"));
        QCOMPARE(turn(), QStringLiteral("分时"));
        call("slot_changeToPage_KLine_week");
        QCOMPARE(turn(), QStringLiteral("分时"));
        call("slot_changeToPage_KLine_month");
        QCOMPARE(turn(), QStringLiteral("分时"));
        QCOMPARE(page(), QStringLiteral("chart"));
    }

    // The page of deals.

    void dealsOpenFromTheChartAlone()
    {
        zvtest::Record record;
        pool()->slot_marketDeatil_clicked();
        QCOMPARE(pagesTold(record), QStringList());
        QCOMPARE(page(), QStringLiteral("table"));

        call("slot_changeToPage_KLine_day");
        record.take();
        pool()->slot_marketDeatil_clicked();
        QCOMPARE(pagesTold(record), QStringList(tellsDeals));
        QCOMPARE(page(), QStringLiteral("deals"));
        QCOMPARE(checked(), QString());

        // They are there already.
        pool()->slot_marketDeatil_clicked();
        QCOMPARE(pagesTold(record), QStringList());
    }

    void theCompositeHasNoDeals()
    {
        call("slot_changeToPage_KLine_day");
        choose("-1");
        zvtest::Record record;
        call("slot_changeToPage_marketDetail");
        QCOMPARE(pagesTold(record), QStringList());
        QCOMPARE(page(), QStringLiteral("chart"));
        QCOMPARE(checked(), QStringLiteral("日K"));
    }

    // Only a negative number is the composite's.
    void otherIdsHaveDeals_data()
    {
        QTest::addColumn<QString>("id");
        QTest::addColumn<bool>("hasDeals");
        QTest::newRow("none") << QString() << true;
        QTest::newRow("no number") << "-x" << true;
        QTest::newRow("zero") << "0" << true;
        QTest::newRow("more than a number holds") << "-99999999999" << true;
        QTest::newRow("negative") << "-7" << false;
    }
    void otherIdsHaveDeals()
    {
        QFETCH(QString, id);
        QFETCH(bool, hasDeals);
        call("slot_changeToPage_KLine_day");
        ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(id);
        call("slot_changeToPage_marketDetail");
        QCOMPARE(page(), hasDeals ? QStringLiteral("deals") : QStringLiteral("chart"));
    }

    // A host may check buttons by itself; where several are, the order decides.
    void theFirstCheckedButtonDecides()
    {
        call("slot_changeToPage_KLine_month");
        m_bench->button("周K")->setChecked(true);
        m_bench->button("分时")->setChecked(true);
        call("slot_changeToPage_marketDetail"); // remembers the week
        QCOMPARE(checked(), QString());
        QVERIFY(asks("slot_escapeToTimeKline"));
        QCOMPARE(checked(), QStringLiteral("周K"));

        call("slot_changeToPage_marketDetail");
        m_bench->button("日K")->setChecked(true);
        QVERIFY(asks("slot_escapeToTimeKline")); // the day stands before the week
        QCOMPARE(checked(), QStringLiteral("日K"));
        QCOMPARE(chart(), ZvChartFeed::DayKLine);
    }

    void anySizeIsTaken()
    {
        for (const char *slot : {"slot_changeToPage_marketTable", "slot_changeToPage_KLine_day",
                                 "slot_changeToPage_marketDetail", "slot_changeToPage_TimeChart"}) {
            call(slot);
            for (const QSize &size :
                 {QSize(1, 1), QSize(4000, 60), QSize(60, 3000), QSize(0, 0), QSize(1366, 600)}) {
                m_bench->market->resize(size);
                QCoreApplication::processEvents();
                m_bench->market->grab();
            }
            QCOMPARE(m_bench->market->size(), QSize(1366, 600));
        }
        QCOMPARE(page(), QStringLiteral("chart"));
    }

    void escapeLeadsBackToTheChart_data()
    {
        QTest::addColumn<int>("index");
        for (int index = 0; index < 4; ++index)
            QTest::addRow("%s", qPrintable(charts.at(index))) << index;
    }
    void escapeLeadsBackToTheChart()
    {
        QFETCH(int, index);
        call(chartPages[index].slot);
        call("slot_changeToPage_marketDetail");
        // The chart may have been turned behind its back; the way back sets it anew.
        zvtest::Record record;
        QVERIFY(!asks("slot_escapeToTableView"));
        QCOMPARE(page(), QStringLiteral("deals"));
        QVERIFY(asks("slot_escapeToTimeKline"));
        QCOMPARE(pagesTold(record), QStringList(chartPages[index].call));
        QCOMPARE(page(), QStringLiteral("chart"));
        QCOMPARE(checked(), charts.at(index));
        QCOMPARE(chart(), chartPages[index].chart);

        QVERIFY(!asks("slot_escapeToTimeKline"));
        QCOMPARE(pagesTold(record), QStringList());
        QVERIFY(asks("slot_escapeToTableView"));
        QCOMPARE(pagesTold(record), QStringList(tellsTable));
        QCOMPARE(page(), QStringLiteral("table"));

        QVERIFY(!asks("slot_escapeToTimeKline"));
        QVERIFY(!asks("slot_escapeToTableView"));
        QCOMPARE(pagesTold(record), QStringList());
        QCOMPARE(page(), QStringLiteral("table"));
        QCOMPARE(checked(), QString());
    }

    void aSecondVisitRemembersItsOwnChart()
    {
        call("slot_changeToPage_KLine_week");
        call("slot_changeToPage_marketDetail");
        // A page-change slot leaves the deals, too, and the week stays remembered.
        call("slot_changeToPage_TimeChart");
        QVERIFY(!asks("slot_escapeToTimeKline"));
        call("slot_changeToPage_marketDetail");
        QVERIFY(asks("slot_escapeToTimeKline"));
        QCOMPARE(checked(), QStringLiteral("分时"));
    }

    void dealsKnowNoWayBackWithoutAChart()
    {
        // A host may turn the stack by itself.
        m_bench->stack()->setCurrentIndex(2);
        QCOMPARE(page(), QStringLiteral("deals"));
        QVERIFY(!asks("slot_escapeToTimeKline"));
        QVERIFY(!asks("slot_escapeToTableView"));
        QCOMPARE(page(), QStringLiteral("deals"));
    }

    void aChartWithoutAMarkKeepsTheOldOne()
    {
        call("slot_changeToPage_KLine_month");
        call("slot_changeToPage_marketDetail");
        m_bench->stack()->setCurrentIndex(1);
        QCOMPARE(checked(), QString());
        call("slot_changeToPage_marketDetail");
        QCOMPARE(page(), QStringLiteral("deals"));
        QVERIFY(asks("slot_escapeToTimeKline"));
        QCOMPARE(checked(), QStringLiteral("月K"));
    }

    // Typed codes.

    void aTypedCodeOpensTheTimeLine_data()
    {
        QTest::addColumn<bool>("fromDeals");
        QTest::newRow("from the table") << false;
        QTest::newRow("from the deals") << true;
    }
    void aTypedCodeOpensTheTimeLine()
    {
        QFETCH(bool, fromDeals);
        if (fromDeals) {
            call("slot_changeToPage_KLine_week");
            call("slot_changeToPage_marketDetail");
        }
        zvtest::Record record;
        typeCode("C1003");
        const QStringList lines = record.take().split('\n').filter(
            QRegularExpression(QStringLiteral("keyboard|setGlobal|changedTo")));
        QCOMPARE(lines,
                 (QStringList{"keyboard code \"1003\"", chooses("1003"), chartPages[0].call}));
        QCOMPARE(page(), QStringLiteral("chart"));
        QCOMPARE(checked(), QStringLiteral("分时"));
    }

    void aTypedCodeKeepsTheModeOfTheChart()
    {
        call("slot_changeToPage_KLine_week");
        zvtest::Record record;
        typeCode("C1001");
        const QStringList lines = record.take().split('\n').filter(
            QRegularExpression(QStringLiteral("keyboard|setGlobal|changedTo")));
        QCOMPARE(lines, (QStringList{"keyboard code \"1001\"", chooses("1001")}));
        QCOMPARE(checked(), QStringLiteral("周K"));
        QCOMPARE(chart(), ZvChartFeed::WeekKLine);
    }

    void anUnknownCodeChangesNothing_data()
    {
        QTest::addColumn<QString>("code");
        QTest::newRow("unknown") << "C9";
        QTest::newRow("empty") << QString();
        QTest::newRow("an id") << "1003";
    }
    void anUnknownCodeChangesNothing()
    {
        QFETCH(QString, code);
        zvtest::Record record;
        typeCode(code);
        QCOMPARE(record.take(), QStringLiteral("keyboard code \"\""));
        QCOMPARE(page(), QStringLiteral("table"));
        QCOMPARE(current(), QStringLiteral("1002"));
    }

    void theSelectionOfAnotherPageOpensTheTimeLine()
    {
        pool()->slot_collectionTableView_clicked_and_changeToTimeLine("1001");
        QCOMPARE(current(), QStringLiteral("1001"));
        QCOMPARE(page(), QStringLiteral("chart"));
        QCOMPARE(checked(), QStringLiteral("分时"));
    }
};

ZV_TEST(MarketWidgetTest)
#include "test_market_widget.moc"
