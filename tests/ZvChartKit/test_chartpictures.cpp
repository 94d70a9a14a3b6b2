#include "ZvChartKit/chartanswers.h"
#include "ZvChartKit/chartsamples.h"
#include "ZvChartKit/zv_collectioncharts.h"
#include "ZvNetworkKit/kitbench.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserverengine.h"
#include "ZvWidgetKit/pictures.h"
#include "support/testregistry.h"

#include <QPushButton>
#include <QTimer>

#include <cmath>
#include <memory>

namespace {

// What the page of the chart leaves to it in windows of 1366x768 and 1920x1080.
constexpr QSize smallChart(1038, 640);
constexpr QSize largeChart(1592, 952);

} // namespace

// What the chart looks like, after it was looked at. At another scale than 1 the hashes are kept.
class ChartPicturesTest : public QObject
{
    Q_OBJECT

private:
    std::unique_ptr<KitBench> m_bench;
    std::unique_ptr<Zv_CollectionCharts> m_charts;

    QWidget *canvas() const
    {
        return m_charts->findChild<QWidget *>(QStringLiteral("chartCanvas"));
    }

    void showTimeLine(int minutes)
    {
        m_bench->exchange->answer(zvPath_market_jit,
                                  chartsamples::answerOf(chartsamples::timeLine(minutes)));
        m_charts->show();
        m_bench->settle();
    }

    void showDays()
    {
        m_bench->exchange->answer(zvPath_market_day,
                                  chartsamples::answerOf(chartsamples::kLine(900)));
        m_charts->changeToPage_kline_day();
        m_charts->show();
        m_bench->settle();
    }

    void choose(const char *study)
    {
        auto *tab = m_charts->findChild<QPushButton *>(QLatin1String("pushButton_")
                                                       + QLatin1String(study));
        QVERIFY(tab);
        tab->click();
    }

    // Moves the mouse to a share of the chart's width and height.
    void point(double x, double y)
    {
        const QPointF at(std::floor(canvas()->width() * x), std::floor(canvas()->height() * y));
        QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::NoButton, Qt::NoModifier);
        QCoreApplication::sendEvent(canvas(), &move);
    }

    // The exchange has been away for so many milliseconds.
    void loseExchange(int milliseconds)
    {
        m_bench->exchange->fail(zvPath_sync, ZvAnswer::Failed);
        m_bench->settle();
        m_bench->clock.advance(milliseconds);
        // The age is looked at once a second.
        QVERIFY(QMetaObject::invokeMethod(
            m_charts->findChild<QTimer *>(QString(), Qt::FindDirectChildrenOnly), "timeout"));
    }

    void prepare(const QString &scene)
    {
        if (scene == QLatin1String("timeline")) {
            showTimeLine(171);
        } else if (scene == QLatin1String("timeline_crosshair")) {
            showTimeLine(240);
            point(0.3, 0.25);
        } else if (scene == QLatin1String("timeline_none")) {
            showTimeLine(0);
        } else if (scene == QLatin1String("timeline_stale")) {
            showTimeLine(171);
            loseExchange(65000);
        } else if (scene == QLatin1String("composite")) {
            ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(
                QStringLiteral("-1"));
            m_charts->changeToPage_kline_day();
            m_charts->show();
            m_bench->settle();
        } else if (scene == QLatin1String("day_macd")) {
            showDays();
        } else if (scene == QLatin1String("day_kdj")) {
            showDays();
            choose("kdj");
        } else if (scene == QLatin1String("day_rsi")) {
            showDays();
            choose("rsi");
        } else if (scene == QLatin1String("day_crosshair")) {
            showDays();
            point(0.62, 0.3);
        } else {
            QFAIL(qPrintable(scene));
        }
    }

private slots:
    void initTestCase() { zvtest::wearTheClientsLook(); }

    void init()
    {
        m_bench = std::make_unique<KitBench>();
        m_bench->startOn(QStringLiteral("/lc/youbika/"));
        ZvServerEngine::getZvServerEngineInstance()->setGlobalCollectionID(QStringLiteral("1001"));
        m_bench->settle();
        m_charts = std::make_unique<Zv_CollectionCharts>();
    }

    void cleanup()
    {
        m_charts.reset();
        m_bench.reset();
    }

    void chart_data()
    {
        QTest::addColumn<QSize>("size");
        for (const char *scene :
             {"timeline", "timeline_crosshair", "timeline_none", "timeline_stale", "composite",
              "day_macd", "day_kdj", "day_rsi", "day_crosshair"}) {
            QTest::addRow("%s", scene) << smallChart;
            QTest::addRow("%s_large", scene) << largeChart;
        }
    }
    void chart()
    {
        QFETCH(QSize, size);
        m_charts->resize(size);
        const QString name = QString::fromLatin1(QTest::currentDataTag());
        prepare(QString(name).remove(QStringLiteral("_large")));
        for (int turn = 0; turn < 4; ++turn)
            QCoreApplication::processEvents();

        const double scale = m_charts->devicePixelRatioF();
        const QImage image = m_charts->grab().toImage().convertToFormat(QImage::Format_RGB32);
        QCOMPARE(
            image.size(),
            QSize(int(std::lround(size.width() * scale)), int(std::lround(size.height() * scale))));
        const QString difference = scale == 1 && size == smallChart
            ? zvtest::differenceFromPicture(image, name)
            : zvtest::differenceFromHash(image, QStringLiteral("%1@%2").arg(name).arg(scale));
        QVERIFY2(difference.isEmpty(), qPrintable(difference));
    }
};

ZV_TEST(ChartPicturesTest)
#include "test_chartpictures.moc"
