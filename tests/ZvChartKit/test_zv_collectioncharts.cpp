#include "ZvChartKit/plotbench.h"
#include "ZvChartKit/zv_collectioncharts.h"
#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "support/testregistry.h"

#include <memory>

namespace {

ZvServerEngine *engine()
{
    return ZvServerEngine::getZvServerEngineInstance();
}

QByteArray timeLine(const QByteArray &id, int minutes, int price = 1000)
{
    QByteArrayList rows;
    for (int i = 0; i < minutes; ++i)
        rows.append("[" + QByteArray::number(qint64(1577840400000) + i * 60000) + ", "
                    + QByteArray::number(price + i) + ", " + QByteArray::number(price) + ", 5]");
    return ZvScriptedTransport::ok("{\"id\": \"" + id
                                   + "\", \"tradingDay\": \"2020-01-01\", \"session\": 1, "
                                     "\"previousClose\": 990, \"spans\": [[1577840400000, null]], "
                                     "\"minutes\": ["
                                   + rows.join(", ") + "]}");
}

QByteArray bars(const QByteArray &id, int count)
{
    QByteArrayList rows;
    QDate day(2019, 12, 31);
    for (int i = 0; i < count; ++i, day = day.addDays(-1))
        rows.prepend("[\"" + day.toString(Qt::ISODate).toLatin1() + "\", 1000, 1020, 990, "
                     + QByteArray::number(1000 + i % 20) + ", 50, 50000]");
    return ZvScriptedTransport::ok("{\"id\": \"" + id + "\", \"session\": 1, \"bars\": ["
                                   + rows.join(", ") + "]}");
}

} // namespace

// The chart as a host has it: four pages, and what they ask of the exchange.
class CollectionChartsTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<Zv_CollectionCharts> m_charts;

    QWidget *canvas() const
    {
        return m_charts->findChild<QWidget *>(QStringLiteral("chartCanvas"));
    }

    QImage picture() const
    {
        return m_charts->grab().toImage().convertToFormat(QImage::Format_RGB32);
    }

    void change(int page)
    {
        switch (page) {
        case 0:
            m_charts->changeToPage_timeChart();
            break;
        case 1:
            m_charts->changeToPage_kline_day();
            break;
        case 2:
            m_charts->changeToPage_kline_week();
            break;
        default:
            m_charts->changeToPage_kline_month();
        }
    }

    int askedFor(const QString &path) const
    {
        return m_bench->exchange->requestedPaths().count(path);
    }

private slots:
    void init()
    {
        m_bench = std::make_unique<KitBench>();
        m_bench->startOn(QStringLiteral("/lc/youbika/"));
        engine()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        m_bench->exchange->takeRequests();
        m_charts = std::make_unique<Zv_CollectionCharts>();
        m_charts->resize(800, 500);
    }

    void cleanup()
    {
        m_charts.reset();
        m_bench.reset();
    }

    void aHiddenChartAsksNothing()
    {
        m_charts->changeToPage_kline_day();
        m_bench->settle();
        QCOMPARE(askedFor(zvPath_market_day), 0);
        QCOMPARE(askedFor(zvPath_market_jit), 0);
        m_charts->show();
        m_bench->settle();
        QCOMPARE(askedFor(zvPath_market_day), 1);
    }

    void eachPageAsksForItsOwn_data()
    {
        QTest::addColumn<int>("page");
        QTest::addColumn<QString>("path");
        QTest::addColumn<QString>("name");
        QTest::newRow("time line") << 0 << zvPath_market_jit << QStringLiteral("分时图");
        QTest::newRow("day") << 1 << zvPath_market_day << QStringLiteral("日K线图");
        QTest::newRow("week") << 2 << zvPath_market_week << QStringLiteral("周K线图");
        QTest::newRow("month") << 3 << zvPath_market_month << QStringLiteral("月K线图");
    }
    void eachPageAsksForItsOwn()
    {
        QFETCH(int, page);
        QFETCH(QString, path);
        QFETCH(QString, name);
        m_charts->show();
        change(page);
        m_bench->settle();
        QCOMPARE(m_bench->exchange->requestedPaths(), QStringList{path});
        QCOMPARE(m_bench->exchange->lastRequest(path).parameter(QStringLiteral("collection")),
                 QStringLiteral("1001"));
        QCOMPARE(canvas()->accessibleName(), name);

        const QImage waiting = picture();
        m_bench->exchange->answer(path, page == 0 ? timeLine("1001", 30) : bars("1001", 60));
        m_bench->settle();
        QVERIFY(picture() != waiting);
        const QImage figures = picture();
        change(page); // the page that is shown already
        m_bench->settle();
        QCOMPARE(askedFor(path), 1);
        QCOMPARE(picture(), figures);
    }

    void nothingOfOneCollectionStandsUnderAnother()
    {
        m_charts->show();
        m_bench->settle();
        const QImage waiting = picture();
        m_bench->exchange->answer(zvPath_market_jit, timeLine("1001", 30));
        m_bench->settle();
        QVERIFY(picture() != waiting);
        engine()->setGlobalCollectionID(QStringLiteral("1002"));
        QCoreApplication::processEvents();
        QCOMPARE(picture(), waiting);
        m_bench->settle();
        m_bench->exchange->answer(zvPath_market_jit, timeLine("1002", 30, 2000));
        m_bench->settle();
        QVERIFY(picture() != waiting);
    }

    void anotherPageShowsNothingOfTheLast()
    {
        m_charts->show();
        m_charts->changeToPage_kline_day();
        m_bench->settle();
        const QImage waiting = picture();
        m_bench->exchange->answer(zvPath_market_day, bars("1001", 60));
        m_bench->settle();
        m_charts->changeToPage_kline_week();
        const QImage week = picture();
        m_charts->changeToPage_kline_day();
        QCOMPARE(picture(), waiting);
        QVERIFY(week != waiting); // another name of the chart
    }

    void theCompositeHasNoData()
    {
        m_charts->show();
        m_bench->settle();
        const QImage waiting = picture();
        engine()->setGlobalCollectionID(QStringLiteral("-1"));
        m_bench->settle();
        const QImage none = picture();
        QVERIFY(none != waiting);
        engine()->setGlobalCollectionID(QStringLiteral("1002"));
        m_bench->settle();
        QCOMPARE(picture(), waiting);
        m_bench->exchange->answer(
            zvPath_market_jit,
            ZvScriptedTransport::refusal("not-found", QStringLiteral("没有这个藏品")), 404);
        m_bench->settle();
        QCOMPARE(picture(), none);
    }

    void earlierBarsAreAskedForAtTheEdge()
    {
        m_charts->changeToPage_kline_day();
        m_charts->show();
        m_bench->settle();
        m_bench->exchange->answer(zvPath_market_day, bars("1001", 1000));
        m_bench->settle();
        QCOMPARE(askedFor(zvPath_market_day), 1);
        canvas()->setFocus();
        QTest::keyClick(canvas(), Qt::Key_Home);
        m_bench->settle();
        QCOMPARE(askedFor(zvPath_market_day), 2);
        const ZvRequest request = m_bench->exchange->lastRequest(zvPath_market_day);
        QCOMPARE(request.parameter(QStringLiteral("before")),
                 QDate(2019, 12, 31).addDays(-999).toString(Qt::ISODate));
    }

    void staleFiguresSayTheirAge()
    {
        m_charts->show();
        m_bench->settle();
        m_bench->exchange->answer(zvPath_market_jit, timeLine("1001", 30));
        m_bench->settle();
        const QImage fresh = picture();
        m_bench->exchange->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        const QImage stale = picture();
        QVERIFY(stale != fresh);
        m_bench->clock.advance(65000);
        // The age is looked at once a second.
        QTRY_VERIFY(picture() != stale);
    }

    void redIsUpUntilTurnedAround()
    {
        m_charts->changeToPage_kline_day();
        m_charts->show();
        m_bench->settle();
        m_bench->exchange->answer(zvPath_market_day, bars("1001", 60));
        m_bench->settle();
        constexpr QRgb red = 0xffea3835;
        constexpr QRgb green = 0xff4bff57;
        const QImage usual = picture();
        QVERIFY(m_charts->isRedUp());
        QVERIFY(countOf(usual, red) > 0);
        m_charts->setRedUp(false);
        QVERIFY(!m_charts->isRedUp());
        const QImage turned = picture();
        QVERIFY(turned != usual);
        QVERIFY(countOf(turned, green) > 0);
        m_charts->setRedUp(true);
        QCOMPARE(picture(), usual);
    }

    void itMayGoAtAnyTime()
    {
        m_charts->show();
        m_bench->settle();
        m_charts.reset();
        m_bench->exchange->answer(zvPath_market_jit, timeLine("1001", 30));
        m_bench->settle();
    }
};

ZV_TEST(CollectionChartsTest)
#include "test_zv_collectioncharts.moc"
