#include "click.h"

#include "support/stopwatch.h"

#include "ZvChartKit/zv_collectioncharts.h"
#include "ZvNetworkKit/serverpaths.h"
#include "ZvNetworkKit/zvchartfeed.h"
#include "ZvNetworkKit/zvscriptedtransport.h"
#include "ZvNetworkKit/zvserveraccessmanager.h"
#include "ZvNetworkKit/zvserverengine.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEvent>

#include <cmath>

namespace {

QByteArray fen(double yuan)
{
    return QByteArray::number(qint64(std::llround(yuan * 100)));
}

QByteArray answerOf(const ZvUBKLine &line, const QString &id)
{
    QByteArrayList rows;
    for (const ZvUBBar &bar : line.bars)
        rows.append("[\"" + bar.day.toLatin1() + "\"," + fen(bar.open) + ',' + fen(bar.high) + ','
                    + fen(bar.low) + ',' + fen(bar.close) + ',' + QByteArray::number(bar.volume)
                    + ',' + fen(bar.amount) + ']');
    return ZvScriptedTransport::ok("{\"id\":\"" + id.toLatin1() + "\",\"session\":1,\"bars\":["
                                   + rows.join(',') + "]}");
}

// Sees the first paint after the figures have come.
class FirstPaint : public QObject
{
public:
    explicit FirstPaint(Zv_CollectionCharts *charts) : m_feed(charts->findChild<ZvChartFeed *>())
    {
        charts->findChild<QWidget *>(QStringLiteral("chartCanvas"))->installEventFilter(this);
    }

    bool isSeen() const { return m_isSeen; }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && m_feed->state() == ZvChartFeed::Ready)
            m_isSeen = true;
        return false;
    }

private:
    ZvChartFeed *m_feed;
    bool m_isSeen = false;
};

} // namespace

std::vector<double> clicksToChart(const ZvUBKLine &line, int clicks)
{
    ZvServerAccessManager *access = ZvServerAccessManager::getZvServerAccessManagerInstance();
    ZvServerEngine *engine = ZvServerEngine::getZvServerEngineInstance();
    auto owned = std::make_unique<ZvScriptedTransport>();
    ZvScriptedTransport *transport = owned.get();
    QByteArray answer;
    transport->always(zvPath_market_day, [&answer](const ZvRequest &) { return answer; });
    access->setUrlPrefix(QStringLiteral("/lc/charts/"));
    access->setTransport(std::move(owned));
    access->start();

    std::vector<double> times;
    {
        Zv_CollectionCharts charts;
        charts.resize(1200, 600);
        for (int click = 0; click < clicks; ++click) {
            const QString id = QString::number(1001 + click);
            answer = answerOf(line, id);
            charts.hide();
            charts.changeToPage_timeChart();
            QCoreApplication::processEvents();

            const Stopwatch watch;
            engine->setGlobalCollectionID(id);
            charts.changeToPage_kline_day();
            charts.show();
            const FirstPaint paint(&charts);
            const QDeadlineTimer deadline(10000);
            while (!paint.isSeen() && !deadline.hasExpired())
                QCoreApplication::processEvents();
            // The event is seen before it is handled: one more turn ends the paint.
            QCoreApplication::processEvents();
            if (!paint.isSeen())
                return {};
            times.push_back(watch.wall());
        }
    }
    access->stop();
    access->setTransport(nullptr);
    return times;
}
