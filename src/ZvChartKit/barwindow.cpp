#include "ZvChartKit/barwindow.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace zvplot {

namespace {

struct Level {
    int barsPerColumn;
    int step;
};

constexpr std::array<Level, 41> levels{{
    {512, 1}, {384, 1}, {256, 1}, {192, 1}, {128, 1}, {96, 1}, {64, 1}, {48, 1}, {32, 1},
    {24, 1},  {16, 1},  {12, 1},  {8, 1},   {6, 1},   {4, 1},  {3, 1},  {2, 1},  {1, 1},
    {1, 2},   {1, 3},   {1, 4},   {1, 5},   {1, 6},   {1, 7},  {1, 8},  {1, 9},  {1, 10},
    {1, 12},  {1, 14},  {1, 16},  {1, 18},  {1, 21},  {1, 24}, {1, 28}, {1, 32}, {1, 37},
    {1, 43},  {1, 50},  {1, 60},  {1, 72},  {1, 86},
}};

const Level &level(int index)
{
    return levels[static_cast<std::size_t>(index)];
}

int floorDivided(int value, int by)
{
    return value >= 0 ? value / by : -((by - 1 - value) / by);
}

} // namespace

void BarWindow::setUsualStep(int pixels)
{
    const auto found = std::find_if(levels.begin(), levels.end(), [pixels](const Level &known) {
        return known.barsPerColumn == 1 && known.step >= pixels;
    });
    m_level = static_cast<int>(std::min(found, levels.end() - 1) - levels.begin());
    showLast();
}

void BarWindow::setWidth(int width)
{
    const bool didFit = fits();
    m_scroll += m_width - width;
    m_width = width;
    if (didFit || fits())
        showLast();
}

void BarWindow::reset(int bars)
{
    m_bars = std::max(0, bars);
    m_base = 0;
    showLast();
}

void BarWindow::grow(int bars)
{
    const bool follows = bars > m_bars && (m_bars == 0 || isLastVisible());
    m_bars = std::max(0, bars);
    if (follows)
        m_scroll += std::max(0, leftOf(columnOf(m_bars - 1)) + step() - m_width);
}

void BarWindow::prepend(int count)
{
    m_bars += count;
    m_base += count;
}

int BarWindow::step() const
{
    return level(m_level).step;
}

int BarWindow::barsPerColumn() const
{
    return level(m_level).barsPerColumn;
}

int BarWindow::columnOf(int bar) const
{
    return floorDivided(bar - m_base, barsPerColumn());
}

int BarWindow::leftOf(int column) const
{
    return column * step() - m_scroll;
}

int BarWindow::firstBarOf(int column) const
{
    return std::clamp(column * barsPerColumn() + m_base, 0, m_bars);
}

int BarWindow::firstColumn() const
{
    return std::max(columnOf(0), floorDivided(m_scroll, step()));
}

int BarWindow::lastColumn() const
{
    if (m_bars == 0 || m_width <= 0)
        return firstColumn() - 1;
    return std::min(columnOf(m_bars - 1), floorDivided(m_scroll + m_width - 1, step()));
}

int BarWindow::barAt(int x) const
{
    if (m_bars == 0)
        return -1;
    const int column = floorDivided(x + m_scroll, step());
    return std::clamp((column + 1) * barsPerColumn() - 1 + m_base, 0, m_bars - 1);
}

bool BarWindow::isLastVisible() const
{
    if (m_bars == 0)
        return true;
    const int middle = middleOf(columnOf(m_bars - 1));
    return middle >= 0 && middle < m_width;
}

bool BarWindow::isNearFirst() const
{
    // A third of the width ahead: the answer is often there before the edge is reached.
    return leftOf(columnOf(0)) > -m_width / 3;
}

void BarWindow::panBy(int pixels)
{
    // Zooming may have left the window beyond an end; from there it only comes back.
    const int low = std::min({leftEnd(), rightEnd(), m_scroll});
    const int high = std::max({leftEnd(), rightEnd(), m_scroll});
    m_scroll = std::clamp(m_scroll - pixels, low, high);
}

void BarWindow::showFirst()
{
    m_scroll = leftEnd();
}

void BarWindow::showLast()
{
    m_scroll = fits() ? leftEnd() : rightEnd();
}

void BarWindow::show(int bar)
{
    const int left = leftOf(columnOf(bar));
    if (left < 0)
        m_scroll += left;
    else if (left + step() > m_width)
        m_scroll += left + step() - m_width;
}

bool BarWindow::zoom(int by, int bar)
{
    if (bar < 0 || bar >= m_bars)
        return false;
    const int kept = middleOf(columnOf(bar));
    bool hasChanged = false;
    for (int left = std::abs(by); left > 0; --left) {
        const int next = m_level + (by > 0 ? 1 : -1);
        // Where all bars are in view already, narrower ones would only leave room.
        if (next < 0 || next >= static_cast<int>(levels.size()) || (by < 0 && fits())
            || (by > 0 && level(next).step > std::max(1, m_width / 4)))
            break;
        m_level = next;
        hasChanged = true;
    }
    if (hasChanged)
        place(bar, kept);
    return hasChanged;
}

void BarWindow::place(int bar, int x)
{
    m_scroll += middleOf(columnOf(bar)) - x;
}

int BarWindow::leftEnd() const
{
    return columnOf(0) * step();
}

int BarWindow::rightEnd() const
{
    return (columnOf(std::max(0, m_bars - 1)) + 1) * step() - m_width;
}

bool BarWindow::fits() const
{
    return rightEnd() <= leftEnd();
}

} // namespace zvplot
