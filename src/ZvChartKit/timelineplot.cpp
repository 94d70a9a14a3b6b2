#include "ZvChartKit/timelineplot.h"

#include "ZvChartKit/chartglyphs.h"
#include "ZvChartKit/curvepainter.h"

#include <algorithm>
#include <cmath>

namespace zvplot {

namespace {

// In pixels of the widget.
constexpr int axisGap = 6;
constexpr int leastAxis = 56;
constexpr int levelDistance = 34;
constexpr int volumeTicks = 30;
constexpr int timeTicks = 78;
constexpr int widestVolumeBar = 9;

constexpr double leastDeviation = 0.01; // of the previous close, on either side
constexpr double leastLevel = 0.01; // yuan between two levels
constexpr double freeAbovePrices = 0.04;

// What an axis can still tell apart from its neighbours in fen. Larger figures, and what is no
// number at all, are not drawn.
constexpr double largest = 1e15;

bool isSound(double figure)
{
    return std::abs(figure) <= largest;
}

constexpr qint64 minute = 60 * 1000;
constexpr qint64 exchangeOffset = 8 * 60 * minute;

} // namespace

TimeLinePlot::TimeLinePlot() = default;

TimeLinePlot::~TimeLinePlot() = default;

ChartPlot::Change TimeLinePlot::load(const ZvUBTimeLine &line)
{
    takeMinutes(line);
    return everythingChanged();
}

ChartPlot::Change TimeLinePlot::grow(const ZvUBTimeLine &line, int first)
{
    const bool isLastAlone
        = first >= 0 && first == m_knownMinutes - 1 && line.minutes.size() == m_knownMinutes;
    if (!isLastAlone || !takeLastMinute(line) || m_prices.empty()) {
        takeMinutes(line);
        return everythingChanged();
    }
    // The column of the last minute may hold others before it.
    const int firstPlace = m_volumes.back().firstPlace;
    m_prices.pop_back();
    m_averages.pop_back();
    m_volumes.pop_back();
    for (int place = firstPlace; place <= lastPlace(); ++place)
        addPlace(place);
    return axesOfEntries() == m_axes ? lastChanged() : everythingChanged();
}

void TimeLinePlot::takeMinutes(const ZvUBTimeLine &line)
{
    m_axis = SessionAxis(line);
    m_previousClose = isSound(line.previousClose) ? line.previousClose : 0;
    m_knownMinutes = line.minutes.size();
    m_minutes.clear();
    m_firstPlace = 0;
    double before = m_previousClose;
    for (const ZvUBMinute &dealt : line.minutes) {
        const int place = m_axis.placeOf(dealt.time);
        if (place < 0 || !isSound(dealt.price) || !isSound(dealt.average))
            continue;
        if (m_minutes.empty())
            m_firstPlace = place;
        if (place < m_firstPlace || place < lastPlace())
            continue; // out of order
        Minute quiet = m_minutes.empty() ? Minute() : m_minutes.back();
        quiet.volume = 0;
        m_minutes.resize(static_cast<std::size_t>(place - m_firstPlace + 1), quiet);
        Minute &taken = m_minutes.back();
        taken.price = dealt.price;
        taken.average = dealt.average;
        taken.volume += static_cast<double>(std::max<qint64>(0, dealt.volume));
        taken.direction = dealt.price < before ? -1 : 1;
        before = dealt.price;
    }
}

bool TimeLinePlot::takeLastMinute(const ZvUBTimeLine &line)
{
    const ZvUBMinute &dealt = line.minutes.last();
    if (m_minutes.empty() || m_axis.placeOf(dealt.time) != lastPlace() || !isSound(dealt.price)
        || !isSound(dealt.average) || line.previousClose != m_previousClose)
        return false;
    Minute &taken = m_minutes.back();
    const double before
        = m_minutes.size() > 1 ? m_minutes[m_minutes.size() - 2].price : m_previousClose;
    taken.price = dealt.price;
    taken.average = dealt.average;
    taken.volume = static_cast<double>(std::max<qint64>(0, dealt.volume));
    taken.direction = dealt.price < before ? -1 : 1;
    return true;
}

int TimeLinePlot::lastPlace() const
{
    return m_firstPlace + static_cast<int>(m_minutes.size()) - 1;
}

int TimeLinePlot::leftOf(int place) const
{
    const qint64 width = panes().price.width();
    return static_cast<int>(place * width / std::max(1, m_axis.places()));
}

int TimeLinePlot::middleOf(int place) const
{
    return panes().price.left() + (leftOf(place) + leftOf(place + 1)) / 2;
}

int TimeLinePlot::placeAt(int x) const
{
    if (isEmpty() || panes().isEmpty())
        return -1;
    const qint64 width = panes().price.width();
    const qint64 place = (qint64(x) - panes().price.left()) * m_axis.places() / width;
    return static_cast<int>(std::clamp<qint64>(place, m_firstPlace, lastPlace()));
}

int TimeLinePlot::stride() const
{
    const int width = std::max(1, panes().price.width());
    return std::max(1, (m_axis.places() + width - 1) / width);
}

int TimeLinePlot::priceRow(int place) const
{
    return m_axes.price.row(at(place).price);
}

ChartPlot::Figures TimeLinePlot::figuresOf(int place) const
{
    Figures figures;
    for (const double price : {at(place).price, at(place).average})
        figures.rows[figures.count++] = m_axes.price.row(price);
    return figures;
}

Legend TimeLinePlot::priceLegend(int place) const
{
    Legend legend;
    legend.next(Ink::Key).add(u"分时");
    if (isEmpty())
        return legend;
    const Minute &shown = at(place >= 0 ? place : lastPlace());
    const double change = hasReference() ? shown.price - m_previousClose : 0;
    const Ink ink = ChartColours::inkOf(change);
    legend.next(ink).add(u"最新 ").addPrice(shown.price);
    legend.next(Ink::Key).add(u"均价 ").addPrice(shown.average);
    if (hasReference()) {
        legend.next(ink).add(u"涨跌 ").addChange(change);
        legend.next(ink).add(u"涨幅 ").addPercent(change / m_previousClose);
    }
    return legend;
}

Legend TimeLinePlot::volumeLegend(int place) const
{
    Legend legend;
    if (!isEmpty())
        legend.next(Ink::Dim)
            .add(u"成交量 ")
            .addQuantity(at(place >= 0 ? place : lastPlace()).volume);
    return legend;
}

Legend TimeLinePlot::indicatorLegend(int) const
{
    return {};
}

ValueBox TimeLinePlot::valueBox(int place) const
{
    const Minute &shown = at(place);
    const auto inkOf = [this](double price) {
        return hasReference() ? ChartColours::inkOf(price - m_previousClose) : Ink::Strong;
    };
    ValueBox box;
    box.next(u"时间").addClock(m_axis.timeOf(place));
    box.next(u"价格", inkOf(shown.price)).addPrice(shown.price);
    box.next(u"均价", inkOf(shown.average)).addPrice(shown.average);
    ChartText &change = box.next(u"涨跌", inkOf(shown.price));
    if (hasReference())
        change.addChange(shown.price - m_previousClose);
    else
        change.add(u"--");
    ChartText &share = box.next(u"涨幅", inkOf(shown.price));
    if (hasReference())
        share.addPercent((shown.price - m_previousClose) / m_previousClose);
    else
        share.add(u"--");
    box.next(u"成交量", Ink::Key).addQuantity(shown.volume);
    return box;
}

AxisLabel TimeLinePlot::lastPriceLabel() const
{
    if (isEmpty() || panes().isEmpty())
        return {};
    const double price = at(lastPlace()).price;
    AxisLabel label = labelOn(panes().leftOf(panes().price), priceRow(lastPlace()),
                              ChartText().addPrice(price));
    const Ink ground = ChartColours::inkOf(price - base());
    label.ground = ground == Ink::Strong ? Ink::Dim : ground;
    label.ink = Ink::Ground;
    return label;
}

AxisLabel TimeLinePlot::leftLabel(int y) const
{
    const QRect *pane = panes().paneAt(y);
    if (!pane)
        return {};
    ChartText text;
    if (pane == &panes().price)
        text.addPrice(m_axes.price.valueAt(y));
    else
        text.addQuantity(std::max(0.0, m_axes.volume.valueAt(y)));
    return labelOn(panes().leftOf(*pane), y, text);
}

AxisLabel TimeLinePlot::rightLabel(int y) const
{
    const QRect *pane = panes().paneAt(y);
    if (pane != &panes().price || !hasReference())
        return {};
    const double share = m_axes.price.valueAt(y) / m_previousClose - 1;
    return labelOn(panes().rightOf(*pane), y, ChartText().addPercent(share));
}

ChartText TimeLinePlot::timeText(int place) const
{
    return ChartText().addClock(m_axis.timeOf(place));
}

double TimeLinePlot::base() const
{
    if (hasReference() || isEmpty())
        return m_previousClose;
    return m_minutes.front().price;
}

void TimeLinePlot::layOut()
{
    const int width = axisWidth();
    setPanes(ChartPanes::of(frame(), width, width, false));
    setBoxWidth(std::max(textWidth(ChartText(u"-9999.99")), width - 2 * frame().px(axisGap)));
    fold();
    m_axes = axesOfEntries();
}

int TimeLinePlot::axisWidth() const
{
    double highest = base();
    double mostVolume = 0;
    for (const Minute &shown : m_minutes) {
        highest = std::max(highest, shown.price);
        mostVolume = std::max(mostVolume, shown.volume);
    }
    int width = frame().px(leastAxis);
    for (const ChartText &text :
         {ChartText().addPrice(highest * 1.1), ChartText().addQuantity(mostVolume)})
        width = std::max(width, textWidth(text) + 2 * frame().px(axisGap));
    return width;
}

void TimeLinePlot::fold()
{
    m_prices.clear();
    m_averages.clear();
    m_volumes.clear();
    for (int place = m_firstPlace; place <= lastPlace(); ++place)
        addPlace(place);
}

void TimeLinePlot::addPlace(int place)
{
    const Minute &shown = at(place);
    const int left = leftOf(place);
    const int slot = leftOf(place + 1) - left;
    if (m_volumes.empty() || m_volumes.back().left != left) {
        VolumeBar bar;
        bar.left = left;
        bar.firstPlace = place;
        m_volumes.push_back(bar);
        m_prices.emplace_back(left + slot / 2);
        m_averages.emplace_back(left + slot / 2);
    }
    VolumeBar &bar = m_volumes.back();
    bar.width = std::clamp(slot * 3 / 4, 1, frame().px(widestVolumeBar));
    if (shown.volume >= bar.volume) {
        bar.volume = shown.volume;
        bar.direction = shown.direction;
    }
    m_prices.back().take(shown.price);
    m_averages.back().take(shown.average);
}

TimeLinePlot::Axes TimeLinePlot::axesOfEntries() const
{
    const double middle = base();
    double deviation = std::max(std::abs(middle) * leastDeviation, 4 * leastLevel);
    for (const std::vector<CurvePoint> *curve : {&m_prices, &m_averages}) {
        for (const CurvePoint &point : *curve)
            deviation = std::max({deviation, point.high - middle, middle - point.low});
    }
    double mostVolume = 0;
    for (const VolumeBar &bar : m_volumes)
        mostVolume = std::max(mostVolume, bar.volume);
    deviation *= 1 + freeAbovePrices;
    const QRect &price = panes().price;
    const QRect &volume = panes().volume;
    Axes axes;
    axes.price = ValueAxis(middle - deviation, middle + deviation, price.top(),
                           price.top() + std::max(0, price.height()));
    axes.volume = ValueAxis(0, mostVolume > 0 ? mostVolume * 1.05 : 1, volume.top(),
                            volume.top() + std::max(0, volume.height()));
    return axes;
}

void TimeLinePlot::paintStill(Pixels pixels)
{
    paintTimes(pixels);
    paintGrid(pixels);
    paintFrames(pixels);
    if (m_prices.empty())
        return;
    paintVolumes(pixels, 0, m_volumes.size() - 1);
    paintCurves(pixels, 0, m_prices.size() - 1);
}

void TimeLinePlot::paintLast(Pixels pixels)
{
    paintVolumes(pixels, m_volumes.size() - 1, m_volumes.size());
    paintCurves(pixels, m_prices.size() - 1, m_prices.size());
}

QRect TimeLinePlot::lastStrip() const
{
    if (m_prices.empty())
        return {};
    const VolumeBar &bar = m_volumes.back();
    // The lines come over from the column before.
    const int from = m_prices.size() > 1 ? m_prices[m_prices.size() - 2].x + 1 : bar.left;
    const int left = panes().price.left() + std::min(from, bar.left);
    const int right = panes().price.left() + std::max(bar.left + bar.width, m_prices.back().x) + 1
        + frame().line();
    return QRect(left, panes().price.top(), right - left, panes().bottom() - panes().price.top())
        & QRect(panes().price.left(), 0, panes().price.width(), panes().bottom());
}

void TimeLinePlot::paintVolumes(Pixels pixels, std::size_t begin, std::size_t end) const
{
    const QRect &pane = panes().volume;
    Pixels below = pixels.within(pane);
    for (std::size_t i = begin; i < end; ++i) {
        const VolumeBar &bar = m_volumes[i];
        if (!(bar.volume > 0))
            continue;
        const int top = std::min(m_axes.volume.row(bar.volume), pane.bottom() + 1 - frame().line());
        below.fill(QRect(pane.left() + bar.left, top, bar.width, pane.bottom() + 1 - top),
                   colour(bar.direction < 0 ? Ink::Down : Ink::Up));
    }
}

void TimeLinePlot::paintCurves(Pixels pixels, std::size_t begin, std::size_t end) const
{
    const QRect &pane = panes().price;
    CurvePainter prices(pixels.within(pane), m_axes.price, pane.left(), frame().line());
    prices.fillDownTo(pane.bottom() + 1);
    prices.draw(m_prices, static_cast<int>(begin), static_cast<int>(end), colour(Ink::Price));
    CurvePainter averages(pixels.within(pane), m_axes.price, pane.left(), frame().line());
    averages.draw(m_averages, static_cast<int>(begin), static_cast<int>(end), colour(Ink::Key));
}

void TimeLinePlot::paintGrid(Pixels pixels) const
{
    const QRect &pane = panes().price;
    const double middle = base();
    if (isEmpty() && !hasReference())
        return;
    // As many levels above the middle as below it, all of them in whole fen.
    const double deviation = m_axes.price.high() - middle;
    const int wanted = std::max(1, pane.height() / 2 / std::max(1, frame().px(levelDistance)));
    const int levels = static_cast<int>(
        std::clamp(std::floor(deviation / leastLevel), 1.0, double(std::min(wanted, 5))));
    for (int level = -levels; level <= levels; ++level) {
        const double away = std::round(deviation * level / (levels + 0.25) * 100) / 100;
        const double price = middle + away;
        const int row = m_axes.price.row(price);
        const Ink ink = level > 0 ? Ink::Up : level < 0 ? Ink::Down : Ink::Strong;
        paintLevel(pixels, pane, row, level == 0 ? Ink::Cross : Ink::Grid);
        putAxisText(panes().leftOf(pane), row, ChartText().addPrice(price), true, ink);
        if (hasReference())
            putAxisText(panes().rightOf(pane), row, ChartText().addPercent(away / m_previousClose),
                        false, ink);
    }
    for (const double volume : m_axes.volume.ticks(frame().px(volumeTicks), 1)) {
        if (!(volume > 0) || isEmpty())
            continue;
        const int row = m_axes.volume.row(volume);
        paintLevel(pixels, panes().volume, row, Ink::Grid);
        putAxisText(panes().leftOf(panes().volume), row, ChartText().addQuantity(volume), true,
                    Ink::Dim);
    }
}

void TimeLinePlot::paintTimes(Pixels pixels) const
{
    if (m_axis.places() == 0)
        return;
    // Round times of the wall clock, as near to each other as their words allow; a stretch begins
    // with its own.
    const double perMinute = double(panes().price.width()) / m_axis.places();
    int distance = 24 * 60;
    for (const int minutes : {12 * 60, 6 * 60, 4 * 60, 2 * 60, 60, 30, 15, 10, 5}) {
        if (minutes * perMinute >= frame().px(timeTicks))
            distance = minutes;
    }
    int endOfLast = panes().times.left();
    for (const SessionAxis::Stretch &stretch : m_axis.stretches()) {
        const qint64 wall = (stretch.begin + exchangeOffset) / minute;
        ChartText begin;
        if (stretch.place > 0)
            begin.addClock(m_axis.timeOf(stretch.place - 1) + minute).add(u"/");
        putTime(pixels, panes().price.left() + leftOf(stretch.place), begin.addClock(stretch.begin),
                &endOfLast);
        for (qint64 at = (wall / distance + 1) * distance; at < wall + stretch.minutes;
             at += distance) {
            const int place = stretch.place + static_cast<int>(at - wall);
            putTime(pixels, panes().price.left() + leftOf(place),
                    ChartText().addClock(m_axis.timeOf(place)), &endOfLast);
        }
    }
    putTime(pixels, panes().price.right() + 1,
            ChartText().addClock(m_axis.timeOf(m_axis.places() - 1) + minute), &endOfLast);
}

} // namespace zvplot
