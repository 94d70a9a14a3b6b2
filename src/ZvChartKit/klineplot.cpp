#include "ZvChartKit/klineplot.h"

#include "ZvChartKit/chartglyphs.h"
#include "ZvChartKit/curvepainter.h"

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

constexpr double freeAbovePrices = 0.05;
constexpr double leastPriceStep = 0.01; // yuan

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

void KLinePlot::Folded::resize(std::size_t columns)
{
    curves.resize(static_cast<std::size_t>(indicator->curveCount()));
    for (std::vector<CurvePoint> &curve : curves)
        curve.resize(columns, CurvePoint(0));
}

void KLinePlot::Folded::fold(const BarWindow &window, int firstColumn, std::size_t index)
{
    for (std::size_t curve = 0; curve < curves.size(); ++curve)
        curves[curve][index] = foldedCurve(indicator->curve(static_cast<int>(curve)), window,
                                           firstColumn + static_cast<int>(index));
}

KLinePlot::KLinePlot()
    : m_priceAverages(MovingAverages::Closes,
                      {{u"MA5", 5}, {u"MA10", 10}, {u"MA20", 20}, {u"MA30", 30}}),
      m_volumeAverages(MovingAverages::Volumes, {{u"MA5", 5}, {u"MA10", 10}})
{
    m_foldedPrices.indicator = &m_priceAverages;
    m_foldedVolumes.indicator = &m_volumeAverages;
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
    const bool wasInView = isLastInView();
    updateBars(line, first);
    m_window.grow(m_bars.size());
    if (m_bars.size() != before || first < before - 1)
        return everythingChanged();
    if (!wasInView)
        return {};
    foldColumn(m_columns.size() - 1);
    return areAxesKept() ? lastChanged() : everythingChanged();
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

Ink KLinePlot::curveInk(int curve)
{
    return static_cast<Ink>(static_cast<int>(Ink::Curve1) + curve);
}

Legend KLinePlot::priceLegend(int place) const
{
    Legend legend;
    legend.next(Ink::Key).add(nameOf(m_period));
    const int bar = place >= 0 ? place : lastPlace();
    for (int curve = 0; bar >= 0 && curve < m_priceAverages.curveCount(); ++curve) {
        legend.next(curveInk(curve))
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
        legend.next(curveInk(curve))
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
        legend.next(isBar ? ChartColours::inkOf(value) : curveInk(curve))
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
    fold();
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

void KLinePlot::fold()
{
    m_firstColumn = m_window.firstColumn();
    const int count = isEmpty() ? 0 : m_window.lastColumn() - m_firstColumn + 1;
    m_columns.resize(static_cast<std::size_t>(std::max(0, count)));
    m_foldedStudy.indicator = &studied();
    for (Folded *folded : {&m_foldedPrices, &m_foldedVolumes, &m_foldedStudy})
        folded->resize(m_columns.size());
    for (std::size_t index = 0; index < m_columns.size(); ++index)
        foldColumn(index);
}

void KLinePlot::foldColumn(std::size_t index)
{
    m_columns[index] = foldedBars(m_bars, m_window, m_firstColumn + static_cast<int>(index));
    for (Folded *folded : {&m_foldedPrices, &m_foldedVolumes, &m_foldedStudy})
        folded->fold(m_window, m_firstColumn, index);
}

KLinePlot::Axes KLinePlot::axesOfColumns() const
{
    ValueRange prices;
    ValueRange volumes;
    volumes.take(0);
    for (const BarColumn &column : m_columns) {
        prices.take(column.high);
        prices.take(column.low);
        volumes.take(column.volume);
    }
    ValueRange study;
    for (const std::vector<CurvePoint> &curve : m_foldedStudy.curves) {
        for (const CurvePoint &point : curve)
            study.take(point);
    }
    if (m_study == Study::Macd) {
        study.take(0);
    } else {
        study.take(20);
        study.take(80);
    }

    const auto rows = [](const QRect &pane) {
        return std::array<int, 2>{pane.top(), pane.top() + std::max(0, pane.height())};
    };
    const auto price = rows(panes().price);
    const auto volume = rows(panes().volume);
    const auto below = rows(panes().indicator);
    Axes axes;
    axes.price = ValueAxis::padded(prices.low, prices.high, freeAbovePrices, leastPriceStep * 5,
                                   price[0], price[1]);
    axes.volume = ValueAxis(0, volumes.high > 0 ? volumes.high * 1.05 : 1, volume[0], volume[1]);
    axes.study = ValueAxis::padded(study.low, study.high, 0.05, 0.05, below[0], below[1]);
    return axes;
}

bool KLinePlot::areAxesKept()
{
    return axesOfColumns() == m_axes;
}

bool KLinePlot::isLastInView() const
{
    return !m_columns.empty()
        && m_columns.back().column == m_window.columnOf(m_window.barCount() - 1);
}

KLinePlot::CandleShape KLinePlot::candleShape() const
{
    const int step = m_window.step();
    const int wick = std::min(frame().line(), step);
    CandleShape shape{};
    shape.wick = wick;
    // Body and wick have one middle: their widths are both even or both odd.
    int body = step * 3 / 4;
    body -= (body - wick) % 2 != 0 ? 1 : 0;
    shape.body = body >= 3 * wick ? body : 0;
    shape.wickLeft = (step - wick) / 2;
    shape.bodyLeft = shape.wickLeft - (shape.body - wick) / 2;
    shape.isHollow = shape.body >= 5 * wick;
    return shape;
}

void KLinePlot::paintCandle(Pixels &pixels, const BarColumn &column, const CandleShape &shape) const
{
    const QRgb ink = colour(column.direction < 0 ? Ink::Down : Ink::Up);
    const int left = panes().price.left() + m_window.leftOf(column.column);
    const int line = frame().line();
    const int high = m_axes.price.row(column.high);
    const int low = m_axes.price.row(column.low);
    pixels.fill(QRect(left + shape.wickLeft, high, shape.wick, std::max(line, low - high + 1)),
                ink);
    if (shape.body == 0)
        return;
    const int top = m_axes.price.row(std::max(column.open, column.close));
    const int bottom = m_axes.price.row(std::min(column.open, column.close));
    const QRect body(left + shape.bodyLeft, top, shape.body, std::max(line, bottom - top + 1));
    pixels.fill(body, ink);
    // A rise is told from a fall without colours, too.
    if (shape.isHollow && column.direction > 0)
        pixels.fill(body.adjusted(line, line, -line, -line), colour(Ink::Ground));
}

void KLinePlot::paintColumns(Pixels pixels, std::size_t begin, std::size_t end) const
{
    const CandleShape shape = candleShape();
    const int line = frame().line();
    const int barWidth = shape.body > 0 ? shape.body : shape.wick;
    const int barLeft = shape.body > 0 ? shape.bodyLeft : shape.wickLeft;
    Pixels prices = pixels.within(panes().price);
    Pixels volumes = pixels.within(panes().volume);
    Pixels below = pixels.within(panes().indicator);
    const int zero = m_axes.study.row(0);
    for (std::size_t index = begin; index < end; ++index) {
        const BarColumn &column = m_columns[index];
        const int left = panes().price.left() + m_window.leftOf(column.column);
        paintCandle(prices, column, shape);
        if (column.volume > 0) {
            const int top
                = std::min(m_axes.volume.row(column.volume), panes().volume.bottom() + 1 - line);
            volumes.fill(QRect(left + barLeft, top, barWidth, panes().volume.bottom() + 1 - top),
                         colour(column.volumeDirection < 0 ? Ink::Down : Ink::Up));
        }
        if (m_study != Study::Macd || panes().indicator.isEmpty())
            continue;
        const CurvePoint &bar = m_foldedStudy.curves[Macd::Bar][index];
        const int top = std::min(m_axes.study.row(bar.high), zero - line);
        const int bottom = std::max(m_axes.study.row(bar.low), zero + line);
        const int beside = (shape.body - shape.wick) / 6;
        const int from = left + shape.wickLeft - std::max(0, beside);
        const int width = shape.wick + 2 * std::max(0, beside);
        if (bar.high > 0)
            below.fill(QRect(from, top, width, zero - top), colour(Ink::Up));
        if (bar.low < 0)
            below.fill(QRect(from, zero + 1, width, bottom - zero), colour(Ink::Down));
    }
}

void KLinePlot::paintCurves(Pixels pixels, const Folded &folded, const QRect &pane,
                            const ValueAxis &axis, int count, std::size_t begin,
                            std::size_t end) const
{
    if (pane.isEmpty())
        return;
    CurvePainter painter(pixels.within(pane), axis, pane.left(), frame().line());
    for (int curve = 0; curve < count; ++curve)
        painter.draw(folded.curves[static_cast<std::size_t>(curve)], static_cast<int>(begin),
                     static_cast<int>(end), colour(curveInk(curve)));
}

void KLinePlot::paintStill(Pixels pixels, QPainter *)
{
    paintGrid(pixels);
    paintTimes(pixels);
    paintFrames(pixels);
    const std::size_t end = m_columns.size() - (isLastInView() ? 1 : 0);
    paintColumns(pixels, 0, end);
    paintAllCurves(pixels, 0, end);
}

void KLinePlot::paintLast(Pixels pixels)
{
    const std::size_t end = m_columns.size();
    paintColumns(pixels, end - 1, end);
    paintAllCurves(pixels, end - 1, end);
}

void KLinePlot::paintAllCurves(Pixels pixels, std::size_t begin, std::size_t end) const
{
    paintCurves(pixels, m_foldedPrices, panes().price, m_axes.price, m_priceAverages.curveCount(),
                begin, end);
    paintCurves(pixels, m_foldedVolumes, panes().volume, m_axes.volume,
                m_volumeAverages.curveCount(), begin, end);
    // The third curve of MACD is its bars.
    paintCurves(pixels, m_foldedStudy, panes().indicator, m_axes.study,
                m_study == Study::Macd ? int(Macd::Bar) : studied().curveCount(), begin, end);
}

QRect KLinePlot::lastStrip() const
{
    if (!isLastInView())
        return {};
    const int column = m_columns.back().column;
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
        : std::vector<double>{20, 50, 80};
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
    for (const BarColumn &column : m_columns) {
        const int end = m_window.firstBarOf(column.column + 1);
        int bar = std::max(1, m_window.firstBarOf(column.column));
        if (bar >= end || block(end - 1) == block(bar - 1))
            continue;
        while (block(bar) == block(bar - 1))
            ++bar;
        if (putTime(pixels, middleOf(bar), ChartText().addMonth(m_bars.at(bar).day), &endOfLast))
            isMarked = true;
    }
    if (!isMarked && !m_columns.empty()) {
        const int bar = m_window.firstBarOf(m_columns.front().column);
        putTime(pixels, middleOf(bar), timeText(bar), &endOfLast);
    }
}

} // namespace zvplot
