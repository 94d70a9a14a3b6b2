#include "ZvChartKit/zv_collectioncharts.h"

#include "ZvChartKit/chartcanvas.h"

#include "ZvNetworkKit/zvchartfeed.h"

#include <QTimer>

class Zv_CollectionCharts::Private
{
public:
    explicit Private(Zv_CollectionCharts *charts);

    void change(ZvChartFeed::Chart chart);
    void showAll();
    void showGrown(int first);
    void showState();

    Zv_CollectionCharts *const q;
    zvplot::ChartCanvas *const canvas;
    ZvChartFeed *const feed;
    QTimer *const ageTimer; // counts the age of stale figures while they are seen

private:
    bool isTimeLine() const { return feed->chart() == ZvChartFeed::TimeLine; }
    zvplot::ChartNotice notice() const;
    zvplot::KLinePlot::Period period() const;
    QString name() const;
};

Zv_CollectionCharts::Private::Private(Zv_CollectionCharts *charts)
    : q(charts), canvas(new zvplot::ChartCanvas(charts)), feed(new ZvChartFeed(charts)),
      ageTimer(new QTimer(charts))
{
    canvas->setObjectName(QStringLiteral("chartCanvas"));
    ageTimer->setInterval(1000);
    connect(feed, &ZvChartFeed::replaced, q, [this] { showAll(); });
    connect(feed, &ZvChartFeed::grown, q, [this](int first) { showGrown(first); });
    connect(feed, &ZvChartFeed::prepended, q,
            [this](int count) { canvas->prependKLine(feed->kLine(), count); });
    connect(feed, &ZvChartFeed::stateChanged, q, [this] { showState(); });
    connect(canvas, &zvplot::ChartCanvas::earlierWanted, feed, &ZvChartFeed::askEarlier);
    connect(ageTimer, &QTimer::timeout, q, [this] { showState(); });
}

void Zv_CollectionCharts::Private::change(ZvChartFeed::Chart chart)
{
    if (feed->chart() == chart)
        return;
    feed->setChart(chart);
    showAll();
}

void Zv_CollectionCharts::Private::showAll()
{
    if (isTimeLine())
        canvas->showTimeLine(feed->timeLine());
    else
        canvas->showKLine(feed->kLine(), period());
    canvas->setAccessibleName(name());
    showState();
}

void Zv_CollectionCharts::Private::showGrown(int first)
{
    if (isTimeLine())
        canvas->growTimeLine(feed->timeLine(), first);
    else
        canvas->growKLine(feed->kLine(), first);
}

void Zv_CollectionCharts::Private::showState()
{
    canvas->setNotice(notice());
    if (feed->state() == ZvChartFeed::Stale && q->isVisible())
        ageTimer->start();
    else
        ageTimer->stop();
}

zvplot::ChartNotice Zv_CollectionCharts::Private::notice() const
{
    using zvplot::ChartNotice;
    switch (feed->state()) {
    case ZvChartFeed::Waiting:
        return ChartNotice(ChartNotice::Waiting);
    case ZvChartFeed::NoData:
        return ChartNotice(ChartNotice::NoData);
    case ZvChartFeed::Stale:
        return ChartNotice(ChartNotice::Stale, feed->ageMs());
    case ZvChartFeed::Ready:
        break;
    }
    return ChartNotice();
}

zvplot::KLinePlot::Period Zv_CollectionCharts::Private::period() const
{
    using Period = zvplot::KLinePlot::Period;
    switch (feed->chart()) {
    case ZvChartFeed::WeekKLine:
        return Period::Week;
    case ZvChartFeed::MonthKLine:
        return Period::Month;
    default:
        return Period::Day;
    }
}

QString Zv_CollectionCharts::Private::name() const
{
    switch (feed->chart()) {
    case ZvChartFeed::DayKLine:
        return QStringLiteral("日K线图");
    case ZvChartFeed::WeekKLine:
        return QStringLiteral("周K线图");
    case ZvChartFeed::MonthKLine:
        return QStringLiteral("月K线图");
    case ZvChartFeed::TimeLine:
        break;
    }
    return QStringLiteral("分时图");
}

Zv_CollectionCharts::Zv_CollectionCharts(QWidget *parent)
    : QWidget(parent), d(std::make_unique<Private>(this))
{
    setFocusPolicy(Qt::StrongFocus);
    setFocusProxy(d->canvas);
    setAccessibleName(QStringLiteral("行情图"));
    d->showAll();
}

Zv_CollectionCharts::~Zv_CollectionCharts() = default;

void Zv_CollectionCharts::changeToPage_timeChart()
{
    d->change(ZvChartFeed::TimeLine);
}

void Zv_CollectionCharts::changeToPage_kline_day()
{
    d->change(ZvChartFeed::DayKLine);
}

void Zv_CollectionCharts::changeToPage_kline_week()
{
    d->change(ZvChartFeed::WeekKLine);
}

void Zv_CollectionCharts::changeToPage_kline_month()
{
    d->change(ZvChartFeed::MonthKLine);
}

bool Zv_CollectionCharts::isRedUp() const
{
    return d->canvas->isRedUp();
}

void Zv_CollectionCharts::setRedUp(bool isRedUp)
{
    d->canvas->setRedUp(isRedUp);
}

void Zv_CollectionCharts::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    d->feed->setActive(true);
    d->showState();
}

void Zv_CollectionCharts::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    d->feed->setActive(false);
    d->ageTimer->stop();
}

void Zv_CollectionCharts::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    d->canvas->setGeometry(rect());
}
