#include "ZvChartKit/klineplot.h"

#include "ZvChartKit/chartglyphs.h"

#include "ZvModelKit/zvubkline.h"

#include <algorithm>
#include <array>

namespace zvplot {

namespace {

// In pixels of the widget.
constexpr int usualStep = 8;
constexpr int axisGap = 6;
constexpr int leastAxis = 56;
constexpr int priceTicks = 44; // distance
constexpr int lowerTicks = 30;
constexpr int timeTicks = 96;

constexpr double freeAbove = 0.05; // share of an axis beyond its extremes
constexpr double leastPriceStep = 0.01; // yuan

// What is cheap and what is dear on the axes of KDJ and RSI.
constexpr double lowLevel = 20;
constexpr double highLevel = 80;

// 201912 as 2019 * 12 + 11.
int monthOf(const Bar &bar)
{
    return bar.day / 10000 * 12 + bar.day / 100 % 100 - 1;
}

double barsPerMonth(KLinePlot::Period period)
{
    switch (period) {
    case KLinePlot::Period::Week:
        return 52.0 / 12;
    case KLinePlot::Period::Month:
        return 1;
    case KLinePlot::Period::Day:
        break;
    }
    return 21;
}

QStringView nameOf(KLinePlot::Period period)
{
    switch (period) {
    case KLinePlot::Period::Week:
        return u"周K";
    case KLinePlot::Period::Month:
        return u"月K";
    case KLinePlot::Period::Day:
        break;
    }
    return u"日K";
}

} // namespace

KLinePlot::KLinePlot()
    : m_priceAverages(MovingAverages::Closes,
                      {{u"MA5", 5}, {u"MA10", 10}, {u"MA20", 20}, {u"MA30", 30}}),
      m_volumeAverages(MovingAverages::Volumes, {{u"MA5", 5}, {u"MA10", 10}})
{
}

KLinePlot::~KLinePlot() = default;

ChartPlot::Change KLinePlot::load(const ZvUBKLine &line, Period period)
{
    const bool isSame = !m_bars.isEmpty() && line.collectionId == m_collectionId
        && period == m_period && !m_window.isLastVisible();
    const int shown = isSame ? m_window.barAt(m_window.width() - 1) : -1;
    const int day = isSame ? m_bars.at(shown).day : 0;
    const int middle = isSame ? m_window.middleOf(m_window.columnOf(shown)) : 0;

    m_collectionId = line.collectionId;
    m_period = period;
    m_allPrices = ValueRange();
    m_mostVolume = 0;
    updateBars(line, 0);
    m_window.reset(m_bars.size());
    if (isSame && m_bars.barOfDay(day) < m_bars.size())
        m_window.place(m_bars.barOfDay(day), middle);
    return everythingChanged();
}

ChartPlot::Change KLinePlot::grow(const ZvUBKLine &line, int first)
{
    const int before = m_bars.size();
    const bool wasInView = m_columns.holdNewest();
    updateBars(line, first);
    m_window.grow(m_bars.size());
    if (m_bars.size() != before || first < before - 1)
        return everythingChanged();
    if (!wasInView)
        return {};
    m_columns.foldLast(m_bars, m_window);
    return axesOfColumns() == m_axes ? lastChanged() : everythingChanged();
}

ChartPlot::Change KLinePlot::prepend(const ZvUBKLine &line, int count)
{
    updateBars(line, 0);
    m_window.prepend(count);
    m_window.grow(m_bars.size());
    return everythingChanged();
}

ChartPlot::Change KLinePlot::setStudy(Study study)
{
    m_study = study;
    return everythingChanged();
}

ChartPlot::Change KLinePlot::panBy(int pixels)
{
    m_window.panBy(pixels);
    return everythingChanged();
}

ChartPlot::Change KLinePlot::zoom(int levels, int place)
{
    if (!m_window.zoom(levels, place))
        return {};
    return everythingChanged();
}

ChartPlot::Change KLinePlot::showFirst()
{
    m_window.showFirst();
    return everythingChanged();
}

ChartPlot::Change KLinePlot::showLast()
{
    m_window.showLast();
    return everythingChanged();
}

ChartPlot::Change KLinePlot::show(int place)
{
    m_window.show(place);
    return everythingChanged();
}

bool KLinePlot::wantsEarlier() const
{
    return !isEmpty() && m_window.width() > 0 && m_window.isNearFirst();
}

void KLinePlot::updateBars(const ZvUBKLine &line, int first)
{
    m_bars.update(line.bars, first);
    for (int bar = std::max(0, first); bar < m_bars.size(); ++bar) {
        m_allPrices.take(m_bars.at(bar).high);
        m_allPrices.take(m_bars.at(bar).low);
        m_mostVolume = std::max(m_mostVolume, m_bars.at(bar).volume);
    }
    for (Indicator *indicator :
         {static_cast<Indicator *>(&m_priceAverages), static_cast<Indicator *>(&m_volumeAverages),
          static_cast<Indicator *>(&m_macd), static_cast<Indicator *>(&m_kdj),
          static_cast<Indicator *>(&m_rsi)})
        indicator->update(m_bars, first);
}

const Indicator &KLinePlot::studied() const
{
    switch (m_study) {
    case Study::Kdj:
        return m_kdj;
    case Study::Rsi:
        return m_rsi;
    case Study::Macd:
        break;
    }
    return m_macd;
}

int KLinePlot::placeAt(int x) const
{
    return m_window.barAt(x - panes().price.left());
}

int KLinePlot::middleOf(int place) const
{
    return panes().price.left() + m_window.middleOf(m_window.columnOf(place));
}

int KLinePlot::priceRow(int place) const
{
    return m_axes.price.row(m_bars.at(place).close);
}

ChartPlot::Figures KLinePlot::figuresOf(int place) const
{
    const Bar &bar = m_bars.at(place);
    Figures figures;
    for (const double price : {bar.open, bar.high, bar.low, bar.close}) {
        const int row = m_axes.price.row(price);
        if (row >= panes().price.top() && row <= panes().price.bottom())
            figures.rows[figures.count++] = row;
    }
    return figures;
}

Legend KLinePlot::priceLegend(int place) const
{
    Legend legend;
    legend.next(Ink::Key).add(nameOf(m_period));
    const int bar = place >= 0 ? place : lastPlace();
    for (int curve = 0; bar >= 0 && curve < m_priceAverages.curveCount(); ++curve) {
        legend.next(KLinePainter::curveInk(curve))
            .add(m_priceAverages.name(curve))
            .add(u" ")
            .addPrice(m_priceAverages.curve(curve)[static_cast<std::size_t>(bar)]);
    }
    return legend;
}

Legend KLinePlot::volumeLegend(int place) const
{
    Legend legend;
    const int bar = place >= 0 ? place : lastPlace();
    if (bar < 0)
        return legend;
    legend.next(Ink::Dim).add(u"成交量 ").addQuantity(m_bars.at(bar).volume);
    for (int curve = 0; curve < m_volumeAverages.curveCount(); ++curve) {
        legend.next(KLinePainter::curveInk(curve))
            .add(m_volumeAverages.name(curve))
            .add(u" ")
            .addQuantity(m_volumeAverages.curve(curve)[static_cast<std::size_t>(bar)]);
    }
    return legend;
}

Legend KLinePlot::indicatorLegend(int place) const
{
    Legend legend;
    const int bar = place >= 0 ? place : lastPlace();
    const Indicator &shown = studied();
    for (int curve = 0; bar >= 0 && curve < shown.curveCount(); ++curve) {
        const double value = shown.curve(curve)[static_cast<std::size_t>(bar)];
        const bool isBar = m_study == Study::Macd && curve == Macd::Bar;
        legend.next(isBar ? ChartColours::inkOf(value) : KLinePainter::curveInk(curve))
            .add(shown.name(curve))
            .add(u" ")
            .addFixed(value, m_study == Study::Macd ? 3 : 2);
    }
    return legend;
}

ValueBox KLinePlot::valueBox(int place) const
{
    const Bar &bar = m_bars.at(place);
    const double from = m_bars.referenceOf(place);
    const auto ink = [from](double price) { return ChartColours::inkOf(price - from); };
    ValueBox box;
    box.next(u"日期").addDay(bar.day);
    box.next(u"开盘", ink(bar.open)).addPrice(bar.open);
    box.next(u"最高", ink(bar.high)).addPrice(bar.high);
    box.next(u"最低", ink(bar.low)).addPrice(bar.low);
    box.next(u"收盘", ink(bar.close)).addPrice(bar.close);
    box.next(u"涨跌", ink(bar.close)).addChange(bar.close - from);
    ChartText &share = box.next(u"涨幅", ink(bar.close));
    if (from > 0)
        share.addPercent((bar.close - from) / from);
    else
        share.add(u"--");
    box.next(u"成交量", Ink::Key).addQuantity(bar.volume);
    box.next(u"成交额", Ink::Key).addAmount(bar.amount);
    return box;
}

AxisLabel KLinePlot::lastPriceLabel() const
{
    if (isEmpty() || panes().isEmpty())
        return {};
    const Bar &last = m_bars.at(lastPlace());
    const int row = m_axes.price.row(last.close);
    if (row < panes().price.top() || row > panes().price.bottom())
        return {};
    AxisLabel label
        = labelOn(panes().rightOf(panes().price), row, ChartText().addPrice(last.close));
    label.ground = m_bars.directionOf(lastPlace()) < 0 ? Ink::Down : Ink::Up;
    label.ink = Ink::Ground;
    return label;
}

AxisLabel KLinePlot::leftLabel(int) const
{
    return {};
}

AxisLabel KLinePlot::rightLabel(int y) const
{
    const QRect *pane = panes().paneAt(y);
    if (!pane)
        return {};
    ChartText text;
    if (pane == &panes().price)
        text.addPrice(m_axes.price.valueAt(y));
    else if (pane == &panes().volume)
        text.addQuantity(std::max(0.0, m_axes.volume.valueAt(y)));
    else
        text.addFixed(m_axes.study.valueAt(y), 2);
    return labelOn(panes().rightOf(*pane), y, text);
}

ChartText KLinePlot::timeText(int place) const
{
    return ChartText().addDay(m_bars.at(place).day);
}

void KLinePlot::layOut()
{
    if (m_usualScale != frame().scale) {
        m_usualScale = frame().scale;
        m_window.setUsualStep(frame().px(usualStep));
    }
    setPanes(ChartPanes::of(frame(), 0, axisWidth(), true));
    setBoxWidth(std::max({textWidth(ChartText(u"2019-12-31")), textWidth(ChartText(u"9999.99万亿")),
                          textWidth(ChartText().addPrice(-m_allPrices.high))}));
    m_window.setWidth(panes().price.width());
    m_columns.fold(m_bars, m_window, {&m_priceAverages, &m_volumeAverages, &studied()});
    m_axes = axesOfColumns();
}

int KLinePlot::axisWidth() const
{
    int width = frame().px(leastAxis);
    for (const ChartText &text :
         {ChartText().addPrice(m_allPrices.high), ChartText().addPrice(m_allPrices.low),
          ChartText().addFixed(std::min(9999.0, -m_allPrices.high), 2),
          ChartText().addQuantity(m_mostVolume)})
        width = std::max(width, textWidth(text) + 2 * frame().px(axisGap));
    return width;
}

KLineAxes KLinePlot::axesOfColumns() const
{
    ValueRange study = m_columns.values(BarColumns::Study);
    if (m_study == Study::Macd) {
        study.take(0);
    } else {
        study.take(lowLevel);
        study.take(highLevel);
    }
    const ValueRange prices = m_columns.prices();
    const double mostVolume = m_columns.mostVolume();
    const auto endOf = [](const QRect &pane) { return pane.top() + std::max(0, pane.height()); };
    const QRect &price = panes().price;
    const QRect &volume = panes().volume;
    const QRect &below = panes().indicator;
    KLineAxes axes;
    axes.price = ValueAxis::padded(prices.low, prices.high, freeAbove, 5 * leastPriceStep,
                                   price.top(), endOf(price));
    axes.volume = ValueAxis(0, mostVolume > 0 ? mostVolume * (1 + freeAbove) : 1, volume.top(),
                            endOf(volume));
    axes.study = ValueAxis::padded(study.low, study.high, freeAbove, 5 * leastPriceStep,
                                   below.top(), endOf(below));
    return axes;
}

KLinePainter KLinePlot::painter() const
{
    return KLinePainter(frame(), panes(), m_window, m_columns, m_axes, m_study == Study::Macd);
}

void KLinePlot::paintStill(Pixels pixels)
{
    paintGrid(pixels);
    paintTimes(pixels);
    paintFrames(pixels);
    painter().paint(pixels, 0, m_columns.size() - (m_columns.holdNewest() ? 1 : 0));
}

void KLinePlot::paintLast(Pixels pixels)
{
    painter().paint(pixels, m_columns.size() - 1, m_columns.size());
}

QRect KLinePlot::lastStrip() const
{
    if (!m_columns.holdNewest())
        return {};
    const int column = m_columns.last().column;
    // The curves come over from the middle of the column before.
    const int left = panes().price.left() + m_window.middleOf(column - 1);
    const int right
        = panes().price.left() + m_window.leftOf(column) + m_window.step() + frame().line();
    return QRect(left, panes().price.top(), right - left, panes().bottom() - panes().price.top())
        & QRect(panes().price.left(), 0, panes().price.width(), panes().bottom());
}

void KLinePlot::paintGrid(Pixels pixels) const
{
    const auto level
        = [&](const QRect &pane, const ValueAxis &axis, double value, const ChartText &text) {
              const int row = axis.row(value);
              paintLevel(pixels, pane, row, Ink::Grid);
              putAxisText(panes().rightOf(pane), row, text, false, Ink::Dim);
          };
    if (isEmpty())
        return;
    for (const double price : m_axes.price.ticks(frame().px(priceTicks), leastPriceStep))
        level(panes().price, m_axes.price, price, ChartText().addPrice(price));
    for (const double volume : m_axes.volume.ticks(frame().px(lowerTicks), 1)) {
        if (volume > 0 && m_mostVolume > 0)
            level(panes().volume, m_axes.volume, volume, ChartText().addQuantity(volume));
    }
    const std::vector<double> values = m_study == Study::Macd
        ? m_axes.study.ticks(frame().px(lowerTicks), leastPriceStep)
        : std::vector<double>{lowLevel, (lowLevel + highLevel) / 2, highLevel};
    for (const double value : values)
        level(panes().indicator, m_axes.study, value, ChartText().addFixed(value, 2));
}

void KLinePlot::paintTimes(Pixels pixels) const
{
    // Whole months, quarters or years, whichever leave room for their words.
    const double pixelsPerBar = double(m_window.step()) / m_window.barsPerColumn();
    const double month = barsPerMonth(m_period) * pixelsPerBar;
    int months = 120;
    for (const int size : {60, 24, 12, 6, 3, 1}) {
        if (size * month >= frame().px(timeTicks))
            months = size;
    }
    int endOfLast = panes().times.left();
    bool isMarked = false;
    const auto block = [&](int bar) { return monthOf(m_bars.at(bar)) / months; };
    for (std::size_t index = 0; index < m_columns.size(); ++index) {
        const int column = m_columns.at(index).column;
        if (column < m_window.firstColumn() || column > m_window.lastColumn())
            continue;
        const int end = m_window.firstBarOf(column + 1);
        int bar = std::max(1, m_window.firstBarOf(column));
        if (bar >= end || block(end - 1) == block(bar - 1))
            continue;
        while (block(bar) == block(bar - 1))
            ++bar;
        if (putTime(pixels, middleOf(bar), ChartText().addMonth(m_bars.at(bar).day), &endOfLast))
            isMarked = true;
    }
    if (!isMarked && !m_columns.isEmpty()) {
        const int bar = m_window.firstBarOf(std::max(m_window.firstColumn(), m_window.columnOf(0)));
        putTime(pixels, middleOf(bar), timeText(bar), &endOfLast);
    }
}

} // namespace zvplot
