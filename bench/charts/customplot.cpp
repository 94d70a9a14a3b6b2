// The library's header has loops of this kind.
#undef QT_NO_FOREACH

#include "twin.h"

#ifdef ZV_BENCH_CUSTOMPLOT

#include "candles.h"

#include <qcustomplot.h>

#include <algorithm>

namespace {

constexpr int periods[] = {5, 10, 20};

class CustomPlotTwin : public Twin
{
public:
    CustomPlotTwin()
    {
        m_plot.resize(1200, 600);
        auto *volumes = new QCPAxisRect(&m_plot);
        m_plot.plotLayout()->addElement(1, 0, volumes);
        m_plot.plotLayout()->setRowStretchFactor(1, 0.3);
        m_candles = new QCPFinancial(m_plot.xAxis, m_plot.yAxis);
        m_candles->setChartStyle(QCPFinancial::csCandlestick);
        m_candles->setTwoColored(true);
        m_candles->setWidth(0.7);
        for (QCPGraph *&average : m_averages)
            average = m_plot.addGraph();
        m_volumes = new QCPBars(volumes->axis(QCPAxis::atBottom), volumes->axis(QCPAxis::atLeft));
        m_volumes->setWidth(0.7);
        m_plot.show();
    }

    const char *name() const override { return "QCustomPlot"; }
    QWidget *widget() override { return &m_plot; }

    void load(const ZvUBKLine &line) override
    {
        QVector<QCPFinancialData> data;
        QVector<QCPBarsData> volumes;
        for (int i = 0; i < line.bars.size(); ++i) {
            const ZvUBBar &bar = line.bars.at(i);
            data.append(QCPFinancialData(i, bar.open, bar.high, bar.low, bar.close));
            volumes.append(QCPBarsData(i, double(bar.volume)));
        }
        m_candles->data()->set(data, true);
        m_volumes->data()->set(volumes, true);
        for (std::size_t curve = 0; curve < 3; ++curve) {
            QVector<QCPGraphData> values;
            for (int i = periods[curve] - 1; i < line.bars.size(); ++i)
                values.append(QCPGraphData(i, averageAt(line, i, periods[curve])));
            m_averages[curve]->data()->set(values, true);
        }
        show(0, line.bars.size());
    }

    void changeLast(const ZvUBKLine &line) override
    {
        const int last = line.bars.size() - 1;
        const ZvUBBar &bar = line.bars.at(last);
        *(m_candles->data()->end() - 1)
            = QCPFinancialData(last, bar.open, bar.high, bar.low, bar.close);
        (m_volumes->data()->end() - 1)->value = double(bar.volume);
        for (std::size_t curve = 0; curve < 3; ++curve)
            (m_averages[curve]->data()->end() - 1)->value = averageAt(line, last, periods[curve]);
        m_plot.replot(QCustomPlot::rpImmediateRefresh);
    }

    void show(int first, int bars) override
    {
        m_plot.xAxis->setRange(first - 0.5, first + bars - 0.5);
        m_volumes->keyAxis()->setRange(m_plot.xAxis->range());
        m_candles->rescaleValueAxis(false, true);
        m_volumes->rescaleValueAxis(false, true);
        m_plot.replot(QCustomPlot::rpImmediateRefresh);
    }

    int barCount() const override { return m_candles->data()->size(); }
    double lastClose() const override { return (m_candles->data()->constEnd() - 1)->close; }
    double highest() const override
    {
        double found = 0;
        for (auto bar = m_candles->data()->constBegin(); bar != m_candles->data()->constEnd();
             ++bar)
            found = std::max(found, bar->high);
        return found;
    }

private:
    QCustomPlot m_plot;
    QCPFinancial *m_candles;
    QCPGraph *m_averages[3] = {};
    QCPBars *m_volumes;
};

} // namespace

std::unique_ptr<Twin> makeCustomPlot()
{
    return std::make_unique<CustomPlotTwin>();
}

#else

std::unique_ptr<Twin> makeCustomPlot()
{
    return nullptr;
}

#endif
