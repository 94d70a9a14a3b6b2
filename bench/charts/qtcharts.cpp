#include "twin.h"

#ifdef ZV_BENCH_QTCHARTS

#include "candles.h"

#include <QBarSeries>
#include <QBarSet>
#include <QCandlestickSeries>
#include <QCandlestickSet>
#include <QChart>
#include <QChartView>
#include <QCoreApplication>
#include <QLineSeries>
#include <QVBoxLayout>
#include <QValueAxis>
#include <QWidget>

#include <algorithm>

QT_CHARTS_USE_NAMESPACE

namespace {

constexpr int periods[] = {5, 10, 20};

void turn()
{
    for (int i = 0; i < 3; ++i)
        QCoreApplication::processEvents();
}

// Candles stand at the middle of their days; the first one at 0.
class QtChartsTwin : public Twin
{
public:
    QtChartsTwin()
    {
        auto *layout = new QVBoxLayout(&m_widget);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(m_prices = new QChartView, 3);
        layout->addWidget(m_volumeView = new QChartView, 1);
        m_widget.resize(1200, 600);
        m_widget.show();
    }

    const char *name() const override { return "Qt Charts"; }
    QWidget *widget() override { return &m_widget; }

    void load(const ZvUBKLine &line) override
    {
        m_count = line.bars.size();
        auto *chart = new QChart;
        chart->legend()->hide();
        m_candles = new QCandlestickSeries;
        m_candles->setIncreasingColor(Qt::red);
        m_candles->setDecreasingColor(Qt::green);
        QList<QCandlestickSet *> sets;
        m_highest = 0;
        double lowest = 1e300;
        for (int i = 0; i < m_count; ++i) {
            const ZvUBBar &bar = line.bars.at(i);
            sets.append(new QCandlestickSet(bar.open, bar.high, bar.low, bar.close, i));
            m_highest = std::max(m_highest, bar.high);
            lowest = std::min(lowest, bar.low);
        }
        m_candles->append(sets);
        chart->addSeries(m_candles);
        for (std::size_t curve = 0; curve < 3; ++curve) {
            m_averages[curve] = new QLineSeries;
            QVector<QPointF> points;
            for (int i = periods[curve] - 1; i < m_count; ++i)
                points.append(QPointF(i, averageAt(line, i, periods[curve])));
            m_averages[curve]->replace(points);
            chart->addSeries(m_averages[curve]);
        }
        m_x = new QValueAxis;
        m_y = new QValueAxis;
        m_y->setRange(lowest, m_highest);
        chart->addAxis(m_x, Qt::AlignBottom);
        chart->addAxis(m_y, Qt::AlignRight);
        for (QAbstractSeries *series : chart->series()) {
            series->attachAxis(m_x);
            series->attachAxis(m_y);
        }
        setChart(m_prices, chart);

        auto *below = new QChart;
        below->legend()->hide();
        m_volumes = new QBarSet(QString());
        qint64 most = 1;
        for (const ZvUBBar &bar : line.bars) {
            m_volumes->append(double(bar.volume));
            most = std::max(most, bar.volume);
        }
        auto *bars = new QBarSeries;
        bars->append(m_volumes);
        below->addSeries(bars);
        m_volumeX = new QValueAxis;
        auto *volumeY = new QValueAxis;
        volumeY->setRange(0, double(most));
        below->addAxis(m_volumeX, Qt::AlignBottom);
        below->addAxis(volumeY, Qt::AlignRight);
        bars->attachAxis(m_volumeX);
        bars->attachAxis(volumeY);
        setChart(m_volumeView, below);
        show(0, m_count);
    }

    void changeLast(const ZvUBKLine &line) override
    {
        const ZvUBBar &bar = line.bars.last();
        m_candles->sets().last()->setClose(bar.close);
        m_volumes->replace(m_count - 1, double(bar.volume));
        for (std::size_t curve = 0; curve < 3; ++curve) {
            QLineSeries *series = m_averages[curve];
            const int last = series->count() - 1;
            if (last >= 0)
                series->replace(last, m_count - 1, averageAt(line, m_count - 1, periods[curve]));
        }
        turn();
    }

    void show(int first, int bars) override
    {
        m_x->setRange(first - 0.5, first + bars - 0.5);
        m_volumeX->setRange(first - 0.5, first + bars - 0.5);
        turn();
    }

    int barCount() const override { return m_candles->count(); }
    double lastClose() const override { return m_candles->sets().last()->close(); }
    double highest() const override { return m_highest; }

private:
    static void setChart(QChartView *view, QChart *chart)
    {
        QChart *before = view->chart();
        view->setChart(chart);
        delete before;
    }

    QWidget m_widget;
    QChartView *m_prices;
    QChartView *m_volumeView;
    QCandlestickSeries *m_candles = nullptr;
    QLineSeries *m_averages[3] = {};
    QBarSet *m_volumes = nullptr;
    QValueAxis *m_x = nullptr;
    QValueAxis *m_y = nullptr;
    QValueAxis *m_volumeX = nullptr;
    double m_highest = 0;
    int m_count = 0;
};

} // namespace

std::unique_ptr<Twin> makeQtCharts()
{
    return std::make_unique<QtChartsTwin>();
}

#else

std::unique_ptr<Twin> makeQtCharts()
{
    return nullptr;
}

#endif
